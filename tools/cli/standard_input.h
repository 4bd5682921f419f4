// `-` as the input of a command: standard input, made readable as the file
// /dev/stdin, which the image readers open by name and may open twice.
#pragma once

#include <string>

namespace inkdot::tools {

// The name under which a command reads standard input.
inline constexpr const char* kStandardInputPath = "/dev/stdin";

// A pipe or terminal cannot be re-opened or seeked: its bytes are copied into
// an anonymous in-memory file that then becomes standard input. A redirected
// regular file is left as it is. False with a reason on failure.
bool makeStandardInputSeekable(std::string& error);

}  // namespace inkdot::tools
