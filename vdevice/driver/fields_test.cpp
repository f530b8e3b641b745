// The field processor's driver calls: each reaches the chip with its arguments, and refuses what it must.
#include <cstring>

#include "vdevice/chip/testing/packet_builder.h"
#include "vdevice/driver/testing/driver_fixture.h"

namespace vdevice::driver {
namespace fields_test {

using namespace std::chrono_literals;
using chip::Field;
using chip::Qualifier;
using chip::Status;
using namespace chip::test;

constexpr int32_t kA = 4;
constexpr int32_t kB = 5;
constexpr uint32_t kEntry = 900;  // of group 2
constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr uint32_t kMeterAction = 53;
constexpr uint32_t kCountAction = 205;

using Block = std::array<uint8_t, NETLINK_ACTION_PARAM_BYTES>;
using Bytes64 = std::array<uint8_t, NETLINK_QUALIFIER_BYTES>;

Block block_of(std::initializer_list<uint32_t> words) {
    Block block{};
    std::memcpy(block.data(), words.begin(), words.size() * sizeof(uint32_t));
    return block;
}

class DriverField : public test::DriverTest {
  protected:
    DriverField() {
        chip_.set_link(kA, true);
        chip_.set_link(kB, true);
        EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 2, kEntry), kOk);
    }
    int32_t add(uint32_t type, const Block &param, const Block &param2 = {}) {
        return driver_.user_field_action_add(0, 0, kEntry, type, param.data(), param2.data());
    }
    const chip::FieldEntry &entry(uint32_t number = kEntry) { return *chip_.fields().table().find(number); }
    Qualifier last() { return entry().staged.qualifiers.back(); }
    int32_t count(int32_t counter, int32_t type) {
        int32_t value = -1;
        EXPECT_EQ(driver_.user_field_get_statistics(0, 0, counter, type, &value), kOk);
        return value;
    }
    void send(int port, size_t octets = 60) {
        chip_.receive(now_, port, kBroadcast + station(1) + Octets(octets - 12, 8));
    }
};

using WordCall = int32_t (Driver::*)(int32_t, uint32_t, uint32_t, uint32_t, uint32_t);

constexpr struct {
    Field field;
    WordCall call;
    uint32_t most; /**< what the field can hold */
} kWordCalls[] = {
    {Field::kSourceIpv4, &Driver::user_field_qualify_SrcIp, kAll},
    {Field::kDestinationIpv4, &Driver::user_field_qualify_DstIp, kAll},
    {Field::kOuterVid, &Driver::user_field_qualify_OuterVlanId, 0xFFF},
    {Field::kOuterPriority, &Driver::user_field_qualify_OuterVlanPri, 7},
    {Field::kInnerFormat, &Driver::user_field_qualify_InnerVlan, 3},
    {Field::kInnerVid, &Driver::user_field_qualify_InnerVlanId, 0xFFF},
    {Field::kInnerPriority, &Driver::user_field_qualify_InnerVlanPri, 7},
    {Field::kSourcePort, &Driver::user_field_qualify_L4SrcPort, 0xFFFF},
    {Field::kDestinationPort, &Driver::user_field_qualify_L4DstPort, 0xFFFF},
    {Field::kEtherType, &Driver::user_field_qualify_EtherType, 0xFFFF},
    {Field::kProtocol, &Driver::user_field_qualify_IpProtocol, 0xFF},
    {Field::kDscp, &Driver::user_field_qualify_DSCP, 0xFF},
    {Field::kTrafficClass, &Driver::user_field_qualify_Ip6TrafficClass, 0xFF},
};

TEST_F(DriverField, ConditionsOfOneWord) {
    for (const auto &row : kWordCalls) {
        SCOPED_TRACE(describe(row.field).name);
        EXPECT_EQ((driver_.*row.call)(0, 0, kEntry, row.most, kAll), kOk);
        EXPECT_EQ(last().field, row.field);
        EXPECT_EQ(last().data[0], row.most);
        EXPECT_EQ(last().mask[0], kAll);
        if (row.most != kAll) {
            EXPECT_EQ((driver_.*row.call)(0, 0, kEntry, row.most + 1, kAll), chip::code(Status::kBadArgument));
        }
        EXPECT_EQ((driver_.*row.call)(0, 0, kEntry, 0, 0), kOk);
        EXPECT_EQ((driver_.*row.call)(0, 0, kEntry + 1, 1, 1), chip::code(Status::kFieldMissing));
        EXPECT_EQ(last().mask[0], 0U) << "refusals change nothing";
    }
    EXPECT_EQ(entry().staged.qualifiers.size(), std::size(kWordCalls)) << "each is a field of its own";
}

