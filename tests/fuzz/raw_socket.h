/**
 * @file raw_socket.h
 * A client of a Unix socket that never waits, within the thread that also runs the server.
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

    /** Sends what the other end takes now; how much that was. */
    size_t send(std::span<const uint8_t> data) const;
    /** Nothing more will be sent. */
    void finish() const;
    /** Adds what has arrived; false once the other end has closed. */
    bool receive(Bytes *to) const;

  private:
    int socket_;
};

}  // namespace fuzz
