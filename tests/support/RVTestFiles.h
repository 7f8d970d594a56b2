#pragma once

#include <string>
#include <string_view>

// Files for the test support itself; a test uses the helpers of RVGitTestCase. All of these throw
// std::system_error or std::filesystem::filesystem_error on failure.

[[nodiscard]] std::string readTestFile(const std::string& path);
/// Replaces what is there, and makes the parent directories.
void writeTestFile(const std::string& path, std::string_view contents, unsigned permissions = 0644);
/// Removes the tree, directories without permissions too.
void removeTestTree(const std::string& path);
/// The text as one word of a shell script.
[[nodiscard]] std::string quotedForShell(std::string_view text);
/// A command of the shell that waits while the other one succeeds ("test -e file"), for a minute at
/// most: nothing of it is left then, and it keeps none of the shell's pipes open.
[[nodiscard]] std::string waitingLoopForShell(std::string_view condition);
