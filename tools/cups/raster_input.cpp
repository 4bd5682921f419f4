#include "cups/raster_input.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace inkdot::cups {

namespace {

uint32_t field(const unsigned char* header, size_t offset, bool swapped) {
    uint32_t v = 0;
    std::memcpy(&v, header + offset, sizeof v);
    return swapped ? __builtin_bswap32(v) : v;
}

}  // namespace

cups_raster_t* RasterInput::open() { return cupsRasterOpenIO(read, this, CUPS_RASTER_READ); }

void RasterInput::startHeader() {
    headerBytes_ = 0;
    ended_ = false;
}

ssize_t RasterInput::read(void* self, unsigned char* buffer, size_t bytes) {
    auto* in = static_cast<RasterInput*>(self);
    ssize_t got;
    do got = ::read(in->fd_, buffer, bytes);
    while (got < 0 && errno == EINTR);
    if (got <= 0) {
        in->ended_ = true;
        in->endRequest_ = bytes;
        return got;
    }
    size_t skip = 0;
    if (in->total_ == 0 && got >= 4) {
        // The sync word, written in the writer's byte order: read as a native
        // number it is a known word, or one of them reversed.
        uint32_t sync = 0;
        std::memcpy(&sync, buffer, 4);
        in->swapped_ = sync == CUPS_RASTER_REVSYNC || sync == CUPS_RASTER_REVSYNCv1 || sync == CUPS_RASTER_REVSYNCv2;
        // Version 1 streams carry the shorter header of the first raster format.
        if (sync == CUPS_RASTER_SYNCv1 || sync == CUPS_RASTER_REVSYNCv1) in->headerSize_ = sizeof(cups_page_header_t);
        skip = 4;
    }
    in->total_ += static_cast<uint64_t>(got);
    // Header bytes that come straight through (an uncompressed stream reads
    // each header on its own) are kept to say what is wrong with them.
    const size_t body = static_cast<size_t>(got) - skip;
    const size_t at = std::min(in->headerBytes_, kHeaderBytes);
    std::memcpy(in->header_ + at, buffer + skip, std::min(body, kHeaderBytes - at));
    in->headerBytes_ += body;
    if (in->headerBytes_ >= in->headerSize_ && in->headerBytes_ - body < in->headerSize_ &&
        in->lineBytes() > in->maxLineBytes_) {
        // The CUPS library sizes a line buffer from the header as soon as it
        // has read it: a header claiming gigabytes stops here, before that.
        in->oversized_ = true;
        return -1;
    }
    return got;
}

uint32_t RasterInput::lineBytes() const {
    return field(header_, offsetof(cups_page_header2_t, cupsBytesPerLine), swapped_);
}

RasterInput::NoHeader RasterInput::whyNoHeader(std::string& detail) const {
    detail.clear();
    if (ended_) {
        // A clean end finds nothing where a header would start: the library
        // asks for a whole header and nothing arrives. Part of one arrived,
        // or sat in the library's buffer, when it asks for less.
        return headerBytes_ == 0 && endRequest_ >= headerSize_ ? NoHeader::End : NoHeader::Truncated;
    }
    if (oversized_) {
        detail = "lines of " + std::to_string(lineBytes()) + " bytes, more than the " +
                 std::to_string(maxLineBytes_) + " the filter reads";
        return NoHeader::Malformed;
    }
    if (headerBytes_ == headerSize_) {
        const auto at = [this](size_t offset) { return field(header_, offset, swapped_); };
        const uint32_t width = at(offsetof(cups_page_header2_t, cupsWidth));
        const uint32_t height = at(offsetof(cups_page_header2_t, cupsHeight));
        const uint32_t bitsPerPixel = at(offsetof(cups_page_header2_t, cupsBitsPerPixel));
        const uint32_t bytesPerLine = at(offsetof(cups_page_header2_t, cupsBytesPerLine));
        if (width == 0 || height == 0)
            detail = "an empty page of " + std::to_string(width) + " x " + std::to_string(height) + " pixels";
        else if (uint64_t{bytesPerLine} != (uint64_t{width} * bitsPerPixel + 7) / 8)
            detail = "lines of " + std::to_string(bytesPerLine) + " bytes for " + std::to_string(width) +
                     " pixels of " + std::to_string(bitsPerPixel) + " bits";
    }
    if (detail.empty()) detail = "a page layout the CUPS library refuses";
    return NoHeader::Malformed;
}

}  // namespace inkdot::cups
