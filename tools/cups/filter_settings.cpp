#include "cups/filter_settings.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace inkdot::cups {

namespace {

constexpr const char* kOurOptions[] = {kQualityOption,    kOrderOption,      kBrightnessOption,
                                       kContrastOption,   kSaturationOption, kGammaOption};

// A whole decimal integer in [lo, hi]; nothing else on the value.
bool parseWhole(const char* text, long lo, long hi, long& out) {
    if (text == nullptr || *text == '\0') return false;
    char* end = nullptr;
    const long v = std::strtol(text, &end, 10);
    if (*end != '\0' || v < lo || v > hi) return false;
    out = v;
    return true;
}

// Gamma in hundredths from "1.5", "1.50", "2" or "150" (already hundredths):
// decimal digits only, so no rounding is involved.
bool parseGamma(const char* text, int& out) {
    if (text == nullptr || *text == '\0') return false;
    long whole = 0;
    long hundredths = 0;
    const char* p = text;
    if (*p < '0' || *p > '9') return false;
    while (*p >= '0' && *p <= '9' && whole < 1000) whole = whole * 10 + (*p++ - '0');
    if (*p == '.') {
        ++p;
        for (int place = 10; place >= 1; place /= 10) {
            if (*p < '0' || *p > '9') break;
            hundredths += place * (*p++ - '0');
        }
    } else if (*p == '\0' && whole >= 100) {
        // A plain number of 100 or more is taken as hundredths already.
        out = static_cast<int>(whole);
        return whole <= 300;
    }
    if (*p != '\0') return false;
    const long value = whole * 100 + hundredths;
    if (value < 100 || value > 300) return false;
    out = static_cast<int>(value);
    return true;
}

bool readAdjustment(const OptionList& options, const char* name, int& out, std::string& error) {
    const char* text = options.get(name);
    if (text == nullptr) return true;
    long v = 0;
    if (!parseWhole(text, -50, 50, v)) {
        error = std::string(name) + " must be a whole number from -50 to 50, not '" + text + "'";
        return false;
    }
    out = static_cast<int>(v);
    return true;
}

bool readQuality(const OptionList& options, Quality& out, std::string& error) {
    // The PPD option is the more specific one and wins over the IPP attribute.
    if (const char* text = options.get(kQualityOption)) {
        if (!strcasecmp(text, "Draft")) out = Quality::Draft;
        else if (!strcasecmp(text, "Normal")) out = Quality::Normal;
        else if (!strcasecmp(text, "High")) out = Quality::High;
        else {
            error = std::string(kQualityOption) + " must be Draft, Normal or High, not '" + text + "'";
            return false;
        }
        return true;
    }
    if (const char* text = options.get(kIppQualityOption)) {
        if (!strcmp(text, "3") || !strcasecmp(text, "draft")) out = Quality::Draft;
        else if (!strcmp(text, "4") || !strcasecmp(text, "normal")) out = Quality::Normal;
        else if (!strcmp(text, "5") || !strcasecmp(text, "high")) out = Quality::High;
        else {
            error = std::string(kIppQualityOption) + " must be 3, 4 or 5, not '" + text + "'";
            return false;
        }
    }
    return true;
}

}  // namespace

void addPpdDefaultsFromText(const std::string& ppdText, OptionList& options) {
    std::istringstream lines(ppdText);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.rfind("*Default", 0) != 0) continue;
        const size_t colon = line.find(':');
        if (colon == std::string::npos) continue;
        const std::string name = line.substr(8, colon - 8);
        bool ours = false;
        for (const char* o : kOurOptions) ours = ours || name == o;
        if (!ours) continue;
        // The value runs from behind the colon's blanks to the end of the line.
        size_t start = colon + 1;
        while (start < line.size() && (line[start] == ' ' || line[start] == '\t')) ++start;
        size_t end = line.size();
        while (end > start && (line[end - 1] == '\r' || line[end - 1] == ' ' || line[end - 1] == '\t')) --end;
        if (end > start) options.add(name.c_str(), line.substr(start, end - start).c_str());
    }
}

void addPpdDefaults(const std::string& ppdPath, OptionList& options) {
    if (ppdPath.empty()) return;
    std::ifstream file(ppdPath, std::ios::binary);
    if (!file) return;
    std::ostringstream text;
    text << file.rdbuf();
    addPpdDefaultsFromText(text.str(), options);
}

bool readFilterSettings(const OptionList& options, FilterSettings& out, std::string& error) {
    FilterSettings s;
    if (!readQuality(options, s.quality, error)) return false;
    if (const char* text = options.get(kOrderOption)) {
        if (!strcasecmp(text, "Banded")) s.order = PlaneOrder::Banded;
        else if (!strcasecmp(text, "Planar")) s.order = PlaneOrder::Planar;
        else {
            error = std::string(kOrderOption) + " must be Banded or Planar, not '" + text + "'";
            return false;
        }
    }
    if (!readAdjustment(options, kBrightnessOption, s.colour.brightness, error) ||
        !readAdjustment(options, kContrastOption, s.colour.contrast, error) ||
        !readAdjustment(options, kSaturationOption, s.colour.saturation, error))
        return false;
    if (const char* text = options.get(kGammaOption); text != nullptr && !parseGamma(text, s.colour.gamma)) {
        error = std::string(kGammaOption) + " must be from 1.00 to 3.00, not '" + text + "'";
        return false;
    }
    out = s;
    return true;
}

}  // namespace inkdot::cups
