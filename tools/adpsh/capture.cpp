// Captures a descriptor in an anonymous file.
#include "tools/adpsh/capture.h"

#include <stddef.h>
#include <sys/mman.h>
#include <unistd.h>
#include <array>
#include <cstdio>
#include <utility>

namespace adpsh {

namespace {

// Bounds the memory that endless output can take.
constexpr size_t kMaxCaptured = size_t{1024} * 1024;
constexpr size_t kChunk = 4096;

}  // namespace

Capture::Capture(int descriptor) : descriptor_(descriptor) {
    std::fflush(nullptr);
    memory_ = ::memfd_create("adpsh-capture", MFD_CLOEXEC);
    saved_ = ::dup(descriptor);
    if (memory_ >= 0 && saved_ >= 0) {
        ::dup2(memory_, descriptor);
    }
}

Capture::~Capture() {
    restore();
    if (memory_ >= 0) {
        ::close(memory_);
    }
}

void Capture::restore() {
    if (saved_ >= 0) {
        std::fflush(nullptr);
        ::dup2(saved_, descriptor_);
        ::close(std::exchange(saved_, -1));
    }
}

std::string Capture::take() {
    restore();
    std::string text;
    if (memory_ < 0) {
        return text;
    }
    ::lseek(memory_, 0, SEEK_SET);
    std::array<char, kChunk> chunk{};
    ssize_t got = 0;
    while (text.size() < kMaxCaptured && (got = ::read(memory_, chunk.data(), chunk.size())) > 0) {
        text.append(chunk.data(), static_cast<size_t>(got));
    }
    ::close(std::exchange(memory_, -1));
    return text;
}

}  // namespace adpsh
