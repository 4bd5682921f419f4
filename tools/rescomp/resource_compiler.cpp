#include "rescomp/resource_compiler.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "rescomp/blue_noise.h"
#include "rescomp/channel_tables.h"
#include "rescomp/colour_table.h"
#include "rescomp/dot_split.h"
#include "rescomp/halftone_blocks.h"

namespace inkdot::tools {
namespace {

constexpr long kMaxBlockNumber = 65534;  // 65535 ends the engine's request list
constexpr long kMaxRoutingKey = 253;     // 0xFE ends a routing record, 0xFF the list
constexpr size_t kMaxRequestIds = 15;
constexpr size_t kMaxInkParams = 5;
constexpr long kMaxMatrixCells = 65535;  // the engine counts cells in 16 bits

// A whole decimal number from lo to hi.
bool wholeNumber(const std::string& text, long lo, long hi, long& out) {
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || errno != 0 || v < lo || v > hi) return false;
    out = v;
    return true;
}

// The settings of one pack.txt line, with typed reads that report the first
// bad value and remember which keys were used. A bad value reads as the
// fallback, so nothing is ever computed from it; the caller builds nothing
// once failed() is true.
class Settings {
public:
    Settings(std::map<std::string, std::string> values, std::string where)
        : values_(std::move(values)), where_(std::move(where)) {}

    bool failed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& where() const { return where_; }

    std::string text(const std::string& key, const std::string& fallback) {
        used_.insert(key);
        auto it = values_.find(key);
        return it == values_.end() ? fallback : it->second;
    }

    long integer(const std::string& key, long fallback, long lo, long hi) {
        const std::string raw = text(key, "");
        long v = fallback;
        if (!raw.empty() && !wholeNumber(raw, lo, hi, v))
            fail(key + " must be a whole number from " + std::to_string(lo) + " to " + std::to_string(hi));
        return v;
    }

    double real(const std::string& key, double fallback, double lo, double hi) {
        const std::string raw = text(key, "");
        if (raw.empty()) return fallback;
        char* end = nullptr;
        const double v = std::strtod(raw.c_str(), &end);
        if (*end != '\0' || !(v >= lo && v <= hi)) {
            fail(key + " must be a number from " + number(lo) + " to " + number(hi));
            return fallback;
        }
        return v;
    }

    std::vector<long> integers(const std::string& key, long lo, long hi) {
        std::vector<long> out;
        std::stringstream list(text(key, ""));
        std::string item;
        while (std::getline(list, item, ',')) {
            long v = 0;
            if (!wholeNumber(item, lo, hi, v)) {
                fail(key + " must list whole numbers from " + std::to_string(lo) + " to " + std::to_string(hi));
                return {};
            }
            out.push_back(v);
        }
        return out;
    }

    std::pair<double, double> range(const std::string& key, std::pair<double, double> fallback) {
        const std::string raw = text(key, "");
        if (raw.empty()) return fallback;
        char* end = nullptr;
        const double a = std::strtod(raw.c_str(), &end);
        if (*end == ',') {
            char* end2 = nullptr;
            const double b = std::strtod(end + 1, &end2);
            if (*end2 == '\0' && a >= 0 && a < b && b <= 1) return {a, b};
        }
        fail(key + " must be two rising numbers from 0 to 1, as 0.1,0.6");
        return fallback;
    }

    // Every key of the line must have been read: a misspelt key is an error.
    void checkAllUsed() {
        for (const auto& [key, value] : values_)
            if (!used_.count(key)) fail("unknown setting '" + key + "'");
    }

    void fail(const std::string& why) {
        if (error_.empty()) error_ = where_ + ": " + why;
    }

private:
    static std::string number(double v) {
        char text[32];
        std::snprintf(text, sizeof text, "%g", v);
        return text;
    }

