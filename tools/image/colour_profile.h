// Colour-managed input: an image's ICC profile (embedded or given) and the
// conversion of its rows into the engine's device RGB with LittleCMS 2.
//
// The default pack's colour tables were built over sRGB (resources/README.md:
// device RGB is sRGB-like, 255 = paper white), so device RGB is taken as
// sRGB here. Untagged images are taken as sRGB already and pass unchanged.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace inkdot::tools {

enum class RenderingIntent { Perceptual, Relative, Saturation, Absolute };

// "perceptual", "relative", "saturation" or "absolute".
bool parseRenderingIntent(const std::string& text, RenderingIntent& out);

// Reads a whole profile file. False with a reason when it cannot be read.
bool readProfileFile(const std::string& path, std::vector<uint8_t>& out, std::string& error);

// Converts rows of 8-bit gray or RGB in a source profile into 8-bit device RGB.
class InputConversion {
public:
    // `profile` is the ICC profile's bytes, `channels` the image's (1 gray, 3
    // RGB), `name` says where the profile came from in messages. A gray image
    // with an RGB profile is converted as R = G = B; an RGB image with a gray
    // profile is refused. Null with a reason on failure.
    static std::unique_ptr<InputConversion> create(std::span<const uint8_t> profile, unsigned channels,
                                                   RenderingIntent intent, const std::string& name,
                                                   std::string& error);
    ~InputConversion();
    InputConversion(const InputConversion&) = delete;
    InputConversion& operator=(const InputConversion&) = delete;

    // `width` pixels of the image's channels in, width × 3 bytes of device RGB out.
    void convertRow(const uint8_t* in, uint32_t width, uint8_t* out);

    // The profile's description, as LittleCMS reads it (may be empty).
    const std::string& description() const { return description_; }

    struct Lcms;  // the LittleCMS context, its error text and the transform

private:
    InputConversion() = default;

    std::unique_ptr<Lcms> lcms_;
    bool expandGray_ = false;    // gray pixels fed to an RGB profile as R = G = B
    std::vector<uint8_t> expanded_;
    std::string description_;
};

}  // namespace inkdot::tools
