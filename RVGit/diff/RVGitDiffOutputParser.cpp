#include "RVGit/diff/RVGitDiffOutputParser.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "RVGit/base/RVDataBuffer.h"
#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"

namespace {

// The owner keeps the block alive. One that is not UTF-8 is kept decoded as well.
std::shared_ptr<RVGitDiffContents> contentsOfBlock(std::shared_ptr<const void> owner,
                                                   std::string_view block) {
    auto contents = std::make_shared<RVGitDiffContents>();
    if (isValidUTF8(block)) {
        contents->text = block;
        contents->textOwner = std::move(owner);
        return contents;
    }
    std::vector<RVDecodedLine> decodedLines;
    auto text = std::make_shared<const std::string>(stringUsingBestEncoding(block, decodedLines));
    contents->text = *text;
    contents->textOwner = std::move(text);
    // Of UTF-16, which git never prints, the bytes are no patch.
    if (decodedLines.empty())
        return contents;
    contents->bytes = block;
    contents->bytesOwner = std::move(owner);
    contents->decodedLines.reserve(decodedLines.size());
    for (const RVDecodedLine& line : decodedLines)
        contents->decodedLines.push_back({static_cast<std::uint32_t>(line.endInText),
                                          static_cast<std::uint32_t>(line.endInBytes)});
    return contents;
}

std::shared_ptr<RVGitDiffContents> contentsOfCopiedBlock(std::string_view block) {
    auto owner = std::make_shared<const std::string>(block);
    const std::string_view copy = *owner;
    return contentsOfBlock(std::move(owner), copy);
}

// The path of "a/path" or "b/path", or of the same in quotes.
std::string pathWithoutPrefix(std::string_view path) {
    constexpr std::size_t prefixLength = 2;
    if (!path.starts_with('"'))
        return std::string(path.substr(prefixLength));
    return unquotedCString('"' + std::string(path.substr(1 + prefixLength)));
}

// The bytes of the first `count` characters; absent if there are fewer.
std::optional<std::size_t> lengthOfCharacters(std::string_view text, std::size_t count) {
    std::size_t length = 0;
    for (; count > 0; --count) {
        if (length == text.size())
            return std::nullopt;
        ++length;
        while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            ++length;
    }
    return length;
}

// As int32Value() reads it, which costs more where there are but a few digits.
std::int64_t numberFromText(std::string_view text) {
    constexpr std::size_t digitsOfAnyNumber = 9;
    std::int64_t number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9' || text.size() > digitsOfAnyNumber)
            return int32Value(text);
        number = number * 10 + (digit - '0');
    }
    return number;
}

// "-5,3": a sign, the location and the length, which is 1 where it is not said.
RVGitDiffRange rangeFromText(std::string_view text) {
    text.remove_prefix(1);
    const std::size_t comma = text.find(',');
    RVGitDiffRange range{numberFromText(text.substr(0, comma)), 1};
    if (comma != std::string_view::npos) {
        const std::string_view rest = text.substr(comma + 1);
        range.length = numberFromText(rest.substr(0, rest.find(',')));
    }
    return range;
}

std::uint32_t lineNumberFromValue(std::int64_t value) {
    return static_cast<std::uint32_t>(std::max<std::int64_t>(value, 0));
}

}  // namespace

RVGitDiffOutputParser::RVGitDiffOutputParser(std::string_view outputData)
    : RVGitDiffOutputParser(contentsOfCopiedBlock(outputData)) {}

RVGitDiffOutputParser::RVGitDiffOutputParser(std::shared_ptr<const RVDataBuffer> buffer,
                                             std::string_view block)
    : RVGitDiffOutputParser(contentsOfBlock(std::move(buffer), block)) {}

RVGitDiffOutputParser::RVGitDiffOutputParser(std::shared_ptr<RVGitDiffContents> contents)
    : RVGitOutputParser(contents->text, Delimiter::Newline), contents_(std::move(contents)) {}

RVGitDiffOutputParser::~RVGitDiffOutputParser() = default;

bool RVGitDiffOutputParser::parseOutputLine(std::string_view line) {
    if (contents_->text.size() >= std::numeric_limits<std::uint32_t>::max())
        return false;
    if (line.front() == '*' && line.starts_with("* Unmerged path "))
        return true;
    if (!isFinishedParsingHeader_)
        return parseDiffHeaderLine(line);
    if (line.front() == '@') {
        const std::string_view chunkHeader = chunkHeaderOfLine(line);
        if (!chunkHeader.empty()) {
            parseChunkHeaderLine(line, chunkHeader);
            return true;
        }
    }
    return parseChunkLine(line);
}

