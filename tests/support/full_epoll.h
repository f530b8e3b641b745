// A kernel that watches no more descriptors.
#pragma once

/** While it lives, no descriptor can be added to an epoll. */
class FullEpoll {
  public:
    FullEpoll();
    ~FullEpoll();
    FullEpoll(const FullEpoll &) = delete;
    FullEpoll &operator=(const FullEpoll &) = delete;
};
