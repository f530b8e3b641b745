/**
 * @file raw_socket.h
 * A non-blocking client of a Unix socket, in the thread that also runs the server.
 */
#pragma once

#include <stdint.h>
#include <span>
#include <string>

#include "tests/fuzz/fuzz.h"

namespace fuzz {

class RawSocket {
  public:
    explicit RawSocket(const std::string &path);
    ~RawSocket();
    RawSocket(const RawSocket &) = delete;
    RawSocket &operator=(const RawSocket &) = delete;

    /** Sends without waiting. @return the number of bytes sent */
    size_t send(std::span<const uint8_t> data) const;
    /** Shuts down sending. */
    void finish() const;
    /** Appends what has been received. @return false once the other end has closed */
    bool receive(Bytes *to) const;

  private:
    int socket_;
};

}  // namespace fuzz
