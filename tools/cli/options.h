// A small command-line option parser: "--name value", "--name=value",
// flags, "-o" for "--output", "-h" for "--help", and positional arguments.
#pragma once

#include <map>
#include <span>
#include <string>
#include <vector>

namespace inkdot::tools {

struct OptionDef {
    const char* name;  // without the leading "--"
    bool takesValue;
};

struct ParsedArgs {
    std::vector<std::string> positional;
    std::map<std::string, std::string> values;  // flags map to ""
    bool help = false;

    bool has(const std::string& name) const { return values.count(name) != 0; }
    std::string value(const std::string& name, const std::string& fallback) const {
        auto it = values.find(name);
        return it == values.end() ? fallback : it->second;
    }
};

bool parseArgs(const std::vector<std::string>& args, std::span<const OptionDef> defs, ParsedArgs& out,
               std::string& error);

// A whole decimal number within [lo, hi]; false with a message naming the option.
bool parseInt(const std::string& text, long lo, long hi, const std::string& option, long& out, std::string& error);

}  // namespace inkdot::tools
