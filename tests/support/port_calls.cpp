// Tests of every call that is one driver call on a user port.
#include "tests/support/port_calls.h"

namespace port_calls {

using library_test::table_bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_P(OnUserPort, GoesToThePhysicalPortMappedOrNot) {
    for (const uint32_t intf : {1u, 26u, 0u, 27u}) {
        EXPECT_EQ(GetParam().run(intf), 0);
    }
    EXPECT_THAT(driver().trace(),
                ElementsAre(GetParam().line(4), GetParam().line(29), GetParam().line(0), GetParam().line(-1)));
}

TEST_P(OnUserPort, ReportsAnyFailureAs102) {
    const std::string before = table_bytes();
    for (const int32_t failure : kFailures) {
        driver().fail_every(GetParam().driver_call, failure);
        EXPECT_EQ(GetParam().run(1), 102) << failure;
    }
    EXPECT_EQ(driver().count(), std::size(kFailures));
    EXPECT_TRUE(nothing_was_read());
    EXPECT_EQ(table_bytes(), before);
}

TEST_P(OnUserPort, RefusesOtherTypesWithoutADriverCall) {
    for (const uint32_t intf : kOtherTypes) {
        EXPECT_EQ(GetParam().run(intf), 201) << intf;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_TRUE(nothing_was_read());
}

TEST_P(ReadOfUserPort, HandsOutWhatTheDriverWritesEvenWhenItFails) {
    constexpr uint32_t kFirst = 0x80000001;
    for (const auto &[result, status] : {std::pair{0, 0}, std::pair{-9, 102}}) {
        forget_outputs();
        uint32_t value = kFirst;
        for (const std::string &output : GetParam().written) {
            driver().on(GetParam().driver_call).returns(result).sets(output, value++);
        }
        EXPECT_EQ(GetParam().run(26), status);
        EXPECT_EQ(outputs[0], kFirst);
        EXPECT_EQ(outputs[1], GetParam().written.size() == 2 ? kFirst + 1 : kNotWritten);
    }
}

TEST_P(NotOnGroups, RefusesAnyGroupWithoutADriverCall) {
    set_active(1, {4, 5});
    set_configured(1, 1u << 1);
    agg_manage_intf[0] = 1;
    const std::string before = table_bytes();
    for (const uint32_t group : {ADP_AGG_INTF(1), ADP_AGG_INTF(8), kBadGroups[0], kBadGroups[1], kBadGroups[2]}) {
        EXPECT_EQ(GetParam().run(group), GetParam().on_group) << group;
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_TRUE(nothing_was_read());
    EXPECT_EQ(table_bytes(), before);
}

}  // namespace port_calls
