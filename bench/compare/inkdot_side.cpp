#include "inkdot_side.h"

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

HalftoneJob::HalftoneJob(uint32_t method, uint32_t colourMode, uint32_t width, const CmLut& lut)
    : width_(width), colourMode_(colourMode) {
    HtSettings s = test::htSettings(method, colourMode, 1, width);
    s.inputFormat = colourMode == 0 ? 0 : 2;  // gray bytes or three-byte RGB
    test::HtBlocks blocks;
    std::vector<uint16_t> cells(kMatrixSide * kMatrixSide);
    for (uint32_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<uint16_t>((i * 2897 + 11) & 4095);
    blocks.matrix = test::thresholdMatrixBlock(kMatrixSide, kMatrixSide, cells);

    uint32_t model = 0;
    rc_ = HalftoneNew(&s, &lut, 0, &model, &ctx_);
    const test::Bytes* order[] = {&blocks.requestList, &blocks.gridLevels, &blocks.matrix};
    uint32_t next = 0;
    for (const test::Bytes* block : order) {
        if (rc_ != RC_OK) return;
        rc_ = HalftoneSetResource(ctx_, block->data(), &next);
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
    const uint32_t pixelBytes = colourMode_ == 0 ? 1 : 3;
    for (uint32_t y = 0; y < height; ++y) {
        const uint32_t rc = Halftone(ctx_, image + static_cast<size_t>(y) * width_ * pixelBytes,
                                     planes + static_cast<size_t>(y) * planesPerLine() * lineBytes(), lineBytes(), 0,
                                     width_, 0, 0, y, 0, 0);
        if (rc != RC_OK) return rc;
    }
    return RC_OK;
}

}  // namespace inkdot::compare
