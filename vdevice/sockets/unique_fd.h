// A file descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

namespace vdevice {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_{fd} {}
    UniqueFd(UniqueFd &&other) noexcept : fd_{std::exchange(other.fd_, kNone)} {}
    UniqueFd &operator=(UniqueFd &&other) noexcept {
        reset(std::exchange(other.fd_, kNone));
        return *this;
    }
    ~UniqueFd() { reset(); }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    void reset(int fd = kNone) {
        // Forgotten first: the child of a fork in between must not take the next descriptor of this number for it.
        if (const int before = std::exchange(fd_, fd); before >= 0) {
            ::close(before);
        }
    }

  private:
    static constexpr int kNone = -1;
    int fd_ = kNone;
};

}  // namespace vdevice
