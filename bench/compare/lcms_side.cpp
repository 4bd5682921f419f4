#include "lcms_side.h"

#include <lcms2.h>

#include <vector>

namespace inkdot::compare {

LcmsLink::LcmsLink(const CmLut& lut, bool optimise) {
    const uint32_t n = lut.gridCount[0];
    const uint32_t nodes = n * n * n;
    // Same node order as lutData (first axis slowest); 8-bit values widened
    // to 16 bits by 257 so that 255 becomes 65535.
    std::vector<cmsUInt16Number> table(static_cast<size_t>(nodes) * 4);
    for (uint32_t i = 0; i < nodes * 4; ++i) table[i] = static_cast<cmsUInt16Number>(lut.lutData[i] * 257);

    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, 4);
    cmsStage* clut = cmsStageAllocCLut16bit(nullptr, n, 3, 4, table.data());
    cmsHPROFILE link = cmsCreateProfilePlaceholder(nullptr);
    if (pipeline != nullptr && clut != nullptr && link != nullptr &&
        cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, clut)) {
        clut = nullptr;  // owned by the pipeline now
        cmsSetProfileVersion(link, 4.3);
        cmsSetDeviceClass(link, cmsSigLinkClass);
        cmsSetColorSpace(link, cmsSigRgbData);
        cmsSetPCS(link, cmsSigCmykData);
        if (cmsWriteTag(link, cmsSigAToB0Tag, pipeline)) {
            const cmsUInt32Number flags = optimise ? cmsFLAGS_GRIDPOINTS(n) : cmsFLAGS_NOOPTIMIZE;
            transform_ = cmsCreateTransform(link, TYPE_RGB_8, nullptr, TYPE_CMYK_8, INTENT_PERCEPTUAL, flags);
        }
    }
    if (clut != nullptr) cmsStageFree(clut);
    if (pipeline != nullptr) cmsPipelineFree(pipeline);
    if (link != nullptr) cmsCloseProfile(link);
}

LcmsLink::~LcmsLink() {
    if (transform_ != nullptr) cmsDeleteTransform(static_cast<cmsHTRANSFORM>(transform_));
}

void LcmsLink::run(const uint8_t* rgb, uint8_t* cmyk, uint32_t pixels) const {
    cmsDoTransform(static_cast<cmsHTRANSFORM>(transform_), rgb, cmyk, pixels);
}

bool LcmsLink::sameGrid(const CmLut& lut) {
    const uint32_t n = lut.gridCount[0];
    for (uint32_t a = 0; a < 3; ++a) {
        if (lut.gridCount[a] != n) return false;
        for (uint32_t i = 0; i < n; ++i)
            if (lut.grid[a][i] * (n - 1) != i * 255) return false;
    }
    return true;
}

}  // namespace inkdot::compare
