// Results of calls as JSON.
#include <adp/adp.h>
#include <gtest/gtest.h>

#include <string>

#include "calls/exported.h"
#include "calls/json_text.h"

namespace json_result_test {

using calls::Result;

std::string result_of(Result kind, int64_t result, const calls::Struct *layout = nullptr) {
    std::string text;
    append_result(text, kind, layout, result);
    return text;
}

template <typename T>
int64_t number_of(const T *address) {
    return static_cast<int64_t>(reinterpret_cast<intptr_t>(address));
}

TEST(JsonResult, IsWhatItsTypeSays) {
    EXPECT_EQ(result_of(Result::kNothing, 5), "null");
    EXPECT_EQ(result_of(Result::kStatus, 0xFFFFFFFF), "-1");
    EXPECT_EQ(result_of(Result::kI32, -7), "-7");
    EXPECT_EQ(result_of(Result::kU32, -1), "4294967295");
    EXPECT_EQ(result_of(Result::kInterface, ADP_AGG_INTF(1)), "268435457");
    EXPECT_EQ(result_of(Result::kText, number_of("a\tb")), R"("a\u0009b")");
    EXPECT_EQ(result_of(Result::kText, 0), "null");
}

TEST(JsonResult, AStructIsAnObject) {
    const exported::Call *call = exported::find_call("adp_fp_find_list_node_by_entity");
    ASSERT_NE(call, nullptr);
    FpListNode node{};
    node.link.next = &node.link;
    node.entity.entity_id = 4;
    EXPECT_EQ(result_of(call->result, number_of(&node), call->layout),
              R"({"link":{"next":"set","prev":null},"entity":{"submodule_type":0,"unit":0,"entity_id":4,)"
              R"("true_entry":0,"priority":0,"qualify_num":0,"action_num":0,"qualifies":[],"actions":[]}})");
    EXPECT_EQ(result_of(call->result, 0, call->layout), "null");
}

}  // namespace json_result_test
