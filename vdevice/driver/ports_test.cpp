// The calls on ports: what they keep, what they put in force, and what they refuse.
#include <gtest/gtest.h>

#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace ports_test {

using chip::PortSet;
using chip::Status;
using namespace test;

constexpr int32_t kWrongMedium = chip::code(Status::kWrongMedium);

constexpr int32_t kCopper = 4;  // user port 1
constexpr int32_t kFibre = 28;  // user port 25
constexpr uint32_t kUntouched = 99;
constexpr uint32_t kFull1000 = 0x04000000;
constexpr uint32_t kHalf100 = 0x20000000;

using Set = int32_t (Driver::*)(uint32_t, uint32_t, int32_t, uint32_t);
using Get = int32_t (Driver::*)(uint32_t, uint32_t, int32_t, uint32_t *);

struct Attribute {
    const char *name;
    Set set;
    Get get;
    uint32_t at_power_on;
    std::vector<uint32_t> values;  /**< kept as they are */
    std::vector<uint32_t> refused; /**< bad arguments */
};

const std::vector<Attribute> &attributes() {
    static const std::vector<Attribute> kAttributes = {
        {"enable", &Driver::user_port_enable_set, &Driver::user_port_enable_get, 1, {0, 1}, {}},
        {"autoneg", &Driver::user_port_autoneg_set, &Driver::user_port_autoneg_get, 1, {0, 1}, {}},
        {"abilities",
         &Driver::user_port_ability_advert_set,
         &Driver::user_port_ability_advert_get,
         0xF7000000,
         {0, 0x12345678, 0xFFFFFFFF},
         {}},
        {"loopback", &Driver::user_port_loopback_set, &Driver::user_port_loopback_get, 0, {1, 2, 0}, {3, 0xFFFFFFFF}},
        {"jumbo", &Driver::user_port_jumboframe_set, &Driver::user_port_jumboframe_get, 1, {0, 1}, {}},
        {"mdix", &Driver::user_port_mdix_set, &Driver::user_port_mdix_get, 0, {1, 2, 0}, {3, 0xFFFFFFFF}},
        {"eee", &Driver::user_eee_portEnable_set, &Driver::user_eee_portEnable_get, 0, {1, 0}, {}},
        {"priority",
         &Driver::user_port_untagged_priority_set,
         &Driver::user_port_untagged_priority_get,
         0,
         {7, 3, 0},
         {8, 0xFFFFFFFF}},
    };
    return kAttributes;
}

class DriverPort : public test::DriverTest {
  protected:
    uint32_t read(Get get, int32_t port) {
        uint32_t value = kUntouched;
        EXPECT_EQ((driver_.*get)(0, 0, port, &value), kOk);
        return value;
    }
    uint32_t speed(int32_t port) { return read(&Driver::user_port_speed_get, port); }
    uint32_t duplex(int32_t port) { return read(&Driver::user_port_duplex_get, port); }
    uint32_t autoneg(int32_t port) { return read(&Driver::user_port_autoneg_get, port); }
};

TEST_F(DriverPort, KeepsWhatIsSet) {
    for (const Attribute &attribute : attributes()) {
        EXPECT_EQ(read(attribute.get, kCopper), attribute.at_power_on) << attribute.name;
        for (const uint32_t value : attribute.values) {
            EXPECT_EQ((driver_.*attribute.set)(0, 0, kCopper, value), kOk) << attribute.name;
            EXPECT_EQ(read(attribute.get, kCopper), value) << attribute.name;
            EXPECT_EQ(read(attribute.get, kCopper + 1), attribute.at_power_on) << attribute.name << " of another port";
        }
    }
}

TEST_F(DriverPort, RefusesAndChangesNothing) {
    for (const Attribute &attribute : attributes()) {
        uint32_t value = kUntouched;
        for (const uint32_t refused : attribute.refused) {
            EXPECT_EQ((driver_.*attribute.set)(0, 0, kCopper, refused), kBadArgument) << attribute.name;
        }
        for (const int32_t missing : {-1, 32, 255}) {
            EXPECT_EQ((driver_.*attribute.set)(0, 0, missing, 1), kNoPort) << attribute.name;
            EXPECT_EQ((driver_.*attribute.get)(0, 0, missing, &value), kNoPort) << attribute.name;
        }
        EXPECT_EQ(value, kUntouched) << attribute.name;
        EXPECT_EQ(read(attribute.get, kCopper), attribute.at_power_on) << attribute.name;
    }
}

TEST_F(DriverPort, TwentyFourPortsAreGigabitCopperAndTwoTenGigabitFibre) {
    for (int user_port = 1; user_port <= 26; ++user_port) {
        const int32_t port = user_port + 3;
        const bool uplink = user_port >= 25;
        EXPECT_EQ(read(&Driver::user_port_speed_max, port), uplink ? 10000U : 1000U) << user_port;
        EXPECT_EQ(speed(port), uplink ? 10000U : 1000U) << user_port;
        EXPECT_EQ(read(&Driver::user_port_link_medium_get, port), uplink ? 2U : 1U) << user_port;
        EXPECT_EQ(duplex(port), 1U);
    }
}

