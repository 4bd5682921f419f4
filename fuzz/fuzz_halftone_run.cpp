// Fuzz target: Halftone runs with fuzzed arguments on a valid instance built
// from valid blocks. The first bytes choose the instance (method, colour
// mode, output depth, resolution class, input format, scaling, width); each
// run then takes its count, column, bit offset, line, plane stride and
// option word from the input, and its pixels after them. The harness gives
// every run buffers of exactly the size the call contract names, so the
// sanitizers see a kernel reading or writing outside them, and checks that
// the bits in front of bitOffset survive in every plane.
#include <cstdint>
#include <vector>

#include "fuzz_input.h"
#include "halftone/ht_context.h"
#include "inkdot/inkdot.h"
#include "support/ht_fixture.h"

namespace {

using namespace inkdot;
using namespace inkdot::fuzz;

const uint32_t kClasses[5][2] = {{720, 720}, {1440, 720}, {360, 720}, {720, 360}, {600, 400}};  // x, y resolution
const int32_t kScales[6] = {0, 1, -1, 2, 3, 4};
const uint32_t kColourFormats[3] = {3, 4, 5};
// Lines of up to 256 pixels and 32 runs an input keep an input short; the
// runs' edges, offsets and replication all occur well within them.
constexpr uint32_t kMaxWidth = 256;
constexpr int kMaxRuns = 32;

// Input pixels the kernel reads for a run of `count` output pixels.
uint32_t inputPixels(const HtContext& ctx, uint32_t count) {
    if (ctx.replicationFactor != 1) {
        const uint32_t target = ctx.scaleMode == 1 ? (count + 1) / 2 : count;
        return (target + ctx.replicationFactor - 1) / ctx.replicationFactor;
    }
    if (ctx.scaleMode == -1) return 2 * count;
    if (ctx.scaleMode == 1) return (count + 1) / 2;
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const uint8_t choice = in.u8();
    const uint8_t more = in.u8();
    const bool colour = choice & 1;
    const uint32_t outputBits = choice & 2 ? 2 : 1;
    HtSettings s = test::htSettings((choice >> 2) & 3, colour ? 1 + (more & 3) % 3 : 0, outputBits);  // methods 0 to 3
    s.resolutionX = kClasses[((choice >> 4) & 7) % 5][0];
    s.resolutionY = kClasses[((choice >> 4) & 7) % 5][1];
    s.ditherMode = choice & 128 ? 0 : 1;
    s.inputFormat = colour ? kColourFormats[((more >> 2) & 3) % 3] : 0;
    s.scaleMode = kScales[((more >> 4) & 7) % 6];
    s.width = 1 + in.u16() % kMaxWidth;

    static test::MonoLut monoLut([](int v) { return 255 - v; });
    HtContext* ctx = nullptr;
    uint32_t model = 0;
    if (HalftoneNew(&s, colour ? &colourGrid() : &monoLut.lut, 0, &model, &ctx) != RC_OK) __builtin_trap();
    // Two-bit output in the classes without two-bit spread thresholds is
    // refused by the protocol; nothing to run then.
    if (setDefaultBlocks(ctx) == RC_OK) {
        const uint32_t bpp = bytesPerPixel(s.inputFormat);
        const uint32_t pixelsPerByte = 8 / outputBits;
        const uint32_t planes = colour ? 4 : 1;
        for (int call = 0; call < kMaxRuns && !in.empty(); ++call) {
            const uint32_t count = in.u16() % (s.width + 2);  // one more than fits, now and then
            const uint32_t startX = in.u16() % (s.width + 1);
            const uint32_t bitOffset = in.u8() % pixelsPerByte;
            const uint32_t lineNo = in.u16();
            const uint8_t options = in.u8();
            const uint32_t option11 = options == 255 ? 1 : 0;
            const uint32_t touched = (bitOffset + count + pixelsPerByte - 1) / pixelsPerByte;
            const uint32_t stride = touched + (options & 3);
            const ExactBlock src(std::vector<uint8_t>(static_cast<size_t>(inputPixels(*ctx, count)) * bpp));
            in.fill(src.bytes.get(), src.length);
            std::vector<uint8_t> dstBytes(static_cast<size_t>(stride) * (planes - 1) + (touched == 0 ? 1 : touched), 0x5A);
            const ExactBlock dst(dstBytes);
            Halftone(ctx, src.data(), dst.bytes.get(), stride, bitOffset, count, startX, 0, lineNo, 0, option11);
            // The pixels in front of the run keep their bits in every plane.
            if (touched > 0 && bitOffset > 0) {
                const uint8_t keep = static_cast<uint8_t>(0xFF00 >> (bitOffset * outputBits));
                for (uint32_t k = 0; k < planes; ++k) {
                    if ((dst.bytes[k * stride] & keep) != (0x5A & keep)) __builtin_trap();
                }
            }
        }
    }
    if (HalftoneDelete(ctx) != RC_OK) __builtin_trap();
    return 0;
}
