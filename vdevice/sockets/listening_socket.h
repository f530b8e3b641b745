// A Unix socket that waits for clients, and its file.
#pragma once

#include <sys/types.h>

#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

class ListeningSocket {
  public:
    /**
     * Replaces the socket of a dead server: the caller makes sure that no other one lives. Throws std::runtime_error
     * with a sentence if the path cannot be used, above all if a file of another kind is there.
     */
    explicit ListeningSocket(std::string path);
    /** Removes the socket's file, unless another one has taken its place. */
    ~ListeningSocket();
    ListeningSocket(const ListeningSocket &) = delete;
    ListeningSocket &operator=(const ListeningSocket &) = delete;

    int fd() const { return fd_.get(); }
    /** False if the socket's file was removed, or another one has taken its place. */
    bool is_in_place() const;
    /** The next client, if one waits and can be accepted. */
    UniqueFd accept();
    /**
     * The last client could not be accepted, for lack of descriptors or memory. It still waits, so polling goes on
     * reporting it: the caller pauses.
     */
    bool is_exhausted() const { return exhausted_; }

  private:
    std::string path_;
    UniqueFd fd_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    bool exhausted_ = false;
};

}  // namespace vdevice
