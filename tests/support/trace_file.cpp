// Writes the trace file.
#include "tests/support/trace_file.h"

#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>

namespace trace_file {
namespace {

std::FILE *file() {
    static std::FILE *const opened = [] {
        const char *path = std::getenv("ADP_TRACE_FILE");
        std::FILE *trace = path == nullptr ? nullptr : std::fopen(path, "w");
        if (path != nullptr && trace == nullptr) {
            std::perror(path);
            std::exit(2);
        }
        return trace;
    }();
    return opened;
}

}  // namespace

bool is_enabled() {
    return file() != nullptr;
}

std::string portable(std::string line) {
    static const std::string datagram = "socket(2, " + std::to_string(SOCK_DGRAM) + ", ";
    return line.rfind(datagram, 0) == 0 ? line.replace(0, datagram.size(), "socket(2, datagram, ") : line;
}

void write(const std::string &line) {
    std::fprintf(file(), "%s\n", portable(line).c_str());
}

}  // namespace trace_file
