// The job settings of rastertoinkdot: the queue's PPD defaults overlaid by the
// job's own options, read into the engine's colour settings and a print
// quality.
#pragma once

#include <cups/cups.h>

#include <string>

#include "inkdot/job.h"

namespace inkdot::cups {

enum class Quality { Draft, Normal, High };
enum class PlaneOrder { Banded, Planar };

struct FilterSettings {
    Quality quality = Quality::Normal;
    PlaneOrder order = PlaneOrder::Banded;
    ColourSettings colour;  // `mono` is decided by each page's colour space
};

// The option names the filter reads (also the PPD's option keywords).
inline constexpr const char* kQualityOption = "InkdotQuality";
inline constexpr const char* kOrderOption = "InkdotOrder";
inline constexpr const char* kBrightnessOption = "InkdotBrightness";
inline constexpr const char* kContrastOption = "InkdotContrast";
inline constexpr const char* kSaturationOption = "InkdotSaturation";
inline constexpr const char* kGammaOption = "InkdotGamma";
// The IPP attribute a client sends for the quality: 3 draft, 4 normal, 5 high.
inline constexpr const char* kIppQualityOption = "print-quality";

// A list of options owned as CUPS owns them (cupsFreeOptions on destruction).
class OptionList {
public:
    OptionList() = default;
    ~OptionList() { cupsFreeOptions(count_, options_); }
    OptionList(const OptionList&) = delete;
    OptionList& operator=(const OptionList&) = delete;

    // Adds "name=value name2=value2 …" as cupsParseOptions reads it; later
    // values replace earlier ones.
    void parse(const char* text) { count_ = cupsParseOptions(text, count_, &options_); }
    void add(const char* name, const char* value) { count_ = cupsAddOption(name, value, count_, &options_); }
    const char* get(const char* name) const { return cupsGetOption(name, count_, options_); }
    int count() const { return count_; }

private:
    int count_ = 0;
    cups_option_t* options_ = nullptr;
};

// Adds the "*DefaultInkdot…: value" lines of a PPD file as options. A file
// that cannot be read adds nothing (the filter's own defaults stand).
void addPpdDefaults(const std::string& ppdPath, OptionList& options);
// The same for PPD text already in memory.
void addPpdDefaultsFromText(const std::string& ppdText, OptionList& options);

// Reads the settings from the options; on a value out of range returns false
// with the reason in `error`.
bool readFilterSettings(const OptionList& options, FilterSettings& out, std::string& error);

}  // namespace inkdot::cups
