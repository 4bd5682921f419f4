#include "report/printed_patch.h"

namespace inkdot::tools {

bool printFlatPatches(const ColourSettings& colour, const HalftoneSetup& setup, const BlockSource& pack,
                      std::span<const Rgb> colours, const PatchLayout& layout, std::vector<PrintedPatch>& out,
                      std::string& error) {
    HalftoneSetup jobSetup = setup;
    jobSetup.inputWidth = layout.width;
    std::unique_ptr<Job> job = Job::open(colour, jobSetup, pack, error);
    if (!job) return false;
    const unsigned planes = job->planeCount();
    const size_t stride = job->planeStride();
    std::vector<uint8_t> input(size_t{layout.width} * job->inputBytesPerPixel());
    std::vector<uint8_t> scratch(planes * stride);
    out.clear();
    for (const Rgb& c : colours) {
        for (uint32_t x = 0; x < layout.width; ++x) {
            if (colour.mono) {
                input[x] = c.r;
            } else {
                input[size_t{x} * 3] = c.r;
                input[size_t{x} * 3 + 1] = c.g;
                input[size_t{x} * 3 + 2] = c.b;
            }
        }
        PrintedPatch patch;
        patch.width = job->outputWidth();
        patch.height = layout.height;
        patch.planes = planes;
        patch.bits = job->outputBits();
        patch.stride = stride;
        patch.data.resize(size_t{layout.height} * planes * stride);
        for (uint32_t y = 0; y < layout.runIn; ++y)
            if (!job->halftoneLine(input.data(), scratch.data(), error)) return false;
        for (uint32_t y = 0; y < layout.height; ++y)
            if (!job->halftoneLine(input.data(), &patch.data[size_t{y} * planes * stride], error)) return false;
        out.push_back(std::move(patch));
    }
    return true;
}

DotCounts countPlane(const PrintedPatch& patch, unsigned plane) {
    DotCounts counts;
    for (uint32_t y = 0; y < patch.height; ++y) countDots(patch.line(plane, y), 0, patch.width, patch.bits, counts);
    return counts;
}

void addPlaneWindows(const PrintedPatch& patch, unsigned plane, const DotAmounts& amounts,
                     SpectrumAccumulator& spectrum) {
    const uint32_t size = spectrum.size();
    std::vector<double> window(size_t{size} * size);
    for (uint32_t top = 0; top + size <= patch.height; top += size) {
        for (uint32_t left = 0; left + size <= patch.width; left += size) {
            for (uint32_t y = 0; y < size; ++y) {
                const uint8_t* line = patch.line(plane, top + y);
                for (uint32_t x = 0; x < size; ++x)
                    window[size_t{y} * size + x] = dotAmount(dotCode(line, left + x, patch.bits), patch.bits, amounts);
            }
            spectrum.add(window);
        }
    }
}

}  // namespace inkdot::tools
