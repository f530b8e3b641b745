/**
 * @file connection.h
 * One client of the server: its bytes in and out, and where in the protocol it stands.
 */
#pragma once

#include <stdint.h>
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
    /** There is something to do as soon as the client can be written to, without anything more from it. */
    [[nodiscard]] bool has_work() const { return is_blocked() || has_more_; }

    /** What the server waits for on the socket; it says so whenever that changes. */
    [[nodiscard]] uint32_t awaited() const { return awaited_; }
    void set_awaited(uint32_t events) { awaited_ = events; }

    [[nodiscard]] bool is_watching() const { return watching_; }
    /** Adds a message to the output; a client that leaves too many unread is closed. */
    void push(std::span<const uint32_t> words);

  private:
    bool receive();
    bool flush();
    bool handle_messages();
    /** Handles the first message of the input; @p size is how long it is, 0 if it is not whole yet. */
    bool next_message(std::span<const uint8_t> input, size_t &size);
    bool shake_hands(Reader &reader);
    bool answer(std::span<const uint8_t> request);
    bool answer_extra(Extra id, Reader &reader);
    void put_out(const Writer &writer);
    bool malformed();

    Server &server_;
    int socket_;
    uint32_t awaited_ = 0;
    bool greeted_ = false;
    bool watching_ = false;
    bool overrun_ = false;  /**< messages were lost because the client did not read */
    bool has_more_ = false; /**< the turn ended before the messages did */
    bool closing_ = false;  /**< closed as soon as the output is out */
    std::vector<uint8_t> input_;
    std::vector<uint8_t> output_;
};

}  // namespace vdevice::remote
