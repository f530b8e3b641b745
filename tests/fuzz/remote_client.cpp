// The client of the driver socket, with any bytes from a daemon, in any pieces: a call returns its answer or fails, and
// a failed call does not write its outputs.
//
// Input: the call, the seed of its arguments, how the answer begins (see protocol.h), the sizes of its pieces, and the
// bytes. The system calls of the client are answered here.
#include "vdevice/remote/client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

#include "calls/describe.h"
#include "generated/driver_calls.h"
#include "tests/fuzz/protocol.h"
#include "tests/support/random_call.h"
#include "vdevice/remote/message.h"

namespace {

using calls::CallId;
using calls::describe_result;
using fuzz::Bytes;
using fuzz::expect;
using random_call::RandomCall;
using vdevice::remote::Client;
using vdevice::remote::Extra;
using vdevice::remote::kCallLost;
using vdevice::remote::kMaxMessageWords;
using vdevice::remote::kWordBytes;
using vdevice::remote::Reader;

constexpr int kDescriptor = 1000;

/** The other end of the connection. */
struct Peer {
    Bytes bytes;
    size_t position = 0;
    size_t piece = 1;
    bool hangs = false; /**< after the bytes it stays open and silent */
    bool pauses = false;
    bool open = false;

    long give(void *to, size_t size) {
        pauses = !pauses;
        if (pauses || (hangs && position == bytes.size())) {
            errno = EAGAIN;
            return -1;
        }
        const size_t given = std::min({size, piece, bytes.size() - position});
        if (given != 0) {
            std::memcpy(to, &bytes[position], given);
        }
        position += given;
        return static_cast<long>(given);
    }
    [[nodiscard]] bool has_something() const { return !hangs || position < bytes.size(); }
};

Peer *peer = nullptr;

}  // namespace

// The linker's names for the wrapped calls and the originals are fixed.
extern "C" {

int __real_socket(int domain, int type, int protocol);
int __real_connect(int descriptor, const sockaddr *address, socklen_t length);
ssize_t __real_send(int descriptor, const void *data, size_t size, int flags);
ssize_t __real_recv(int descriptor, void *data, size_t size, int flags);
int __real_poll(pollfd *descriptors, nfds_t count, int timeout);
int __real_close(int descriptor);
int __real_lstat(const char *path, struct stat *found);
int __real_getsockopt(int descriptor, int level, int option, void *value, socklen_t *size);

int __wrap_socket(int domain, int type, int protocol);
int __wrap_connect(int descriptor, const sockaddr *address, socklen_t length);
ssize_t __wrap_send(int descriptor, const void *data, size_t size, int flags);
ssize_t __wrap_recv(int descriptor, void *data, size_t size, int flags);
int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout);
int __wrap_close(int descriptor);
int __wrap_lstat(const char *path, struct stat *found);
int __wrap_getsockopt(int descriptor, int level, int option, void *value, socklen_t *size);

int __wrap_socket(int domain, int type, int protocol) {
    if (peer == nullptr) {
        return __real_socket(domain, type, protocol);
    }
    expect(!peer->open, "one socket at a time");
    peer->open = true;
    return kDescriptor;
}

int __wrap_connect(int descriptor, const sockaddr *address, socklen_t length) {
    return peer == nullptr ? __real_connect(descriptor, address, length) : 0;
}

ssize_t __wrap_send(int descriptor, const void *data, size_t size, int flags) {
    return peer == nullptr ? __real_send(descriptor, data, size, flags) : static_cast<ssize_t>(size);
}

ssize_t __wrap_recv(int descriptor, void *data, size_t size, int flags) {
    return peer == nullptr ? __real_recv(descriptor, data, size, flags) : peer->give(data, size);
}

int __wrap_poll(pollfd *descriptors, nfds_t count, int timeout) {
    return peer == nullptr ? __real_poll(descriptors, count, timeout) : (peer->has_something() ? 1 : 0);
}

int __wrap_close(int descriptor) {
    if (peer == nullptr || descriptor != kDescriptor) {
        return __real_close(descriptor);
    }
    expect(peer->open, "what is closed was open");
    peer->open = false;
    return 0;
}

// Folder and peer are this user's.
int __wrap_lstat(const char *path, struct stat *found) {
    if (peer == nullptr) {
        return __real_lstat(path, found);
    }
    *found = {};
    found->st_mode = S_IFDIR;
    found->st_uid = geteuid();
    return 0;
}

int __wrap_getsockopt(int descriptor, int level, int option, void *value, socklen_t *size) {
    if (peer == nullptr) {
        return __real_getsockopt(descriptor, level, option, value, size);
    }
    *static_cast<ucred *>(value) = {0, geteuid(), 0};
    return 0;
}

}  // extern "C"

namespace {

/** The result in the reply after the greeting, if it is complete. */
std::optional<int32_t> result_of(const Bytes &bytes) {
    Reader reader(bytes);
    if (reader.word() != vdevice::remote::kMagic || reader.word() != calls::kInterfaceChecksum) {
        return std::nullopt;
    }
    const uint32_t words = reader.word();
    if (words < 2 || words > kMaxMessageWords || reader.left() < words * kWordBytes) {
        return std::nullopt;
    }
    return static_cast<int32_t>(reader.word());
}

void expect_answer(const Peer &other, CallId id, uint64_t seed, const RandomCall &sent, int32_t result) {
    const RandomCall before(id, seed);
    const std::string outputs = describe_result(id, sent.arguments(), result);
    const bool is_untouched = outputs == describe_result(id, before.arguments(), result);
    const auto answered = result_of(other.bytes);
    if (result == kCallLost && (!answered || *answered != kCallLost)) {
        expect(is_untouched && !other.open, "a lost call leaves its outputs alone and the connection closed");
        return;
    }
    expect(answered && *answered == result, "the result of the answer");
    expect(result >= 0 || is_untouched, "a negative result leaves the outputs alone");
}

void make_call(Client &client, Peer &other, fuzz::Input *seeds) {
    const auto id = static_cast<CallId>(seeds->below(static_cast<uint32_t>(calls::kCallCount)));
    if (!vdevice::is_answered(id)) {
        return;
    }
    const uint64_t seed = seeds->u8();
    const RandomCall sent(id, seed);
    const int32_t result = client.call(id, sent.arguments());
    expect_answer(other, id, seed, sent, result);
}

void make_request(Client &client, Peer &other) {
    std::vector<uint32_t> words;
    if (client.request(Extra::kWatchLinks, {}, words, client.deadline()) < 0) {
        return;
    }
    size_t messages = 0;
    while (other.has_something() && client.wait_for_message(words)) {
        expect(words.size() <= kMaxMessageWords, "the length of a message");
        ++messages;
    }
    expect(messages * kWordBytes <= other.bytes.size(), "no more messages than were sent");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::be_quiet();
    constexpr uint32_t kSeedBytes = 5;
    fuzz::Input input(data, size);
    const Bytes seeds = input.bytes(kSeedBytes);
    const bool calls = input.flag();
    Peer other;
    other.hangs = input.flag();
    other.piece = input.u8() + size_t{1};
    other.bytes = fuzz::protocol_bytes(&input, fuzz::Framing::read(&input));
    peer = &other;
    {
        Client client("fuzz", "/nowhere", std::chrono::milliseconds(1));
        if (calls) {
            fuzz::Input source(seeds.data(), seeds.size());
            make_call(client, other, &source);
        } else {
            make_request(client, other);
        }
    }
    expect(!other.open, "the connection is closed in the end");
    peer = nullptr;
    return 0;
}