TEST_F(DriverField, ConditionsOfBytes) {
    Bytes64 data{};
    Bytes64 mask{};
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<uint8_t>(i + 1);
        mask[i] = static_cast<uint8_t>(0xF0 + i);
    }
    using ByteCall = int32_t (Driver::*)(int32_t, uint32_t, uint32_t, const uint8_t *, const uint8_t *);
    const std::pair<Field, ByteCall> macs[] = {{Field::kSourceMac, &Driver::user_field_qualify_SrcMac},
                                               {Field::kDestinationMac, &Driver::user_field_qualify_DstMac}};
    const std::pair<Field, ByteCall> addresses[] = {{Field::kSourceIpv6, &Driver::user_field_qualify_SrcIp6},
                                                    {Field::kDestinationIpv6, &Driver::user_field_qualify_DstIp6}};
    for (const auto &[field, call] : macs) {
        EXPECT_EQ((driver_.*call)(0, 0, kEntry, data.data(), mask.data()), kOk);
        EXPECT_EQ(last().field, field);
        EXPECT_EQ(last().data, (chip::FieldWords{0x0102, 0x03040506}));
        EXPECT_EQ(last().mask, (chip::FieldWords{0xF0F1, 0xF2F3F4F5}));
    }
    for (const auto &[field, call] : addresses) {
        EXPECT_EQ((driver_.*call)(0, 0, kEntry, data.data(), mask.data()), kOk);
        EXPECT_EQ(last().field, field);
        EXPECT_EQ(last().data, (chip::FieldWords{0x01020304, 0x05060708, 0x090A0B0C, 0x0D0E0F10}));
        EXPECT_EQ(last().mask, (chip::FieldWords{0xF0F1F2F3, 0xF4F5F6F7, 0xF8F9FAFB, 0xFCFDFEFF}));
    }
}

TEST_F(DriverField, ConditionsOfPortsAndKinds) {
    EXPECT_EQ(driver_.user_field_qualify_InPorts(0, 0, kEntry, {{1U << kA, 2}}, {{kAll, kAll}}), kOk);
    EXPECT_EQ(last().data, (chip::FieldWords{1U << kA, 2}));
    EXPECT_EQ(last().mask, (chip::FieldWords{kAll, kAll}));
    EXPECT_EQ(driver_.user_field_qualify_iptype(0, 0, kEntry, 10), kOk);
    EXPECT_EQ(last().field, Field::kIpKind);
    EXPECT_EQ(last().data[0], 1U << 10);
    EXPECT_EQ(driver_.user_field_qualify_FrameType(0, 0, kEntry, 2), kOk);
    EXPECT_EQ(last().field, Field::kFrameKind);
    EXPECT_EQ(last().mask[0], 1U << 2);
    EXPECT_EQ(driver_.user_field_qualify_iptype(0, 0, kEntry, 4), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.user_field_qualify_FrameType(0, 0, kEntry, 4), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.user_field_qualify_iptype(0, 0, 0, 5), chip::code(Status::kFieldMissing));
    EXPECT_EQ(driver_.user_field_qualify_clear(0, 0, kEntry), kOk);
    EXPECT_TRUE(entry().staged.qualifiers.empty());
}

