// Written beside the file and renamed.
#include "switchd/daemon/small_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

namespace switchd {
namespace {

constexpr off_t kMostOctets = 1 << 20;

}  // namespace

std::string text_in(const std::string &path) {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode) || found.st_size > kMostOctets) {
        return {};
    }
    std::ifstream stream{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

void write_text(const std::string &path, const std::string &text) {
    const std::string written = path + ".new";
    std::ofstream stream{written, std::ios::binary | std::ios::trunc};
    stream << text << std::flush;
    if (!stream || std::rename(written.c_str(), path.c_str()) != 0) {
        unlink(written.c_str());
        unlink(path.c_str());
    }
}

}  // namespace switchd