    std::map<std::string, std::string> values_;
    std::set<std::string> used_;
    std::string where_;
    std::string error_;
};

SeparationModel separationModel(Settings& s) {
    SeparationModel m;
    m.inputGamma = s.real("input-gamma", m.inputGamma, 0.5, 4.0);
    m.blackStart = s.real("black-start", m.blackStart, 0.0, 0.9);
    m.blackPower = s.real("black-power", m.blackPower, 1.0, 4.0);
    m.inkLimitPercent = static_cast<int>(s.integer("ink-limit", m.inkLimitPercent, 100, 400));
    m.grayGamma = s.real("gray-gamma", m.grayGamma, 0.3, 3.0);
    m.richBlackStart = s.real("rich-black-start", m.richBlackStart, 0.0, 1.0);
    return m;
}

Bytes colourTable(Settings& s, ColourTableParams& params) {
    params.points = static_cast<unsigned>(s.integer("points", 17, 2, 48));
    params.blackMode = static_cast<uint8_t>(s.integer("black-mode", 0, 0, 3));
    params.tableMode = static_cast<uint8_t>(s.integer("table-mode", 50, 0, 255));
    const std::vector<long> ink = s.integers("ink-param", -32768, 32767);
    if (ink.size() > kMaxInkParams) s.fail("ink-param takes at most five values");
    // A and B weigh one-bit dots in percent; the dot values they make divide
    // the engine's tone tables and the dot split's ink, so they stay positive.
    for (size_t i = 0; i < ink.size() && i < 2; ++i)
        if (ink[i] < 1 || ink[i] > 1000) s.fail("ink-param A and B must be from 1 to 1000 (percent)");
    for (size_t i = 0; i < ink.size() && i < kMaxInkParams; ++i) params.inkParam[i] = static_cast<int16_t>(ink[i]);
    params.dotSplitBlock = static_cast<uint16_t>(s.integer("dot-split", 0, 0, kMaxBlockNumber));
    params.model = separationModel(s);
    if (s.failed()) return {};
    return buildColourTable(params);
}

Bytes matrix(Settings& s) {
    BlueNoiseParams params;
    params.width = static_cast<unsigned>(s.integer("width", 64, 1, 256));
    params.height = static_cast<unsigned>(s.integer("height", 64, 1, 256));
    params.cellWidth = s.real("cell-width", 1.0, 0.25, 4.0);
    params.sigma = s.real("sigma", 1.5, 0.5, 8.0);
    params.seed = static_cast<uint32_t>(s.integer("seed", 1, 1, 0x7FFFFFFF));
    if ((params.width & (params.width - 1)) != 0) s.fail("width must be a power of two");
    if (params.width * params.height > kMaxMatrixCells) s.fail("a matrix holds at most 65535 cells");
    if (s.failed()) return {};
    return matrixBlock(params.width, params.height, makeBlueNoise(params));
}

// The split's ink parameters come from the colour tables that name it, once
// the whole description is read.
DotSplitParams dotSplit(Settings& s) {
    DotSplitParams params;
    params.smallInk = s.real("small-ink", params.smallInk, 0.05, 0.95);
    params.mediumInk = s.real("medium-ink", params.mediumInk, 0.05, 0.95);
    std::tie(params.mediumStart, params.mediumFull) = s.range("medium", {params.mediumStart, params.mediumFull});
    std::tie(params.largeStart, params.largeFull) = s.range("large", {params.largeStart, params.largeFull});
    if (params.smallInk >= params.mediumInk) s.fail("small-ink must be below medium-ink");
    if (params.mediumStart > params.largeStart || params.mediumFull > params.largeFull)
        s.fail("medium dots must fade in before large ones: medium's start and full at most large's");
    return params;
}

Bytes routing(Settings& s) {
    // records=KEY:ROW.ROW.ROW.ROW;KEY:...  The engine reads one row per
    // channel from a record, each naming one of the four channel tables.
    std::vector<RoutingRecord> records;
    std::stringstream list(s.text("records", ""));
    std::string item;
    while (std::getline(list, item, ';')) {
        const size_t colon = item.find(':');
        long key = -1;
        RoutingRecord record{};
        bool ok = colon != std::string::npos && wholeNumber(item.substr(0, colon), 0, kMaxRoutingKey, key);
        std::stringstream rows(ok ? item.substr(colon + 1) : "");
        std::string row;
        while (ok && std::getline(rows, row, '.')) {
            long v = 0;
            ok = wholeNumber(row, 0, colourtable::kChannels - 1, v);
            record.rows.push_back(static_cast<uint8_t>(v));
        }
        if (!ok || record.rows.size() != colourtable::kChannels) {
            s.fail("routing records are KEY:ROW.ROW.ROW.ROW, a key from 0 to 253 and four rows from 0 to 3");
            return {};
        }
        record.key = static_cast<uint8_t>(key);
        records.push_back(record);
    }
    return routingBlock(records);
}

bool readIndexText(const std::string& path, Bytes& out, std::string& error) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        error = "cannot open " + path + ": not a regular file";
        return false;
    }
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    out.assign(kMaxIndexTextBytes + 1, 0);
    out.resize(std::fread(out.data(), 1, out.size(), f));
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) error = "cannot read " + path;
    else if (out.size() > kMaxIndexTextBytes) error = path + " is over " + std::to_string(kMaxIndexTextBytes) + " bytes";
    return error.empty();
}

// A colour table's reference to its dot-split block, checked when all lines are read.
struct DotSplitUse {
    uint32_t table;
    std::string where;
    uint16_t split;
    int inkParamA, inkParamB;
};

struct PendingSplit {
    DotSplitParams params;
    const DotSplitUse* namedBy = nullptr;
};

