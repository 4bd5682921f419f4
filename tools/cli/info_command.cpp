// inkdot info: what a pack holds.
#include <cstdio>
#include <cstring>
#include <map>

#include "cli/cli.h"
#include "cli/options.h"
#include "driver/pack_keys.h"
#include "pack/pack.h"
#include "rescomp/colour_table.h"

namespace inkdot::tools {

namespace {
constexpr OptionDef kInfoOptions[] = {{"pack", true}};
constexpr const char* kInfoHelp =
    "usage: inkdot info [--pack FILE]\n"
    "\n"
    "Checks a pack (default: the one built into inkdot) and lists its blocks.\n";

const char* const kRequestPositions[] = {"grid levels", "matrix, general and equal resolutions",
                                         "matrix, columns twice the lines", "matrix, 1440x720",
                                         "matrix, lines twice the columns"};

// Names for the blocks that the request list and the colour tables point to.
std::map<uint32_t, std::string> namedByReferences(const Pack& pack) {
    std::map<uint32_t, std::string> names;
    if (const PackEntry* list = pack.find(keys::kRequestListBlock)) {
        names[list->number] = "request list";
        for (size_t i = 0; i + 1 < list->bytes.size() && i / 2 < 5; i += 2) {
            const uint16_t id = readU16le(list->bytes, i);
            if (id == 65535) break;
            names[id] = kRequestPositions[i / 2];
        }
    }
    for (const PackEntry& e : pack.entries()) {
        const auto b = e.bytes;
        if (b.size() < colourtable::kGridLevelsAt || std::memcmp(b.data(), "inkdot ctable", 13) != 0) continue;
        const uint32_t at = readU32le(b, colourtable::kDataAreaOffsetAt);
        const uint32_t size = readU32le(b, colourtable::kDataAreaSizeAt);
        if (size >= colourtable::kDescriptorSize && uint64_t{at} + size <= b.size())
            names[readU16le(b, at + 6)] = "dot-split table";
    }
    return names;
}

std::string describe(const PackEntry& e, const std::map<uint32_t, std::string>& named) {
    const auto b = e.bytes;
    if (b.size() >= 3 && b[0] == '/' && b[1] == '/') {
        size_t end = 0;
        while (end < b.size() && b[end] != '\n' && b[end] != '\r' && b[end] != 0) ++end;
        return "index text: " + std::string(b.begin(), b.begin() + static_cast<long>(end));
    }
    if (b.size() >= colourtable::kGridLevelsAt && std::memcmp(b.data(), "inkdot ctable", 13) == 0) {
        char text[160];
        std::snprintf(text, sizeof text, "colour table: %u points per axis, %u channels, black mode %u, ink %d/%d",
                      b[colourtable::kGridCountAt], b[colourtable::kChannelsAt], b[colourtable::kBlackModeAt],
                      readBe16(b, colourtable::kInkParamAt), readBe16(b, colourtable::kInkParamAt + 2));
        return text;
    }
    if (auto it = named.find(e.number); it != named.end()) {
        std::string text = it->second;
        if (text.rfind("matrix", 0) == 0 && b.size() >= 2)
            text += ": " + std::to_string(b[0] == 255 ? 256 : b[0]) + " x " + std::to_string(b[1] == 255 ? 256 : b[1]);
        return text;
    }
    switch (e.number) {
        case 950: return "channel correction tables";
        case 980: return "channel routing";
        case 990: return "channel base weights";
        default: return "block";
    }
}

}  // namespace

int infoCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
    ParsedArgs parsed;
    std::string error;
    bool ok = parseArgs(args, kInfoOptions, parsed, error);
    if (ok && parsed.help) {
        out << kInfoHelp;
        return kExitOk;
    }
    if (ok && !parsed.positional.empty()) {
        error = "info takes no arguments besides --pack FILE";
        ok = false;
    }
    if (!ok) {
        err << "inkdot info: " << error << " (see inkdot info --help)\n";
        return kExitUsage;
    }
    Pack pack;
    const std::string path = parsed.value("pack", "");
    if (path.empty()) {
        ok = pack.open(defaultPackBytes(), error);
    } else {
        Bytes bytes;
        ok = readFile(path, bytes, error) && pack.open(std::move(bytes), error);
    }
    if (!ok) {
        err << "inkdot info: " << (path.empty() ? "built-in pack" : path) << ": " << error << "\n";
        return kExitFailed;
    }
    char crc[16];
    std::snprintf(crc, sizeof crc, "%08x", static_cast<unsigned>(pack.checksum()));
    out << (path.empty() ? "built-in pack" : path) << ": " << pack.entries().size() << " blocks, " << pack.size()
        << " bytes, crc " << crc << " (checked)\n";
    const auto named = namedByReferences(pack);
    for (const PackEntry& e : pack.entries()) {
        char line[32];
        std::snprintf(line, sizeof line, "  %6u %8zu  ", static_cast<unsigned>(e.number), e.bytes.size());
        out << line << describe(e, named) << "\n";
    }
    return kExitOk;
}

}  // namespace inkdot::tools
