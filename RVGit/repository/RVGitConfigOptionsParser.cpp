#include "RVGit/repository/RVGitConfigOptionsParser.h"

#include "RVGit/base/RVString.h"

RVGitConfigOptionsParser::RVGitConfigOptionsParser(std::string_view outputData)
    : RVGitOutputParser(outputData, Delimiter::NULByte) {}

std::string_view RVGitConfigOptionsParser::parserName() const {
    return "RVGitConfigOptionsParser";
}

bool RVGitConfigOptionsParser::parseOutputLine(std::string_view line) {
    auto newline = line.find('\n');
    if (newline == std::string_view::npos)
        return false;
    auto key = line.substr(0, newline);
    auto found = values_.find(key);
    if (found == values_.end())
        found = values_.try_emplace(std::string(key)).first;
    found->second.emplace_back(line.substr(newline + 1));
    return true;
}

RVOptions RVGitConfigOptionsParser::configOptions() const {
    RVOptions options;
    for (const auto& [key, values] : values_)
        options.emplace_hint(options.end(), key,
                             values.size() == 1 ? RVValue(values.front()) : RVValue(values));
    return options;
}

std::map<std::string, RVOptions, std::less<>> RVGitConfigOptionsParser::parseConfigOptionsBySection(
    const RVOptions& configOptions) {
    std::map<std::string, RVOptions, std::less<>> sections;
    for (const auto& [key, value] : configOptions) {
        auto first = key.find('.');
        auto last = key.rfind('.');
        if (first == last)
            continue;
        auto& section = sections[key.substr(first + 1, last - first - 1)];
        section.insert_or_assign(lowercaseString(key.substr(last + 1)), value);
    }
    return sections;
}
