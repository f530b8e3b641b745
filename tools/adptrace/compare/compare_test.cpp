// Recordings that differ in one thing, and what the comparison says of it.
#include "tools/adptrace/compare/compare.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace compare_test {
namespace {

using adptrace::compare;
using adptrace::CompareOptions;
using adptrace::Comparison;
using adptrace::Recording;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/** Writes a recording, with times and numbers of its own. */
class Script {
  public:
    explicit Script(int64_t process = 40, const std::string &library = "a1b2", bool is_big_endian = true)
        : process_(process), at_(process) {
        text_ = R"({"adptrace":1,"byte_order":")" + std::string(is_big_endian ? "big" : "little") +
                R"(","word_bits":32,"started":"2024-05-06T07:08:09Z","command":["agent"]})" + "\n";
        start(process, 0, library);
    }

    Script &start(int64_t id, int64_t parent, const std::string &library = "a1b2") {
        return line(R"({"process":)" + std::to_string(id) + R"(,"parent":)" + std::to_string(parent) + at() +
                    R"(,"program":"/usr/bin/agent","library":")" + library + "\"}");
    }
    Script &of(int64_t process) {
        of_ = process == process_ ? "" : R"(,"of":)" + std::to_string(process);
        return *this;
    }
    Script &in(int thread) {
        thread_ = thread;
        return *this;
    }
    Script &begin(const std::string &call, const std::string &arguments) {
        const std::string within = open_.empty() ? "" : R"(,"within":)" + std::to_string(open_.back());
        open_.push_back(++number_);
        return line(R"({"begin":)" + std::to_string(number_) + of_ + within + R"(,"thread":)" +
                    std::to_string(thread_) + at() + R"(,"call":")" + call + R"(","arguments":)" + arguments + "}");
    }
    Script &end(const std::string &result = "0", const std::string &outputs = "{}") {
        const int number = open_.back();
        open_.pop_back();
        return line(R"({"end":)" + std::to_string(number) + of_ + at() + R"(,"result":)" + result + R"(,"outputs":)" +
                    outputs + "}");
    }
    Script &call(const std::string &name, const std::string &arguments, const std::string &result = "0",
                 const std::string &outputs = "{}") {
        return begin(name, arguments).end(result, outputs);
    }
    Script &line(const std::string &text) {
        text_ += text + "\n";
        return *this;
    }
    [[nodiscard]] Recording recording() const { return Recording(text_); }

  private:
    std::string at() { return R"(,"at":)" + std::to_string(at_ += process_); }

    int64_t process_;
    int64_t at_;
    int thread_ = 1;
    int number_ = 0;
    std::vector<int> open_;
    std::string of_;
    std::string text_;
};

Comparison compared(const Script &a, const Script &b, const CompareOptions &options = {}) {
    return compare(a.recording(), b.recording(), options);
}

Script &create_vlan(Script &script, int vid, const std::string &driver_result = "0") {
    const std::string number = std::to_string(vid);
    return script.begin("adp_vlan_create", "{\"vid\":" + number + "}")
        .call("user_vlan_create", R"({"unit":0,"zero":0,"vid":)" + number + "}", driver_result)
        .end(driver_result == "0" ? "0" : "102");
}

TEST(Comparison, OfARecordingWithItselfHasNoDifference) {
    Script script;
    create_vlan(script, 100);
    create_vlan(script, 200).call("adp_vlan_dump", "{}");
    const Comparison comparison = compared(script, script);
    EXPECT_EQ(comparison.differences, 0U);
    EXPECT_EQ(comparison.text, "A and B are equal in meaning: 5 calls\n");
}

TEST(Comparison, LeavesOutTimesAndIds) {
    Script a(40);
    Script b(4711);
    create_vlan(a, 100);
    create_vlan(b, 100);
    EXPECT_EQ(compared(a, b).differences, 0U);
}

TEST(Comparison, ShowsAnArgumentThatDiffers) {
    Script a;
    Script b;
    create_vlan(a, 100).call("adp_vlan_port_add", R"({"vid":100,"ports":[4,5],"untagged":[]})");
    create_vlan(b, 100).call("adp_vlan_port_add", R"({"vid":100,"ports":[4],"untagged":[]})");
    const Comparison comparison = compared(a, b);
    EXPECT_EQ(comparison.differences, 1U);
    EXPECT_EQ(comparison.text, R"(--- A
+++ B
@@ thread 1 @@
       3      3  adp_vlan_create(vid=100) = 0
-      7         adp_vlan_port_add(vid=100, ports={4,5}, untagged={}) = 0
+             7  adp_vlan_port_add(vid=100, ports={4}, untagged={}) = 0
                   argument ports: {4,5} | {4}
1 call differs: 1 in both, 0 only in A, 0 only in B
)");
}

}  // namespace
}  // namespace compare_test
