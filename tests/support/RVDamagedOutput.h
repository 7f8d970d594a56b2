#pragma once

#include <string>
#include <string_view>
#include <vector>

/// What a parser must live with: the output cut at every offset, with each byte in turn flipped
/// or replaced (among others by NUL, a line break, a blank and bytes that are no UTF-8), with CRLF
/// line ends, and without its last newline. For outputs of a few hundred bytes.
[[nodiscard]] std::vector<std::string> damagedOutputs(std::string_view output);
