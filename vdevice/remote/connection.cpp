// The handshake, then the client's requests, a few in each turn.
#include "vdevice/remote/connection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>

#include "vdevice/remote/message.h"
#include "vdevice/remote/protocol.h"

namespace vdevice::remote {

using calls::CallId;

namespace {

constexpr size_t kBytesAtOnce = 16384;
constexpr size_t kMaxUnreadBytes = 65536;
/** Requests answered in one turn of a client. */
constexpr size_t kMessagesAtOnce = 16;
constexpr size_t kHandshakeBytes = kHandshakeWords * kWordBytes;

}  // namespace

bool Connection::malformed() {
    ++server_.counters_.malformed;
    return false;
}

bool Connection::receive() {
    std::array<uint8_t, kBytesAtOnce> bytes;
    const ssize_t got = recv(socket_.get(), bytes.data(), bytes.size(), 0);
    if (got > 0) {
        input_.insert(input_.end(), bytes.begin(), bytes.begin() + got);
    }
    return got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR));
}

bool Connection::flush() {
    while (!output_.empty()) {
        const ssize_t sent = send(socket_.get(), output_.data(), output_.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return errno == EAGAIN || errno == EINTR;
        }
        output_.erase(output_.begin(), output_.begin() + sent);
    }
    return !closing_;
}

void Connection::put_out(const Writer &writer) {
    output_.insert(output_.end(), writer.buffer().begin(), writer.buffer().end());
}

void Connection::push(std::span<const uint32_t> words) {
    overrun_ = overrun_ || output_.size() > kMaxUnreadBytes;
    if (overrun_) {
        return;
    }
    Writer writer;
    writer.word(static_cast<uint32_t>(words.size()));
    for (const uint32_t word : words) {
        writer.word(word);
    }
    put_out(writer);
}

bool Connection::shake_hands(Reader &reader) {
    if (reader.word() != kMagic) {
        return malformed();
    }
    Writer writer;
    writer.word(kMagic);
    writer.word(calls::kInterfaceChecksum);
    put_out(writer);
    greeted_ = true;
    if (reader.word() == calls::kInterfaceChecksum) {
        ++server_.counters_.connected;
    } else {
        ++server_.counters_.mismatched;
        closing_ = true;  // the answer tells the client why
    }
    return true;
}

bool Connection::answer(std::span<const uint8_t> request) {
    Reader reader(request);
    const uint32_t number = reader.word();
    if (number >= kFirstExtra) {
        return answer_extra(static_cast<Extra>(number), reader);
    }
    const auto id = static_cast<CallId>(number);
    Received received;
    if (!is_answered(id) || !received.decode(reader, id)) {
        return malformed();
    }
    const int64_t result = server_.handler_(id, received.arguments());
    ++server_.counters_.calls;
    if (server_.observer_) {
        server_.observer_(id, received.arguments(), result);
    }
    Writer writer;
    writer.word(0);  // the length, known below
    writer.word(static_cast<uint32_t>(result));
    writer.word(result < 0 ? 0 : 1);
    if (result >= 0) {
        encode_outputs(writer, id, received.arguments());
    }
    writer.patch(0, static_cast<uint32_t>(writer.buffer().size() / kWordBytes - 1));
    put_out(writer);
    return true;
}

bool Connection::answer_extra(Extra id, Reader &reader) {
    std::vector<uint32_t> words;
    while (reader.left() != 0) {
        words.push_back(reader.word());
    }
    std::vector<uint32_t> answer;
    int32_t result = 0;
    if (id == Extra::kWatchLinks) {
        watching_ = true;
    } else if (id == Extra::kTakeEvent && server_.extra_handler_) {
        result = server_.extra_handler_(id, words, answer);
    } else {
        return malformed();
    }
    Writer writer;
    writer.word(static_cast<uint32_t>(answer.size() + 1));
    writer.word(static_cast<uint32_t>(result));
    for (const uint32_t word : answer) {
        writer.word(word);
    }
    put_out(writer);
    if (id == Extra::kWatchLinks && server_.link_states_) {
        for (const Server::LinkChange &state : server_.link_states_()) {
            push(state);
        }
    }
    return true;
}

bool Connection::next_message(std::span<const uint8_t> input, size_t &size) {
    size = 0;
    if (!greeted_) {
        if (input.size() < kHandshakeBytes) {
            return true;
        }
        size = kHandshakeBytes;
        Reader reader(input.first(size));
        return shake_hands(reader);
    }
    if (input.size() < kWordBytes) {
        return true;
    }
    const size_t words = Reader(input).word();
    if (words == 0 || words > kMaxMessageWords) {
        return malformed();
    }
    if (input.size() < (words + 1) * kWordBytes) {
        return true;
    }
    size = (words + 1) * kWordBytes;
    return answer(input.subspan(kWordBytes, words * kWordBytes));
}

bool Connection::handle_messages() {
    size_t position = 0;
    size_t size = 0;
    size_t handled = 0;
    do {
        if (closing_ || is_blocked()) {
            break;
        }
        if (!next_message(std::span(input_).subspan(position), size) || !flush()) {
            return false;
        }
        position += size;
        ++handled;
    } while (size != 0 && handled < kMessagesAtOnce);
    has_more_ = handled == kMessagesAtOnce;
    input_.erase(input_.begin(), input_.begin() + static_cast<ptrdiff_t>(position));
    return true;
}

bool Connection::serve() {
    if (overrun_) {
        return false;
    }
    if (is_blocked()) {
        return flush() && handle_messages();
    }
    return (has_more_ || receive()) && handle_messages();
}

}  // namespace vdevice::remote
