#include "RVGit/objects/RVGitForEachRefTagOutputParser.h"

#include <array>
#include <chrono>
#include <utility>

#include "RVGit/base/RVNeverDestroyed.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/objects/RVGitForEachRefCommand.h"

namespace {

enum Field { RefName, ObjectType, ObjectName, PeeledObjectName, CreatorDate, Contents, FieldCount };

}  // namespace

RVGitForEachRefTagOutputParser::RVGitForEachRefTagOutputParser(std::string_view outputData)
    : RVGitItemOutputParser(outputData, Delimiter::NULByte) {}

RVGitForEachRefTagOutputParser::RVGitForEachRefTagOutputParser(std::vector<std::string> outputLines)
    : RVGitItemOutputParser(std::move(outputLines)) {}

const std::string& RVGitForEachRefTagOutputParser::format() {
    static const RVNeverDestroyed<std::string> format(
        stringByJoiningComponents({"%(refname)", "%(objecttype)", "%(objectname)", "%(*objectname)",
                                   "%(creatordate:unix)", "%(contents)"},
                                  "%1f%1d%1f") +
        "%00");
    return *format;
}

std::string_view RVGitForEachRefTagOutputParser::commitBoundaryString() {
    return RVGitForEachRefBoundary;
}

std::string_view RVGitForEachRefTagOutputParser::parserName() const {
    return "RVGitForEachRefTagOutputParser";
}

bool RVGitForEachRefTagOutputParser::parseOutputLine(std::string_view line) {
    std::array<std::string_view, FieldCount> fields;
    if (!fieldsOfForEachRefRecord(line, fields))
        return true;
    if (isSHA256Hash(fields[ObjectName]))
        return false;
    RVGitForEachRefTagOutputParserResultItem item;
    item.fullRefName = fields[RefName];
    item.creatorDate = RVDate(std::chrono::seconds(int32Value(fields[CreatorDate])));
    if (fields[ObjectType] == "tag") {
        item.commitHash = fields[PeeledObjectName];
        item.tagObjectHash = fields[ObjectName];
        item.message = fields[Contents];
    } else {
        item.commitHash = fields[ObjectName];
    }
    addResult(std::move(item));
    return true;
}
