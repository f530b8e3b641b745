// The calls on priority maps. What the maps do to frames is tested on the chip.
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace priorities_test {

using namespace test;

constexpr adp_word_t kMinusOne = ~adp_word_t{0};

/** What a read writes, or what stood there before. */
struct Row {
    uint8_t mapped = 99;
    uint8_t priority = 98;
    friend bool operator==(const Row &, const Row &) = default;
};

class DriverPriority : public test::DriverTest {
  protected:
    uint32_t queue_of(uint32_t priority) {
        uint32_t queue = 99;
        EXPECT_EQ(driver_.user_cosq_mapping_get(0, 0, priority, &queue), kOk);
        return queue;
    }
    uint32_t queue_on(int port, uint32_t priority) {
        uint32_t queue = 99;
        EXPECT_EQ(driver_.user_cosq_port_mapping_get(0, 0, port, priority, &queue), kOk);
        return queue;
    }
    Row row(int32_t port, int32_t dscp) {
        Row read;
        EXPECT_EQ(driver_.user_port_dscp_map_get(0, 0, port, dscp, &read.mapped, &read.priority), kOk);
        return read;
    }
    int32_t set_row(int32_t port, int32_t dscp, int32_t mapped, uint32_t priority) {
        return driver_.user_port_dscp_map_set(0, 0, port, dscp, mapped, priority);
    }
};

TEST_F(DriverPriority, QueueOfAPriority) {
    for (uint32_t priority = 0; priority < 8; ++priority) {
        EXPECT_EQ(queue_of(priority), priority) << "at power-on";
        EXPECT_EQ(driver_.user_cosq_mapping_set(0, 0, priority, 7 - priority), kOk);
    }
    for (uint32_t priority = 0; priority < 8; ++priority) {
        EXPECT_EQ(queue_of(priority), 7 - priority);
    }
    EXPECT_EQ(driver_.user_cosq_mapping_set(0, 0, 8, 0), kBadArgument);
    EXPECT_EQ(driver_.user_cosq_mapping_set(0, 0, 0, 8), kQueueRange);
    EXPECT_EQ(queue_of(0), 7U);
    uint32_t queue = 99;
    EXPECT_EQ(driver_.user_cosq_mapping_get(0, 0, 8, &queue), kBadArgument);
    EXPECT_EQ(queue, 99U);
}

TEST_F(DriverPriority, QueueOfAPriorityByTheOtherPairOfCalls) {
    uint32_t queue = 99;
    EXPECT_EQ(driver_.user_qos_pri_queue_map_set(0, 0, 3, 5), kOk);
    EXPECT_EQ(queue_of(3), 5U);
    EXPECT_EQ(driver_.user_cosq_mapping_set(0, 0, 3, 6), kOk);
    EXPECT_EQ(driver_.user_qos_pri_queue_map_get(0, 0, 3, &queue), kOk);
    EXPECT_EQ(queue, 6U);
    EXPECT_EQ(driver_.user_qos_pri_queue_map_set(0, 0, kMinusOne, 5), kBadArgument);
    EXPECT_EQ(driver_.user_qos_pri_queue_map_set(0, 0, 3, 8), kQueueRange);
    EXPECT_EQ(driver_.user_qos_pri_queue_map_get(0, 0, 8, &queue), kBadArgument);
    EXPECT_EQ(queue, 6U);
}

TEST_F(DriverPriority, QueueOfAPriorityOnAPort) {
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 4, 3, 7), kOk);
    EXPECT_EQ(driver_.user_cosq_mapping_set(0, 0, 3, 1), kOk);
    EXPECT_EQ(queue_on(4, 3), 7U);
    EXPECT_EQ(queue_on(5, 3), 1U);
    EXPECT_EQ(queue_on(4, 2), 2U);
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 0, 3, 0), kOk) << "the CPU port too";
    EXPECT_EQ(queue_on(0, 3), 0U);
    uint32_t queue = 99;
    for (const int32_t port : {-1, 32, 0x40000000}) {
        EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, port, 3, 7), kNoPort) << port;
        EXPECT_EQ(driver_.user_cosq_port_mapping_get(0, 0, port, 3, &queue), kNoPort) << port;
    }
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 4, 8, 7), kBadArgument);
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 4, 3, 8), kQueueRange);
    EXPECT_EQ(driver_.user_cosq_port_mapping_get(0, 0, 4, 8, &queue), kBadArgument);
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 4, 8, 0xFFFFFFFF), kBadArgument);
    EXPECT_EQ(queue, 99U);
    EXPECT_EQ(queue_on(4, 3), 7U);
    EXPECT_EQ(driver_.user_cosq_port_mapping_set(0, 0, 4, 3, 0xFFFFFFFF), kOk);
    EXPECT_EQ(queue_on(4, 3), 1U) << "the chip's again";
}

