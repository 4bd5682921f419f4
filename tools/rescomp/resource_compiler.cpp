#include "rescomp/resource_compiler.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
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

// The settings of one pack.txt line, with typed reads that report the first
// bad value and remember which keys were used.
class Settings {
public:
    Settings(std::map<std::string, std::string> values, std::string where)
        : values_(std::move(values)), where_(std::move(where)) {}

    bool failed() const { return !error_.empty(); }
    const std::string& error() const { return error_; }

    std::string text(const std::string& key, const std::string& fallback) {
        used_.insert(key);
        auto it = values_.find(key);
        return it == values_.end() ? fallback : it->second;
    }

    long integer(const std::string& key, long fallback, long lo, long hi) {
        const std::string raw = text(key, "");
        if (raw.empty()) return fallback;
        char* end = nullptr;
        errno = 0;
        const long v = std::strtol(raw.c_str(), &end, 10);
        if (errno != 0 || *end != '\0' || v < lo || v > hi)
            fail(key + " must be a whole number from " + std::to_string(lo) + " to " + std::to_string(hi));
        return v;
    }

    double real(const std::string& key, double fallback, double lo, double hi) {
        const std::string raw = text(key, "");
        if (raw.empty()) return fallback;
        char* end = nullptr;
        const double v = std::strtod(raw.c_str(), &end);
        if (*end != '\0' || !(v >= lo && v <= hi))
            fail(key + " must be a number from " + std::to_string(lo) + " to " + std::to_string(hi));
        return v;
    }

    std::vector<long> integers(const std::string& key, long lo, long hi) {
        std::vector<long> out;
        std::stringstream list(text(key, ""));
        std::string item;
        while (std::getline(list, item, ',')) {
            char* end = nullptr;
            const long v = std::strtol(item.c_str(), &end, 10);
            if (item.empty() || *end != '\0' || v < lo || v > hi) {
                fail(key + " must list whole numbers from " + std::to_string(lo) + " to " + std::to_string(hi));
                break;
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
    std::map<std::string, std::string> values_;
    std::set<std::string> used_;
    std::string where_;
    std::string error_;
};

bool readText(const std::string& path, Bytes& out, std::string& error) { return readFile(path, out, error); }

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

Bytes colourTable(Settings& s) {
    ColourTableParams params;
    params.points = static_cast<unsigned>(s.integer("points", 17, 2, 48));
    params.blackMode = static_cast<uint8_t>(s.integer("black-mode", 0, 0, 3));
    params.tableMode = static_cast<uint8_t>(s.integer("table-mode", 50, 0, 255));
    const std::vector<long> ink = s.integers("ink-param", -32768, 32767);
    if (ink.size() > 5) s.fail("ink-param takes at most five values");
    for (size_t i = 0; i < ink.size() && i < 5; ++i) params.inkParam[i] = static_cast<int16_t>(ink[i]);
    params.dotSplitBlock = static_cast<uint16_t>(s.integer("dot-split", 0, 0, 65534));
    params.model = separationModel(s);
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
    if (params.width * params.height > 65535) s.fail("a matrix holds at most 65535 cells");
    if (s.failed()) return {};
    return matrixBlock(params.width, params.height, makeBlueNoise(params));
}

Bytes dotSplit(Settings& s) {
    DotSplitParams params;
    params.smallInk = s.real("small-ink", params.smallInk, 0.05, 0.95);
    params.mediumInk = s.real("medium-ink", params.mediumInk, 0.05, 0.95);
    std::tie(params.mediumStart, params.mediumFull) = s.range("medium", {params.mediumStart, params.mediumFull});
    std::tie(params.largeStart, params.largeFull) = s.range("large", {params.largeStart, params.largeFull});
    if (params.smallInk >= params.mediumInk) s.fail("small-ink must be below medium-ink");
    return dotSplitBlock(makeDotSplit(params));
}

Bytes routing(Settings& s) {
    // records=KEY:ROW.ROW.ROW.ROW;KEY:...
    std::vector<RoutingRecord> records;
    std::stringstream list(s.text("records", ""));
    std::string item;
    while (std::getline(list, item, ';')) {
        const size_t colon = item.find(':');
        if (colon == std::string::npos) {
            s.fail("routing records are KEY:ROW.ROW...");
            break;
        }
        RoutingRecord record{static_cast<uint8_t>(std::atoi(item.substr(0, colon).c_str())), {}};
        std::stringstream rows(item.substr(colon + 1));
        std::string row;
        while (std::getline(rows, row, '.')) record.rows.push_back(static_cast<uint8_t>(std::atoi(row.c_str())));
        if (record.rows.empty() || record.rows.size() > 19) s.fail("a routing record names 1 to 19 rows");
        records.push_back(record);
    }
    return routingBlock(records);
}

}  // namespace

bool compileResources(const std::string& directory, BlockMap& blocks, std::string& error) {
    const std::string manifestPath = directory + "/pack.txt";
    Bytes manifest;
    if (!readText(manifestPath, manifest, error)) return false;
    std::stringstream lines(std::string(manifest.begin(), manifest.end()));
    std::string line;
    int lineNo = 0;
    while (std::getline(lines, line)) {
        ++lineNo;
        const std::string where = manifestPath + ":" + std::to_string(lineNo);
        if (const size_t hash = line.find('#'); hash != std::string::npos) line.erase(hash);
        std::stringstream tokens(line);
        std::string numberText, kind, token;
        if (!(tokens >> numberText)) continue;
        if (!(tokens >> kind)) {
            error = where + ": a block line needs a number and a kind";
            return false;
        }
        char* end = nullptr;
        const unsigned long blockNo = std::strtoul(numberText.c_str(), &end, 10);
        if (*end != '\0' || blockNo > 65534) {
            error = where + ": block number must be 0 to 65534";
            return false;
        }
        if (blocks.count(static_cast<uint32_t>(blockNo))) {
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
            values[token.substr(0, eq)] = token.substr(eq + 1);
        }
        Settings s(std::move(values), where);
        Bytes block;
        if (kind == "index") {
            const std::string file = s.text("file", "");
            if (file.empty()) s.fail("index needs file=");
            else if (std::string why; !readText(directory + "/" + file, block, why)) s.fail(why);
            else block.push_back(0);  // the index text ends at NUL
        } else if (kind == "colour-table") {
            block = colourTable(s);
        } else if (kind == "correction-tables") {
            block = correctionTableBlock(s.real("strength", 1.6, 1.0, 4.0));
        } else if (kind == "routing") {
            block = routing(s);
        } else if (kind == "base-weights") {
            std::vector<uint8_t> weights;
            for (long w : s.integers("weights", 30, 70)) weights.push_back(static_cast<uint8_t>(w));
            block = baseWeightBlock(weights);
        } else if (kind == "request-list") {
            std::vector<uint16_t> ids;
            for (long id : s.integers("ids", 0, 65534)) ids.push_back(static_cast<uint16_t>(id));
            if (ids.size() > 15) s.fail("a request list holds at most 15 ids");
            block = requestListBlock(ids);
        } else if (kind == "grid-levels") {
            block = gridLevelBlock();
        } else if (kind == "matrix") {
            block = matrix(s);
        } else if (kind == "dot-split") {
            block = dotSplit(s);
        } else {
            s.fail("unknown block kind '" + kind + "'");
        }
        s.checkAllUsed();
        if (s.failed()) {
            error = s.error();
            return false;
        }
        blocks[static_cast<uint32_t>(blockNo)] = std::move(block);
    }
    if (blocks.empty()) {
        error = manifestPath + ": describes no blocks";
        return false;
    }
    return true;
}

}  // namespace inkdot::tools