// Gives every dot-split block the ink parameters of the tables that name it
// and builds it; a table naming no dot-split block, or tables of different
// ink parameters sharing one, are errors.
bool buildDotSplits(std::map<uint32_t, PendingSplit>& splits, const std::vector<DotSplitUse>& uses,
                    BlockMap& blocks, std::string& error) {
    for (const DotSplitUse& use : uses) {
        auto it = splits.find(use.split);
        if (it == splits.end()) {
            error = use.where + ": dot-split=" + std::to_string(use.split) + " names no dot-split block";
            return false;
        }
        PendingSplit& split = it->second;
        if (split.namedBy == nullptr) {
            split.namedBy = &use;
            split.params.inkParamA = use.inkParamA;
            split.params.inkParamB = use.inkParamB;
        } else if (split.params.inkParamA != use.inkParamA || split.params.inkParamB != use.inkParamB) {
            error = use.where + ": its ink-param differs from block " + std::to_string(split.namedBy->table) +
                    ", which names the same dot-split block " + std::to_string(use.split) +
                    "; the split is made for one pair of ink parameters";
            return false;
        }
    }
    for (const auto& [number, split] : splits) blocks[number] = dotSplitBlock(makeDotSplit(split.params));
    return true;
}

}  // namespace

bool compileResourceText(std::string_view manifest, const std::string& manifestName, const SourceReader& read,
                         BlockMap& blocks, std::string& error) {
    std::stringstream lines{std::string(manifest)};
    std::string line;
    int lineNo = 0;
    std::map<uint32_t, PendingSplit> splits;
    std::vector<DotSplitUse> uses;
    std::set<uint32_t> described;
    while (std::getline(lines, line)) {
        ++lineNo;
        const std::string where = manifestName + ":" + std::to_string(lineNo);
        if (const size_t hash = line.find('#'); hash != std::string::npos) line.erase(hash);
        std::stringstream tokens(line);
        std::string numberText, kind, token;
        if (!(tokens >> numberText)) continue;
        if (!(tokens >> kind)) {
            error = where + ": a block line needs a number and a kind";
            return false;
        }
        long blockNo = 0;
        if (!wholeNumber(numberText, 0, kMaxBlockNumber, blockNo)) {
            error = where + ": block number must be 0 to 65534";
            return false;
        }
        const uint32_t number = static_cast<uint32_t>(blockNo);
        if (!described.insert(number).second) {
            error = where + ": block " + numberText + " is described twice";
            return false;
        }
        std::map<std::string, std::string> values;
        while (tokens >> token) {
            const size_t eq = token.find('=');
            if (eq == std::string::npos || eq == 0) {
                error = where + ": expected key=value, found '" + token + "'";
                return false;
            }
            if (!values.emplace(token.substr(0, eq), token.substr(eq + 1)).second) {
                error = where + ": '" + token.substr(0, eq) + "' is set twice";
                return false;
            }
        }
        Settings s(std::move(values), where);
        Bytes block;
        if (kind == "index") {
            const std::string file = s.text("file", "");
            if (file.empty()) s.fail("index needs file=");
            else if (std::string why; !read(file, block, why)) s.fail(why);
            else block.push_back(0);  // the index text ends at NUL
        } else if (kind == "colour-table") {
            ColourTableParams params;
            block = colourTable(s, params);
            if (params.dotSplitBlock != 0)
                uses.push_back({number, where, params.dotSplitBlock, params.inkParam[0], params.inkParam[1]});
        } else if (kind == "correction-tables") {
            const double strength = s.real("strength", 1.6, 1.0, 4.0);
            if (!s.failed()) block = correctionTableBlock(strength);
        } else if (kind == "routing") {
            block = routing(s);
        } else if (kind == "base-weights") {
            std::vector<uint8_t> weights;
            for (long w : s.integers("weights", 30, 70)) weights.push_back(static_cast<uint8_t>(w));
            if (weights.size() != colourtable::kChannels) s.fail("weights takes four values, one per channel");
            block = baseWeightBlock(weights);
        } else if (kind == "request-list") {
            std::vector<uint16_t> ids;
            for (long id : s.integers("ids", 0, kMaxBlockNumber)) ids.push_back(static_cast<uint16_t>(id));
            if (ids.size() > kMaxRequestIds) s.fail("a request list holds at most 15 ids");
            block = requestListBlock(ids);
        } else if (kind == "grid-levels") {
            block = gridLevelBlock();
        } else if (kind == "matrix") {
            block = matrix(s);
        } else if (kind == "dot-split") {
            splits[number].params = dotSplit(s);
        } else {
            s.fail("unknown block kind '" + kind + "'");
        }
        s.checkAllUsed();
        if (s.failed()) {
            error = s.error();
            return false;
        }
        if (kind != "dot-split") blocks[number] = std::move(block);
    }
    if (described.empty()) {
        error = manifestName + ": describes no blocks";
        return false;
    }
    return buildDotSplits(splits, uses, blocks, error);
}

bool compileResources(const std::string& directory, BlockMap& blocks, std::string& error) {
    const std::string manifestPath = directory + "/pack.txt";
    Bytes manifest;
    if (!readFile(manifestPath, manifest, error)) return false;
    const SourceReader read = [&](const std::string& name, Bytes& out, std::string& why) {
        return readIndexText(directory + "/" + name, out, why);
    };
    return compileResourceText(std::string_view(reinterpret_cast<const char*>(manifest.data()), manifest.size()),
                               manifestPath, read, blocks, error);
}

}  // namespace inkdot::tools
