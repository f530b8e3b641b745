// The list of installed rules: its start and look-up.
#include "fp/testing/support.h"

namespace {

using fp_test::make_rule;
using library_test::installed_rules;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kInitCall[] = "user_field_init(unit=0, zero=0)";

class Rules : public fp_test::FpTest {
  protected:
    int32_t init() {
        ::testing::internal::CaptureStdout();
        const int32_t status = adp_fp_init();
        printed_ = ::testing::internal::GetCapturedStdout();
        return status;
    }

    std::string printed_;
};

TEST_F(Rules, InitCallsTheDriverOnceWhenItSucceeds) {
    for (const int32_t result : {0, 1, 77, INT32_MAX}) {
        driver().on("user_field_init").returns(result);
        EXPECT_EQ(init(), 0);
        EXPECT_THAT(driver().take(), ElementsAre(kInitCall));
        EXPECT_EQ(printed_, "");
    }
}

TEST_F(Rules, InitPrintsTheSecondResultAndReturnsTheThird) {
    const struct {
        int32_t first, second, third;
    } rows[] = {{-1, -2, -3}, {-1, 0, 0}, {-1, -1, 0}, {-5, 0, -6}, {INT32_MIN, INT32_MIN, INT32_MIN}, {-1, 4, 9}};
    for (const auto &row : rows) {
        for (const int32_t result : {row.first, row.second, row.third}) {
            driver().once("user_field_init").returns(result);
        }
        EXPECT_EQ(init(), row.third);
        EXPECT_THAT(driver().take(), ElementsAre(kInitCall, kInitCall, kInitCall));
        EXPECT_EQ(printed_, "adp_fp_init:[00428]  error funtion ret=" + std::to_string(row.second) + " \n");
    }
}

TEST_F(Rules, InitDropsTheNodesWithoutFreeingThem) {
    FpListNode *node = put(make_rule(1, 2));
    FpListNode *other = put(make_rule(1, 3));
    {
        fake_system::Session session;
        EXPECT_EQ(adp_fp_init(), 0);
        EXPECT_EQ(acl_fp_list_head.next, &acl_fp_list_head);
        EXPECT_EQ(acl_fp_list_head.prev, &acl_fp_list_head);
        EXPECT_EQ(session.system().allocations(), 0u);
    }
    EXPECT_EQ(node->entity.entity_id, 2u);
    EXPECT_EQ(node->link.next, &other->link);
    EXPECT_EQ(other->link.prev, &node->link);
    free(node);
    free(other);
}

TEST_F(Rules, InitEmptiesTheListBeforeTheDriverIsCalled) {
    FpListNode *node = put(make_rule(1, 2));
    driver().on("user_field_init").does([](recording::Arguments &) { return installed_rules().empty() ? 0 : -9; });
    EXPECT_EQ(init(), 0);
    free(node);
}

TEST_F(Rules, AreFoundByBothNumbersAndTheFirstMatchIsReturned) {
    FpListNode *of_1 = put(make_rule(1, 7));
    FpListNode *of_2 = put(make_rule(2, 7));
    FpListNode *second_of_1 = put(make_rule(1, 8));
    put(make_rule(1, 7));
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 7), of_1);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(2, 7), of_2);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 8), second_of_1);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(2, 8), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0, 0), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0x10001, 7), nullptr);
    EXPECT_THAT(driver().trace(), IsEmpty());
}

TEST_F(Rules, AreNotFoundInAnEmptyList) {
    EXPECT_EQ(adp_fp_find_list_node_by_entity(0, 0), nullptr);
    EXPECT_EQ(adp_fp_find_list_node_by_entity(1, 0), nullptr);
}

}  // namespace
