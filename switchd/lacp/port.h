// A port as link aggregation control sees it: settings, what can be read of it, and what its state machines keep.
#pragma once

#include <stdint.h>
#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string_view>

#include "switchd/lacp/pdu.h"
#include "switchd/lacp/time.h"

namespace switchd::lacp {

// The times of IEEE 802.1AX.
constexpr Time kFastPeriodicTime = std::chrono::seconds(1);
constexpr Time kSlowPeriodicTime = std::chrono::seconds(30);
constexpr Time kShortTimeoutTime = 3 * kFastPeriodicTime;
constexpr Time kLongTimeoutTime = 3 * kSlowPeriodicTime;
constexpr Time kAggregateWaitTime = std::chrono::seconds(2);
constexpr Time kChurnDetectionTime = std::chrono::seconds(60);

struct PortSettings {
    uint16_t key = 0;           /**< ports with the same key may aggregate */
    uint16_t priority = 0x8000; /**< the lowest ones are used first */
    bool is_active = true;      /**< sends whether or not the partner does */
    bool is_fast = false;       /**< the partner is to send once a second; otherwise every 30 seconds */

    bool operator==(const PortSettings &) const = default;
};

/** Of the receive machine. INITIALIZE is left as soon as it is entered, so no port is ever seen in it. */
enum class ReceiveState : uint8_t { kPortDisabled, kLacpDisabled, kExpired, kDefaulted, kCurrent };
enum class Selected : uint8_t { kUnselected, kStandby, kSelected };
enum class MuxState : uint8_t { kDetached, kWaiting, kAttached, kCollecting, kDistributing };
/** Whether a port that should be in use is not, for a minute. */
enum class ChurnState : uint8_t { kMonitor, kNoChurn, kChurn };

// The names of IEEE 802.1AX.
std::string_view name_of(ReceiveState state);
std::string_view name_of(Selected selected);
std::string_view name_of(MuxState state);
std::string_view name_of(ChurnState state);

struct Counters {
    uint64_t lacpdus_in = 0;
    uint64_t lacpdus_out = 0;
    uint64_t markers_in = 0;
    uint64_t marker_responses_in = 0;
    uint64_t marker_responses_out = 0;
    uint64_t unknown_in = 0;
    uint64_t illegal_in = 0;
    uint64_t too_many_in = 0; /**< more in a second than any partner sends */

    bool operator==(const Counters &) const = default;
};

struct Churn {
    ChurnState state = ChurnState::kMonitor;
    uint32_t count = 0; /**< how often it was found */

    bool operator==(const Churn &) const = default;
};

/** What can be read of a port. */
struct PortStatus {
    bool is_up = false;
    bool is_full_duplex = false;
    Info actor;
    Info partner; /**< all zero while none is known */
    ReceiveState receive = ReceiveState::kPortDisabled;
    Selected selected = Selected::kUnselected;
    MuxState mux = MuxState::kDetached;
    Churn actor_churn;
    Churn partner_churn;
    Counters counters;

    /** Whether the group's frames leave by the port. */
    [[nodiscard]] bool is_distributing() const { return mux == MuxState::kDistributing; }
    /** Whether the protocol runs: the link is up, and of full duplex. */
    [[nodiscard]] bool is_running() const { return is_up && is_full_duplex; }
    bool operator==(const PortStatus &) const = default;
};

/** What a LACPDU is sent for. */
enum class Reason : uint8_t {
    kNone,
    kReminder, /**< time has passed, or the partner has not heard of the last change yet */
    kChange    /**< the partner waits for it before it goes on */
};

/**
 * At most three LACPDUs a second, of which two are kept for changes: a port that comes into use has to tell of two, and
 * a partner that hears only of the first one sends frames that are not yet collected, or waits.
 */
class TransmitLimit {
  public:
    /** Whether one more may be sent now; it counts then. */
    bool take(Time now, Reason reason);
    /** When the next one may be sent, if any was sent before. */
    [[nodiscard]] std::optional<Time> next(Reason reason) const;

  private:
    static constexpr size_t kMost = 3;
    std::array<std::optional<Time>, kMost> sent_; /**< a ring; the oldest one is at place_ */
    size_t place_ = 0;
};

/** At most so many frames a second are looked at. */
class ReceiveLimit {
  public:
    bool take(Time now);

  private:
    static constexpr uint32_t kMost = 20;
    std::optional<Time> second_;
    uint32_t count_ = 0;
};

enum class Period : uint8_t { kNone, kFast, kSlow };

struct Port {
    PortSettings settings;
    PortStatus status;

    /** The partner with which a predecessor of this process had come to distributing; used when the link is known. */
    std::optional<Info> resumed;

    Timer current_while;
    Timer wait_while;
    Timer periodic;
    Timer actor_churn;
    Timer partner_churn;
    bool is_ready = false;      /**< has waited for other ports of the group long enough */
    Reason ntt = Reason::kNone; /**< need to transmit */
    Period period = Period::kNone;
    TransmitLimit transmit_limit;
    ReceiveLimit receive_limit;

    void need_to_transmit(Reason reason) { ntt = std::max(ntt, reason); }
};

}  // namespace switchd::lacp