TEST_F(DriverPort, AFixedSpeedEndsNegotiation) {
    for (const uint32_t value : {10U, 100U, 1000U}) {
        EXPECT_EQ(driver_.user_port_speed_set(0, 0, kCopper, value, 0), kOk);
        EXPECT_EQ(speed(kCopper), value);
        EXPECT_EQ(autoneg(kCopper), 0U);
    }
    EXPECT_EQ(driver_.user_port_speed_set(0, 0, kCopper, 100, 0), kOk);
    EXPECT_EQ(driver_.user_port_speed_set(0, 0, kCopper, 0, 0), kOk);
    EXPECT_EQ(autoneg(kCopper), 1U);
    EXPECT_EQ(speed(kCopper), 1000U);
}

TEST_F(DriverPort, NegotiationEndsWithTheBestThatIsAdvertised) {
    const struct {
        uint32_t abilities;
        uint32_t speed;
        uint32_t duplex;
    } rows[] = {{0xF4000000, 1000, 1}, {0x08000000, 1000, 0}, {0xF0000000, 100, 1}, {0xA0000000, 100, 0},
                {0xC0000000, 10, 1},   {0x80000000, 10, 0},   {0x0C000000, 1000, 1}};
    for (const auto &row : rows) {
        EXPECT_EQ(driver_.user_port_ability_advert_set(0, 0, kCopper, row.abilities), kOk);
        EXPECT_EQ(speed(kCopper), row.speed) << std::hex << row.abilities;
        EXPECT_EQ(duplex(kCopper), row.duplex) << std::hex << row.abilities;
    }
    EXPECT_EQ(driver_.user_port_speed_set(0, 0, kCopper, 10, 0), kOk);
    EXPECT_EQ(driver_.user_port_ability_advert_set(0, 0, kCopper, kFull1000), kOk);
    EXPECT_EQ(speed(kCopper), 10U) << "not negotiated";
    EXPECT_EQ(driver_.user_port_autoneg_set(0, 0, kCopper, 1), kOk);
    EXPECT_EQ(speed(kCopper), 1000U);
}

TEST_F(DriverPort, ATenGigabitPortRunsAtTheSpeedThatWasSet) {
    EXPECT_EQ(driver_.user_port_ability_advert_set(0, 0, kFibre, kHalf100), kOk);
    EXPECT_EQ(speed(kFibre), 10000U);
    EXPECT_EQ(driver_.user_port_speed_set(0, 0, kFibre, 1000, 2), kOk);
    EXPECT_EQ(driver_.user_port_autoneg_set(0, 0, kFibre, 1), kOk);
    EXPECT_EQ(speed(kFibre), 1000U);
    EXPECT_EQ(driver_.user_port_duplex_set(0, 0, kFibre, 0, 0), kBadArgument);
    EXPECT_EQ(duplex(kFibre), 1U);
}

TEST_F(DriverPort, DuplexIsHalfFullOrAutomatic) {
    EXPECT_EQ(driver_.user_port_duplex_set(0, 0, kCopper, 0, 0), kOk);
    EXPECT_EQ(duplex(kCopper), 0U);
    EXPECT_EQ(autoneg(kCopper), 0U);
    EXPECT_EQ(driver_.user_port_duplex_set(0, 0, kCopper, 1, 0), kOk);
    EXPECT_EQ(duplex(kCopper), 1U);
    EXPECT_EQ(autoneg(kCopper), 0U);
    EXPECT_EQ(driver_.user_port_duplex_set(0, 0, kCopper, 2, 0), kOk);
    EXPECT_EQ(autoneg(kCopper), 1U);
}

TEST_F(DriverPort, PauseIsNegotiatedOrSet) {
    const Get get = &Driver::user_port_pause_get;
    EXPECT_EQ(read(get, kCopper), 1U);
    EXPECT_EQ(driver_.user_port_ability_advert_set(0, 0, kCopper, kFull1000), kOk);
    EXPECT_EQ(read(get, kCopper), 0U);
    EXPECT_EQ(driver_.user_port_pause_set(0, 0, kCopper, 1, 1), kOk);
    EXPECT_EQ(read(get, kCopper), 0U) << "negotiation decides";
    EXPECT_EQ(driver_.user_port_autoneg_set(0, 0, kCopper, 0), kOk);
    EXPECT_EQ(read(get, kCopper), 1U);
    EXPECT_EQ(read(&Driver::user_port_pause_get_stat, kCopper), 0U) << "without link nothing is in force";
    chip_.set_link(kCopper, true);
    EXPECT_EQ(read(&Driver::user_port_pause_get_stat, kCopper), 1U);
    EXPECT_EQ(driver_.user_port_pause_set(0, 0, kCopper, 0, 0), kOk);
    EXPECT_EQ(read(get, kCopper), 0U);
}

