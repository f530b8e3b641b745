// How driver calls travel over a Unix stream socket: big-endian 32-bit words.
//
// On connecting, the client sends kMagic and its interface checksum, and the server answers with its own two; if they
// differ, both close. A server with too many clients answers kFull and its limit instead, and closes. Then each request
// is its length in words, the call's id and the encoded inputs, and each reply its length in words, the result, whether
// outputs follow (1) or not (0), and the encoded outputs. One request is under way at a time. message.h says how
// arguments are encoded.
//
// A few requests are no driver calls (Extra). What follows their id, and the result in their reply, are plain words. A
// client that has asked for kWatchLinks gets a message, of length and words, for each port's present state, then for
// every link change.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace vdevice::remote {

inline constexpr uint32_t kMagic = 0x61647001;  // "adp" and the protocol's version
inline constexpr uint32_t kFull = 0x61647046;   // in place of kMagic: too many clients; the limit follows
inline constexpr size_t kWordBytes = 4;
inline constexpr size_t kHandshakeWords = 2;

/** A longer message is refused by either end: far more than any call needs. */
inline constexpr size_t kMaxMessageWords = 16384;
inline constexpr size_t kMaxMessageBytes = kMaxMessageWords * kWordBytes;

/** The result of a call that did not reach a device or got no answer. */
inline constexpr int32_t kCallLost = -1;

enum class Extra : uint32_t {
    kWatchLinks = 0xFFFFFF00, /**< after the reply: each port's state, then each link change */
    kTakeEvent = 0xFFFFFF01,  /**< queue: 1 and the message with its record, or 0 */
};
inline constexpr uint32_t kFirstExtra = 0xFFFFFF00;

/** @name The words of a link change */
/** @{ */
inline constexpr size_t kLinkChangeUnit = 0;
inline constexpr size_t kLinkChangePort = 1;
inline constexpr size_t kLinkChangeInfo = 2;
inline constexpr size_t kLinkChangeWords = 6;
/** @} */

}  // namespace vdevice::remote
