// Choosing the index record that matches an instance's keys.
#pragma once

#include <cstdint>

struct CmContext;

namespace inkdot {

// Parses the index text in a scratch area from the memory service and walks
// its records; every record matching all seven keys sets the instance's
// matchBlockNo / matchTableId (the last one wins). Result: the block number
// of the last matching record; 0 when none matched (or the text has no
// records); -1 when the scratch area could not be obtained.
int32_t searchIndex(CmContext* ctx, const uint8_t* text);

}  // namespace inkdot
