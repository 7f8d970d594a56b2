#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "RVGit/base/RVError.h"
#include "RVGit/base/RVTypes.h"

/// The colours of a terminal that are used here.
enum class Colour { Red = 31, Green, Yellow, Blue, Magenta, Cyan };

/// What a command prints, collected and written when it has succeeded: coloured for a terminal,
/// plain for a pipe.
class Output {
public:
    explicit Output(bool coloured) : coloured_(coloured) {}

    Output& operator<<(std::string_view text) {
        text_ += text;
        return *this;
    }
    /// The text in a colour, where there are colours.
    [[nodiscard]] std::string in(Colour colour, std::string_view text) const;
    [[nodiscard]] std::string bold(std::string_view text) const;

    [[nodiscard]] const std::string& text() const { return text_; }

private:
    [[nodiscard]] std::string styled(int style, std::string_view text) const;

    std::string text_;
    bool coloured_;
};

/// "2024-01-31 12:00" in local time; blank for an absent date.
[[nodiscard]] std::string dateText(const std::optional<RVDate>& date);

/// Control characters, which could take over the terminal, as "?"; tabs stay.
[[nodiscard]] std::string printable(std::string_view text);

/// The same of each line of a text; each ends in a line break. Nothing for an empty text.
[[nodiscard]] std::string printableLines(std::string_view text);

/// Padded with blanks to so many characters.
[[nodiscard]] std::string padded(std::string text, std::size_t width);

/// Title and reason on standard error; with `verbose`, all that the error knows.
void printError(const RVError& error, bool verbose);
