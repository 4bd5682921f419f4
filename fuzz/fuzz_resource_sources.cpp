// Fuzz target: the resource compiler's sources. The input is a pack
// description (pack.txt); an index line may name "idx.txt", which reads as a
// small index text, and any other file is missing. A description either
// fails with a "pack.txt:LINE: reason" message or gives blocks that make a
// pack which reads back.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "pack/pack.h"
#include "rescomp/resource_compiler.h"

namespace {

constexpr size_t kMaxInput = 4096;
// The void-and-cluster search is quadratic in the cells: large matrices are
// right but slow, and would use up the fuzzing time. Sides above this are skipped.
constexpr long kMaxMatrixSide = 64;

bool asksForLargeMatrix(std::string_view text) {
    for (std::string_view key : {"width=", "height="}) {
        for (size_t at = text.find(key); at != std::string_view::npos; at = text.find(key, at + 1)) {
            const std::string digits(text.substr(at + key.size(), 8));
            if (std::strtol(digits.c_str(), nullptr, 10) > kMaxMatrixSide) return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace inkdot::tools;
    if (size > kMaxInput) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (asksForLargeMatrix(text)) return 0;
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
