#include "cli/options.h"

#include <cerrno>
#include <cstdlib>

namespace inkdot::tools {

bool parseArgs(const std::vector<std::string>& args, std::span<const OptionDef> defs, ParsedArgs& out,
               std::string& error) {
    for (size_t i = 0; i < args.size(); ++i) {
        std::string arg = args[i];
        if (arg == "-h" || arg == "--help") {
            out.help = true;
            continue;
        }
        if (arg == "-o") arg = "--output";
        if (arg.size() < 2 || arg[0] != '-' || arg == "-") {
            out.positional.push_back(arg);
            continue;
        }
        if (arg.rfind("--", 0) != 0) {
            error = "unknown option " + arg;
            return false;
        }
        std::string name = arg.substr(2), value;
        bool inlineValue = false;
        if (const size_t eq = name.find('='); eq != std::string::npos) {
            value = name.substr(eq + 1);
            name.erase(eq);
            inlineValue = true;
        }
        const OptionDef* def = nullptr;
        for (const OptionDef& s : defs)
            if (name == s.name) def = &s;
        if (def == nullptr) {
            error = "unknown option --" + name;
            return false;
        }
        if (def->takesValue && !inlineValue) {
            if (i + 1 >= args.size()) {
                error = "option --" + name + " needs a value";
                return false;
            }
            value = args[++i];
        } else if (!def->takesValue && inlineValue) {
            error = "option --" + name + " takes no value";
            return false;
        }
        out.values[name] = value;
    }
    return true;
}

bool parseInt(const std::string& text, long lo, long hi, const std::string& option, long& out, std::string& error) {
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || v < lo || v > hi) {
        error = "--" + option + " must be a whole number from " + std::to_string(lo) + " to " + std::to_string(hi) +
                ", not '" + text + "'";
        return false;
    }
    out = v;
    return true;
}

}  // namespace inkdot::tools
