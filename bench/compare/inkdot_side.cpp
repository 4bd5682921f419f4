#include "inkdot_side.h"

#include <algorithm>
#include <map>

#include "cm/cm_context.h"
#include "halftone/dispatch.h"
#include "support/colour_table_writer.h"
#include "support/ht_fixture.h"
#include "support/index_text_writer.h"

namespace inkdot::compare {
namespace {

constexpr uint32_t kTableBlock = 100;
// A table id outside the range whose grids get whole-table ink scaling, so
// the node data reaches the CmLut as the table holds it.
constexpr int32_t kTableId = 120;
constexpr uint32_t kMatrixSide = 64;

std::vector<uint8_t> withNul(const std::string& text) { return std::vector<uint8_t>(text.begin(), text.end() + 1); }

}  // namespace

ColourManagement::ColourManagement(uint8_t gridPoints) {
    CmSettings1 s1{};
    CmSettings2 s2{};
    s1.selectB = 1;  // second name "Photo"
    s2.selectA = 3;  // first name "L3"
    s2.inkScaleGate = 2;
    uint32_t next = 0;
    rc_ = CmNew(&s1, &s2, 0, &next, &ctx_);
    if (rc_ != RC_OK) return;

    std::string thirdName = "M";  // the third name list's entry that the instance's process level selects
    thirdName += std::to_string(ctx_->selectC);
    test::IndexTextWriter index;
    index.add(static_cast<int32_t>(kTableBlock), kTableId, "L3", "Photo", 0, 0, thirdName, 0, 0);
    test::ColourTableWriter table;
    table.gridCount[0] = table.gridCount[1] = table.gridCount[2] = gridPoints;
    table.inkParam[0] = 250;  // the ink amounts one-bit halftoning accepts
    table.inkParam[1] = 100;
    std::map<uint32_t, std::vector<uint8_t>> blocks{{0, withNul(index.text())}, {kTableBlock, table.build()}};

    for (int call = 0; call < 8 && next != INKDOT_NO_MORE_BLOCKS; ++call) {
        const auto block = blocks.find(next);
        if (block == blocks.end()) {
            rc_ = RC_DATA;
            return;
        }
        rc_ = CmSetResource(ctx_, block->second.data(), &next);
        if (rc_ != RC_OK) return;
    }
    if (next != INKDOT_NO_MORE_BLOCKS) rc_ = RC_DATA;
}

ColourManagement::~ColourManagement() {
    if (ctx_ != nullptr) CmDelete(ctx_);
}

const CmLut& monoLut() {
    static const test::MonoLut lut([](int v) { return 255 - v; });
    return lut.lut;
}

const CmLut& separationLut() {
    static const test::ColourLut lut(test::evenLevels(17), [](int r, int g, int b) {
        uint8_t node[4];
        const uint8_t rgb[3] = {static_cast<uint8_t>(r), static_cast<uint8_t>(g), static_cast<uint8_t>(b)};
        inkOf(rgb, 1, node);
        return test::ColourLut::Node{node[0], node[1], node[2], node[3]};
    });
    return lut.lut;
}

void inkOf(const uint8_t* rgb, size_t pixels, uint8_t* cmyk) {
    for (size_t i = 0; i < pixels; ++i, rgb += 3, cmyk += 4) {
        const int c = 255 - rgb[0], m = 255 - rgb[1], y = 255 - rgb[2];
        cmyk[0] = static_cast<uint8_t>(c);
        cmyk[1] = static_cast<uint8_t>(m);
        cmyk[2] = static_cast<uint8_t>(y);
        cmyk[3] = static_cast<uint8_t>(std::min(c, std::min(m, y)) / 2);
    }
}

HalftoneJob::HalftoneJob(uint32_t method, uint32_t colourMode, uint32_t width, const CmLut& lut, uint32_t outputBits,
                         bool inkInput)
    : width_(width), colourMode_(colourMode), outputBits_(outputBits) {
    HtSettings s = test::htSettings(method, colourMode, outputBits, width);
    s.inputFormat = colourMode == 0 ? 0 : inkInput ? 4 : 2;  // gray bytes, four ink bytes or three-byte RGB
    pixelBytes_ = s.inputFormat == 0 ? 1 : s.inputFormat == 4 ? 4 : 3;
    test::HtBlocks blocks;
    std::vector<uint16_t> cells(kMatrixSide * kMatrixSide);
    for (uint32_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<uint16_t>((i * 2897 + 11) & 4095);
    blocks.matrix = test::thresholdMatrixBlock(kMatrixSide, kMatrixSide, cells);

    uint32_t model = 0;
    rc_ = HalftoneNew(&s, &lut, 0, &model, &ctx_);
    const test::Bytes* order[] = {&blocks.requestList, &blocks.gridLevels, &blocks.matrix, &blocks.dotSplit};
    uint32_t next = 0;
    for (unsigned phase = 0; phase < (outputBits == 2 ? 4u : 3u); ++phase) {
        if (rc_ != RC_OK) return;
        rc_ = HalftoneSetResource(ctx_, order[phase]->data(), &next);
    }
    if (rc_ == RC_OK && next != INKDOT_NO_MORE_BLOCKS) rc_ = RC_DATA;
}

HalftoneJob::~HalftoneJob() {
    if (ctx_ != nullptr) HalftoneDelete(ctx_);
}

std::string HalftoneJob::kernelName() const {
    return rc_ == RC_OK ? chooseKernel(*ctx_).name : "(not ready)";
}

uint32_t HalftoneJob::run(const uint8_t* image, uint32_t height, uint8_t* planes) const {
    for (uint32_t y = 0; y < height; ++y) {
        const uint32_t rc = Halftone(ctx_, image + static_cast<size_t>(y) * width_ * pixelBytes_,
                                     planes + static_cast<size_t>(y) * planesPerLine() * lineBytes(), lineBytes(), 0,
                                     width_, 0, 0, y, 0, 0);
        if (rc != RC_OK) return rc;
    }
    return RC_OK;
}

}  // namespace inkdot::compare
