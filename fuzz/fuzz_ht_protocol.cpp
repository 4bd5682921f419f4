// Fuzz target: the halftone resource protocol with fuzzed settings, a
// fuzzed CmLut (ink parameters, black table, dot-split descriptor; the grid
// is a valid 5 x 5 x 5 one) and length-prefixed blocks through the sized
// call. A ready instance then runs a few whole lines.
#include <cstdint>
#include <vector>

#include "fuzz_input.h"
#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "support/ht_fixture.h"

namespace {

using namespace inkdot;
using namespace inkdot::fuzz;

// Bounds that keep a run short: lines of up to 128 pixels (wide enough for
// every kernel's edges and the replication) and blocks of up to 8 KB
// (matrices up to 64 x 64 with their levels).
constexpr uint32_t kMaxWidth = 128;
constexpr size_t kMaxBlockBytes = 8192;

const uint32_t kResolutions[8] = {720, 1440, 360, 300, 600, 2880, 180, 720};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    HtSettings s{};
    s.method = in.u8() % 5;
    s.ditherMode = in.u8() % 4;
    s.inputFormat = in.u8() % 8;
    s.colourMode = in.u8() % 4;
    s.resolutionX = kResolutions[in.u8() % 8];
    s.resolutionY = kResolutions[in.u8() % 8];
    s.outputBits = in.u8() % 4;
    s.scaleMode = static_cast<int8_t>(in.u8());
    s.width = in.u16() % (kMaxWidth + 1);  // error lines and the replicated line stay small

    // The source grid: valid, four inks; the rest of the record fuzzed.
    CmLut lut = colourGrid();
    static const int32_t inkChoices[4] = {250, 350, 500, 100};
    const uint8_t ink = in.u8();
    lut.inkParam[0] = ink & 16 ? static_cast<int16_t>(in.u16()) : inkChoices[ink & 3];
    lut.inkParam[1] = ink & 32 ? static_cast<int16_t>(in.u16()) : 100;
    for (int v = 0; v < 256; ++v) lut.grayTable[v] = ink & 64 ? in.u8() : static_cast<uint8_t>(255 - v);
    uint8_t descriptor[8];
    in.fill(descriptor, 8);
    lut.extraData = ink & 128 ? nullptr : descriptor;

    HtContext* ctx = nullptr;
    uint32_t model = 0;
    if (HalftoneNew(&s, &lut, 0, &model, &ctx) != RC_OK) {
        if (ctx != nullptr && HalftoneDelete(ctx) != RC_OK) __builtin_trap();
        return 0;
    }
    uint32_t next = 0;
    uint32_t rc = RC_OK;
    for (int phase = 0; phase < 5 && rc == RC_OK && next != INKDOT_NO_MORE_BLOCKS && !in.empty(); ++phase) {
        std::vector<uint8_t> bytes = in.block();
        if (bytes.size() > kMaxBlockBytes) bytes.resize(kMaxBlockBytes);
        const ExactBlock block(bytes);
        rc = HalftoneSetResourceSized(ctx, block.data(), block.length, &next);
    }
    if (ctx->kernel != nullptr) {
        // Whole lines: src holds what any scaling reads (two input pixels per
        // output pixel at most), dst a whole line per plane.
        const uint32_t bpp = bytesPerPixel(s.inputFormat);
        std::vector<uint8_t> src(static_cast<size_t>(s.width) * 2 * bpp + 1);
        in.fill(src.data(), src.size());
        const uint32_t stride = s.width / 4 + 4;  // two bits a pixel at most
        std::vector<uint8_t> dst(static_cast<size_t>(stride) * 4);
        for (uint32_t line = 0; line < 3; ++line) {
            Halftone(ctx, src.data(), dst.data(), stride, 0, s.width, 0, 0, line, 0, 0);
        }
    }
    if (HalftoneDelete(ctx) != RC_OK) __builtin_trap();
    return 0;
}