TEST_F(DriverPriority, DscpRowsOfAllPortsAndOfOne) {
    for (int32_t dscp = 0; dscp < 64; ++dscp) {
        EXPECT_EQ(row(-1, dscp), (Row{static_cast<uint8_t>(dscp), static_cast<uint8_t>(dscp / 8)}));
    }
    EXPECT_EQ(set_row(4, 46, 10, 1), kOk);
    EXPECT_EQ(row(4, 46), (Row{10, 1}));
    EXPECT_EQ(row(5, 46), (Row{46, 5}));
    EXPECT_EQ(row(-1, 46), (Row{46, 5}));
    EXPECT_EQ(set_row(-1, 46, 12, 2), kOk);
    for (const int32_t port : {-1, 0, 4, 31}) {
        EXPECT_EQ(row(port, 46), (Row{12, 2})) << "no port keeps a row of its own; " << port;
    }
}

TEST_F(DriverPriority, DscpWildcards) {
    EXPECT_EQ(set_row(-1, -1, 7, 3), kOk);
    for (const int32_t dscp : {0, 31, 63}) {
        EXPECT_EQ(row(4, dscp), (Row{7, 3}));
    }
    EXPECT_EQ(set_row(4, 31, -1, 99), kOk) << "the priority is not looked at";
    EXPECT_EQ(row(4, 31), (Row{31, 3}));
    EXPECT_EQ(row(5, 31), (Row{7, 3}));
    EXPECT_EQ(set_row(-1, -1, -1, 0), kOk);
    for (int32_t dscp = 0; dscp < 64; ++dscp) {
        EXPECT_EQ(row(4, dscp), (Row{static_cast<uint8_t>(dscp), static_cast<uint8_t>(dscp / 8)}));
    }
}

TEST_F(DriverPriority, DscpRowsRefuseWhatHasNoMeaning) {
    for (const int32_t port : {-2, 32}) {
        EXPECT_EQ(set_row(port, 46, 10, 1), kNoPort);
    }
    for (const int32_t dscp : {-2, 64}) {
        EXPECT_EQ(set_row(-1, dscp, 10, 1), kBadArgument);
        EXPECT_EQ(set_row(-1, 46, dscp, 1), kBadArgument);
    }
    EXPECT_EQ(set_row(-1, 46, 10, 8), kBadArgument);
    EXPECT_EQ(row(-1, 46), (Row{46, 5}));
    Row read;
    EXPECT_EQ(driver_.user_port_dscp_map_get(0, 0, -2, 46, &read.mapped, &read.priority), kNoPort);
    for (const int32_t dscp : {-1, 64}) {
        EXPECT_EQ(driver_.user_port_dscp_map_get(0, 0, -1, dscp, &read.mapped, &read.priority), kBadArgument);
    }
    EXPECT_EQ(read, Row{});
}

TEST_F(DriverPriority, PriorityOfADscpOnAllPorts) {
    uint32_t priority = 99;
    ASSERT_EQ(set_row(-1, 46, 12, 2), kOk);
    ASSERT_EQ(set_row(4, 46, 10, 1), kOk);
    EXPECT_EQ(driver_.user_qos_dscp_map_set(0, 0, 46, 7), kOk);
    EXPECT_EQ(row(4, 46), (Row{10, 7})) << "what it is mapped to stays";
    EXPECT_EQ(row(5, 46), (Row{12, 7}));
    EXPECT_EQ(driver_.user_qos_dscp_map_get(0, 0, 46, &priority), kOk);
    EXPECT_EQ(priority, 7U);
    EXPECT_EQ(driver_.user_qos_dscp_map_set(0, 0, 64, 7), kBadArgument);
    EXPECT_EQ(driver_.user_qos_dscp_map_set(0, 0, kMinusOne, 7), kBadArgument);
    EXPECT_EQ(driver_.user_qos_dscp_map_set(0, 0, 46, 8), kBadArgument);
    EXPECT_EQ(driver_.user_qos_dscp_map_get(0, 0, 64, &priority), kBadArgument);
    EXPECT_EQ(row(5, 46), (Row{12, 7}));
}

