#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// The lines of a text, with their newlines.
[[nodiscard]] inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size() - 1);
        lines.push_back(text.substr(start, end + 1 - start));
        start = end + 1;
    }
    return lines;
}

[[nodiscard]] inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line;
    return text;
}
