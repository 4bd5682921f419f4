// Fuzz target: the whole colour-management protocol from one input: a
// settings header (cm_job.h), then length-prefixed blocks fed in order to
// the sized call, whatever block numbers the instance asks for. A finished
// CmLut then feeds a halftone instance (default blocks), which reads the
// grid and the dot-split descriptor through it.
#include <cstdint>
#include <vector>

#include "cm_job.h"
#include "fuzz_input.h"
#include "inkdot/inkdot.h"
#include "support/ht_fixture.h"

namespace {

using namespace inkdot;
using namespace inkdot::fuzz;

constexpr uint8_t kMaxGridPoints = 9;

void halftoneFrom(const CmLut* lut, uint8_t choice) {
    static const uint32_t methods[4] = {1, 3, 0, 1};
    const uint32_t colourMode = choice & 1;
    HtSettings s = test::htSettings(methods[(choice >> 2) & 3], colourMode, choice & 2 ? 2 : 1, 40);
    HtContext* ht = nullptr;
    uint32_t model = 0;
    if (HalftoneNew(&s, lut, 0, &model, &ht) != RC_OK) {
        if (ht != nullptr) HalftoneDelete(ht);
        return;
    }
    if (setDefaultBlocks(ht) == RC_OK) {
        uint8_t src[40 * 4];  // gray or four-byte colour pixels (inputFormat 3 is padded to four)
        for (int i = 0; i < 40 * 4; ++i) src[i] = static_cast<uint8_t>(i * 13);
        uint8_t dst[4 * 10] = {};
        Halftone(ht, src, dst, 10, 0, 40, 0, 0, 0, 0, 0);
    }
    if (HalftoneDelete(ht) != RC_OK) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    CmHeader header{};
    uint8_t* raw = reinterpret_cast<uint8_t*>(&header);
    for (unsigned i = 0; i < kCmHeaderBytes; ++i) raw[i] = in.u8();
    CmJob job(header);

    CmContext* ctx = nullptr;
    uint32_t next = 0;
    if (CmNew(&job.s1, &job.s2, 0, &next, &ctx) != RC_OK) return 0;
    uint32_t rc = RC_OK;
    for (int phase = 1; phase <= 7 && rc == RC_OK && next != INKDOT_NO_MORE_BLOCKS && !in.empty(); ++phase) {
        std::vector<uint8_t> bytes = in.block();
        // The colour table's grid (points per axis at bytes 72-74) is kept
        // small: every rule of the table reader is met at 2 to 9 points,
        // while 48 points cost 110 592 nodes a run.
        if (phase == 2)
            for (size_t i = 72; i < 75 && i < bytes.size(); ++i)
                if (bytes[i] > kMaxGridPoints) bytes[i] = static_cast<uint8_t>(bytes[i] % kMaxGridPoints);
        const ExactBlock block(bytes);
        if (phase == 2) job.setWeights(header, block.length > 75 ? block.data()[75] : 4);
        rc = CmSetResourceSized(ctx, block.data(), block.length, &next);
    }
    if (rc == RC_OK && next == INKDOT_NO_MORE_BLOCKS) {
        const CmLut* lut = CmGetLut(ctx);
        if (lut->lutData == nullptr) __builtin_trap();  // a finished record has its grid
        halftoneFrom(lut, header.halftone);
    }
    CmDelete(ctx);
    return 0;
}
