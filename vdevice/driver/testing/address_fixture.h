// For tests: a driver with two VLANs and a trunk, and keys and records of the L2 calls.
#pragma once

#include <array>

#include "vdevice/driver/l2_record.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver::test {

using Key = std::array<uint8_t, NETLINK_MAC_KEY_BYTES>;

inline Key key_of(chip::Mac mac) {
    Key key{};
    for (size_t i = 0; i < chip::kMacBytes; ++i) {
        key[i] = mac.byte(i);
    }
    return key;
}

inline chip::Mac station(uint64_t number) {
    return chip::Mac{0x020000000000 + number};
}

inline const chip::Mac kGroup{0x01005E010203};

class MacTest : public DriverTest {
  protected:
    static constexpr uint32_t kVid = 10;
    static constexpr uint32_t kOtherVid = 20;
    static constexpr int kTrunk = 2;
    static constexpr int kMember = 6;
    static constexpr int kOtherMember = 7;
    static constexpr int32_t kMacMissing = chip::code(chip::Status::kMacMissing);

    MacTest() {
        for (const uint32_t vid : {kVid, kOtherVid}) {
            EXPECT_EQ(chip_.vlans().create({vid, vid}), chip::Status::kOk);
        }
        EXPECT_EQ(chip_.create_trunk(kTrunk), chip::Status::kOk);
        EXPECT_EQ(chip_.set_trunk(kTrunk, {kMember, kOtherMember}), chip::Status::kOk);
    }

    static adp_l2_entry_t entry(chip::Mac mac, uint32_t vid, uint32_t flags, int port, int trunk = 0) {
        adp_l2_entry_t record = {};
        record.flags = flags;
        const Key key = key_of(mac);
        std::copy_n(key.begin(), chip::kMacBytes, record.mac);
        record.vid = static_cast<uint16_t>(vid);
        record.port = port;
        record.trunk = trunk;
        return record;
    }
};

}  // namespace vdevice::driver::test
