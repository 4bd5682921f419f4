#include "rescomp/channel_tables.h"

#include <cmath>

namespace inkdot::tools {

namespace {
constexpr uint8_t kRecordEnd = 0xFE;
constexpr uint8_t kListEnd = 0xFF;
}  // namespace

Bytes routingBlock(const std::vector<RoutingRecord>& records) {
    Bytes out;
    for (const RoutingRecord& record : records) {
        appendU8(out, record.key);
        out.insert(out.end(), record.rows.begin(), record.rows.end());
        appendU8(out, kRecordEnd);
    }
    appendU8(out, kListEnd);
    return out;
}

Bytes baseWeightBlock(const std::vector<uint8_t>& weights) { return Bytes(weights.begin(), weights.end()); }

Bytes correctionTableBlock(double strength) {
    Bytes out;
    out.reserve(kCorrectionTables * 256);
    for (int d = 0; d < kCorrectionTables; ++d) {
        const double exponent = std::pow(strength, (10 - d) / 10.0);
        for (int x = 0; x < 256; ++x)
            appendU8(out, static_cast<unsigned>(std::lround(255.0 * std::pow(x / 255.0, exponent))));
    }
    return out;
}

}  // namespace inkdot::tools
