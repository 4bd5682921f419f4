// Fuzz target: the resource pack reader (the file `inkdot --pack` and the
// driver open), then every entry it lists looked up by its number.
#include <cstdint>
#include <string>

#include "pack/pack.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    inkdot::tools::Pack pack;
    std::string error;
    if (!pack.open(inkdot::tools::Bytes(data, data + size), error)) {
        if (error.empty()) __builtin_trap();  // a refusal always says why
        return 0;
    }
    for (const inkdot::tools::PackEntry& e : pack.entries()) {
        if (pack.find(e.number) == nullptr) __builtin_trap();
    }
    return 0;
}
