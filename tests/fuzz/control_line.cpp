// The daemon's control socket with any bytes from a client: every answer is a line of JSON, one for each line that was
// sent, and another client gets its own.
//
// Input: where it is cut in two, and the bytes.
#include <sys/epoll.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/raw_socket.h"
#include "tests/support/temporary_folder.h"
#include "vdevice/inspect/arguments.h"
#include "vdevice/process/control_server.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;
using nlohmann::json;
namespace inspect = vdevice::inspect;

/** The request as a command reads it, with its arguments named, or the reason why there is none. */
json answer(const json &request) {
    const auto name = request.find("command");
    const auto *subject =
        name != request.end() && name->is_string() ? inspect::find(name->get<std::string>()) : nullptr;
    if (subject == nullptr) {
        return {{"error", "no command"}};
    }
    try {
        return inspect::with_named_arguments(request, *subject);
    } catch (const inspect::Refusal &refusal) {
        return {{"error", refusal.what()}};
    }
}

class Daemon {
  public:
    [[nodiscard]] std::string path() const { return folder_.path() + "/control"; }

    /** Lets server and client go on until neither has anything to do; true if the client is still connected. */
    bool run(const fuzz::RawSocket &client, Bytes *received) {
        size_t before = 0;
        bool is_open = true;
        do {
            before = received->size();
            for (int turn = 0; turn < kTurns && loop_.run_once(0); ++turn) {
            }
            is_open = client.receive(received);
        } while (is_open && received->size() != before);
        return is_open;
    }

  private:
    static constexpr int kTurns = 1000;

    TemporaryFolder folder_;
    vdevice::io::EventLoop loop_;
    vdevice::ControlServer server_{loop_, path(), answer};
};

/** The lines of what was received; the last one must be whole. */
size_t count_answers(const Bytes &received) {
    size_t count = 0;
    for (auto begin = received.begin(); begin != received.end(); ++count) {
        const auto end = std::find(begin, received.end(), '\n');
        expect(end != received.end(), "whole lines");
        expect(json::parse(begin, end, nullptr, false).is_object(), "an answer in JSON");
        begin = end + 1;
    }
    return count;
}

size_t ask(Daemon &daemon, const Bytes &bytes, size_t cut) {
    const fuzz::RawSocket client(daemon.path());
    const std::span whole(bytes);
    Bytes received;
    client.send(whole.first(std::min(cut, bytes.size())));
    bool is_open = daemon.run(client, &received);
    if (is_open) {
        client.send(whole.subspan(std::min(cut, bytes.size())));
        is_open = daemon.run(client, &received);
    }
    expect(is_open, "a client that sends short lines stays");
    return count_answers(received);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr std::string_view kRequest = "{\"command\": 7}\n";
    static Daemon daemon;
    fuzz::Input input(data, size);
    const size_t cut = input.u16();
    const Bytes bytes = input.rest();
    if (bytes.size() > vdevice::ControlServer::kMaxRequest) {
        return 0;  // a client that sends overlong lines is closed
    }
    const auto lines = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
    expect(ask(daemon, bytes, cut) == lines, "an answer for each line");
    expect(ask(daemon, Bytes(kRequest.begin(), kRequest.end()), 1) == 1, "another client's answer");
    return 0;
}
