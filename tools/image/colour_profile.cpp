#include "image/colour_profile.h"

#include <lcms2.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

namespace inkdot::tools {

// One LittleCMS context per conversion: its error handler writes into this
// conversion's own text, so messages of concurrent conversions never mix.
struct InputConversion::Lcms {
    cmsContext context = nullptr;
    cmsHPROFILE source = nullptr;
    cmsHPROFILE device = nullptr;
    cmsHTRANSFORM transform = nullptr;
    std::string lastError;

    ~Lcms() {
        if (transform != nullptr) cmsDeleteTransform(transform);
        if (device != nullptr) cmsCloseProfile(device);
        if (source != nullptr) cmsCloseProfile(source);
        if (context != nullptr) cmsDeleteContext(context);
    }
};

namespace {

void onLcmsError(cmsContext context, cmsUInt32Number, const char* text) {
    auto* lcms = static_cast<InputConversion::Lcms*>(cmsGetContextUserData(context));
    if (lcms != nullptr && text != nullptr) lcms->lastError = text;
}

cmsUInt32Number lcmsIntent(RenderingIntent intent) {
    switch (intent) {
        case RenderingIntent::Perceptual: return INTENT_PERCEPTUAL;
        case RenderingIntent::Relative: return INTENT_RELATIVE_COLORIMETRIC;
        case RenderingIntent::Saturation: return INTENT_SATURATION;
        case RenderingIntent::Absolute: return INTENT_ABSOLUTE_COLORIMETRIC;
    }
    return INTENT_PERCEPTUAL;
}

// Device links, abstract and named-colour profiles describe no image colours.
bool describesImageColours(cmsProfileClassSignature c) {
    return c == cmsSigInputClass || c == cmsSigDisplayClass || c == cmsSigOutputClass ||
           c == cmsSigColorSpaceClass;
}

std::string profileDescription(cmsHPROFILE profile) {
    char text[256] = {};
    cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", text, sizeof text);
    return text;
}

}  // namespace

bool parseRenderingIntent(const std::string& text, RenderingIntent& out) {
    if (text == "perceptual") out = RenderingIntent::Perceptual;
    else if (text == "relative") out = RenderingIntent::Relative;
    else if (text == "saturation") out = RenderingIntent::Saturation;
    else if (text == "absolute") out = RenderingIntent::Absolute;
    else return false;
    return true;
}

bool readProfileFile(const std::string& path, std::vector<uint8_t>& out, std::string& error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = "cannot open " + path + ": " + std::strerror(errno);
        return false;
    }
    out.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    if (file.bad()) {
        error = "cannot read " + path;
        return false;
    }
    return true;
}

std::unique_ptr<InputConversion> InputConversion::create(std::span<const uint8_t> profile, unsigned channels,
                                                         RenderingIntent intent, const std::string& name,
                                                         std::string& error) {
    std::unique_ptr<InputConversion> conversion(new InputConversion);
    conversion->lcms_ = std::make_unique<Lcms>();
    Lcms& lcms = *conversion->lcms_;
    lcms.context = cmsCreateContext(nullptr, &lcms);
    if (lcms.context == nullptr) {
        error = "cannot start colour management: out of memory";
        return nullptr;
    }
    cmsSetLogErrorHandlerTHR(lcms.context, onLcmsError);
    const auto invalid = [&](const std::string& why) {
        error = name + " is not a usable ICC profile: " + why;
        return nullptr;
    };

    if (profile.empty()) return invalid("it is empty");
    lcms.source = cmsOpenProfileFromMemTHR(lcms.context, profile.data(), static_cast<cmsUInt32Number>(profile.size()));
    if (lcms.source == nullptr) return invalid(lcms.lastError.empty() ? "it cannot be parsed" : lcms.lastError);
    if (!describesImageColours(cmsGetDeviceClass(lcms.source)))
        return invalid("it is a device link, abstract or named-colour profile");
    const cmsColorSpaceSignature space = cmsGetColorSpace(lcms.source);
    if (space != cmsSigRgbData && space != cmsSigGrayData) return invalid("its colour space is neither RGB nor gray");
    if (space == cmsSigGrayData && channels != 1) {
        error = name + " is a gray profile, but the image is RGB";
        return nullptr;
    }
    conversion->description_ = profileDescription(lcms.source);
    conversion->expandGray_ = space == cmsSigRgbData && channels == 1;

    lcms.device = cmsCreate_sRGBProfileTHR(lcms.context);
    if (lcms.device == nullptr) {
        error = "cannot make the device RGB profile: " + lcms.lastError;
        return nullptr;
    }
    lcms.transform = cmsCreateTransformTHR(lcms.context, lcms.source, space == cmsSigGrayData ? TYPE_GRAY_8 : TYPE_RGB_8,
                                           lcms.device, TYPE_RGB_8, lcmsIntent(intent), 0);
    if (lcms.transform == nullptr) return invalid(lcms.lastError.empty() ? "no transform can be built" : lcms.lastError);
    return conversion;
}

InputConversion::~InputConversion() = default;

void InputConversion::convertRow(const uint8_t* in, uint32_t width, uint8_t* out) {
    if (expandGray_) {
        expanded_.resize(size_t{width} * 3);
        for (uint32_t x = 0; x < width; ++x) std::memset(&expanded_[size_t{x} * 3], in[x], 3);
        in = expanded_.data();
    }
    cmsDoTransform(lcms_->transform, in, out, width);
}

}  // namespace inkdot::tools
