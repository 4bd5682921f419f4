// A CSV file written whole: rows collect in memory and the file appears
// under its name only when it is complete (AtomicFile).
#pragma once

#include <sstream>
#include <string>

#include "image/atomic_file.h"

namespace inkdot::tools {

class CsvFile {
public:
    explicit CsvFile(const std::string& header) { text_ << header << "\n"; }

    // Appends one row of fields, comma separated.
    template <typename... Fields>
    void row(const Fields&... fields) {
        const char* separator = "";
        ((text_ << separator << fields, separator = ","), ...);
        text_ << "\n";
    }

    bool save(const std::string& path, std::string& error) {
        AtomicFile file;
        const std::string text = text_.str();
        return file.open(path, error) && file.write(text.data(), text.size(), error) && file.commit(error);
    }

private:
    std::ostringstream text_;
};

}  // namespace inkdot::tools
