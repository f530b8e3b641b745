// Connects to the control socket, with one deadline and a limit for what arrives.
#include "vdevice/process/control_client.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "vdevice/sockets/device_socket.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kDeadline{5};
/** Far more than any answer of a daemon; a stranger's could fill the memory. */
constexpr size_t kMaxAnswer = size_t{16} << 20;
constexpr int kMaxDepth = 32;

/** One request, its answer and the time for both. */
class Exchange {
  public:
    explicit Exchange(const ControlPeer &peer) : peer_{peer} {}

    void reach() {
        const int error = connect_to_device(socket_, peer_.path, end_);
        if (error == ENOENT || error == ECONNREFUSED) {
            fail("cannot reach", ": no " + peer_.program + " is running there. " + peer_.advice);
        }
        if (error != 0) {
            fail("cannot reach", ": " + connect_problem(error) + ".");
        }
    }

    void send_all(std::string_view request) {
        while (!request.empty()) {
            const ssize_t sent = send(socket_.get(), request.data(), request.size(), MSG_NOSIGNAL);
            if (sent >= 0) {
                request.remove_prefix(static_cast<size_t>(sent));
            } else if (errno == EPIPE || errno == ECONNRESET) {
                return;  // a daemon that takes no more has perhaps said why
            } else {
                wait_after_failure("cannot ask", POLLOUT);
            }
        }
    }

    /** A line. */
    std::string receive() {
        std::string answer;
        std::array<char, 65536> buffer;
        while (answer.empty() || answer.back() != '\n') {
            const ssize_t length = recv(socket_.get(), buffer.data(), buffer.size(), 0);
            if (length == 0 || (length < 0 && errno == ECONNRESET)) {
                fail("", " closed the connection without an answer.");
            }
            if (length < 0) {
                wait_after_failure("cannot hear from", POLLIN);
                continue;
            }
            answer.append(buffer.data(), static_cast<size_t>(length));
            if (answer.size() > kMaxAnswer) {
                fail("", " gave an answer of more than " + std::to_string(kMaxAnswer >> 20) + " MiB. It is no " +
                             peer_.program + ".");
            }
        }
        return answer;
    }

    [[noreturn]] void fail(const std::string &start, const std::string &rest) const {
        throw std::runtime_error{start + (start.empty() ? "" : " ") + peer_.name + " at " + peer_.path + rest};
    }

  private:
    /** Waits until a call that had to wait can be made again; throws if it has failed for another reason. */
    void wait_after_failure(const char *start, short events) {
        if (errno != EAGAIN && errno != EINTR) {
            fail(start, ": " + connect_problem(errno) + ".");
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
        pollfd waiting{socket_.get(), events, 0};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) == 0) {
            fail("", " gave no answer within " + std::to_string(kDeadline.count()) + " s.");
        }
    }

    const ControlPeer &peer_;
    const Clock::time_point end_ = Clock::now() + kDeadline;
    UniqueFd socket_;
};

}  // namespace

nlohmann::json ask(const ControlPeer &peer, const nlohmann::json &request) {
    Exchange exchange{peer};
    exchange.reach();
    exchange.send_all(request.dump() + "\n");
    // What is nested deeper than any answer is not kept: each level takes far more memory than its letter.
    const auto is_kept = [](int depth, nlohmann::json::parse_event_t, const nlohmann::json &) {
        return depth < kMaxDepth;
    };
    nlohmann::json answer = nlohmann::json::parse(exchange.receive(), is_kept, false);
    if (!answer.is_object()) {
        exchange.fail("", " gave an answer that cannot be read.");
    }
    if (const auto error = answer.find("error"); error != answer.end() && error->is_string()) {
        throw std::runtime_error{error->get<std::string>()};
    }
    return answer;
}

}  // namespace vdevice
