// Names of states, and limits on what a port sends and takes.
#include "switchd/lacp/port.h"

namespace switchd::lacp {

std::string_view name_of(ReceiveState state) {
    constexpr std::array<std::string_view, 5> kNames = {"PORT_DISABLED", "LACP_DISABLED", "EXPIRED", "DEFAULTED",
                                                        "CURRENT"};
    return kNames.at(static_cast<size_t>(state));
}

std::string_view name_of(Selected selected) {
    constexpr std::array<std::string_view, 3> kNames = {"UNSELECTED", "STANDBY", "SELECTED"};
    return kNames.at(static_cast<size_t>(selected));
}

std::string_view name_of(MuxState state) {
    constexpr std::array<std::string_view, 5> kNames = {"DETACHED", "WAITING", "ATTACHED", "COLLECTING",
                                                        "DISTRIBUTING"};
    return kNames.at(static_cast<size_t>(state));
}

std::string_view name_of(ChurnState state) {
    constexpr std::array<std::string_view, 3> kNames = {"CHURN_MONITOR", "NO_CHURN", "CHURN"};
    return kNames.at(static_cast<size_t>(state));
}

bool TransmitLimit::take(Time now, Reason reason) {
    if (const auto time = next(reason); time && now < *time) {
        return false;
    }
    sent_[place_] = now;
    place_ = (place_ + 1) % kMost;
    return true;
}

std::optional<Time> TransmitLimit::next(Reason reason) const {
    const size_t newest = (place_ + kMost - 1) % kMost;
    const auto &before = sent_[reason == Reason::kChange ? place_ : newest];
    return before ? std::optional{*before + kFastPeriodicTime} : std::nullopt;
}

bool ReceiveLimit::take(Time now) {
    if (!second_ || now >= *second_ + std::chrono::seconds(1)) {
        second_ = now;
        count_ = 0;
    }
    if (count_ == kMost) {
        return false;
    }
    ++count_;
    return true;
}

}  // namespace switchd::lacp
