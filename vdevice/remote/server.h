// The daemon's end: takes calls from any number of clients and answers them, within the daemon's own event loop.
#pragma once

#include <stdint.h>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "generated/driver_calls.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/sockets/listening_socket.h"

namespace vdevice::remote {

class Connection;

/**
 * Serves driver calls on a Unix socket. Nothing in here waits: the daemon polls poll_fd() for reading and calls
 * serve_ready() when it is ready, and tick() once a second. A client that sends malformed messages is closed; the
 * others do not notice.
 */
class Server {
  public:
    /** Answers one call; the result is the call's. */
    using Handler = std::function<int64_t(calls::CallId, const void *const *arguments)>;
    /** Called with each call after it is answered, for a trace. */
    using Observer = std::function<void(calls::CallId, const void *const *arguments, int64_t result)>;

    /** Answers a request that is no driver call: gives its result and fills in the words after it. */
    using ExtraHandler = std::function<int32_t(Extra, std::span<const uint32_t> words, std::vector<uint32_t> &answer)>;

    using LinkChange = std::array<uint32_t, kLinkChangeWords>;
    /** Gives each port's present state, as if it had just changed. */
    using LinkStates = std::function<std::vector<LinkChange>()>;

    struct Counters {
        uint64_t connected = 0;  /**< clients that shook hands */
        uint64_t calls = 0;      /**< calls answered */
        uint64_t mismatched = 0; /**< clients built from other headers */
        uint64_t malformed = 0;  /**< clients closed for a malformed message */
        uint64_t refused = 0;    /**< clients turned away because there were too many */
        uint64_t late = 0;       /**< clients closed since they did not finish the handshake in time */
    };

    static constexpr size_t kMaxClients = 1024;
    /** Within so many ticks a client has to finish the handshake. */
    static constexpr int kHandshakeTicks = 5;

    /** As ListeningSocket: the caller makes sure that no other server uses the path. */
    Server(DriverCalls &calls, const std::string &path);
    Server(Handler handler, const std::string &path);
    ~Server();  // the connections' class is known in server.cpp only
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    [[nodiscard]] int poll_fd() const { return epoll_.get(); }
    void serve_ready();
    void tick();

    void set_observer(Observer observer) { observer_ = std::move(observer); }
    void set_extra_handler(ExtraHandler handler) { extra_handler_ = std::move(handler); }
    /** A client is told them when it begins to watch, so also after it has missed changes. */
    void set_link_states(LinkStates link_states) { link_states_ = std::move(link_states); }
    /** Sends a link change to the clients that watch. May be called while a call is being answered. */
    void publish_link_change(std::span<const uint32_t, kLinkChangeWords> words);
    [[nodiscard]] const Counters &counters() const { return counters_; }
    [[nodiscard]] size_t clients() const { return connections_.size(); }

  private:
    friend class Connection;

    void accept_client();
    void listen(bool wanted);
    void serve(int descriptor, Connection &connection);
    void close_client(int descriptor);
    void await(int descriptor, Connection &connection, uint32_t events);

    Handler handler_;
    Observer observer_;
    ExtraHandler extra_handler_;
    LinkStates link_states_;
    UniqueFd epoll_;
    ListeningSocket listener_;
    bool is_listening_ = false;
    std::map<int, std::unique_ptr<Connection>> connections_;
    Counters counters_;
};

}  // namespace vdevice::remote
