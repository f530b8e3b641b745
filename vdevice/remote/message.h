// A call's arguments as words: both ends walk the call table, so neither can disagree with the headers.
//
// First come the arguments passed by value, then those behind pointers, each set in the order of the parameters. An
// 8-bit block is packed and filled up to a whole word; every wider element is one word, a 64-bit one two, the more
// significant first; a struct is its members. A number-or-address is cut to 32 bits. A pointer begins with 0 if it is
// null and else with 1, text with its length and 1. An event-queue message takes its record with it.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <memory_resource>
#include <vector>

#include "calls/call_table.h"
#include "vdevice/remote/wire.h"

namespace vdevice::remote {

/** Writes what the call reads; false if that is more than a message holds. */
bool encode_inputs(Writer &writer, calls::CallId id, const void *const *arguments);

/** Writes what the call has written. */
void encode_outputs(Writer &writer, calls::CallId id, const void *const *arguments);

/** Stores what encode_outputs() wrote; false, with nothing stored, if the message does not fit the call. */
bool decode_outputs(Reader &reader, calls::CallId id, const void *const *arguments);

/** A call rebuilt from its inputs, with memory of its own behind every argument. */
class Received {
  public:
    Received() = default;
    Received(const Received &) = delete;
    Received &operator=(const Received &) = delete;

    /** Reads the inputs; false if the message is not one of this call. */
    bool decode(Reader &reader, calls::CallId id);
    [[nodiscard]] const void *const *arguments() const { return arguments_.data(); }

  private:
    static constexpr size_t kInlineBytes = 2048;

    void *allocate(size_t size);
    bool decode_pointer(Reader &reader, const calls::Call &call, size_t index);
    bool decode_text(Reader &reader, size_t index, size_t size);
    void decode_event_message(Reader &reader, void *words, size_t count);
    void set_pointer(size_t index, void *address);

    alignas(std::max_align_t) std::array<std::byte, kInlineBytes> inline_;
    std::pmr::monotonic_buffer_resource memory_{inline_.data(), inline_.size()};
    std::vector<const void *> arguments_;
};

}  // namespace vdevice::remote
