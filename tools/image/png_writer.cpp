#include "image/png_writer.h"

#include <csetjmp>
#include <cstdio>

#include <zlib.h>

namespace inkdot::tools {
namespace {

void onError(png_structp png, png_const_charp text) {
    std::snprintf(static_cast<char*>(png_get_error_ptr(png)), 200, "%s", text);
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {}

// The libpng calls sit in functions without C++ objects, so that the error
// jump leaves nothing behind.
bool startImage(png_structp png, png_infop info, std::FILE* f, uint32_t w, uint32_t h, unsigned channels) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, f);
    png_set_IHDR(png, info, w, h, 8, channels == 3 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    // Written for speed: one row filter (each byte less its left neighbour)
    // and run-length matching keep a smooth picture within a few percent of
    // the default filter search and compression, at a fraction of the time.
    png_set_filter(png, 0, PNG_FILTER_SUB);
    png_set_compression_level(png, 1);
    png_set_compression_strategy(png, Z_RLE);
    png_write_info(png, info);
    return true;
}

bool putRow(png_structp png, const uint8_t* row) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_write_row(png, row);
    return true;
}

bool endImage(png_structp png, png_infop info) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_write_end(png, info);
    return true;
}

}  // namespace

PngWriter::~PngWriter() {
    if (png_ != nullptr) png_destroy_write_struct(&png_, &info_);
}

bool PngWriter::open(const std::string& path, uint32_t width, uint32_t height, unsigned channels,
                     std::string& error) {
    if (!file_.open(path, error)) return false;
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, message_, onError, onWarning);
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (png_ == nullptr || info_ == nullptr || !startImage(png_, info_, file_.stream(), width, height, channels)) {
        error = "cannot write " + path + ": " + message_;
        return false;
    }
    return true;
}

bool PngWriter::writeRow(const uint8_t* row, std::string& error) {
    if (!putRow(png_, row)) {
        error = "cannot write " + file_.path() + ": " + message_;
        return false;
    }
    return true;
}

bool PngWriter::finish(std::string& error) {
    if (!endImage(png_, info_)) {
        error = "cannot write " + file_.path() + ": " + message_;
        return false;
    }
    png_destroy_write_struct(&png_, &info_);
    png_ = nullptr;
    return file_.commit(error);
}

}  // namespace inkdot::tools
