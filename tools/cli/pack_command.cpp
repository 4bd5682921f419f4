// inkdot pack: compiles resource sources into a pack file.
#include <cstdio>

#include "cli/cli.h"
#include "cli/options.h"
#include "image/atomic_file.h"
#include "pack/pack.h"
#include "rescomp/resource_compiler.h"

namespace inkdot::tools {

namespace {
constexpr OptionDef kPackOptions[] = {{"output", true}};
constexpr const char* kPackHelp =
    "usage: inkdot pack RESOURCE_DIR -o FILE\n"
    "\n"
    "Compiles RESOURCE_DIR/pack.txt and the files it names (index texts,\n"
    "separation, matrix and dot-split settings) into a checked pack file that\n"
    "'inkdot print --pack FILE' and 'inkdot info --pack FILE' read.\n";
}  // namespace

int packCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    ParsedArgs parsed;
    std::string error;
    bool ok = parseArgs(args, kPackOptions, parsed, error);
    if (ok && parsed.help) {
        out << kPackHelp;
        return kExitOk;
    }
    if (ok && (parsed.positional.size() != 1 || !parsed.has("output"))) {
        error = "pack needs one resource directory and -o FILE";
        ok = false;
    }
    if (!ok) {
        err << "inkdot pack: " << error << " (see inkdot pack --help)\n";
        return kExitUsage;
    }
    BlockMap blocks;
    if (!compileResources(parsed.positional[0], blocks, error)) {
        err << "inkdot pack: " << error << "\n";
        return kExitFailed;
    }
    const Bytes bytes = writePack(blocks);
    Pack check;
    if (!check.open(std::span<const uint8_t>(bytes), error)) {
        err << "inkdot pack: the written pack does not read back: " << error << "\n";
        return kExitFailed;
    }
    const std::string path = parsed.value("output", "");
    AtomicFile file;
    if (!file.open(path, error) || !file.write(bytes.data(), bytes.size(), error) || !file.commit(error)) {
        err << "inkdot pack: " << error << "\n";
        return kExitFailed;
    }
    char crc[16];
    std::snprintf(crc, sizeof crc, "%08x", static_cast<unsigned>(check.checksum()));
    if (path != "-") out << "wrote " << path << ": " << blocks.size() << " blocks, " << bytes.size() << " bytes, crc " << crc << "\n";
    return kExitOk;
}

}  // namespace inkdot::tools
