#include "tests/diff/RVGitDiffTwin.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <variant>

#include "RVGit/base/RVRegularExpression.h"
#include "RVGit/base/RVString.h"
#include "RVGit/command/RVGitValues.h"
#include "RVGit/diff/RVGitDiffMap.h"

namespace {

std::string described(const std::string& text) {
    return '"' + text + '"';
}
std::string described(std::int64_t number) {
    return std::to_string(number);
}
std::string described(std::uint32_t number) {
    return std::to_string(number);
}
std::string described(bool value) {
    return RVStringFromBOOL(value);
}
std::string described(const RVGitDiffRange& range) {
    return std::to_string(range.location) + "+" + std::to_string(range.length);
}

template <typename Map>
std::string describedMap(const Map& map);
std::string described(const RVGitDiffChunkLineMap& map) {
    return describedMap(map);
}
std::string described(const RVGitDiffChunkMap& map) {
    return describedMap(map);
}

template <typename T>
std::string described(const std::vector<T>& list) {
    std::string text = "[";
    for (const T& element : list)
        text += described(element) + ";";
    return text + "]";
}

template <typename Map>
std::string describedMap(const Map& map) {
    std::map<std::string, std::string> values;
    for (const std::string& key : map.allKeys())
        values[key] = std::visit([](const auto& value) { return described(value); },
                                 map.objectForKey(key).value());
    std::string text = "{";
    for (const auto& [key, value] : values)
        text += key + "=" + value + "\n";
    return text + "}";
}

/// A map whose values are described already.
using TwinMap = std::map<std::string, std::string>;

std::string describedTwin(const TwinMap& map) {
    std::string text = "{";
    for (const auto& [key, value] : map)
        text += key + "=" + value + "\n";
    return text + "}";
}

struct Chunk {
    std::string raw;
    std::vector<RVGitDiffRange> ranges;
    std::vector<std::string> lines;
};

class Twin {
public:
    bool parse(std::string_view block) {
        for (const std::string& line :
             componentsSeparatedByString(stringUsingBestEncoding(block), "\n")) {
            if (!line.empty() && !parseLine(line))
                return false;
        }
        return true;
    }

    std::string description() const {
        TwinMap map = values_;
        if (raw_)
            map["RVGitDiffRawKey"] = described(*raw_);
        if (header_)
            map["RVGitDiffHeaderKey"] = described(*header_);
        if (!extendedHeaders_.empty())
            map["RVGitDiffExtendedHeadersKey"] = described(extendedHeaders_);
        if (!chunks_.empty()) {
            std::string chunks = "[";
            for (const Chunk& chunk : chunks_) {
                std::string lines = "[";
                for (const std::string& line : chunk.lines)
                    lines += line + ";";
                chunks += describedTwin({{"RVGitDiffChunkRawKey", described(chunk.raw)},
                                         {"RVGitDiffChunkFileRangesKey", described(chunk.ranges)},
                                         {"RVGitDiffChunkLineStatusKey", lines + "]"}}) +
                          ";";
            }
            map["RVGitDiffChunksKey"] = chunks + "]";
        }
        return describedTwin(map);
    }

private:
    bool parseLine(const std::string& line) {
        static const RVRegularExpression chunkHeader(
            R"(^@+( \-(\d+),?(\d+)?)+ \+(\d+),?(\d+)? @+)");
        if (line.starts_with("* Unmerged path "))
            return true;
        if (!isFinished_)
            return parseHeaderLine(line);
        const auto match = chunkHeader.firstMatch(line);
        if (!match.empty()) {
            parseChunkHeader(line, std::string(*match[0]));
            return true;
        }
        return parseChunkLine(line);
    }

    void append(const std::string& line) {
        if (raw_)
            *raw_ += line + "\n";
        if (!isFinished_ && header_)
            *header_ += line + "\n";
    }

    static std::string path(std::string text) {
        if (text.starts_with("\"a/") || text.starts_with("\"b/"))
            return unquotedCString("\"" + text.substr(3));
        return text.substr(2);
    }

    static std::vector<std::string> list(const std::string& text) { return {text}; }

