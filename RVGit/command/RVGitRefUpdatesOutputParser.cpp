#include "RVGit/command/RVGitRefUpdatesOutputParser.h"

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"

RVGitRefUpdatesOutputParser::RVGitRefUpdatesOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::Newline) {}

std::int64_t RVGitRefUpdatesOutputParser::refUpdateTypeFromString(std::string_view flag) {
    if (flag == " ")
        return RVGitRefUpdateTypeFastForward;
    if (flag == "+")
        return RVGitRefUpdateTypeForced;
    if (flag == "*")
        return RVGitRefUpdateTypeNew;
    if (flag == "-" || flag == "x")
        return RVGitRefUpdateTypeDeleted;
    if (flag == "=")
        return RVGitRefUpdateTypeUpToDate;
    if (flag == "!")
        return RVGitRefUpdateTypeRejected;
    return RVGitRefUpdateTypeNone;
}

std::string_view RVGitRefUpdatesOutputParser::parserName() const {
    return "RVGitRefUpdatesOutputParser";
}

bool RVGitRefUpdatesOutputParser::parseOutputLine(std::string_view line) {
    static const RVNeverDestroyed<RVRegularExpression> expression(
        std::in_place,
        R"( ([ x\+\=\-\!\*]) (\[.+\]|[a-f0-9]+\.\.[a-f0-9]+) +(.+) +-> (.+)( +\(.+\))?)",
        RVRegularExpression::CaseInsensitive);

    if (line.find(" -> ") == std::string_view::npos)
        return true;
    auto components = expression->firstMatch(line);
    if (components.empty())
        return true;

    auto trimmed = [&](std::size_t group) -> std::optional<std::string> {
        if (!components[group])
            return std::nullopt;
        return stringByTrimmingWhitespaceAndNewline(*components[group]);
    };
    RVGitRefUpdatesOutputParserResultItem item;
    item.type = refUpdateTypeFromString(*components[1]);
    item.summary = trimmed(2);
    item.from = trimmed(3);
    if (item.from == "(none)")
        item.from.reset();
    item.to = trimmed(4);
    item.reason = trimmed(5);
    addResult(std::move(item));
    return true;
}
