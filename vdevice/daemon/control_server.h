// The control socket: one request as a line of JSON, one answer as a line of JSON, for vdevctl and for scripts.
#pragma once

#include <functional>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "vdevice/io/event_loop.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

class ControlServer {
  public:
    using Handler = std::function<nlohmann::json(const nlohmann::json &request)>;

    /** Replaces the socket of a dead daemon; throws an io::Error if a running one answers there. */
    ControlServer(io::EventLoop &loop, std::string path, Handler handler);
    ~ControlServer();
    ControlServer(const ControlServer &) = delete;
    ControlServer &operator=(const ControlServer &) = delete;

  private:
    static constexpr size_t kMaxClients = 32;
    static constexpr size_t kMaxRequest = 65536;

    struct Client {
        UniqueFd fd;
        std::string input;
        std::string output;

        /** An answer waits to be sent, or a whole request to be answered. */
        bool has_work() const { return !output.empty() || input.find('\n') != std::string::npos; }
    };

    void accept_client();
    void serve(int fd, uint32_t events);
    /** These are false if the client is to be closed. An answer is made after the one before it is sent. */
    bool read_requests(Client &client);
    bool answer_one(Client &client);
    bool write_answers(Client &client);
    std::string answer(const std::string &line) const;

    io::EventLoop &loop_;
    std::string path_;
    Handler handler_;
    UniqueFd listener_;
    std::map<int, Client> clients_;
};

}  // namespace vdevice
