// Gives every file of the folders and files named to the fuzz target once: the corpus as a test, without the
// fuzzer's library.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

int main(int argc, char** argv) try {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& entry : fs::directory_iterator(argv[i])) files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
        if (!stream.is_open() || stream.bad()) {
            std::fprintf(stderr, "%s can't be read\n", file.c_str());
            return 1;
        }
        std::printf("%s\n", file.c_str());
        std::fflush(stdout);  // the last name printed is the one that crashed
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    if (files.empty()) std::fputs("no corpus\n", stderr);
    return files.empty() ? 1 : 0;
} catch (const fs::filesystem_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
