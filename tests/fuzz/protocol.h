/**
 * @file protocol.h
 * Bytes for the daemon's protocol, as they are or in messages of correct length.
 */
#pragma once

#include "tests/fuzz/fuzz.h"
#include "vdevice/remote/wire.h"

namespace fuzz {

/** How the bytes begin, and whether they are framed. */
struct Framing {
    bool greets = false;
    bool frames = false;

    static Framing read(Input *input) {
        constexpr uint8_t kFrames = 2;
        const uint8_t flags = input->u8();
        return {(flags & 1) != 0, (flags & kFrames) != 0};
    }
};

/** A greeting if asked for; then messages, each a count of words and the words, or the input as it is. */
inline Bytes protocol_bytes(Input *input, Framing framing) {
    using namespace vdevice::remote;
    Writer writer;
    if (framing.greets) {
        writer.word(kMagic);
        writer.word(calls::kInterfaceChecksum);
    }
    while (framing.frames && !input->is_empty()) {
        const uint32_t words = input->u8();
        writer.word(words);
        for (uint32_t count = 0; count < words; ++count) {
            writer.word(input->u32());
        }
    }
    Bytes bytes = writer.take();
    const Bytes rest = input->rest();
    bytes.insert(bytes.end(), rest.begin(), rest.end());
    return bytes;
}

}  // namespace fuzz
