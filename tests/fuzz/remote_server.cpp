// The server of the driver socket, with any bytes from a client: it answers with complete messages, and serves another
// client as before.
//
// Input: how it begins (see protocol.h), where it is cut in two, and the bytes.
#include "vdevice/remote/server.h"

#include <algorithm>

#include "calls/describe.h"
#include "tests/fuzz/protocol.h"
#include "tests/fuzz/raw_socket.h"
#include "tests/support/random_call.h"
#include "tests/support/temporary_folder.h"

namespace {

using calls::CallId;
using fuzz::Bytes;
using fuzz::expect;
using vdevice::remote::Extra;
using vdevice::remote::kMaxMessageWords;
using vdevice::remote::kWordBytes;
using vdevice::remote::Reader;
using vdevice::remote::Server;
using vdevice::remote::Writer;

constexpr int kMostRounds = 64;

/** Reads every argument and writes every output, as a driver may. */
int64_t answer(CallId id, const void *const *arguments) {
    const size_t length = calls::describe_call(id, arguments).size();
    random_call::write_outputs(id, arguments, length);
    return random_call::random_result(id, length);
}

int32_t take_event(Extra, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
    answer.assign(words.begin(), words.end());
    return static_cast<int32_t>(words.size());
}

/** One server for all inputs, like the daemon's for all clients. */
class Daemon {
  public:
    Daemon() : server_(answer, folder_.path() + "/driver") { server_.set_extra_handler(take_event); }

    [[nodiscard]] fuzz::RawSocket connect() const { return fuzz::RawSocket(folder_.path() + "/driver"); }
    Server &server() { return server_; }

  private:
    TemporaryFolder folder_;
    Server server_;
};

/** Runs server and client until both are idle. @return true if the client is still connected */
bool run(Server &server, const fuzz::RawSocket &client, Bytes *received) {
    bool open = true;
    for (int round = 0; round < kMostRounds && open; ++round) {
        const size_t before = received->size();
        const uint64_t calls = server.counters().calls;
        server.serve_ready();
        open = client.receive(received);
        if (round > 1 && received->size() == before && server.counters().calls == calls) {
            break;
        }
    }
    return open;
}

/** Checks the greeting and the length of each message; the last may be cut short if the client was closed. */
void expect_whole_messages(const Bytes &received, bool is_open) {
    Reader reader(received);
    if (received.empty()) {
        return;
    }
    expect(reader.word() == vdevice::remote::kMagic && reader.word() == calls::kInterfaceChecksum, "the greeting");
    while (reader.is_good() && reader.left() != 0) {
        const uint32_t words = reader.word();
        expect(words >= 1 && words <= kMaxMessageWords, "the length of a message");
        for (uint32_t count = 0; count < words; ++count) {
            reader.word();
        }
    }
    expect(reader.is_good() || !is_open, "whole messages");
}

void expect_served(Server &server, const fuzz::RawSocket &client) {
    constexpr uint32_t kVid = 9;
    const uint32_t zero = 0;
    const void *const arguments[] = {&zero, &zero, &kVid};
    Writer request;
    for (const uint32_t word : {4u, static_cast<uint32_t>(CallId::user_vlan_create), zero, zero, kVid}) {
        request.word(word);
    }
    client.send(request.buffer());
    Bytes received;
    expect(run(server, client, &received), "the other client stays");
    Reader reader(received);
    expect(reader.word() == 2, "the other client's answer");
    expect(reader.word() == static_cast<uint32_t>(answer(CallId::user_vlan_create, arguments)),
           "the other client's result");
}

/** A client that follows the protocol. */
const fuzz::RawSocket &other_client(Daemon &daemon) {
    static const fuzz::RawSocket client = daemon.connect();
    static const bool greeted = [&] {
        Writer greeting;
        greeting.word(vdevice::remote::kMagic);
        greeting.word(calls::kInterfaceChecksum);
        client.send(greeting.buffer());
        Bytes received;
        return run(daemon.server(), client, &received) && received.size() == greeting.buffer().size();
    }();
    expect(greeted, "the other client is greeted");
    return client;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static Daemon daemon;
    const fuzz::RawSocket &other = other_client(daemon);
    fuzz::Input input(data, size);
    const fuzz::Framing framing = fuzz::Framing::read(&input);
    const size_t cut = input.u16();
    const Bytes bytes = fuzz::protocol_bytes(&input, framing);
    {
        const fuzz::RawSocket client = daemon.connect();
        const std::span whole(bytes);
        Bytes received;
        client.send(whole.first(std::min(cut, bytes.size())));
        bool is_open = run(daemon.server(), client, &received);
        if (is_open && cut < bytes.size()) {
            client.send(whole.subspan(cut));
            is_open = run(daemon.server(), client, &received);
        }
        expect_whole_messages(received, is_open);
        expect_served(daemon.server(), other);
    }
    Bytes nothing;
    run(daemon.server(), other, &nothing);
    expect(daemon.server().clients() == 1, "a client that left is forgotten");
    return 0;
}
