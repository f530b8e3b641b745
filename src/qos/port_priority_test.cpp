// Priority settings of a port: trust, the priority of untagged frames under its several names, queues, controls.
#include "qos/untagged_priority.h"
#include "tests/support/port_calls.h"

namespace {

using library_test::table_bytes;
using port_calls::kBadGroups;
using port_calls::kFailures;
using port_calls::kNotWritten;
using port_calls::kOtherTypes;
using port_calls::NotOnGroups;
using port_calls::OnUserPort;
using port_calls::outputs;
using port_calls::PortCall;
using port_calls::ReadOfUserPort;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ValuesIn;

constexpr uint32_t kAssigned = 2;  // the one type of map that an assignment acts on
constexpr char kUntaggedSet[] = "user_port_untagged_priority_set";

adp_status_t assign(uint32_t type, uint32_t intf, uint32_t priority) {
    return adp_add_dot1p_assign(type, intf, 0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF, priority);
}

adp_status_t unassign(uint32_t type, uint32_t intf) {
    return adp_del_dot1p_assign(type, intf, 0xFFFFFFFC, 0xFFFFFFFD, 0xFFFFFFFE, 0xFFFFFFFF);
}

// Only the two calls of the cos map report a group as a wrong type.
const std::vector<PortCall> kPortCalls = {
    {"TrustModeSet", [](uint32_t intf) { return adp_set_port_pri_trust_mode(intf, 0xFFFFFFFF); },
     "user_port_dscp_map_mode_set", ", mode=4294967295"},
    {"TrustModeGet",
     [](uint32_t intf) { return adp_get_port_pri_trust_mode(intf, &outputs[0]); },
     "user_port_dscp_map_mode_get",
     "",
     {"mode"}},
    {"CosMapSet",
     [](uint32_t intf) { return adp_set_port_cos_map(intf, 0xFFFFFF07); },
     kUntaggedSet,
     ", priority=4294967047",
     {},
     ADP_E_INTF_TYPE},
    {"CosMapGet",
     [](uint32_t intf) { return adp_get_port_cos_map(intf, &outputs[0]); },
     "user_port_untagged_priority_get",
     "",
     {"priority"},
     ADP_E_INTF_TYPE},
    {"MappingSet", [](uint32_t intf) { return adp_cosq_port_mapping_set(intf, 0xFFFFFFFE, 0xFFFFFFFF); },
     "user_cosq_port_mapping_set", ", priority=4294967294, queue=4294967295"},
    {"MappingGet",
     [](uint32_t intf) { return adp_cosq_port_mapping_get(intf, 0xFFFFFFFE, &outputs[0]); },
     "user_cosq_port_mapping_get",
     ", priority=4294967294",
     {"queue"}},
    {"ControlSet", [](uint32_t intf) { return adp_vlan_control_port_set(intf, 0xFFFFFFFF, INT32_MIN); },
     "user_vlan_control_port_set", ", control=4294967295, value=-2147483648"},
    {"ControlGet",
     [](uint32_t intf) { return adp_vlan_control_port_get(intf, 0xFFFFFFFF, &outputs[0]); },
     "user_vlan_control_port_get",
     ", control=4294967295",
     {"value"}},
    {"Assign", [](uint32_t intf) { return assign(kAssigned, intf, 7); }, kUntaggedSet, ", priority=7"},
    {"Unassign", [](uint32_t intf) { return unassign(kAssigned, intf); }, kUntaggedSet, ", priority=0"},
    {"Untagged", [](uint32_t intf) { return adp::hal_port_untagged_priority_set(adp::Intf(intf), 0xFFFFFF07); },
     kUntaggedSet, ", priority=4294967047"}};

INSTANTIATE_TEST_SUITE_P(Priority, OnUserPort, ValuesIn(kPortCalls), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Priority, NotOnGroups, ValuesIn(kPortCalls), port_calls::name_of);
INSTANTIATE_TEST_SUITE_P(Priority, ReadOfUserPort, ValuesIn(port_calls::reads_of(kPortCalls)), port_calls::name_of);

class Assignment : public library_test::LibraryTest {
  protected:
    /** A user port, and every kind of interface that the calls refuse. */
    static std::vector<uint32_t> any_intfs() {
        std::vector<uint32_t> intfs = {1, 27, ADP_AGG_INTF(1)};
        intfs.insert(intfs.end(), std::begin(kBadGroups), std::end(kBadGroups));
        intfs.insert(intfs.end(), std::begin(kOtherTypes), std::end(kOtherTypes));
        return intfs;
    }
};

TEST_F(Assignment, TakesTheLowByteOfThePriority) {
    for (const auto &[given, written] : {std::pair{0u, 0}, std::pair{255u, 255}, std::pair{256u, 0},
                                         std::pair{0xFFFFFF05u, 5}, std::pair{0x80000000u, 0}}) {
        EXPECT_EQ(assign(kAssigned, 2, given), 0);
        EXPECT_THAT(driver().take(), ElementsAre(std::string(kUntaggedSet) +
                                                 "(unit=0, zero=0, port=5, priority=" + std::to_string(written) + ")"));
    }
}

TEST_F(Assignment, OfTypesZeroAndOneMakesNoCallForAnyInterface) {
    for (const uint32_t intf : any_intfs()) {
        for (const uint32_t type : {0u, 1u}) {
            EXPECT_EQ(assign(type, intf, 7), 0) << intf;
            EXPECT_EQ(unassign(type, intf), 0) << intf;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Assignment, OfAnUnknownTypeIsRefusedByTheAddAndAcceptedByTheDelete) {
    for (const uint32_t intf : any_intfs()) {
        for (const uint32_t type : {3u, 7u, 0x102u, 0x80000002u, 0xFFFFFFFFu}) {
            EXPECT_EQ(assign(type, intf, 7), 101) << type;
            EXPECT_EQ(unassign(type, intf), 0) << type;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Assignment, RefusesAGroupWithAnotherStatusThanTheCosMap) {
    EXPECT_EQ(assign(kAssigned, ADP_AGG_INTF(1), 7), 102);
    EXPECT_EQ(unassign(kAssigned, ADP_AGG_INTF(1)), 102);
    EXPECT_EQ(adp_set_port_cos_map(ADP_AGG_INTF(1), 7), 201);
    EXPECT_EQ(adp_get_port_cos_map(ADP_AGG_INTF(1), &outputs[0]), 201);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

class PortCosMap : public library_test::LibraryTest {
  protected:
    static std::string line(const char *what, int port, const std::string &rest) {
        return "user_qos_port_cos_" + std::string(what) + "(port=" + std::to_string(port) + rest + ")";
    }

    uint32_t value_ = kNotWritten;
};

TEST_F(PortCosMap, GoesToThePhysicalPortWithoutAUnit) {
    driver().on("user_qos_port_cos_get").sets("cos", 0x80000001u);
    for (const auto &[intf, port] : {std::pair{1u, 4}, std::pair{26u, 29}, std::pair{0u, 0}}) {
        value_ = kNotWritten;
        EXPECT_EQ(adp_port_cos_map_set(intf, 0xFFFFFFFF), 0);
        EXPECT_EQ(adp_port_cos_map_get(intf, &value_), 0);
        EXPECT_EQ(value_, 0x80000001u);
        EXPECT_THAT(driver().take(), ElementsAre(line("set", port, ", cos=4294967295"), line("get", port, "")));
    }
}

TEST_F(PortCosMap, PassesMinusOneForAnInterfaceWithoutAPort) {
    set_active(1, {4});
    set_configured(1, 1u << 1);
    agg_manage_intf[0] = 1;
    for (const uint32_t intf : {27u, 0x0FFFFFFFu, ADP_AGG_INTF(1), kBadGroups[0], kBadGroups[1], kBadGroups[2],
                                kOtherTypes[0], kOtherTypes[1], kOtherTypes[2]}) {
        EXPECT_EQ(adp_port_cos_map_set(intf, 5), 0) << intf;
        EXPECT_EQ(adp_port_cos_map_get(intf, &value_), 0) << intf;
        EXPECT_THAT(driver().take(), ElementsAre(line("set", -1, ", cos=5"), line("get", -1, ""))) << intf;
    }
    library_test::drop_map();
    EXPECT_EQ(adp_port_cos_map_set(1, 5), 0);
    EXPECT_EQ(adp_port_cos_map_get(1, &value_), 0);
    EXPECT_THAT(driver().take(), ElementsAre(line("set", -1, ", cos=5"), line("get", -1, "")));
}

TEST_F(PortCosMap, ReturnsTheDriversResult) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every("user_qos_port_cos_set", failure);
        driver().fail_every("user_qos_port_cos_get", failure);
        for (const uint32_t intf : {1u, 27u, ADP_AGG_INTF(1)}) {
            EXPECT_EQ(adp_port_cos_map_set(intf, 5), failure);
            EXPECT_EQ(adp_port_cos_map_get(intf, &value_), failure);
        }
    }
    EXPECT_EQ(value_, kNotWritten);
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace
