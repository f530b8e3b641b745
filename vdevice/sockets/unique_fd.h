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
        if (fd_ >= 0) {
            ::close(fd_);
        }
        fd_ = fd;
    }

  private:
    static constexpr int kNone = -1;
    int fd_ = kNone;
};

}  // namespace vdevice
