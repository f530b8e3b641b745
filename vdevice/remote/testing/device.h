// What the tests of client and server share: a folder, a server's loop, a small device, a client that sends anything.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temporary_folder.h"
#include "vdevice/remote/client.h"
#include "vdevice/remote/server.h"
#include "vdevice/remote/wire.h"

namespace vdevice::remote {

inline constexpr int kPollMilliseconds = 20;

inline sockaddr_un address_of(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

/** A folder of the test's own, and the path of a socket in it. */
class Folder : public TemporaryFolder {
  public:
    std::string socket() const { return path() + "/driver"; }
};

/** Held by a loop while it serves. */
inline std::mutex serving;

/** A server whose figures a test reads while its loop runs. */
class ObservedServer : public Server {
  public:
    using Server::Server;

    [[nodiscard]] Counters counters() const {
        const std::lock_guard guard(serving);
        return Server::counters();
    }
    [[nodiscard]] size_t clients() const {
        const std::lock_guard guard(serving);
        return Server::clients();
    }
};

/** Runs a server's loop in a thread for as long as it lives. */
class Loop {
  public:
    explicit Loop(Server &server) : thread_([this, &server] { run(server); }) {}
    ~Loop() {
        stop_ = true;
        thread_.join();
    }
    Loop(const Loop &) = delete;
    Loop &operator=(const Loop &) = delete;

  private:
    void run(Server &server) {
        while (!stop_) {
            pollfd ready{server.poll_fd(), POLLIN, 0};
            if (poll(&ready, 1, kPollMilliseconds) > 0) {
                const std::lock_guard guard(serving);
                server.serve_ready();
            }
        }
    }

    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/** A client that sends what a real one would not. */
class RawClient {
  public:
    explicit RawClient(const std::string &path) : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {
        const sockaddr_un address = address_of(path);
        const timeval patience{kPatienceSeconds, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        EXPECT_EQ(connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    }
    ~RawClient() { close(socket_); }
    RawClient(const RawClient &) = delete;
    RawClient &operator=(const RawClient &) = delete;

    void send_words(std::initializer_list<uint32_t> words) const {
        Writer writer;
        for (const uint32_t word : words) {
            writer.word(word);
        }
        send_bytes(writer.buffer());
    }
    void send_bytes(std::span<const uint8_t> bytes) const { send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL); }
    /** Sends until the server has taken nothing more for a while; returns how much it took. */
    size_t send_without_reading(const std::vector<uint8_t> &data) const {
        constexpr int kPatience = 300;
        size_t sent = 0;
        pollfd ready{socket_, POLLOUT, 0};
        while (sent < data.size() && poll(&ready, 1, kPatience) > 0) {
            const ssize_t now = send(socket_, &data[sent], data.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (now < 0) {
                break;
            }
            sent += static_cast<size_t>(now);
        }
        return sent;
    }
    /** True once the server has closed the connection; what it sent before is read and dropped. */
    bool is_closed() const {
        constexpr int kPatience = 2000;
        pollfd ready{socket_, POLLIN, 0};
        while (poll(&ready, 1, kPatience) > 0) {
            uint8_t data[256];
            if (recv(socket_, data, sizeof data, 0) <= 0) {
                return true;
            }
        }
        return false;
    }
    /** Bytes that arrive within the test's patience, at most @p size. */
    size_t receive(uint8_t *to, size_t size) const {
        if (size == 0) {
            return 0;  // the kernel would wait for an octet
        }
        return static_cast<size_t>(std::max<ssize_t>(recv(socket_, to, size, MSG_WAITALL), 0));
    }

    /** Bytes that have arrived and were not read. */
    size_t waiting_bytes() const {
        int count = 0;
        ioctl(socket_, FIONREAD, &count);
        return static_cast<size_t>(count);
    }
    void skip_waiting() const {
        std::vector<uint8_t> data(waiting_bytes());
        receive(data.data(), data.size());
    }

  private:
    static constexpr time_t kPatienceSeconds = 10;  // a server that never answers fails a test, it does not hang it

    int socket_;
};

inline int32_t create_vlan(Client &client, uint32_t vid) {
    const uint32_t zero = 0;
    const void *const arguments[] = {&zero, &zero, &vid};
    return client.call(calls::CallId::user_vlan_create, arguments);
}

/** Carries out two calls. The created VLAN is the status, so that a test sees what arrived. */
class VlanOnly : public DriverCalls {
  public:
    VlanOnly() {
        sections_.vlans = std::make_unique<Vlans>();
        sections_.services = std::make_unique<Services>(logged);
    }

    std::string logged;

  private:
    struct Vlans : VlansCalls {
        chip::Status user_vlan_create(uint32_t vid) override { return static_cast<chip::Status>(vid); }
    };
    struct Services : ServicesCalls {
        explicit Services(std::string &logged_to) : logged{logged_to} {}
        int32_t log_line(int32_t level, int32_t, const char *word, const char *text) override {
            logged = std::string(word) + ": " + text;
            return level;
        }
        std::string &logged;
    };
};

/** A server that carries out those calls. */
class RemoteVlans : public testing::Test {
  protected:
    Folder folder_;
    VlanOnly device_;
    ObservedServer server_{device_, folder_.socket()};
};

}  // namespace vdevice::remote