TEST_F(DriverPriority, TrustOfAPort) {
    uint32_t mode = 99;
    EXPECT_EQ(driver_.user_port_dscp_map_mode_get(0, 0, 4, &mode), kOk);
    EXPECT_EQ(mode, 1U) << "at power-on";
    for (const uint32_t trusted : {0U, 2U, 3U, 1U}) {
        EXPECT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 4, trusted), kOk);
        EXPECT_EQ(driver_.user_port_dscp_map_mode_get(0, 0, 4, &mode), kOk);
        EXPECT_EQ(mode, trusted);
    }
    EXPECT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 4, 4), kBadArgument);
    EXPECT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 4, 0xFFFFFFFF), kBadArgument);
    EXPECT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 32, 1), kNoPort);
    EXPECT_EQ(driver_.user_port_dscp_map_mode_get(0, 0, -1, &mode), kNoPort);
    EXPECT_EQ(chip_.port(4).trust, chip::Trust::kDot1p);
}

TEST_F(DriverPriority, RemapOfAPort) {
    using Priorities = std::array<uint8_t, chip::kPriorities>;
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, 4, 2, 7, 99, kMinusOne, 99, 99), kOk);
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, 4, 7, 0, 0, 0, 0, 0), kOk);
    EXPECT_EQ(chip_.port(4).remap.to, (Priorities{0, 1, 7, 3, 4, 5, 6, 0}));
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, 4, 8, 7, 0, 0, 0, 0), kBadArgument);
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, 4, 2, 8, 0, 0, 0, 0), kBadArgument);
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, kMinusOne, 2, 7, 0, 0, 0, 0), kNoPort);
    EXPECT_EQ(driver_.user_qos_pri_remap_set(0, 32, 2, 7, 0, 0, 0, 0), kNoPort);
    EXPECT_EQ(chip_.port(4).remap.to, (Priorities{0, 1, 7, 3, 4, 5, 6, 0}));
    EXPECT_EQ(chip_.port(5).remap.to, (Priorities{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(DriverPriority, ClassOfServiceOfAPortIsThePriorityOfItsUntaggedFrames) {
    uint32_t value = 99;
    EXPECT_EQ(driver_.user_qos_port_cos_set(4, 5), kOk);
    EXPECT_EQ(driver_.user_port_untagged_priority_get(0, 0, 4, &value), kOk);
    EXPECT_EQ(value, 5U);
    EXPECT_EQ(driver_.user_port_untagged_priority_set(0, 0, 4, 3), kOk);
    EXPECT_EQ(driver_.user_qos_port_cos_get(4, &value), kOk);
    EXPECT_EQ(value, 3U);
    EXPECT_EQ(driver_.user_qos_port_cos_set(4, 8), kBadArgument);
    EXPECT_EQ(driver_.user_qos_port_cos_set(-1, 5), kNoPort);
    EXPECT_EQ(driver_.user_qos_port_cos_get(-1, &value), kNoPort);
    EXPECT_EQ(value, 3U);
}

TEST_F(DriverPriority, Initialisations) {
    ASSERT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 0, 3), kOk);
    ASSERT_EQ(driver_.user_port_dscp_map_mode_set(0, 0, 31, 2), kOk);
    EXPECT_FALSE(chip_.priority_rules().defaults_to_port);
    EXPECT_EQ(driver_.user_qos_default_cos_src_init(), kOk);
    EXPECT_TRUE(chip_.priority_rules().defaults_to_port);
    EXPECT_EQ(driver_.user_qos_remark_inner_tag_src_init(), kOk);
    EXPECT_EQ(chip_.port(31).trust, chip::Trust::kDscp);
    EXPECT_EQ(driver_.user_qos_trust_sel_group_init(), kOk);
    for (int port = 0; port < chip::Switch::kPorts; ++port) {
        EXPECT_EQ(chip_.port(port).trust, chip::Trust::kDot1p) << port;
    }
}

}  // namespace priorities_test
}  // namespace vdevice::driver
