// PNG through libpng. Palette, low-bit gray and transparency chunks are
// expanded to 8-bit samples with alpha; 16-bit samples stay 16-bit. Rows
// stream one at a time, except for interlaced files, whose passes need the
// whole image and are read at once.
#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "image/image_reader.h"

namespace inkdot::tools {
namespace {

struct PngErrorSink {
    char message[200] = {};
    char iccWarning[200] = {};  // libpng drops a broken iCCP chunk with a warning
};

void onError(png_structp png, png_const_charp text) {
    auto* sink = static_cast<PngErrorSink*>(png_get_error_ptr(png));
    std::snprintf(sink->message, sizeof sink->message, "%s", text);
    png_longjmp(png, 1);
}

// Chunk warnings start with the chunk's name, "iCCP: ...".
void onWarning(png_structp png, png_const_charp text) {
    auto* sink = static_cast<PngErrorSink*>(png_get_error_ptr(png));
    if (std::strncmp(text, "iCCP", 4) == 0 && sink->iccWarning[0] == '\0')
        std::snprintf(sink->iccWarning, sizeof sink->iccWarning, "%s", text);
}

class PngReader final : public ImageReader {
public:
    ~PngReader() override {
        if (png_ != nullptr) png_destroy_read_struct(&png_, &info_, nullptr);
        if (file_ != nullptr) std::fclose(file_);
    }

    bool open(const std::string& path, std::string& error) {
        path_ = path;
        file_ = std::fopen(path.c_str(), "rb");
        if (file_ == nullptr) {
            error = "cannot open " + path;
            return false;
        }
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &sink_, onError, onWarning);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (png_ == nullptr || info_ == nullptr) {
            error = "cannot read " + path + ": out of memory";
            return false;
        }
        if (!readHeader()) {
            error = path + ": " + sink_.message;
            return false;
        }
        return true;
    }

protected:
    bool readSamples(std::vector<uint16_t>& samples, std::string& error) override {
        const uint8_t* row = nullptr;
        if (interlaced_) {
            row = whole_.data() + size_t{nextRow_} * rowBytes_;
        } else {
            rowBuffer_.resize(rowBytes_);
            if (!readOneRow(rowBuffer_.data())) {
                error = path_ + ": " + sink_.message;
                return false;
            }
            row = rowBuffer_.data();
        }
        ++nextRow_;
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = sixteen_ ? static_cast<uint16_t>(row[2 * i] << 8 | row[2 * i + 1]) : row[i];
        return true;
    }

private:
    // The libpng calls sit in small functions without C++ objects, so that the
    // error jump leaves nothing behind.
    bool readHeader() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_init_io(png_, file_);
        png_read_info(png_, info_);
        png_charp profileName = nullptr;
        int compression = 0;
        png_bytep profile = nullptr;
        png_uint_32 profileSize = 0;
        if (png_get_iCCP(png_, info_, &profileName, &compression, &profile, &profileSize) != 0 && profile != nullptr)
            iccProfile_.assign(profile, profile + profileSize);
        else if (sink_.iccWarning[0] != '\0')
            iccProblem_ = sink_.iccWarning;
        png_set_expand(png_);  // palette → RGB, gray below 8 bits → 8, tRNS → alpha
        const int interlace = png_get_interlace_type(png_, info_);
        if (interlace != PNG_INTERLACE_NONE) png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        const png_uint_32 w = png_get_image_width(png_, info_), h = png_get_image_height(png_, info_);
        const int colourType = png_get_color_type(png_, info_);
        const int depth = png_get_bit_depth(png_, info_);
        width_ = w;
        height_ = h;
        sixteen_ = depth == 16;
        layout_.maxValue = sixteen_ ? 65535 : 255;
        layout_.colourChannels = (colourType & PNG_COLOR_MASK_COLOR) ? 3 : 1;
        layout_.alpha = (colourType & PNG_COLOR_MASK_ALPHA) != 0;
        rowBytes_ = png_get_rowbytes(png_, info_);
        interlaced_ = interlace != PNG_INTERLACE_NONE;
        if (interlaced_) {
            whole_.resize(rowBytes_ * h);
            rows_.resize(h);
            for (png_uint_32 y = 0; y < h; ++y) rows_[y] = whole_.data() + size_t{y} * rowBytes_;
            png_read_image(png_, rows_.data());
        }
        return true;
    }

    bool readOneRow(uint8_t* row) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_row(png_, row, nullptr);
        return true;
    }

    std::string path_;
    std::FILE* file_ = nullptr;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    PngErrorSink sink_;
    bool sixteen_ = false;
    bool interlaced_ = false;
    size_t rowBytes_ = 0;
    uint32_t nextRow_ = 0;
    std::vector<uint8_t> rowBuffer_;
    std::vector<uint8_t> whole_;
    std::vector<png_bytep> rows_;
};

}  // namespace

std::unique_ptr<ImageReader> openPng(const std::string& path, std::string& error) {
    auto reader = std::make_unique<PngReader>();
    if (!reader->open(path, error)) return nullptr;
    return reader;
}

}  // namespace inkdot::tools
