// Fuzz target: the resource index text, parsed and searched through the
// sized call of phase 1 (the text ends at the end of the input).
#include <cstdint>

#include "cm_job.h"
#include "fuzz_input.h"
#include "inkdot/inkdot.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace inkdot::fuzz;
    // The seeds' matching record has the keys of these settings: list-1
    // position 1, list-2 number 1, list-3 position 3, keys 5, 6, 8 and 9.
    static const CmJob job(CmHeader{.flags = 2 << 2, .levels = 3});  // process mode 2, level 3
    CmContext* ctx = nullptr;
    uint32_t next = 0;
    if (CmNew(&job.s1, &job.s2, 0, &next, &ctx) != RC_OK) return 0;
    const ExactBlock text(std::vector<uint8_t>(data, data + size));
    const uint32_t rc = CmSetResourceSized(ctx, text.data(), text.length, &next);
    if (rc != RC_OK && rc != RC_DATA) __builtin_trap();  // the only answers of phase 1 with memory to spare
    if ((rc == RC_OK) != (next != 0)) __builtin_trap();
    CmDelete(ctx);
    return 0;
}
