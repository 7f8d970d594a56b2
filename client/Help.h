#pragma once

#include <string>
#include <string_view>
#include <vector>

struct Command;

/// What the command does, in a sentence or two; empty if nothing is written of it.
[[nodiscard]] std::string_view descriptionOf(const Command& command);
/// How it is called, without the remark that may stand behind it, in one line.
[[nodiscard]] std::string usageInOneLine(const Command& command);
/// The options that its usage names, in the long form.
[[nodiscard]] std::vector<std::string> optionsOf(const Command& command);
/// The words of its usage that choose one of several actions: "list" and "save" of "stash".
[[nodiscard]] std::vector<std::string> actionsOf(const Command& command);
/// Usage and description, for people to read.
[[nodiscard]] std::string helpText(const Command& command);
