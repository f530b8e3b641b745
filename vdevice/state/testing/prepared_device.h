// For tests: chip and driver with something in every table, so that there is something to change and to take away.
#pragma once

#include <array>

#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/driver/driver.h"

namespace vdevice::state::test {

constexpr uint32_t kVid = 10;
constexpr uint32_t kOtherVid = 20;
constexpr int kPort = 5;
constexpr int kOtherPort = 9;
constexpr int kLimitedPort = 10; /**< learns nothing, and has refused an address */
constexpr int kTrunk = 1;
constexpr int kMember = 6;
constexpr int kStg = 2;
constexpr uint32_t kEntry = 3;   /**< of a rule that counts */
constexpr uint32_t kWide = 1280; /**< that can be joined with the next one */
constexpr int kFieldCounter = 7;
constexpr uint32_t kMeter = 4;

// Addresses: of the port, static and learned; of the trunk, likewise.
constexpr uint8_t kStatic = 1;
constexpr uint8_t kLearned = 2;
constexpr uint8_t kStaticOfTrunk = 3;
constexpr uint8_t kLearnedOfTrunk = 4;

using Key = std::array<uint8_t, NETLINK_MAC_KEY_BYTES>;
using Words = std::array<uint32_t, NETLINK_QUEUES>;
using Param = std::array<uint8_t, NETLINK_ACTION_PARAM_BYTES>;
using QualifierBytes = std::array<uint8_t, NETLINK_QUALIFIER_BYTES>;

Key station(uint8_t number);
inline constexpr Key kGroup{0x01, 0x00, 0x5E, 1, 2, 3};

adp_l2_entry_t address(const Key &mac, uint32_t flags, int port);
adp_l2_entry_t group_of(std::initializer_list<int> ports);
netlink_mcast_entry_t group_record(uint32_t front_ports);
adp_agg_record_t members(std::initializer_list<uint8_t> ports);
/** An action's parameter. */
Param param(uint32_t word);
/** A set of ports below 32 as the driver calls' words. */
inline Words ports(uint32_t bits) {
    return {bits};
}

/** A device on the default board. */
class FreshDevice {
  public:
    explicit FreshDevice(chip::Time now = {}) : now_{now} {}

    chip::Switch &chip() { return chip_; }
    driver::Driver &driver() { return driver_; }
    /** Its state, and the one that it had after power-on. */
    std::string text() const;
    std::string power_on_text() const;
    /** As it is sent. */
    std::string compact_text() const;

  private:
    chip::test::RecordingSink sink_;
    chip::Switch chip_{sink_};
    chip::Time now_;
    driver::Driver driver_{chip_, driver::Board{}, [this] { return now_; }};
};

/** Fills VLANs, addresses and rules; the addresses are learned ones. */
void fill(FreshDevice &device);

class PreparedDevice : public FreshDevice {
  public:
    PreparedDevice();

    /** What user_stg_list() and user_stg_vlan_list() have handed out. */
    adp_word_t groups = 0;
    int32_t group_count = 0;
    adp_word_t vlans = 0;
    int32_t vlan_count = 0;

  private:
    void add_vlans();
    void add_addresses();
    void add_groups();
    void add_rules();
    void add_tags();
    void pass_frames();
    static void expect(int32_t result);
};

}  // namespace vdevice::state::test