TEST_F(DriverPort, FibreHasNoPairs) {
    uint32_t value = kUntouched;
    adp_cable_diag_t result = {};
    EXPECT_EQ(driver_.user_port_mdix_set(0, 0, kFibre, 1), kWrongMedium);
    EXPECT_EQ(driver_.user_port_mdix_get(0, 0, kFibre, &value), kWrongMedium);
    EXPECT_EQ(driver_.User_port_cablediag(0, 0, kFibre, &result), kWrongMedium);
    EXPECT_EQ(value, kUntouched);
}

TEST_F(DriverPort, CableDiagnosisTellsWhetherACableIsIn) {
    adp_cable_diag_t result = {};
    EXPECT_EQ(driver_.User_port_cablediag(0, 0, kCopper, &result), kOk);
    for (int pair = 0; pair < ADP_CABLE_PAIRS; ++pair) {
        EXPECT_EQ(result.state[pair], 1U);
        EXPECT_EQ(result.length[pair], 0U);
    }
    chip_.change_port(kCopper, [](chip::Port &port) {
        port.cable = true;
        return Status::kOk;
    });
    EXPECT_EQ(driver_.User_port_cablediag(0, 0, kCopper, &result), kOk);
    for (int pair = 0; pair < ADP_CABLE_PAIRS; ++pair) {
        EXPECT_EQ(result.state[pair], 0U);
        EXPECT_EQ(result.length[pair], 2U);
    }
    EXPECT_EQ(driver_.User_port_cablediag(0, 0, -1, &result), kNoPort);
}

TEST_F(DriverPort, TheCpuPortIsNotLooped) {
    EXPECT_EQ(driver_.user_port_loopback_set(0, 0, 0, 1), kBadArgument);
}

TEST_F(DriverPort, LearningModesAreAFewNumbers) {
    uint32_t mode = kUntouched;
    EXPECT_EQ(driver_.user_port_learn_get(0, 0, kCopper, &mode), kOk);
    EXPECT_EQ(mode, 5U);
    for (const int32_t number : {0, 1, 4, 5, 8}) {
        EXPECT_EQ(driver_.user_port_learn_set(0, 0, kCopper, number), kOk);
        EXPECT_EQ(driver_.user_port_learn_get(0, 0, kCopper, &mode), kOk);
        EXPECT_EQ(mode, static_cast<uint32_t>(number));
    }
    for (const int32_t number : {-1, 2, 3, 6, 7, 9, 16}) {
        EXPECT_EQ(driver_.user_port_learn_set(0, 0, kCopper, number), kBadArgument) << number;
    }
    EXPECT_EQ(driver_.user_port_learn_set(0, 0, -1, 5), kNoPort);
}

TEST_F(DriverPort, EgressSetsHoldPortsOfTheChip) {
    adp_port_set_t set = {};
    EXPECT_EQ(driver_.user_port_egress_get(0, 0, kCopper, 0, set.word), kOk);
    EXPECT_EQ(PortSet::from_words(set.word), chip::Switch::all_ports());
    ports({5, 29}).to_words(set.word);
    EXPECT_EQ(driver_.user_port_egress_set(0, 0, kCopper, 0, set), kOk);
    adp_port_set_t read = {};
    EXPECT_EQ(driver_.user_port_egress_get(0, 0, kCopper, 0, read.word), kOk);
    EXPECT_EQ(PortSet::from_words(read.word), ports({5, 29}));
    ports({5, 32}).to_words(set.word);
    EXPECT_EQ(driver_.user_port_egress_set(0, 0, kCopper, 0, set), kNoPort);
    EXPECT_EQ(driver_.user_port_egress_set(0, 0, -1, 0, read), kNoPort);
    EXPECT_EQ(driver_.user_port_egress_set(0, 0, kCopper, 1, read), kBadArgument);
    EXPECT_EQ(driver_.user_port_egress_get(0, 0, kCopper, 1, read.word), kBadArgument);
    EXPECT_EQ(driver_.user_port_egress_get(0, 0, 32, 0, read.word), kNoPort);
    EXPECT_EQ(chip_.port(kCopper).egress, ports({5, 29}));
}

TEST_F(DriverPort, VlanControlsAreKept) {
    uint32_t value = kUntouched;
    EXPECT_EQ(driver_.user_vlan_control_port_set(0, 0, kCopper, 31, -2), kOk);
    EXPECT_EQ(driver_.user_vlan_control_port_get(0, 0, kCopper, 31, &value), kOk);
    EXPECT_EQ(value, 0xFFFFFFFEU);
    EXPECT_EQ(driver_.user_vlan_control_port_get(0, 0, kCopper, 30, &value), kOk);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(driver_.user_vlan_control_port_set(0, 0, kCopper, 32, 1), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_control_port_get(0, 0, kCopper, 32, &value), kBadArgument);
    EXPECT_EQ(driver_.user_vlan_control_port_set(0, 0, -1, 0, 1), kNoPort);
}

}  // namespace ports_test
}  // namespace vdevice::driver
