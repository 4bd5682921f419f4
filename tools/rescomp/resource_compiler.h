// The resource compiler: reads the pack description (resources/pack.txt) and
// the files it names, and generates every block.
//
// pack.txt holds one block per line: its number, its kind and key=value
// settings; '#' starts a comment. Kinds: index (file=), colour-table,
// correction-tables, routing, base-weights, request-list, grid-levels,
// matrix, dot-split. resources/README.md describes every setting.
//
// Every value is checked before anything is built from it: a line with a bad
// value stops the compilation with "file:line: reason" and builds nothing.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "pack/pack.h"

namespace inkdot::tools {

// Index texts are a few hundred bytes; this bounds the read of a file= value.
inline constexpr size_t kMaxIndexTextBytes = 65536;

// Builds the blocks described by `directory`/pack.txt. On failure returns
// false with "file:line: reason" in `error`.
bool compileResources(const std::string& directory, BlockMap& blocks, std::string& error);

// Reads a file that a file= setting names, as written there; at most
// kMaxIndexTextBytes bytes. False with a reason on failure.
using SourceReader = std::function<bool(const std::string& name, Bytes& out, std::string& error)>;

// The same from the text of a pack description; `manifestName` heads the
// error messages.
bool compileResourceText(std::string_view manifest, const std::string& manifestName, const SourceReader& read,
                         BlockMap& blocks, std::string& error);

}  // namespace inkdot::tools
