// Printing, with every failure noticed.
#include "tools/vdevctl/output.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace vdevctl {

void print(const std::string &text) {
    const bool is_written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (is_written && std::fflush(stdout) == 0) {
        return;
    }
    const int reason = errno;
    if (reason == EPIPE) {
        _exit(EXIT_FAILURE);
    }
    throw std::runtime_error{"cannot print the answer: " + std::generic_category().message(reason) + "."};
}

}  // namespace vdevctl