// Where the lines stand.

inline RVGitDiffContents::Range RVGitDiffOutputParser::rangeOfLine(std::string_view line) const {
    const auto start = static_cast<std::uint32_t>(line.data() - contents_->text.data());
    return {start, start + static_cast<std::uint32_t>(line.size()) + 1};
}

void RVGitDiffOutputParser::beginRaw(std::uint32_t start) {
    contents_->raw = {start, start};
}

inline void RVGitDiffOutputParser::appendToRaw(RVGitDiffContents::Range line) {
    if (line.start > endOfLastLine_)
        contents_->omissions.push_back({endOfLastLine_, line.start});
    endOfLastLine_ = line.end;
    if (!contents_->raw)
        return;
    contents_->raw->end = line.end;
    if (!isFinishedParsingHeader_ && contents_->header)
        contents_->header->end = line.end;
}

// The header.

bool RVGitDiffOutputParser::parseDiffHeaderLine(std::string_view line) {
    const RVGitDiffContents::Range range = rangeOfLine(line);
    RVGitDiffContents& diff = *contents_;
    std::string_view rest;
    const auto takes = [&](std::string_view prefix) {
        if (!line.starts_with(prefix))
            return false;
        rest = line.substr(prefix.size());
        return true;
    };

    bool isExtendedHeader = true;
    bool isLastLine = false;
    if (takes("diff --git ")) {
        if (!parseDiffLine(line))
            return false;
        isExtendedHeader = false;
    } else if (takes("diff --combined ") || takes("diff --cc ")) {
        if (!parseCombinedDiffLine(line))
            return false;
        isExtendedHeader = false;
    } else if (takes("Binary files ")) {
        diff.isBinary = true;
        isExtendedHeader = false;
    } else if (takes("--- ")) {
        isExtendedHeader = false;
    } else if (takes("+++ ")) {
        isExtendedHeader = false;
        isLastLine = true;
    } else if (trimmedWhitespaceAndNewline(line).empty()) {
        return true;
    } else if (takes("old mode ")) {
        diff.originalFileModes = {std::string(rest)};
    } else if (takes("new mode ")) {
        diff.fileMode = rest;
    } else if (takes("deleted file mode ")) {
        diff.filePath.reset();
        diff.fileStatus = 'D';
        diff.originalFileModes = {std::string(rest)};
    } else if (takes("new file mode ")) {
        diff.oldFilePath.reset();
        diff.fileStatus = 'A';
        diff.fileMode = rest;
    } else if (takes("copy from ")) {
        diff.fileStatus = 'C';
    } else if (takes("rename from ")) {
        diff.fileStatus = 'R';
    } else if (takes("similarity index ")) {
        diff.similarityIndex = integerValue(rest);
    } else if (takes("index ")) {
        if (!parseIndexLine(line))
            return false;
    }

    if (isExtendedHeader)
        diff.extendedHeaders.push_back(range);
    appendToRaw(range);
    if (isLastLine)
        finishHeader();
    return true;
}

void RVGitDiffOutputParser::finishHeader() {
    isFinishedParsingHeader_ = true;
    // About as many as there are in the diff of a source file.
    constexpr std::size_t bytesOfLine = 32;
    constexpr std::size_t numbersOfLine = 2;
    constexpr std::size_t bytesOfChunk = 512;
    const std::size_t size = contents_->text.size();
    contents_->lines.reserve(size / bytesOfLine);
    contents_->lineNumbers.reserve(size / bytesOfLine * numbersOfLine);
    contents_->chunks.reserve(1 + size / bytesOfChunk);
}

bool RVGitDiffOutputParser::parseDiffLine(std::string_view line) {
    const std::uint32_t start = rangeOfLine(line).start;
    beginRaw(start);
    contents_->header = {start, start};
    const auto components = diffHeaderComponentsOfLine(line);
    if (components.empty())
        return false;
    contents_->oldFilePath = pathWithoutPrefix(components[0]);
    contents_->filePath = pathWithoutPrefix(components[1]);
    contents_->fileStatus = 'M';
    return true;
}

bool RVGitDiffOutputParser::parseCombinedDiffLine(std::string_view line) {
    beginRaw(rangeOfLine(line).start);
    const auto components = combinedDiffHeaderRegex().firstMatch(line);
    if (components.empty())
        return false;
    contents_->oldFilePath = unquotedCString(*components[2]);
    contents_->filePath = contents_->oldFilePath;
    contents_->fileStatus = 'M';
    return true;
}

