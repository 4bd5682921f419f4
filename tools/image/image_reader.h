// Reading raster images row by row: PNG, PNM (P5/P6) and TIFF, 8 or 16 bits,
// gray or RGB, with or without alpha. Every reader hands out 8-bit rows of
// gray or RGB, alpha composited over white, so a page streams through in
// bands without being held whole.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace inkdot::tools {

// How a reader's raw samples are laid out before conversion.
struct SampleLayout {
    unsigned colourChannels = 1;  // 1 gray, 3 RGB
    bool alpha = false;           // one more sample after the colour ones
    bool premultiplied = false;   // colour samples already multiplied by alpha
    bool invertGray = false;      // 0 means white (TIFF min-is-white)
    uint32_t maxValue = 255;      // full scale of a sample
};

// Converts one row of samples (host-order integers) to 8-bit gray or RGB over white.
void convertRow(const SampleLayout& layout, const uint16_t* samples, uint32_t width, uint8_t* out);

// Turns a row of 8-bit gray or RGB into what a job reads: gray for mono
// (luma weights 299/587/114 in thousandths, rounded), RGB for colour.
void toJobInput(const uint8_t* row, unsigned channels, uint32_t width, bool mono, uint8_t* out);

// The largest image the readers take, in pixels a side: far beyond any page
// the tools print (an A2 page at 1440 dpi is 34 000 pixels across), small
// enough that a row of 16-bit RGBA samples stays a few megabytes. A header
// claiming more is refused before anything is allocated for it.
inline constexpr uint32_t kMaxImageSide = 1000000;
// Interlaced PNG images are read whole (their passes cover the whole image);
// one needing more than this many bytes is refused.
inline constexpr uint64_t kMaxInterlacedBytes = uint64_t{256} << 20;

// False with a message naming `path` and the limit when a claimed size is
// empty or beyond kMaxImageSide.
bool checkImageSize(const std::string& path, uint64_t width, uint64_t height, std::string& error);

class ImageReader {
public:
    virtual ~ImageReader() = default;
    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }
    // 1 (gray) or 3 (RGB): the bytes per pixel of the rows readRow hands out.
    unsigned channels() const { return layout_.colourChannels; }
    // The next row, width() × channels() bytes. False with a reason on failure.
    bool readRow(uint8_t* out, std::string& error);
    // The ICC profile the file carries (PNG iCCP, TIFF ICC tag); empty if none.
    const std::vector<uint8_t>& iccProfile() const { return iccProfile_; }
    // Why a profile the file carries could not be taken out of it (libpng
    // drops a broken iCCP chunk); empty when there is none or it was read.
    const std::string& iccProblem() const { return iccProblem_; }

protected:
    // Fills `samples` with width × (channels + alpha) host-order samples.
    virtual bool readSamples(std::vector<uint16_t>& samples, std::string& error) = 0;

    uint32_t width_ = 0, height_ = 0;
    SampleLayout layout_;
    std::vector<uint8_t> iccProfile_;
    std::string iccProblem_;

private:
    std::vector<uint16_t> samples_;
    uint32_t rowsRead_ = 0;
};

// Opens an image by its content (not its name). Null with a reason on failure.
std::unique_ptr<ImageReader> openImage(const std::string& path, std::string& error);

std::unique_ptr<ImageReader> openPng(const std::string& path, std::string& error);
std::unique_ptr<ImageReader> openPnm(const std::string& path, std::string& error);
std::unique_ptr<ImageReader> openTiff(const std::string& path, std::string& error);

}  // namespace inkdot::tools
