// The call table against the headers it was made from, and access to single elements.
#include "calls/call_table.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "platform/netlink_api.h"

using calls::CallId;
using calls::Direction;
using calls::Kind;

TEST(CallTable, ListsEveryImportedFunctionInAlphabeticOrder) {
    constexpr size_t kDriverCalls = 234;
    constexpr size_t kServiceFunctions = 11;
    const auto table = calls::calls();
    ASSERT_EQ(table.size(), kDriverCalls + kServiceFunctions);
    for (size_t index = 1; index < table.size(); ++index) {
        EXPECT_LT(std::strcmp(table[index - 1].name, table[index].name), 0) << table[index].name;
    }
}

TEST(CallTable, FindsACallByItsNameOnly) {
    EXPECT_EQ(calls::find_call("user_vlan_create"), CallId::user_vlan_create);
    EXPECT_EQ(calls::find_call("user_vlan_creat"), std::nullopt);
    EXPECT_EQ(calls::find_call(""), std::nullopt);
    EXPECT_EQ(calls::find_call("zzz"), std::nullopt);
}

TEST(CallTable, KnowsDirectionAndExtentOfParameters) {
    const auto &call = calls::call(CallId::user_vlan_port_set);
    const auto members = calls::find_param(call, "members");
    ASSERT_TRUE(members);
    const auto &param = call.params[*members];
    EXPECT_EQ(param.element.kind, Kind::kU32);
    EXPECT_TRUE(param.element.is_ports);
    EXPECT_EQ(param.direction, Direction::kIn);
    EXPECT_EQ(param.extent, 8u);
    EXPECT_EQ(calls::find_param(call, "nobody"), std::nullopt);
}

TEST(CallTable, KnowsTheLayoutOfAStructPassedByValue) {
    const auto &call = calls::call(CallId::user_mac_addr_add);
    const auto &param = call.params.back();
    ASSERT_EQ(param.element.kind, Kind::kStruct);
    ASSERT_NE(param.element.layout, nullptr);
    EXPECT_EQ(param.element.layout->size, sizeof(adp_l2_entry_t));
    EXPECT_STREQ(param.element.layout->name, "adp_l2_entry_t");
    EXPECT_EQ(param.element.layout->fields[1].offset, offsetof(adp_l2_entry_t, mac));
}

TEST(CallTable, TakesABlocksExtentFromTheParameterThatCountsIt) {
    bool seen = false;
    for (const auto &call : calls::calls()) {
        for (size_t index = 0; index < call.params.size(); ++index) {
            if (call.params[index].counted_by == calls::kNotCounted) {
                continue;
            }
            seen = true;
            const auto counter = static_cast<size_t>(call.params[index].counted_by);
            ASSERT_FALSE(call.params[counter].is_pointer()) << call.name;
            std::vector<const void *> arguments(call.params.size(), nullptr);
            for (const auto &[given, expected] : {std::pair(5, 5u), {0, 0u}, {-3, 0u}}) {
                const int32_t number = given;
                if (given < 0 && call.params[counter].element.kind != Kind::kI32) {
                    continue;
                }
                arguments[counter] = &number;
                EXPECT_EQ(calls::extent(call.params, index, arguments.data()), expected) << call.name;
            }
        }
    }
    EXPECT_TRUE(seen) << "no call counts a block by a parameter";
}

TEST(CallTable, StoresAndLoadsEveryKindOfNumber) {
    std::array<uint8_t, sizeof(uint64_t)> memory{};
    const auto round_trip = [&](Kind kind, int64_t value) {
        calls::store(kind, memory.data(), value);
        return calls::load(kind, memory.data());
    };
    EXPECT_EQ(round_trip(Kind::kU8, 0x1FF), 0xFF);
    EXPECT_EQ(round_trip(Kind::kChar, 'x'), 'x');
    EXPECT_EQ(round_trip(Kind::kU16, 0x12345), 0x2345);
    EXPECT_EQ(round_trip(Kind::kU32, -1), 0xFFFFFFFF);
    EXPECT_EQ(round_trip(Kind::kI32, -1), -1);
    EXPECT_EQ(round_trip(Kind::kU64, 0x123456789ABCDEF0), 0x123456789ABCDEF0);
    EXPECT_EQ(static_cast<uintptr_t>(round_trip(Kind::kWord, -1)), UINTPTR_MAX);
}
