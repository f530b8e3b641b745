// Runs a fuzz target on files, or on all files of folders.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

namespace fs = std::filesystem;

void replay(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    // Printed first: the last name is that of the input that ended the program. The copy has exactly the input's size,
    // so that the sanitizer finds reads beyond it.
    dprintf(STDOUT_FILENO, "%s: %zu bytes\n", path.c_str(), bytes.size());
    const fuzz::Bytes input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::vector<fs::path> files_of(const fs::path &path) {
    std::vector<fs::path> files;
    if (fs::is_directory(path)) {
        for (const auto &entry : fs::directory_iterator(path)) {
            files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
    } else {
        files.push_back(path);
    }
    return files;
}

}  // namespace

int main(int count, char **arguments) {
    size_t replayed = 0;
    for (int index = 1; index < count; ++index) {
        for (const fs::path &file : files_of(arguments[index])) {
            replay(file);
            ++replayed;
        }
    }
    dprintf(STDOUT_FILENO, "%zu inputs\n", replayed);
    return replayed == 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
