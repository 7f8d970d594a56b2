#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// Functions of a client that are named as some of the library's own, and mean something else.

bool isAbsolutePath(std::string_view) {
    std::abort();
}
std::string standardizedPath(std::string_view) {
    std::abort();
}
std::string lastPathComponent(std::string_view) {
    std::abort();
}
std::string stringUsingBestEncoding(std::string_view) {
    std::abort();
}
std::vector<std::string> componentsSeparatedByString(std::string_view, std::string_view) {
    std::abort();
}