TEST_F(DriverField, EntriesComeAndGo) {
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 2, kEntry), chip::code(Status::kFieldExists));
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 3, kEntry + 1), chip::code(Status::kFieldSlice));
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 0, kEntry + 1), chip::code(Status::kFieldGroup));
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 9, kAll), chip::code(Status::kFieldRange));
    EXPECT_EQ(driver_.user_field_entry_prio_set(0, 0, kEntry, -5), kOk);
    EXPECT_EQ(entry().staged.priority, -5);
    EXPECT_EQ(driver_.user_field_set_select_tempate_idx(0, 0, kEntry, 0), kOk);
    EXPECT_EQ(driver_.user_field_set_select_tempate_idx(0, 0, kEntry, 1), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.user_field_set_select_tempate_idx(0, 0, 1, 0), chip::code(Status::kFieldMissing));
    EXPECT_EQ(driver_.user_field_entry_install(0, 0, kEntry), kOk);
    EXPECT_TRUE(entry().installed.has_value());
    EXPECT_EQ(driver_.user_field_entry_destroy(0, 0, kEntry), kOk);
    EXPECT_EQ(driver_.user_field_entry_destroy(0, 0, kEntry), chip::code(Status::kFieldMissing));
    EXPECT_EQ(driver_.user_field_entry_install(0, 0, kEntry), chip::code(Status::kFieldMissing));
}

TEST_F(DriverField, EntriesAreJoined) {
    EXPECT_EQ(driver_.user_field_set_double_entry(0, 0, kEntry), chip::code(Status::kFieldPair));
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 1, 1290), kOk);
    EXPECT_EQ(driver_.user_field_set_double_entry(0, 0, 1290), chip::code(Status::kFieldMissing));
    EXPECT_EQ(driver_.user_field_entry_create_id(0, 0, 1, 1291), kOk);
    EXPECT_EQ(driver_.user_field_set_double_entry(0, 0, 1290), kOk);
    EXPECT_EQ(entry(1290).part, chip::EntryPart::kFirstHalf);
    EXPECT_EQ(entry(1291).part, chip::EntryPart::kSecondHalf);
}

TEST_F(DriverField, ActionsTakeNativeWordsWhereverTheBlockStands) {
    EXPECT_EQ(add(30, block_of({kB})), kOk);
    EXPECT_EQ(entry().staged.actions.back().ports, chip::PortSet::of(kB));
    EXPECT_EQ(add(33, block_of({1U << kA | 1U << kB})), kOk);
    EXPECT_EQ(entry().staged.actions.back().ports, test::ports({kA, kB}));
    EXPECT_EQ(add(kMeterAction, block_of({0}), block_of({7})), kOk);
    EXPECT_EQ(entry().staged.actions.back().value, 7U);
    std::array<uint8_t, NETLINK_ACTION_PARAM_BYTES + 1> odd{};
    const uint32_t word = 9;
    std::memcpy(odd.data() + 1, &word, sizeof(word));
    EXPECT_EQ(driver_.user_field_action_add(0, 0, kEntry, kCountAction, odd.data() + 1, odd.data()), kOk);
    EXPECT_EQ(entry().staged.actions.back().value, 9U);
    EXPECT_EQ(entry().staged.actions.size(), 4U);
    EXPECT_EQ(driver_.user_field_action_remove_all(0, 0, kEntry), kOk);
    EXPECT_TRUE(entry().staged.actions.empty());
}

TEST_F(DriverField, ActionsThatMakeNoSenseAreRefused) {
    const Block none{};
    EXPECT_EQ(add(2, none), chip::code(Status::kFieldAction));
    EXPECT_EQ(add(1, block_of({64})), chip::code(Status::kBadArgument));
    EXPECT_EQ(add(30, block_of({kAll})), chip::code(Status::kNoPort)) << "an interface without a port";
    EXPECT_EQ(add(33, block_of({0, 0, 0, 0, 0, 0, 0, 1})), chip::code(Status::kNoPort));
    EXPECT_EQ(add(kMeterAction, none, block_of({64})), chip::code(Status::kMeterRange));
    EXPECT_EQ(add(kCountAction, block_of({256})), chip::code(Status::kCounterRange));
    EXPECT_EQ(driver_.user_field_action_add(0, 0, 1, 201, none.data(), none.data()), chip::code(Status::kFieldMissing));
    EXPECT_TRUE(entry().staged.actions.empty());
}

