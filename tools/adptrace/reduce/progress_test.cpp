// Progress on a terminal and in a log.
#include "tools/adptrace/reduce/progress.h"

#include <gtest/gtest.h>

namespace progress_test {

using adptrace::Progress;
using std::chrono::seconds;

TEST(Progress, RewritesTheLineOfATerminal) {
    const Progress::Clock::time_point now;
    Progress progress(true, now);
    EXPECT_EQ(progress.update("one", now), "\r\x1b[Kone");
    EXPECT_EQ(progress.update("two", now), "\r\x1b[Ktwo");
    EXPECT_EQ(progress.finish(), "\r\x1b[K");
}

TEST(Progress, IsALineEveryFewSecondsElsewhere) {
    const Progress::Clock::time_point now;
    Progress progress(false, now);
    EXPECT_EQ(progress.update("one", now + seconds(4)), "");
    EXPECT_EQ(progress.update("two", now + seconds(5)), "two\n");
    EXPECT_EQ(progress.update("three", now + seconds(9)), "");
    EXPECT_EQ(progress.update("four", now + seconds(10)), "four\n");
    EXPECT_EQ(progress.finish(), "");
}

TEST(Progress, RemovesNoLineThatIsNotThere) {
    EXPECT_EQ(Progress(true, {}).finish(), "");
}

}  // namespace progress_test
