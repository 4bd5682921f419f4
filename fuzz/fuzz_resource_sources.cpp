// Fuzz target: the resource compiler's sources. The input is a pack
// description (pack.txt); an index line may name "idx.txt", which reads as a
// small index text, and any other file is missing. A description either
// fails with a "pack.txt:LINE: reason" message or gives blocks that make a
// pack which reads back.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "pack/pack.h"
#include "rescomp/resource_compiler.h"

namespace {

constexpr size_t kMaxInput = 4096;
// The void-and-cluster search is quadratic in a matrix's cells: large
// matrices are right but slow (one of the default 64 x 64 takes most of a
// second here) and would use up the fuzzing time. A description is skipped
// unless every matrix line gives both sides, at most 16 each, and its
// matrices hold at most 1024 cells together.
constexpr long kDefaultSide = 64;
constexpr long kMaxMatrixSide = 16;
constexpr long kMaxMatrixCells = 1024;

// The largest value the line gives `key` (a token of its own: " width=",
// not "cell-width="), or the default side where it gives none.
long side(std::string_view line, std::string_view key) {
    long largest = -1;
    for (size_t at = line.find(key); at != std::string_view::npos; at = line.find(key, at + 1))
        largest = std::max(largest, std::strtol(std::string(line.substr(at + key.size(), 8)).c_str(), nullptr, 10));
    return largest < 0 ? kDefaultSide : largest;
}

bool asksForLargeMatrices(std::string_view text) {
    long cells = 0;
    for (size_t start = 0, end; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const std::string_view line = text.substr(start, end - start);
        if (line.find("matrix") == std::string_view::npos) continue;
        const long width = side(line, " width="), height = side(line, " height=");
        if (width > kMaxMatrixSide || height > kMaxMatrixSide) return true;
        cells += width * height;
    }
    return cells > kMaxMatrixCells;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace inkdot::tools;
    if (size > kMaxInput) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (asksForLargeMatrices(text)) return 0;
    const SourceReader read = [](const std::string& name, Bytes& out, std::string& error) {
        if (name != "idx.txt") {
            error = "cannot open " + name;
            return false;
        }
        const std::string index = "//3\nheading\n100 101 Plain R720x720 0 0 Std 0 0\n/\nAny Plain\n10 R720x720\nStd\n0\n";
        out.assign(index.begin(), index.end());
        return true;
    };
    BlockMap blocks;
    std::string error;
    if (!compileResourceText(text, "pack.txt", read, blocks, error)) {
        if (error.rfind("pack.txt:", 0) != 0) __builtin_trap();  // every failure names the line
        return 0;
    }
    if (!error.empty() || blocks.empty()) __builtin_trap();
    Pack pack;
    if (!pack.open(writePack(blocks), error) || pack.entries().size() != blocks.size()) __builtin_trap();
    return 0;
}
