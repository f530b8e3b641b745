// A recording in parts: where each line belongs, what is left out, and that memory is bounded.
#include "tools/adptrace/recording/parts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/recording/testing/lines.h"

namespace parts_test {
namespace {

using adptrace::BadRecording;
using adptrace::Part;
using adptrace::Parts;
using adptrace::Recording;
using adptrace::testing::begin;
using adptrace::testing::end;
using adptrace::testing::kStart;
using testing::ElementsAre;

class Taken {
  public:
    explicit Taken(const Parts::Limits &limits = {})
        : parts{[this](Part part) { taken.push_back(std::move(part)); }, limits} {
        add(kStart);
    }

    void add(const std::string &text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            parts.add(line);
        }
    }
    /** Of each part that has come since: its first line, the numbers of its calls, * for one that has not returned. */
    std::vector<std::string> take() {
        std::vector<std::string> all;
        for (const Part &part : taken) {
            std::string text = std::to_string(part.first) + ":";
            const Recording recording(part.text, part.numbers);
            EXPECT_EQ(part.is_call, !recording.calls().empty());
            for (const adptrace::Call &call : recording.calls()) {
                text += " " + std::to_string(call.number) + (call.has_returned ? "" : "*");
            }
            all.push_back(text + (part.left_out > 0 ? " -" + std::to_string(part.left_out) : ""));
        }
        taken.clear();
        return all;
    }
    std::string reason(const std::string &text) {
        try {
            add(text);
        } catch (const BadRecording &error) {
            return error.what();
        }
        return "accepted";
    }

    std::vector<Part> taken;
    Parts parts;
};

std::string call(uint64_t number, uint64_t within = 0, uint32_t thread = 1, int64_t process = 0) {
    return begin({number, within, "adp_vlan_create", "{}", 10, thread, process});
}
std::string returned(uint64_t number, int64_t process = 0) {
    return end({number, "0", 10, "{}", process});
}
std::string process(int64_t id) {
    return R"({"process":)" + std::to_string(id) + R"(,"parent":40,"at":5,"program":"child","library":null})" + "\n";
}

TEST(Parts, AreWholeWhenTheirCallHasEnded) {
    Taken taken;
    EXPECT_THAT(taken.take(), ElementsAre("1:", "2:"));
    taken.add(call(1) + call(2, 1) + call(3, 0, 2) + returned(2));
    EXPECT_THAT(taken.take(), ElementsAre());
    taken.add(returned(3));
    EXPECT_THAT(taken.take(), ElementsAre("5: 3"));
    taken.add(call(4, 1) + returned(4) + returned(1));
    EXPECT_THAT(taken.take(), ElementsAre("3: 1 2 4"));
}

TEST(Parts, KeepTheNumbersOfTheirLines) {
    Taken taken;
    taken.add(call(1) + call(2, 0, 2) + returned(1) + returned(2));
    const Part &second = taken.taken.back();
    EXPECT_THAT(second.numbers, ElementsAre(1, 2, 4, 6));
    EXPECT_EQ(Recording(second.text, second.numbers).calls()[0].line, 4U);
    EXPECT_THROW(Recording(second.text + "x\n", {1, 2, 4, 6, 7}), BadRecording);
}

TEST(Parts, AreLinesThatAreInNoCall) {
    Taken taken;
    taken.take();
    taken.add(call(1) + R"({"board":[],"at":10})" + "\n" +
              R"({"frame":"sent","thread":2,"at":10,"interface":"eth0","octets":"00"})" + "\n" +
              R"({"weather":"fine"})" + "\n" +
              R"({"frame":"sent","within":1,"thread":1,"at":10,"interface":"eth0","octets":"00"})" + "\n");
    EXPECT_THAT(taken.take(), ElementsAre("4:", "5:"));
    taken.add(returned(1));
    const Part &part = taken.taken.back();
    EXPECT_EQ(Recording(part.text, part.numbers).frames().size(), 1U);
}

TEST(Parts, OfCallsThatDoNotReturnComeWhenNoEndCanCome) {
    Taken taken;
    taken.take();
    taken.add(call(1) + call(2, 1) + call(3));  // a handler has jumped out of 1
    EXPECT_THAT(taken.take(), ElementsAre("3: 1* 2*"));
    taken.add(process(41) + call(1, 0, 1, 41) + process(41));  // it has become another program
    EXPECT_THAT(taken.take(), ElementsAre("6:", "7: 1*", "8:"));
    taken.add(call(1, 0, 1, 41) + R"({"exit":41,"at":20,"status":0})" + "\n");
    EXPECT_THAT(taken.take(), ElementsAre("9: 1*", "10:"));
    EXPECT_FALSE(taken.parts.has_ended());
    taken.add(R"({"exit":40,"at":20,"signal":9})"
              "\n");
    EXPECT_THAT(taken.take(), ElementsAre("5: 3*", "11:"));
    EXPECT_TRUE(taken.parts.has_ended());
    taken.add(call(9) + call(8, 0, 2));
    taken.parts.finish();
    EXPECT_THAT(taken.take(), ElementsAre("12: 9*", "13: 8*"));
}

TEST(Parts, IgnoreWhatBelongsToACallThatIsGone) {
    Taken taken;
    taken.take();
    taken.add(call(1) + call(2) + returned(1) + call(3, 1) + returned(3) + returned(2));
    EXPECT_THAT(taken.take(), ElementsAre("3: 1*", "4: 2 -1"));
    taken.add(call(5, 1) + returned(5));
    EXPECT_THAT(taken.take(), ElementsAre());
}

TEST(Parts, RefuseWhatIsNoRecording) {
    Taken taken;
    EXPECT_EQ(taken.reason("x\n"), "line 3 is no JSON object.");
    EXPECT_EQ(taken.reason(kStart), "line 4 is another header.");
    EXPECT_EQ(taken.reason(call(1, 0, 1, 77)), "line 5 belongs to process 77, which has no line.");
    EXPECT_EQ(taken.reason(call(1) + call(1, 1)), "line 7 begins call 1, which has begun before.");
    EXPECT_EQ(taken.reason(call(1, 0, 2)), "line 8 begins call 1, which has begun before.");
    EXPECT_EQ(taken.reason(R"({"end":"x"})"), "line 9 needs a number from 1 to 18446744073709551615 as 'end'.");
    Parts first{[](const Part & /*part*/) {}};
    first.add("{}");  // what takes the part refuses its header
    EXPECT_THROW(first.add(R"({"begin":1,"thread":1})"), BadRecording);
}

constexpr size_t kLong = 5000;

std::string long_call(uint64_t number, uint64_t within, uint32_t thread) {
    return begin({number, within, "adp_vlan_create", R"({"text":")" + std::string(kLong, 'x') + "\"}", 10, thread, 0});
}

