// Replaces libFuzzer if the compiler does not have it. Runs each of the given files, and each file of the
// given folders, once. Arguments that begin with '-' are options of libFuzzer and are ignored.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Paths = std::vector<std::filesystem::path>;

Paths filesAt(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path))
        return {path};
    Paths files;
    for (const auto& entry : std::filesystem::directory_iterator(path))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// Returns: false if the file cannot be read.
bool run(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    // In a block of exactly its size, so that a sanitizer detects every access beyond the end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        if (*argv[i] == '-')
            continue;
        for (const std::filesystem::path& path : filesAt(argv[i])) {
            if (!run(path))
                return 1;
            ++count;
        }
    }
    std::printf("%zu inputs\n", count);
    return count == 0 ? 1 : 0;
}
