/**
 * @file senders.h
 * The ways to send a frame, and the fixture in which all of them work.
 */
#pragma once

#include <algorithm>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "src/pkt/testing/transmit.h"
#include "src/pkt/testing/vlan_record.h"

namespace fault_injection {

/** A way to send. */
struct Sender {
    std::string name;
    std::function<adp_status_t()> send;
    bool has_own_socket = false;
};

inline void PrintTo(const Sender &sender, std::ostream *out) {
    *out << sender.name;
}

inline const transmit_test::Bytes &frame() {
    static const transmit_test::Bytes bytes = transmit_test::make_frame(60);
    return bytes;
}

inline adp_status_t transmit(const transmit_test::Destinations *list, uint32_t vid, uint32_t mode) {
    const adp_tx_frame_t desc = {frame().data(), static_cast<uint32_t>(frame().size()), 0};
    return __adp_transmit_frame(&desc, list == nullptr ? nullptr : list->head(), vid, mode);
}

inline adp_status_t transmit_to_two(uint32_t vid, uint32_t mode) {
    const transmit_test::Destinations list{2, ADP_AGG_INTF(1)};
    return transmit(&list, vid, mode);
}

inline adp_status_t transmit_alone(uint32_t intf) {
    constexpr uint32_t kToOnePort = 3;
    return adp_transmit_frame(frame().data(), static_cast<uint32_t>(frame().size()), 0, intf, kToOnePort);
}

inline const std::vector<Sender> &senders() {
    constexpr uint32_t kVlan = 100;
    static const std::vector<Sender> all = {
        {"AlonePort", [] { return transmit_alone(2); }, true},
        {"AloneGroup", [] { return transmit_alone(ADP_AGG_INTF(1)); }, true},
        {"Switched", [] { return transmit(nullptr, ADP_NO_VLAN, ADP_TX_SWITCH); }},
        {"ToOne", [] { return transmit_to_two(kVlan, ADP_TX_VLAN_PORT); }},
        {"ToLast", [] { return transmit_to_two(ADP_NO_VLAN, ADP_TX_ONE_PORT); }},
        {"ToOneButSource", [] { return transmit_to_two(kVlan, ADP_TX_VLAN_NOT_SOURCE); }},
        {"ToList", [] { return transmit_to_two(kVlan, ADP_TX_PORTS); }},
        {"Flood", [] { return transmit(nullptr, ADP_NO_VLAN, ADP_TX_PORTS); }},
        {"FloodVlan", [] { return transmit(nullptr, kVlan, ADP_TX_PORTS); }},
    };
    return all;
}

/** A group with a management interface, everybody a member of the VLAN, and the common socket open. */
class SendingTest : public transmit_test::TransmitTest {
  protected:
    void SetUp() override {
        TransmitTest::SetUp();
        agg_manage_intf[0] = 3;
        pkt_test::set_vlan_members(~uint64_t{0});
        ASSERT_GT(adp_pkt_init(), 0);
        open_ = system().open_descriptors();
    }

    /** Only the common socket stays, and no memory. */
    void expect_as_before() {
        EXPECT_EQ(system().open_descriptors(), open_);
        EXPECT_EQ(held(), 0U);
    }

    /** How often a call stands in the trace since the test began. */
    size_t count(const std::string &call) {
        const auto &trace = system().trace();
        return static_cast<size_t>(std::count_if(trace.begin(), trace.end(), [&call](const std::string &line) {
            return line.substr(0, line.find('(')) == call;
        }));
    }

  private:
    size_t open_ = 0;
};

}  // namespace fault_injection
