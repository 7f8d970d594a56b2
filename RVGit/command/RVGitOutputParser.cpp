#include "RVGit/command/RVGitOutputParser.h"

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitError.h"

namespace {

/// Calls `take` with each piece between delimiters, the last one behind the last delimiter, until
/// it returns false.
template <typename Take>
void forEachPiece(std::string_view text, char delimiter, Take take) {
    for (;;) {
        std::size_t end = text.find(delimiter);
        if (!take(text.substr(0, end)) || end == std::string_view::npos)
            return;
        text.remove_prefix(end + 1);
    }
}

}  // namespace

RVGitOutputParser::RVGitOutputParser() = default;

RVGitOutputParser::RVGitOutputParser(std::string_view outputData, Delimiter delimiter)
    : outputData_(outputData), delimiter_(delimiter) {}

RVGitOutputParser::RVGitOutputParser(std::vector<std::string> outputLines)
    : givenLines_(std::move(outputLines)) {}

RVGitOutputParser::~RVGitOutputParser() = default;

std::shared_ptr<RVGitOutputParser> RVGitOutputParser::outputParserWithOutputData(
    std::string_view outputData) {
    return std::make_shared<RVGitOutputParser>(outputData);
}

std::shared_ptr<RVGitOutputParser> RVGitOutputParser::outputParserWithOutputLines(
    std::vector<std::string> outputLines) {
    return std::make_shared<RVGitOutputParser>(std::move(outputLines));
}

std::optional<std::vector<std::string>> RVGitOutputParser::outputLines() const {
    if (givenLines_ || outputData_.empty())
        return givenLines_;
    std::vector<std::string> lines;
    if (delimiter_ == Delimiter::NULByte) {
        for (std::string_view piece : componentsSeparatedByNULByte(outputData_))
            lines.push_back(stringUsingBestEncoding(piece));
        return lines;
    }
    return componentsSeparatedByString(stringUsingBestEncoding(outputData_), "\n");
}

bool RVGitOutputParser::parse(RVErrorPlace error) {
    if (givenLines_ ? givenLines_->empty() : outputData_.empty())
        return true;

    bool succeeded = true;
    auto take = [&](std::string_view line) {
        succeeded = line.empty() || parseOutputLine(line);
        if (!succeeded && error) {
            *error = gitErrorWithCode(RVGitOutputParserError,
                                      {{RVGitOutputParserNameErrorKey, parserName()},
                                       {RVGitOutputParserLineErrorKey, line}});
        }
        return succeeded;
    };
    if (givenLines_) {
        for (const std::string& line : *givenLines_) {
            if (!take(line))
                break;
        }
    } else if (isValidUTF8(outputData_)) {
        forEachPiece(outputData_, delimiter_ == Delimiter::NULByte ? '\0' : '\n', take);
    } else if (delimiter_ == Delimiter::NULByte) {
        forEachPiece(outputData_, '\0', [&](std::string_view piece) {
            return isValidUTF8(piece) ? take(piece) : take(stringUsingBestEncoding(piece));
        });
    } else {
        decodedData_ = stringUsingBestEncoding(outputData_);
        forEachPiece(decodedData_, '\n', take);
    }
    if (succeeded)
        parsingDidFinish();
    return succeeded;
}

RVRegularExpression RVGitOutputParser::regularExpressionWithPattern(std::string_view pattern,
                                                                    unsigned options) {
    std::string reason;
    auto expression = RVRegularExpression::compile(pattern, options, &reason);
    if (!expression) {
        throw RVInternalInconsistencyException(
            "Failed to create regular expression with pattern '" + std::string(pattern) +
            "': " + reason);
    }
    return std::move(*expression);
}
