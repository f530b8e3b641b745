// For tests: groups, a partner that speaks LACP on ports of the same numbers, and the loop of a daemon.
#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "switchd/groups/groups.h"

namespace switchd::test {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr lacp::SystemId kOwnSystem = {0x8000, {0x02, 0, 0, 0, 0, 0x01}};
constexpr lacp::SystemId kPartnerSystem = {0x8000, {0x02, 0, 0, 0, 0, 0x02}};
constexpr uint16_t kPartnerKey = 50;
constexpr uint16_t kDefaultPortPriority = 0x8000;

inline GroupSettings lacp_group(const std::vector<uint32_t> &ports) {
    GroupSettings group;
    group.is_fast = true;
    for (const uint32_t port : ports) {
        group.members[port] = kDefaultPortPriority;
    }
    return group;
}

inline GroupSettings static_group(const std::vector<uint32_t> &ports) {
    GroupSettings group = lacp_group(ports);
    group.mode = GroupMode::kStatic;
    return group;
}

inline GroupsSettings settings_of(const std::map<uint32_t, GroupSettings> &groups) {
    return {kOwnSystem, groups};
}

class Stage {
  public:
    Stage() : groups_{new_groups()} {}

    Groups &groups() { return *groups_; }
    lacp::System &partner() { return partner_; }
    lacp::Time now() const { return now_; }
    /** Takes the idle members out of VLANs, as the mirror does. */
    void mirror_by(std::function<void()> mirror) { mirror_ = std::move(mirror); }
    /** Tells the chip of links. */
    void links_by(std::function<void(uint32_t port, bool is_up)> tell) { tell_link_ = std::move(tell); }

    void configure(const std::map<uint32_t, GroupSettings> &groups) {
        groups_->configure(settings_of(groups), now_, predecessor_);
        settle();
    }

    void join_partner(const std::vector<uint32_t> &ports, uint16_t key = kPartnerKey) {
        for (const uint32_t port : ports) {
            partner_.set_port(static_cast<uint16_t>(port), {.key = key, .is_fast = true}, now_);
            partner_.set_link(static_cast<uint16_t>(port), links_[port], true, now_);
        }
        settle();
    }

    void set_link(uint32_t port, bool is_up) {
        links_[port] = is_up;
        if (tell_link_) {
            tell_link_(port, is_up);
        }
        partner_.set_link(static_cast<uint16_t>(port), is_up, true, now_);
        groups_->set_link(port, is_up, true, now_);
        settle();
    }

    void plug(const std::vector<uint32_t> &ports) {
        for (const uint32_t port : ports) {
            set_link(port, true);
        }
    }

    /** Another process, which gets these groups. */
    void restart(const SavedGroups &saved) {
        groups_ = new_groups();
        predecessor_ = saved;
        for (const auto &[port, is_up] : links_) {
            groups_->set_link(port, is_up, true, now_);
        }
    }

    void run(lacp::Time time) {
        for (const lacp::Time end = now_ + time; now_ < end;) {
            now_ = std::min(end, now_ + milliseconds(50));
            groups_->tick(now_);
            partner_.tick(now_);
            settle();
        }
    }

    /** Delivers frames and lets the mirror work until nothing changes. */
    void settle() {
        int rounds = 0;
        for (bool is_done = false; !is_done;) {
            is_done = true;
            if (++rounds > kMostRounds) {
                throw std::logic_error("there is always another change");
            }
            while (!frames_.empty()) {
                deliver(std::exchange(frames_, {}));
                is_done = false;
            }
            if (groups_->take_change()) {
                if (mirror_) {
                    mirror_();
                }
                groups_->remove_idle(now_);
                is_done = false;
            }
        }
    }

  private:
    static constexpr int kMostRounds = 100;

    struct Flying {
        bool to_partner;
        uint32_t port;
        std::vector<uint8_t> frame;
    };

    std::unique_ptr<Groups> new_groups() {
        return std::make_unique<Groups>([this](uint32_t port, std::span<const uint8_t> frame) {
            frames_.push_back({true, port, {frame.begin(), frame.end()}});
        });
    }

    void deliver(const std::deque<Flying> &frames) {
        for (const Flying &flying : frames) {
            if (!links_[flying.port]) {
                continue;
            }
            if (flying.to_partner) {
                partner_.receive(static_cast<uint16_t>(flying.port), flying.frame, now_);
            } else {
                groups_->receive(flying.port, flying.frame, now_);
            }
        }
    }

    lacp::Time now_ = seconds(50);
    std::map<uint32_t, bool> links_;
    std::deque<Flying> frames_;
    lacp::System partner_{kPartnerSystem, [this](uint16_t port, std::span<const uint8_t> frame) {
                              frames_.push_back({false, port, {frame.begin(), frame.end()}});
                          }};
    SavedGroups predecessor_;
    std::unique_ptr<Groups> groups_;
    std::function<void()> mirror_;
    std::function<void(uint32_t, bool)> tell_link_;
};

}  // namespace switchd::test