TEST_F(DriverField, MetersRunOnTheDevicesClock) {
    constexpr uint32_t kRate = 1000;  // kbit/s: 125 octets a millisecond, and two long frames at once
    EXPECT_EQ(driver_.user_field_meter_ifg_exclude_init(), kOk);
    EXPECT_EQ(driver_.user_field_meter_entry_set(0, kRate, 7), kOk);
    EXPECT_EQ(add(kMeterAction, block_of({0}), block_of({7})), kOk);
    EXPECT_EQ(driver_.user_field_entry_install(0, 0, kEntry), kOk);
    send(kA, 3080);
    EXPECT_EQ(sink_.take().size(), 1U);
    now_ = 7ms;
    send(kA, 996);
    EXPECT_TRUE(sink_.take().empty());
    EXPECT_EQ(driver_.user_field_meter_entry_set(0, 2 * kRate, 7), kOk);
    now_ = 8ms;
    send(kA, 1125 - 4);
    EXPECT_EQ(sink_.take().size(), 1U) << "seven milliseconds at the old rate, one at the new";
    send(kA);
    EXPECT_TRUE(sink_.take().empty());
    EXPECT_EQ(driver_.user_field_meter_destroy(0, 0, kEntry), kOk);
    send(kA);
    EXPECT_EQ(sink_.take().size(), 1U);
    EXPECT_EQ(driver_.user_field_meter_destroy(0, 0, kEntry), chip::code(Status::kMeterMissing));
    EXPECT_EQ(driver_.user_field_meter_destroy(0, 0, 1), chip::code(Status::kFieldMissing));
    EXPECT_EQ(driver_.user_field_meter_entry_set(0, kRate, 64), chip::code(Status::kMeterRange));
    EXPECT_EQ(driver_.user_field_meter_entry_set(0, 0, 1), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.user_field_meter_entry_set(0, kAll, 1), chip::code(Status::kBadArgument));
}

TEST_F(DriverField, CountersAreReadAndClearedOneValueAtATime) {
    EXPECT_EQ(add(kCountAction, block_of({255})), kOk);
    EXPECT_EQ(driver_.user_field_entry_install(0, 0, kEntry), kOk);
    send(kA);
    send(kB, 100);
    EXPECT_EQ(count(255, 0), 2);
    EXPECT_EQ(count(255, 1), 160);
    EXPECT_EQ(driver_.user_field_clear_statistics(0, 0, 255, 1), kOk);
    EXPECT_EQ(count(255, 0), 2);
    EXPECT_EQ(count(255, 1), 0);
    for (int i = 0; i < 3; ++i) {
        chip_.fields().counters().add(0, 0x40000000);
    }
    EXPECT_EQ(count(0, 1), INT32_MAX) << "more than the word holds";
}

TEST_F(DriverField, CountersAndTypesThatThereAreNotAreRefused) {
    int32_t value = 5;
    for (const int32_t counter : {-1, 256, INT32_MAX}) {
        EXPECT_EQ(driver_.user_field_get_statistics(0, 0, counter, 0, &value), chip::code(Status::kCounterRange));
        EXPECT_EQ(driver_.user_field_clear_statistics(0, 0, counter, 0), chip::code(Status::kCounterRange));
    }
    for (const int32_t type : {-1, 2}) {
        EXPECT_EQ(driver_.user_field_get_statistics(0, 0, 0, type, &value), chip::code(Status::kBadArgument));
        EXPECT_EQ(driver_.user_field_clear_statistics(0, 0, 0, type), chip::code(Status::kBadArgument));
    }
    EXPECT_EQ(value, 5);
}

TEST_F(DriverField, MissActionsAndTheEndOfAllRules) {
    EXPECT_EQ(driver_.user_field_lookupMissAct_set(0, 0, kA, 1), kOk);
    send(kA);
    EXPECT_TRUE(sink_.take().empty());
    EXPECT_EQ(driver_.user_field_lookupMissAct_set(0, 0, kA, 4), chip::code(Status::kBadArgument));
    EXPECT_EQ(driver_.user_field_lookupMissAct_set(0, 0, -1, 1), chip::code(Status::kNoPort));
    EXPECT_EQ(driver_.user_field_lookupMissAct_set(0, 0, 32, 1), chip::code(Status::kNoPort));
    EXPECT_EQ(chip_.fields().miss_action(kA), chip::MissAction::kDrop);
    EXPECT_EQ(driver_.user_field_init(0, 0), kOk);
    send(kA);
    EXPECT_EQ(sink_.take().size(), 1U);
    EXPECT_EQ(chip_.fields().table().find(kEntry), nullptr);
}

}  // namespace fields_test
}  // namespace vdevice::driver
