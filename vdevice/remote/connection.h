// One client of the server: its bytes in and out, and its state in the protocol.
#pragma once

#include <stdint.h>
#include <span>
#include <utility>
#include <vector>

#include "vdevice/remote/server.h"
#include "vdevice/remote/wire.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice::remote {

class Connection {
  public:
    Connection(Server &server, UniqueFd socket) : server_(server), socket_(std::move(socket)) {}

    /** Reads, answers and writes without waiting; false if the client is to be closed. */
    bool serve();
    /** Answers wait for the client to read them; until then no request of it is read. */
    [[nodiscard]] bool is_blocked() const { return !output_.empty(); }
    /** There is work as soon as the client can be written to, even if it sends nothing more. */
    [[nodiscard]] bool has_work() const { return is_blocked() || has_more_; }

    /** How many ticks the handshake has taken up to now; 0 once it is over. */
    int count_tick() { return greeted_ && !closing_ ? 0 : ++ticks_; }

    /** The events that the server waits for on the socket; the server sets them. */
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
    UniqueFd socket_;
    int ticks_ = 0;
    uint32_t awaited_ = 0;
    bool greeted_ = false;
    bool watching_ = false;
    bool overrun_ = false;  /**< messages were lost because the client did not read */
    bool has_more_ = false; /**< the turn ended with messages left */
    bool closing_ = false;  /**< closed as soon as the output is sent */
    std::vector<uint8_t> input_;
    std::vector<uint8_t> output_;
};

}  // namespace vdevice::remote
