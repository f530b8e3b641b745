// Learning limits, ageing and learned counts.
#include "l2/testing/support.h"

namespace {

using namespace l2_test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr size_t kLimitSize = 24;
constexpr uint32_t kBadScopes[] = {3, 0x100, 0x101, 0xFFFFFFFF};

/** The scope of a limit, and its words in the driver's record. */
struct Scope {
    uint32_t subject;
    uint32_t scope;
    uint32_t flags;
    uint16_t vid;
    int32_t port;
    int32_t trunk;
};

const Scope kScopes[] = {
    {0xABCD0064, 0, 0x2, 100, 0, 0},
    {0xFFFFFFFF, 0, 0x2, 0xFFFF, 0, 0},
    {3, 1, 0x4, 0, 6, 0},
    {27, 1, 0x4, 0, -1, 0},
    {0x10000002, 1, 0x8, 0, 0, 1},
    {0x10000008, 1, 0x8, 0, 0, 7},
    {0x10000009, 1, 0x8, 0, 0, 8},
    {0x10000000, 1, 0x8, 0, 0, -1},
    {0x20000001, 1, 0, 0, 0, 0},
    {0xFFFFFFFF, 1, 0, 0, 0, 0},
    {3, 2, 0x1, 0, 0, 0},
    {0x10000002, 2, 0x1, 0, 0, 0},
};

Bytes record(const Scope &scope, uint32_t limit) {
    const Block block =
        Block().put(0, scope.flags).put(4, scope.vid).put(8, scope.port).put(12, scope.trunk).put(20, limit);
    return {block.bytes().begin(), block.bytes().begin() + kLimitSize};
}

class MacLimit : public L2Test {
  protected:
    uint32_t value_ = kNotWritten;
};

TEST_F(MacLimit, SetSendsTheScopesRecord) {
    keep("user_mac_learn_limit_set", "limit");
    for (const Scope &scope : kScopes) {
        EXPECT_EQ(adp_set_mac_limit(0x89ABCDEF, scope.subject, scope.scope), 0);
        EXPECT_THAT(kept(), ElementsAre(record(scope, 0x89ABCDEF))) << scope.subject << " in " << scope.scope;
    }
    EXPECT_EQ(driver().count(), std::size(kScopes));
    EXPECT_THAT(driver().trace().front(), ::testing::StartsWith("user_mac_learn_limit_set(unit=0, limit="));
}

TEST_F(MacLimit, GetSendsTheSameRecordWithoutALimit) {
    keep("user_mac_learn_limit_get", "limit");
    for (const Scope &scope : kScopes) {
        value_ = kNotWritten;
        EXPECT_EQ(adp_get_mac_limit(&value_, scope.subject, scope.scope), 0);
        EXPECT_THAT(kept(), ElementsAre(record(scope, 0))) << scope.subject << " in " << scope.scope;
        EXPECT_EQ(value_, 0u);
    }
    EXPECT_EQ(driver().count(), std::size(kScopes));
}

TEST_F(MacLimit, GetReturnsTheLimitWhateverTheDriversResult) {
    for (const int32_t result : {0, -1, 77}) {
        const Bytes read = record(kScopes[0], 0xFEDCBA98);
        driver().on("user_mac_learn_limit_get").sets_bytes("limit", read).returns(result);
        value_ = kNotWritten;
        EXPECT_EQ(adp_get_mac_limit(&value_, 100, 0), result);
        EXPECT_EQ(value_, 0xFEDCBA98);
    }
    driver().fail_every("user_mac_learn_limit_get", -5);
    value_ = kNotWritten;
    EXPECT_EQ(adp_get_mac_limit(&value_, 100, 0), -5);
    EXPECT_EQ(value_, 0u);
}

TEST_F(MacLimit, OtherScopesAreRefused) {
    for (const uint32_t scope : kBadScopes) {
        for (const uint32_t subject : {3u, 0x10000002u, 0x20000001u}) {
            EXPECT_EQ(adp_set_mac_limit(5, subject, scope), 101) << scope;
            EXPECT_EQ(adp_get_mac_limit(&value_, subject, scope), 101) << scope;
        }
    }
    EXPECT_THAT(driver().trace(), IsEmpty());
    EXPECT_EQ(value_, kNotWritten);
}

TEST_F(MacLimit, SetReturnsTheDriversResult) {
    for (const Scope &scope : kScopes) {
        expect_results_passed_on("user_mac_learn_limit_set",
                                 [&] { return adp_set_mac_limit(5, scope.subject, scope.scope); });
    }
}

TEST_F(MacLimit, AgeingTimeIsPassedOn) {
    EXPECT_EQ(adp_set_mac_age_time(0xFFFFFFFF), 0);
    driver().on("user_mac_age_time_get").sets("seconds", 0xFFFFFFFEu);
    EXPECT_EQ(adp_get_mac_age_time(&value_), 0);
    EXPECT_EQ(value_, 0xFFFFFFFEu);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_mac_age_time_set(unit=0, seconds=4294967295)", "user_mac_age_time_get(unit=0)"));
    expect_results_passed_on("user_mac_age_time_set", [] { return adp_set_mac_age_time(1); });
    expect_results_passed_on("user_mac_age_time_get", [&] { return adp_get_mac_age_time(&value_); });
}

TEST_F(MacLimit, CountsTakeThePortAlone) {
    driver().on("user_mac_learn_count_get_by_port").sets("count", 8192u);
    driver().on("user_mac_violate_count_get_by_port").sets("count", 0xFFFFFFFFu);
    EXPECT_EQ(adp_get_mac_learn_count_by_intf(26, &value_), 0);
    EXPECT_EQ(value_, 8192u);
    EXPECT_EQ(adp_get_mac_violate_count_by_intf(1, &value_), 0);
    EXPECT_EQ(value_, 0xFFFFFFFFu);
    EXPECT_EQ(adp_get_mac_learn_count_by_intf(0x10000001, &value_), 0);
    EXPECT_EQ(adp_get_mac_violate_count_by_intf(27, &value_), 0);
    EXPECT_THAT(
        driver().trace(),
        ElementsAre("user_mac_learn_count_get_by_port(port=29)", "user_mac_violate_count_get_by_port(port=4)",
                    "user_mac_learn_count_get_by_port(port=-1)", "user_mac_violate_count_get_by_port(port=-1)"));
}

TEST_F(MacLimit, CountsReturnTheDriversResultAndLeaveTheOutputToIt) {
    expect_results_passed_on("user_mac_learn_count_get_by_port",
                             [&] { return adp_get_mac_learn_count_by_intf(1, &value_); });
    expect_results_passed_on("user_mac_violate_count_get_by_port",
                             [&] { return adp_get_mac_violate_count_by_intf(1, &value_); });
    EXPECT_EQ(value_, kNotWritten);
}

}  // namespace
