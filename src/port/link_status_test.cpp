// adp_get_phy_port_attr() for the two link states, which on a group are read from the active members.
#include "port/testing/attribute.h"

namespace {

using namespace attribute_test;
using ::testing::IsEmpty;

/** One of the two link states; that of a group is read from its active members. */
struct LinkCase {
    const char *name;
    uint32_t selector;
    const char *call;
};

void PrintTo(const LinkCase &link, std::ostream *out) {
    *out << link.name;
}

class GetLink : public GetAttributeTest, public ::testing::WithParamInterface<LinkCase> {
  protected:
    using GetAttributeTest::get;
    adp_status_t get(uint32_t intf) { return get(intf, GetParam().selector); }

    static Lines reads(const std::vector<int32_t> &ports) { return lines_of({{GetParam().call, ""}}, ports); }

    static void script_status(const std::function<uint32_t(int32_t port)> &status) {
        driver().on(GetParam().call).does([=](recording::Arguments &call) {
            *static_cast<uint32_t *>(call.pointer("status")) = status(call.i32("port"));
            return 0;
        });
    }

    void expect_on_group(uint32_t status, const std::vector<int32_t> &ports) {
        value = kUnwritten;
        EXPECT_EQ(get(kAgg), 0);
        EXPECT_EQ(value, status);
        EXPECT_EQ(driver().take(), reads(ports));
    }
};

TEST_P(GetLink, UserPortIsReadItself) {
    driver().on(GetParam().call).sets("status", 2);
    EXPECT_EQ(get(3), 0);
    EXPECT_EQ(value, 2u);
    EXPECT_EQ(driver().take(), reads({6}));
    driver().fail_every(GetParam().call);
    value = kUnwritten;
    EXPECT_EQ(get(3), 102);
    EXPECT_EQ(value, kUnwritten);
}

TEST_P(GetLink, FirstActiveMemberWithAStatusDecidesAndTheOthersAreNotRead) {
    script_status([](int32_t port) { return port == 10 ? 5u : port == 11 ? 1u : 0u; });
    set_active(kGroup, {4, 0, 10, 11});
    set_configured(kGroup, 1u << 20);
    agg_manage_intf[kGroup - 1] = 21;
    expect_on_group(5, {4, 10});
    set_active(kGroup, {11, 10, 4});
    expect_on_group(1, {11});
}

TEST_P(GetLink, GroupWhoseMembersAreAllDownIsDown) {
    script_status([](int32_t) { return 0u; });
    set_active(kGroup, {4});
    expect_on_group(0, {4});
    set_active(kGroup, {11, 10, 9, 8, 7, 6, 5, 4});
    expect_on_group(0, {11, 10, 9, 8, 7, 6, 5, 4});
    set_active(kGroup, {200, 4});
    expect_on_group(0, {-1, 4});
}

TEST_P(GetLink, GroupWithoutActiveMembersIsDownWhateverIsConfigured) {
    script_status([](int32_t) { return 1u; });
    expect_on_group(0, {});
    set_configured(kGroup, 1u << 3);
    agg_manage_intf[kGroup - 1] = 3;
    expect_on_group(0, {});
}

TEST_P(GetLink, NineActiveMembersAreNotRead) {
    script_status([](int32_t) { return 1u; });
    set_active(kGroup, {12, 11, 10, 9, 8, 7, 6, 5, 4});
    expect_on_group(0, {});
}

TEST_P(GetLink, FirstFailureOnAGroupIs102AndTheOutputIsCleared) {
    for (size_t failing = 0; failing < 3; ++failing) {
        start_over();
        script_status([](int32_t) { return 0u; });
        set_active(kGroup, {4, 5, 6});
        driver().fail_call(failing, kDriverError);
        value = kUnwritten;
        EXPECT_EQ(get(kAgg), 102);
        EXPECT_EQ(value, 0u);
        EXPECT_EQ(driver().take(), up_to_call(reads({4, 5, 6}), failing));
    }
}

TEST_P(GetLink, UnknownGroupIsRefusedWithTheOutputCleared) {
    for (const uint32_t intf : kNoGroups) {
        value = kUnwritten;
        EXPECT_EQ(get(intf), -1);
        EXPECT_EQ(value, 0u);
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Selectors, GetLink,
                         ::testing::Values(LinkCase{"Link", 11, "user_port_link_status_get"},
                                           LinkCase{"FibreLink", 14, "user_fiberport_link_status_get"}),
                         name_of<LinkCase>);

}  // namespace
