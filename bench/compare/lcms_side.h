// LittleCMS 2 as the peer of inkdot's interpolator: a device link holding
// one colour look-up table with the very node values of a finished CmLut,
// RGB 8-bit in, CMYK 8-bit out.
#pragma once

#include <cstdint>

#include "inkdot/inkdot.h"

namespace inkdot::compare {

class LcmsLink {
public:
    // `optimise` false asks LittleCMS to evaluate its pipeline as given
    // (cmsFLAGS_NOOPTIMIZE); true takes its default path for 8-bit RGB input,
    // with the table resampled at the same number of grid points.
    LcmsLink(const CmLut& lut, bool optimise);
    ~LcmsLink();
    LcmsLink(const LcmsLink&) = delete;
    LcmsLink& operator=(const LcmsLink&) = delete;

    bool ok() const { return transform_ != nullptr; }
    void run(const uint8_t* rgb, uint8_t* cmyk, uint32_t pixels) const;

    // True when the CmLut's grid levels sit where LittleCMS puts its grid
    // points (i * 255 / (n - 1)), so both interpolate the same table.
    static bool sameGrid(const CmLut& lut);

private:
    void* transform_ = nullptr;
};

}  // namespace inkdot::compare