TEST(Parts, LeaveOutWhatIsTooMuchWithinACall) {
    Taken taken({.in_call = 8 * kLong});
    taken.take();
    taken.add(call(1));
    for (uint64_t number = 2; number <= 11; ++number) {
        taken.add(long_call(number, 1, 1) + returned(number));
    }
    taken.add(call(12, 11) + returned(12) + returned(1));
    EXPECT_THAT(taken.take(), ElementsAre("3: 1 2 3 4 5 6 7 8 -4"));
}

TEST(Parts, HandOnTheOldestCallsWhenTooManyWait) {
    Taken taken({.kept = 10 * kLong});
    taken.take();
    for (uint32_t thread = 1; thread <= 13; ++thread) {
        taken.add(long_call(thread, 0, thread));
    }
    EXPECT_THAT(taken.take(), ElementsAre("3: 1*", "4: 2*", "5: 3*", "6: 4*", "7: 5*"));
    taken.add(returned(1));
    EXPECT_THAT(taken.take(), ElementsAre());
    taken.add(returned(6));
    EXPECT_THAT(taken.take(), ElementsAre("8: 6"));
}

TEST(Parts, ForgetTheProcessThatHasBeenSilentForLongest) {
    Taken taken({.processes = 4});
    taken.add(process(41) + process(42) + call(1, 0, 1, 41));
    taken.add(process(43) + process(44));
    EXPECT_EQ(taken.reason(call(2, 0, 1, 42)), "line 8 belongs to process 42, which has no line.");
    taken.take();
    taken.add(returned(1, 41) + call(3) + returned(3));
    EXPECT_THAT(taken.take(), ElementsAre("5: 1", "10: 3"));
}

}  // namespace
}  // namespace parts_test
