// Fuzz target: the resource index text, parsed and searched through the
// sized call of phase 1 (the text ends at the end of the input).
#include <cstdint>

#include "fuzz_input.h"
#include "inkdot/inkdot.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace inkdot::fuzz;
    // Keys of the seeds' matching record: list-1 position 1, list-2 number 1,
    // list-3 position 3, keys 5, 6, 8 and 9.
    CmSettings1 s1{};
    CmSettings2 s2{};
    s1.selectF = 8;
    s1.selectB = 1;
    s1.processMode = 2;
    s1.processLevel = 3;
    s2.selectA = 1;
    s2.pixelFormat = 1;
    s2.selectD = 5;
    s2.selectE = 6;
    s2.selectG = 9;
    CmContext* ctx = nullptr;
    uint32_t next = 0;
    if (CmNew(&s1, &s2, 0, &next, &ctx) != RC_OK) return 0;
    const ExactBlock text(std::vector<uint8_t>(data, data + size));
    const uint32_t rc = CmSetResourceSized(ctx, text.data(), text.length, &next);
    if (rc != RC_OK && rc != RC_DATA) __builtin_trap();  // the only answers of phase 1 with memory to spare
    if ((rc == RC_OK) != (next != 0)) __builtin_trap();
    CmDelete(ctx);
    return 0;
}
