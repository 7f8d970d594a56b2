#include "RVGit/command/RVGitFilePathsOutputParser.h"

RVGitFilePathsOutputParser::RVGitFilePathsOutputParser(std::string_view outputData,
                                                       bool usesNULByteAsNewlineDelimiter)
    : RVGitItemOutputParser(
          outputData, usesNULByteAsNewlineDelimiter ? Delimiter::NULByte : Delimiter::Newline) {}

std::string_view RVGitFilePathsOutputParser::parserName() const {
    return "RVGitFilePathsOutputParser";
}

bool RVGitFilePathsOutputParser::parseOutputLine(std::string_view line) {
    addResult(std::string(line));
    return true;
}