    bool parseHeaderLine(const std::string& line) {
        static const RVRegularExpression diff("^diff --git (\"?a/.+\"?) (\"?b/.+\"?)$");
        static const RVRegularExpression combined("^diff --(combined|cc) (\"?.+\"?)$");
        static const RVRegularExpression index(
            R"(^index ([a-z0-9]+),?([a-z0-9,]+)*\.\.([a-z0-9]+) ?([0-9]+)?$)");
        const auto restBehind = [&](const std::string& prefix) {
            return line.substr(prefix.size());
        };
        bool extended = true;
        if (line.starts_with("diff --git ")) {
            raw_ = header_ = "";
            const auto match = diff.firstMatch(line);
            if (match.empty())
                return false;
            values_["RVGitDiffOldFilePathKey"] = described(path(std::string(*match[1])));
            values_["RVGitDiffFilePathKey"] = described(path(std::string(*match[2])));
            values_["RVGitDiffFileStatusKey"] = described(std::string("M"));
            extended = false;
        } else if (line.starts_with("diff --combined ") || line.starts_with("diff --cc ")) {
            raw_ = "";
            const auto match = combined.firstMatch(line);
            if (match.empty())
                return false;
            values_["RVGitDiffOldFilePathKey"] = described(unquotedCString(*match[2]));
            values_["RVGitDiffFilePathKey"] = described(unquotedCString(*match[2]));
            values_["RVGitDiffFileStatusKey"] = described(std::string("M"));
            extended = false;
        } else if (line.starts_with("Binary files ")) {
            values_["RVGitDiffIsBinaryKey"] = described(true);
            extended = false;
        } else if (line.starts_with("--- ")) {
            extended = false;
        } else if (line.starts_with("+++ ")) {
            append(line);
            isFinished_ = true;
            return true;
        } else if (stringByTrimmingWhitespaceAndNewline(line).empty()) {
            return true;
        } else if (line.starts_with("old mode ")) {
            values_["RVGitDiffOriginalFileModesKey"] = described(list(restBehind("old mode ")));
        } else if (line.starts_with("new mode ")) {
            values_["RVGitDiffFileModeKey"] = described(restBehind("new mode "));
        } else if (line.starts_with("deleted file mode ")) {
            values_.erase("RVGitDiffFilePathKey");
            values_["RVGitDiffFileStatusKey"] = described(std::string("D"));
            values_["RVGitDiffOriginalFileModesKey"] =
                described(list(restBehind("deleted file mode ")));
        } else if (line.starts_with("new file mode ")) {
            values_.erase("RVGitDiffOldFilePathKey");
            values_["RVGitDiffFileStatusKey"] = described(std::string("A"));
            values_["RVGitDiffFileModeKey"] = described(restBehind("new file mode "));
        } else if (line.starts_with("copy from ")) {
            values_["RVGitDiffFileStatusKey"] = described(std::string("C"));
        } else if (line.starts_with("rename from ")) {
            values_["RVGitDiffFileStatusKey"] = described(std::string("R"));
        } else if (line.starts_with("similarity index ")) {
            values_["RVGitDiffFileStatusSimilarityIndexKey"] =
                described(integerValue(restBehind("similarity index ")));
        } else if (line.starts_with("index ")) {
            const auto match = index.firstMatch(line);
            if (match.empty())
                return false;
            auto hashes = list(std::string(*match[1]));
            if (match[2]) {
                for (const auto& hash : componentsSeparatedByString(*match[2], ","))
                    hashes.push_back(hash);
            }
            values_["RVGitDiffOriginalObjectHashesKey"] = described(hashes);
            values_["RVGitDiffObjectHashKey"] = described(std::string(*match[3]));
            if (match[4] && !match[4]->empty()) {
                values_["RVGitDiffFileModeKey"] = described(std::string(*match[4]));
                values_["RVGitDiffOriginalFileModesKey"] = described(list(std::string(*match[4])));
            }
        }
        if (extended)
            extendedHeaders_.push_back(line);
        append(line);
        return true;
    }

