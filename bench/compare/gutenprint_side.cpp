#include "gutenprint_side.h"

// gutenprint.h first: the other two use its types.
#include <gutenprint/gutenprint.h>
#include <gutenprint/channel.h>
#include <gutenprint/dither.h>

#include <algorithm>

#include "timing.h"

namespace inkdot::compare {
namespace {

// The library's channel numbers: black first (STP_ECOLOR_K), then C, M, Y.
constexpr unsigned kChannels = 4;
constexpr int kCmykToChannel[kChannels] = {STP_ECOLOR_C, STP_ECOLOR_M, STP_ECOLOR_Y, STP_ECOLOR_K};
constexpr int kDpi = 720;

// The image the dither asks for its size; it never reads rows here.
struct ImageSize {
    int width, height;
};
int imageWidth(stp_image_t* image) { return static_cast<ImageSize*>(image->rep)->width; }
int imageHeight(stp_image_t* image) { return static_cast<ImageSize*>(image->rep)->height; }
void imageNothing(stp_image_t*) {}

bool offers(const stp_vars_t* vars, const std::string& algorithm) {
    stp_parameter_t description;
    stp_describe_parameter(vars, "DitherAlgorithm", &description);
    bool found = false;
    if (description.p_type == STP_PARAMETER_TYPE_STRING_LIST && description.bounds.str != nullptr) {
        for (size_t i = 0; i < stp_string_list_count(description.bounds.str); ++i)
            found = found || algorithm == stp_string_list_param(description.bounds.str, i)->name;
    }
    stp_parameter_description_destroy(&description);
    return found;
}

}  // namespace

bool gutenprintStarted() {
    static const bool started = stp_init() == 0;
    return started;
}

GutenprintDither::GutenprintDither(const std::string& algorithm, unsigned bits, uint32_t width, uint32_t height)
    : bits_(bits), width_(width), height_(height) {
    if (!gutenprintStarted()) return;
    stp_vars_t* vars = stp_vars_create();
    if (!offers(vars, algorithm)) {
        stp_vars_destroy(vars);
        return;
    }
    stp_set_string_parameter(vars, "DitherAlgorithm", algorithm.c_str());
    auto* size = new ImageSize{static_cast<int>(width), static_cast<int>(height)};
    auto* image = new stp_image_t{};
    image->init = imageNothing;
    image->reset = imageNothing;
    image->conclude = imageNothing;
    image->width = imageWidth;
    image->height = imageHeight;
    image->rep = size;
    for (unsigned c = 0; c < kChannels; ++c) stp_channel_add(vars, c, 0, 1.0);
    stp_channel_initialize(vars, image, kChannels);
    stp_dither_init(vars, image, static_cast<int>(width), kDpi, kDpi);
    // Output: one line of `bits` bit planes a channel, with room to spare.
    channels_.assign(kChannels, std::vector<uint8_t>((width + 7) / 8 * bits + 64));
    for (unsigned c = 0; c < kChannels; ++c) stp_dither_add_channel(vars, channels_[c].data(), c, 0);
    // One dot size, or small, medium and large dots covering 35, 65 and 100 %
    // of a cell like inkdot's two-bit codes; full density, black darkest.
    static const double kOneSize[] = {1.0};
    static const double kThreeSizes[] = {0.35, 0.65, 1.0};
    for (unsigned c = 0; c < kChannels; ++c)
        stp_dither_set_inks_simple(vars, static_cast<int>(c), bits == 1 ? 1 : 3, bits == 1 ? kOneSize : kThreeSizes,
                                   1.0, c == STP_ECOLOR_K ? 1.0 : 0.5);
    kcmy_.resize(size_t{width} * kChannels);
    vars_ = vars;
    image_ = image;
}

GutenprintDither::~GutenprintDither() {
    if (vars_ != nullptr) stp_vars_destroy(static_cast<stp_vars_t*>(vars_));
    if (image_ != nullptr) {
        auto* image = static_cast<stp_image_t*>(image_);
        delete static_cast<ImageSize*>(image->rep);
        delete image;
    }
}

double GutenprintDither::timedRun(const std::vector<uint8_t>& cmyk) {
    if (vars_ == nullptr || cmyk.size() != size_t{width_} * height_ * kChannels) return -1;
    auto* vars = static_cast<stp_vars_t*>(vars_);
    const size_t lineBytes = (width_ + 7) / 8 * bits_;
    size_t setBits = 0;
    double seconds = 0;
    for (uint32_t y = 0; y < height_; ++y) {
        // The library reads 16-bit amounts in its own channel order; the
        // rearranging is the caller's and is not timed.
        const uint8_t* pixel = cmyk.data() + size_t{y} * width_ * kChannels;
        for (uint32_t x = 0; x < width_; ++x, pixel += kChannels)
            for (unsigned i = 0; i < kChannels; ++i)
                kcmy_[size_t{x} * kChannels + kCmykToChannel[i]] = static_cast<uint16_t>(pixel[i] * 257);
        for (auto& channel : channels_) std::fill(channel.begin(), channel.end(), 0);
        const double start = now();
        stp_dither_internal(vars, static_cast<int>(y), kcmy_.data(), 0, 0, nullptr);
        seconds += now() - start;
        for (const auto& channel : channels_)
            for (size_t i = 0; i < lineBytes; ++i) setBits += static_cast<size_t>(__builtin_popcount(channel[i]));
    }
    bitShare_ = static_cast<double>(setBits) / (8.0 * lineBytes * kChannels * height_);
    return seconds;
}

}  // namespace inkdot::compare
