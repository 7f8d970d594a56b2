#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Feeds every file below the given directories to the fuzz target. A directory without files is a
// failure: nothing would have been replayed.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::vector<std::filesystem::path> seeds;
    for (int index = 1; index < argc; ++index) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[index])) {
            if (entry.is_regular_file()) {
                seeds.push_back(entry.path());
            }
        }
    }
    std::sort(seeds.begin(), seeds.end());
    for (const std::filesystem::path& seed : seeds) {
        std::ifstream stream(seed, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        // Said first: a crash is then laid at the right seed's door.
        std::printf("%s\n", seed.c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    return seeds.empty() ? 1 : 0;
}
