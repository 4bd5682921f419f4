#include "image/atomic_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace inkdot::tools {

AtomicFile::~AtomicFile() {
    if (file_ != nullptr) std::fclose(file_);
    if (!committed_ && !temporary_.empty()) std::remove(temporary_.c_str());
}

bool AtomicFile::open(const std::string& path, std::string& error) {
    path_ = path;
    temporary_ = path + ".tmp-" + std::to_string(static_cast<long>(getpid()));
    file_ = std::fopen(temporary_.c_str(), "wb");
    if (file_ == nullptr) {
        error = "cannot write " + temporary_ + ": " + std::strerror(errno);
        temporary_.clear();
        return false;
    }
    return true;
}

bool AtomicFile::write(const void* data, size_t size, std::string& error) {
    if (std::fwrite(data, 1, size, file_) != size) {
        error = "cannot write " + temporary_ + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool AtomicFile::commit(std::string& error) {
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!closed || std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        error = "cannot finish " + path_ + ": " + std::strerror(errno);
        return false;
    }
    committed_ = true;
    return true;
}

}  // namespace inkdot::tools
