// The filter's input stream read through a counting layer, so that when the
// CUPS library finds no next page header the filter can tell why: a clean
// end of the stream, a stream cut inside a header, or a header the library
// refused (an empty page, a line length that does not match its width, or
// one so long that it is stopped before the library allocates for it).
#pragma once

#include <cups/raster.h>

#include <cstdint>
#include <string>

namespace inkdot::cups {

class RasterInput {
public:
    // Headers claiming lines longer than `maxLineBytes` are refused.
    RasterInput(int fd, uint32_t maxLineBytes) : fd_(fd), maxLineBytes_(maxLineBytes) {}
    // A reader of the stream through this layer (close it with cupsRasterClose).
    cups_raster_t* open();

    // Marks the start of a page header read.
    void startHeader();

    enum class NoHeader { End, Truncated, Malformed };
    // After cupsRasterReadHeader2 found no header: why, and for a refused
    // header what is wrong with it when its bytes came through whole.
    NoHeader whyNoHeader(std::string& detail) const;

private:
    static ssize_t read(void* self, unsigned char* buffer, size_t bytes);

    uint32_t lineBytes() const;  // of the header held

    static constexpr size_t kHeaderBytes = sizeof(cups_page_header2_t);

    int fd_;
    uint32_t maxLineBytes_;
    bool swapped_ = false;       // the sync word says the header's numbers are in the other byte order
    uint64_t total_ = 0;         // bytes that arrived
    bool ended_ = false;         // a read found the end of the stream
    bool oversized_ = false;     // a header claimed lines beyond maxLineBytes_
    size_t endRequest_ = 0;      // what the library asked for when it found the end
    size_t headerSize_ = kHeaderBytes;  // of this stream's version
    size_t headerBytes_ = 0;     // bytes that arrived since the header read began
    unsigned char header_[kHeaderBytes] = {};
};

}  // namespace inkdot::cups
