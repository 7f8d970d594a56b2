#include "client/Terminal.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>

#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitErrorCodes.h"
#include "RVGit/command/RVGitErrorKeys.h"

std::string Output::styled(int style, std::string_view text) const {
    if (!coloured_ || text.empty())
        return std::string(text);
    std::string styled = "\x1b[" + std::to_string(style) + "m";
    styled += text;
    styled += "\x1b[0m";
    return styled;
}

std::string Output::in(Colour colour, std::string_view text) const {
    return styled(static_cast<int>(colour), text);
}

std::string Output::bold(std::string_view text) const {
    return styled(1, text);
}

std::string dateText(const std::optional<RVDate>& date) {
    if (!date)
        return std::string(16, ' ');
    const std::time_t seconds = date->time_since_epoch().count();
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local)};
}

std::string printable(std::string_view text) {
    std::string result(text);
    for (std::size_t index = 0; index < result.size(); ++index) {
        const auto byte = static_cast<unsigned char>(result[index]);
        // Behind 0xc2 these are control characters, too, and "CSI" among them.
        const bool endsC1Control =
            byte >= 0x80 && byte < 0xa0 && index > 0 && text[index - 1] == '\xc2';
        if ((byte < 0x20 && result[index] != '\t') || byte == 0x7f || endsC1Control)
            result[index] = '?';
        if (endsC1Control)
            result[index - 1] = '?';
    }
    return result;
}

std::string printableLines(std::string_view text) {
    std::string lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        lines += printable(line) + "\n";
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

std::string padded(std::string text, std::size_t width) {
    const auto isFirstByte = [](char byte) { return (byte & 0xc0) != 0x80; };
    const auto length =
        static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
    if (length < width)
        text.append(width - length, ' ');
    return text;
}

void printError(const RVError& error, bool verbose) {
    std::string text = printableLines(
        "rvgit: " + error.localizedDescription().value_or("Error " + std::to_string(error.code())));
    // The names of refs and files in it are a stranger's.
    text += printableLines(error.localizedFailureReason().value_or(""));
    // Of what has no code of its own, or one without texts, git's own words are all that is known.
    // A path or a revision that an archive lacks stands in them alone.
    if (error.code() == RVGitRVGitGenericError || error.code() == RVGitArchiveFilesError ||
        !error.localizedDescription()) {
        const auto words = error.userInfo().find(RVGitCommandErrorOutputErrorKey);
        if (words != error.userInfo().end() && words->second.string())
            for (std::string line : componentsSeparatedByString(*words->second.string(), "\n")) {
                if (line.ends_with('\r'))
                    line.pop_back();
                // Of a line that was written anew again and again, as a terminal leaves it.
                if (const auto shown = line.substr(line.rfind('\r') + 1); !shown.empty())
                    text += printable(shown) + "\n";
            }
    }
    if (verbose) {
        text += "\n" + error.domain() + " " + std::to_string(error.code()) + "\n";
        for (const auto& [key, value] : error.userInfo())
            text += printableLines("  " + key + ": " + value.displayString());
    }
    std::fputs(text.c_str(), stderr);
}
