/**
 * @file connection.h
 * One client of the server: its bytes in and out, and where in the protocol it stands.
 */
#ifndef VDEVICE_REMOTE_CONNECTION_H
#define VDEVICE_REMOTE_CONNECTION_H

#include <cstdint>
#include <span>
#include <vector>

#include "vdevice/remote/server.h"
#include "vdevice/remote/wire.h"

namespace vdevice::remote {

class Connection {
  public:
    Connection(Server &server, int descriptor) : server_(server), socket_(descriptor) {}
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /** Reads, answers and writes as far as it goes without waiting; false once the client is to be closed. */
    bool serve();
    /** There are answers that the client has not taken yet: until it does, no request of it is read. */
    [[nodiscard]] bool is_blocked() const { return !output_.empty(); }

  private:
    bool receive();
    bool flush();
    bool handle_messages();
    bool shake_hands(Reader &reader);
    bool answer(std::span<const uint8_t> request);
    bool malformed();

    Server &server_;
    int socket_;
    bool greeted_ = false;
    bool closing_ = false; /**< closed as soon as the output is out */
    std::vector<uint8_t> input_;
    std::vector<uint8_t> output_;
};

}  // namespace vdevice::remote

#endif
