// The black table: the black amount the grid gives for gray input.
#pragma once

struct CmContext;

namespace inkdot {

// grayTable[v] is the last channel of the grid at (v, v, v). Below 255 the
// table keeps one level off the extreme its blackMode forbids: never 255 in
// black mode 0, never 0 otherwise.
void buildGrayTable(CmContext* ctx);

}  // namespace inkdot