    void parseChunkHeader(const std::string& line, const std::string& match) {
        append(line);
        Chunk& chunk = chunks_.emplace_back();
        chunk.raw = line + "\n";
        auto pieces = componentsSeparatedByString(match, " ");
        pieces.erase(pieces.begin());
        pieces.pop_back();
        current_.clear();
        maximum_.clear();
        for (const std::string& piece : pieces) {
            const auto parts = componentsSeparatedByString(piece.substr(1), ",");
            const std::int64_t location = int32Value(parts[0]);
            const std::int64_t length = parts.size() > 1 ? int32Value(parts[1]) : 1;
            chunk.ranges.push_back({location, length});
            current_.push_back(location == 0 ? 0 : static_cast<std::uint32_t>(location - 1));
            maximum_.push_back(
                location + length == 0 ? 0 : static_cast<std::uint32_t>(location + length - 1));
        }
        parents_ = pieces.size() - 1;
    }

    void advance(std::size_t column) {
        if (current_[column] != maximum_[column])
            ++current_[column];
    }

    bool parseChunkLine(const std::string& line) {
        append(line);
        std::vector<std::string> characters;
        for (const char byte : line) {
            if ((byte & 0xC0) == 0x80 && !characters.empty())
                characters.back() += byte;
            else
                characters.emplace_back(1, byte);
        }
        if (characters.size() < parents_)
            return false;
        std::string status;
        std::string contents;
        std::string type;
        for (std::size_t index = 0; index < characters.size(); ++index)
            (index < parents_ ? status : contents) += characters[index];
        if (std::ranges::all_of(status, [](char byte) { return byte == ' '; })) {
            for (std::size_t column = 0; column < current_.size(); ++column)
                advance(column);
            type = " ";
        } else {
            std::vector<std::size_t> columns;
            for (std::size_t column = 0; column < parents_; ++column) {
                columns.clear();
                if (characters[column] == "+") {
                    type = "+";
                } else if (characters[column] == "\\") {
                    type = "//";
                } else if (characters[column] == "-") {
                    advance(column);
                    type = "-";
                } else {
                    columns.push_back(column);
                }
            }
            if (type == "+") {
                for (const std::size_t column : columns)
                    advance(column);
                advance(current_.size() - 1);
            }
            if (type.empty())
                return false;
        }
        if (chunks_.empty())
            return true;
        chunks_.back().lines.push_back(
            describedTwin({{"RVGitDiffChunkLineLineNumbersKey", described(current_)},
                           {"RVGitDiffChunkLineTypeKey", described(type)},
                           {"RVGitDiffChunkLineStatusKey", described(status)},
                           {"RVGitDiffChunkLineContentKey", described(contents)}}));
        chunks_.back().raw += line + "\n";
        return true;
    }

    TwinMap values_;
    std::optional<std::string> raw_;
    std::optional<std::string> header_;
    std::vector<std::string> extendedHeaders_;
    std::vector<Chunk> chunks_;
    bool isFinished_ = false;
    std::size_t parents_ = 0;
    std::vector<std::uint32_t> current_;
    std::vector<std::uint32_t> maximum_;
};

}  // namespace

std::string describedDiff(const RVGitDiffMap& diff) {
    return describedMap(diff);
}

std::string describedDiffOfTwin(std::string_view block) {
    Twin twin;
    const bool succeeded = twin.parse(block);
    return twin.description() + (succeeded ? "" : "failed");
}

std::vector<std::string> blocksOfTwin(std::string_view output) {
    std::vector<std::string> blocks;
    std::string block;
    for (std::size_t index = 0; index < output.size(); ++index) {
        block += output[index];
        if ((output[index] != '\n' && output[index] != '\r') || output.size() - index - 1 < 10)
            continue;
        const std::string_view next = output.substr(index + 1, 10);
        if (next == "diff --git" || next == "diff --cc " || next == "diff --com" ||
            (next == "Submodule " && output[index] == '\n')) {
            blocks.push_back(block);
            block.clear();
        }
    }
    if (!block.empty())
        blocks.push_back(block);
    return blocks;
}
