// For tests: one system, and a partner whose words the test chooses.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

#include "switchd/lacp/system.h"

namespace switchd::lacp::test {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr SystemId kOwn = {0x8000, {0x02, 0, 0, 0, 0, 0x01}};
constexpr SystemId kPartner = {0x8000, {0x02, 0, 0, 0, 0, 0x02}};
constexpr uint16_t kKey = 3;
constexpr uint16_t kPartnerKey = 7;
constexpr PortSettings kFast = {.key = kKey, .is_fast = true};
constexpr uint8_t kInSync = state::kActive | state::kShortTimeout | state::kAggregation | state::kSynchronization;
constexpr uint8_t kInUse = kInSync | state::kCollecting | state::kDistributing;

class SystemTest : public testing::Test {
  protected:
    void add(uint16_t port, const PortSettings &settings = kFast) {
        system_.set_port(port, settings, now_);
        system_.set_link(port, true, true, now_);
    }

    static Info words_of_use(uint16_t port) { return {kPartner, kPartnerKey, 0x8000, port, kInUse}; }

    /** What a partner says that has heard all that this system has said. Its port has the number of the system's. */
    Lacpdu words(uint16_t port, uint8_t partner_state = kInUse) const {
        const Info partner = {kPartner, kPartnerKey, 0x8000, port, partner_state};
        return {partner, status(port).actor};
    }

    void hear(uint16_t port, const Lacpdu &pdu) {
        EXPECT_TRUE(system_.receive(port, frame_of(pdu, pdu.actor.system.mac), now_));
    }

    /** The time passes; at the end of each deadline the system does its work. */
    void pass(Time time) {
        const Time end = now_ + time;
        for (auto next = system_.next_deadline(); next && *next <= end; next = system_.next_deadline()) {
            now_ = std::max(now_, *next);
            system_.tick(now_);
            ASSERT_GT(system_.next_deadline().value_or(Time::max()), now_) << "a deadline stays after its tick";
        }
        now_ = end;
    }

    /** The same with a partner that says this once a second. */
    void pass_hearing(Time time, uint16_t port, uint8_t partner_state = kInUse) {
        for (const Time end = now_ + time; now_ < end;) {
            hear(port, words(port, partner_state));
            pass(std::min<Time>(seconds(1), end - now_));
        }
    }

    /** A port that is in use. */
    void use(uint16_t port, const PortSettings &settings = kFast) {
        add(port, settings);
        pass_hearing(seconds(3), port);
        ASSERT_EQ(status(port).mux, MuxState::kDistributing);
    }

    const PortStatus &status(uint16_t port) const { return *system_.find(port); }

    /** The LACPDUs sent by a port since the last call. */
    std::vector<Lacpdu> sent(uint16_t port) {
        std::vector<Lacpdu> list;
        for (const auto &[number, frame] : std::exchange(frames_, {})) {
            const Pdu pdu = pdu_of(frame);
            if (number == port && std::holds_alternative<Lacpdu>(pdu)) {
                list.push_back(std::get<Lacpdu>(pdu));
            }
        }
        return list;
    }

    Time now_ = seconds(100);
    std::vector<std::pair<uint16_t, std::vector<uint8_t>>> frames_;
    System system_{kOwn, [this](uint16_t port, std::span<const uint8_t> frame) {
                       frames_.emplace_back(port, std::vector<uint8_t>(frame.begin(), frame.end()));
                   }};
};

}  // namespace switchd::lacp::test
