// The control socket: one request as a line of JSON, one answer as a line of JSON, for vdevctl and for scripts.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "vdevice/io/event_loop.h"
#include "vdevice/process/background_text.h"
#include "vdevice/sockets/listening_socket.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/**
 * In a turn of the loop one client is served: its next request is read and answered, or a piece of its answer is sent.
 * So control clients, however many, do not keep frames and driver calls waiting.
 */
class ControlServer {
  public:
    using Handler = std::function<nlohmann::json(const nlohmann::json &request)>;
    /** Whether the answer is made in the background, since making it takes long. The request then changes nothing. */
    using IsLong = std::function<bool(const nlohmann::json &request)>;

    static constexpr size_t kMaxClients = 256;
    static constexpr size_t kMaxRequest = 262144;  // room for an earlier reading of all rules, or a frame
    /** A client that was neither heard nor heard us for so many ticks makes room for another one, if there is none. */
    static constexpr int kIdleTicks = 30;

    /** Gives the next line of a client that is sent lines until it leaves, or nothing for now. */
    using Lines = std::function<std::optional<std::string>()>;
    /** Gives what the request opens, or null if it is another request. */
    using Open = std::function<Lines(const nlohmann::json &request, const std::function<void()> &wake)>;

    /** As ListeningSocket: the caller makes sure that no other server uses the path. */
    ControlServer(io::EventLoop &loop, const std::string &path, Handler handler, IsLong is_long = nullptr,
                  Open open = nullptr);
    ControlServer(const ControlServer &) = delete;
    ControlServer &operator=(const ControlServer &) = delete;

    /** To be called once a second. */
    void tick();
    size_t clients() const { return clients_.size(); }
    /** Clients that were turned away because there were too many. */
    uint64_t rejected() const { return rejected_; }

  private:
    struct Client {
        UniqueFd fd;
        std::string input;
        std::string output;
        size_t sent = 0;         /**< octets of the output */
        UniqueFd rest;           /**< a file that follows the output */
        bool is_waiting = false; /**< for an answer that is made in the background */
        Lines lines;             /**< that it is sent until it leaves */
        bool has_lines = false;  /**< there are more than its output has room for */
        int idle_ticks = 0;

        bool has_output() const { return sent < output.size() || rest; }
        /** An answer waits to be sent, or a whole request to be answered. */
        bool has_work() const { return has_output() || has_lines || input.find('\n') != std::string::npos; }
    };

    /** A client whose answer is made in the background, one after the other. */
    struct Waiting {
        int fd;
        std::function<std::string()> make;
    };

    /** Memory is given back to the system when there are so few again. */
    static constexpr size_t kFewClients = 4;

    void accept_client();
    bool make_room();
    void give_memory_back();
    void listen(bool wanted);
    void serve(int fd, uint32_t events);
    void close_client(int fd);
    /** These are false if the client is to be closed. An answer is made after the one before it is sent. */
    bool take_turn(Client &client, uint32_t events);
    bool read_requests(Client &client);
    bool send_lines(Client &client, uint32_t events);
    bool answer_one(Client &client);
    bool write_answers(Client &client);
    bool refill(Client &client);
    void answer(Client &client, const std::string &line);
    void make_next();
    void take_text();
    void hand_over(UniqueFd text);
    void await(const Client &client);

    Handler handler_;
    IsLong is_long_;
    Open open_;
    ListeningSocket listener_;
    bool is_listening_ = true;
    io::EventLoop turns_; /**< the descriptors of this server; the daemon's loop handles one event of them in a turn */
    std::map<int, Client> clients_;
    bool had_many_clients_ = false;
    uint64_t rejected_ = 0;
    std::deque<Waiting> waiting_; /**< the text of the first one is being made */
    std::unique_ptr<BackgroundText> background_;
};

}  // namespace vdevice
