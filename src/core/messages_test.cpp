// Messages: where each form goes, and how long a line of the trace may be.
#include "core/messages.h"

#include "tests/support/library_test.h"
#include "tests/support/outcome.h"

namespace messages_test {

using adp::Message;
using library_test::Outcome;
using library_test::outcome_of;
using ::testing::ElementsAre;

constexpr size_t kLongestTrace = 255;
constexpr Message kMessage{{"here", 12}, "%s:[%05d] %d %d\n"};
constexpr Message kPlain{{"here", 12}, "%s %d\n"};

class Messages : public library_test::LibraryTest {};

TEST_F(Messages, PrintGoesToStandardOutput) {
    EXPECT_EQ(outcome_of([] { return adp::print(kMessage, 3, -4); }), (Outcome{18, "here:[00012] 3 -4\n", ""}));
}

TEST_F(Messages, ComplainGoesToStandardError) {
    EXPECT_EQ(outcome_of([] { return adp::complain(kPlain); }), (Outcome{8, "", "here 12\n"}));
}

TEST_F(Messages, NumbersThatTheFormatDoesNotUseAreIgnored) {
    EXPECT_EQ(outcome_of([] { return adp::print(kPlain, 3, 4); }), (Outcome{8, "here 12\n", ""}));
}

TEST_F(Messages, OnlyANegativeResultIsPrinted) {
    EXPECT_EQ(outcome_of([] { return adp::report_if_negative(kPlain, -5); }), (Outcome{-5, "here 12\n", ""}));
    for (const int32_t result : {0, 5}) {
        EXPECT_EQ(outcome_of([=] { return adp::report_if_negative(kPlain, result); }), (Outcome{result, "", ""}));
    }
}

TEST_F(Messages, AnyResultButZeroIsPrinted) {
    for (const int32_t result : {-5, 5}) {
        EXPECT_EQ(outcome_of([=] { return adp::report_if_not_zero(kPlain, result); }),
                  (Outcome{result, "here 12\n", ""}));
    }
    EXPECT_EQ(outcome_of([] { return adp::report_if_not_zero(kPlain, 0); }), (Outcome{0, "", ""}));
}

TEST_F(Messages, LogGoesToTheLogAloneWhileTracingIsOff) {
    adp::log_rule(kMessage, 3u, 4);
    EXPECT_THAT(driver().take(), ElementsAre("sys_trace_get()",
                                             "Log_logging_func(level=7, module=18, word=\"ACL\", "
                                             "format=\"%s:[%05d] %d %d\\n\", text=\"here:[00012] 3 4\\n\")"));
}

TEST_F(Messages, TracingIsReadFromTheDevice) {
    EXPECT_FALSE(adp::is_tracing());
    driver().on("sys_trace_get").returns(1);
    EXPECT_TRUE(adp::is_tracing());
}

TEST_F(Messages, ALineOfTheTraceHas255CharactersAtMost) {
    for (const size_t length : {254u, 255u, 256u, 600u}) {
        const std::string text(length, 'x');
        adp::trace({text.c_str(), 7}, "%s", text.c_str());
        const std::string place = (text + "():7").substr(0, kLongestTrace);
        EXPECT_THAT(driver().take(), ElementsAre("sys_trace_add_log(prefix=\"" + place + "\", message=\"" +
                                                 text.substr(0, kLongestTrace) + "\")"));
    }
}

TEST_F(Messages, TheLogItselfIsNotCut) {
    driver().on("sys_trace_get").returns(1);
    const std::string name(300, 'n');
    adp::log_rule(Message{{name.c_str(), 12}, "%s:[%05d] %d"}, 34);
    EXPECT_THAT(driver().take(),
                ElementsAre("sys_trace_get()",
                            "sys_trace_add_log(prefix=\"" + name.substr(0, kLongestTrace) + "\", message=\"" +
                                name.substr(0, kLongestTrace) + "\")",
                            "Log_logging_func(level=7, module=18, word=\"ACL\", format=\"%s:[%05d] %d\", text=\"" +
                                name + ":[00012] 34\")"));
}

}  // namespace messages_test