bool RVGitDiffOutputParser::parseIndexLine(std::string_view line) {
    const auto components = indexComponentsOfLine(line);
    if (components.empty())
        return false;
    meetsSHA256Hash_ = isSHA256Hash(components[0]) || isSHA256Hash(components[2]);
    if (meetsSHA256Hash_)
        return false;
    auto& originalHashes = contents_->originalObjectHashes.emplace();
    originalHashes.emplace_back(components[0]);
    if (!components[1].empty()) {
        for (std::string& hash : componentsSeparatedByString(components[1], ","))
            originalHashes.push_back(std::move(hash));
    }
    contents_->objectHash = components[2];
    if (!components[3].empty()) {
        contents_->fileMode = components[3];
        contents_->originalFileModes = {std::string(components[3])};
    }
    return true;
}

// The chunks.

void RVGitDiffOutputParser::parseChunkHeaderLine(std::string_view line,
                                                 std::string_view chunkHeader) {
    const RVGitDiffContents::Range range = rangeOfLine(line);
    appendToRaw(range);

    RVGitDiffContents::Chunk& chunk = contents_->chunks.emplace_back();
    chunk.raw = range;
    chunk.firstLine = static_cast<std::uint32_t>(contents_->lines.size());
    chunk.firstLineNumber = static_cast<std::uint32_t>(contents_->lineNumbers.size());
    chunk.fileRanges.reserve(static_cast<std::size_t>(std::ranges::count(chunkHeader, ' ') - 1));
    std::size_t position = chunkHeader.find(' ') + 1;
    for (std::size_t end; (end = chunkHeader.find(' ', position)) != std::string_view::npos;
         position = end + 1)
        chunk.fileRanges.push_back(rangeFromText(chunkHeader.substr(position, end - position)));
    chunk.columnCount = static_cast<std::uint32_t>(chunk.fileRanges.size());

    numberOfParents_ = chunk.fileRanges.size() - 1;
    currentLineNumbers_.clear();
    maxCurrentLineNumbers_.clear();
    for (const RVGitDiffRange& fileRange : chunk.fileRanges) {
        currentLineNumbers_.push_back(lineNumberFromValue(fileRange.location - 1));
        maxCurrentLineNumbers_.push_back(
            lineNumberFromValue(fileRange.location + fileRange.length - 1));
    }
}

inline void RVGitDiffOutputParser::advance(std::size_t column) {
    if (currentLineNumbers_[column] != maxCurrentLineNumbers_[column])
        ++currentLineNumbers_[column];
}

// What the columns say, which also moves the numbers on.
inline std::optional<RVGitDiffLineType> RVGitDiffOutputParser::typeOfStatus(
    std::string_view status) {
    std::optional<RVGitDiffLineType> type;
    bool isBlank = true;
    // Each column takes away what the one before it noted, so that of the parents in which an
    // added line stands the last alone is counted on.
    bool lastColumnIsNoted = false;
    std::size_t column = 0;
    for (const char character : status) {
        if ((static_cast<unsigned char>(character) & 0xC0) == 0x80)
            continue;
        lastColumnIsNoted = false;
        if (character == '+') {
            type = RVGitDiffLineAdded;
        } else if (character == '\\') {
            type = RVGitDiffLineNoNewlineAtEndOfFile;
        } else if (character == '-') {
            advance(column);
            type = RVGitDiffLineDeleted;
        } else {
            lastColumnIsNoted = true;
            isBlank = isBlank && character == ' ';
        }
        ++column;
    }
    if (type == RVGitDiffLineAdded) {
        if (lastColumnIsNoted)
            advance(numberOfParents_ - 1);
        advance(numberOfParents_);
    } else if (!type && isBlank) {
        for (column = 0; column < currentLineNumbers_.size(); ++column)
            advance(column);
        type = RVGitDiffLineContext;
    }
    return type;
}

bool RVGitDiffOutputParser::parseChunkLine(std::string_view line) {
    const RVGitDiffContents::Range range = rangeOfLine(line);
    appendToRaw(range);
    const auto statusLength = lengthOfCharacters(line, numberOfParents_);
    if (!statusLength)
        return false;
    const auto type = typeOfStatus(line.substr(0, *statusLength));
    if (!type)
        return false;

    // A line ahead of the first chunk belongs to none.
    RVGitDiffContents& diff = *contents_;
    if (diff.chunks.empty())
        return true;
    RVGitDiffContents::Chunk& chunk = diff.chunks.back();
    chunk.raw.end = range.end;
    ++chunk.lineCount;
    diff.lines.emplace_back(range.start, line.size(), *statusLength, *type);
    for (const std::uint32_t number : currentLineNumbers_)
        diff.lineNumbers.push_back(number);
    return true;
}
