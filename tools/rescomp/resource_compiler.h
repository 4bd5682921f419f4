// The resource compiler: reads the pack description (resources/pack.txt) and
// the files it names, and generates every block.
//
// pack.txt holds one block per line: its number, its kind and key=value
// settings; '#' starts a comment. Kinds: index (file=), colour-table,
// correction-tables, routing, base-weights, request-list, grid-levels,
// matrix, dot-split. resources/README.md describes every setting.
#pragma once

#include <string>

#include "pack/pack.h"

namespace inkdot::tools {

// Builds the blocks described by `directory`/pack.txt. On failure returns
// false with "file:line: reason" in `error`.
bool compileResources(const std::string& directory, BlockMap& blocks, std::string& error);

}  // namespace inkdot::tools
