// Commands that succeed, fail, hang, and leave processes behind.
#include "tools/adptrace/reduce/shell_command.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>

namespace shell_command_test {

using adptrace::Interrupted;
using adptrace::ShellCommand;
using std::chrono::milliseconds;

class Commands : public testing::Test {
  protected:
    Commands() {
        std::string name = testing::TempDir() + "adptrace XXXXXX";
        folder_ = ::mkdtemp(name.data());
        file_ = folder_ + "/it's a file";
        std::ofstream(file_) << "text\n";
    }
    ~Commands() override { std::system(("rm -r '" + folder_ + "'").c_str()); }

    [[nodiscard]] std::optional<int> status_of(const std::string &command) const {
        return ShellCommand(command, std::nullopt).run(file_);
    }

    /** The number that a command has written. */
    static int number_in(const std::string &file) {
        int number = 0;
        std::ifstream(file) >> number;
        return number;
    }

    std::string folder_;
    std::string file_;
};

TEST_F(Commands, HaveTheStatusOfTheShell) {
    EXPECT_EQ(status_of("true"), 0);
    EXPECT_EQ(status_of("exit 7;"), 7);
    EXPECT_EQ(status_of("kill -SEGV $$;"), ShellCommand::kSignalled + SIGSEGV);
    EXPECT_EQ(status_of("/no/such/command"), ShellCommand::kNotFound);
}

TEST_F(Commands, GetTheNameOfTheFile) {
    EXPECT_EQ(status_of("grep text"), 0);
    EXPECT_EQ(status_of("grep text {} && test -s {} && cp {} {}.copy"), 0);
    EXPECT_EQ(::access((file_ + ".copy").c_str(), F_OK), 0);
    EXPECT_EQ(status_of("grep other {}"), 1);
}

TEST_F(Commands, AreEndedWhenTheyTakeTooLong) {
    const ShellCommand command("echo $$ >{}; sleep 600; exit 1;", milliseconds(300));
    EXPECT_EQ(command.run(file_), std::nullopt);
    EXPECT_TRUE(::kill(number_in(file_), 0) < 0 && errno == ESRCH);
}

TEST_F(Commands, LeaveNoProcessBehind) {
    EXPECT_EQ(status_of("sleep 600 & echo $! >{}"), 0);
    // It may take a moment until its new parent has reaped it.
    const int left = number_in(file_);
    for (int n = 0; n < 200 && ::access(("/proc/" + std::to_string(left) + "/exe").c_str(), F_OK) == 0; ++n) {
        ::usleep(10000);
    }
    EXPECT_NE(::access(("/proc/" + std::to_string(left) + "/exe").c_str(), F_OK), 0);
}

TEST_F(Commands, EndWithWhoeverIsInterrupted) {
    const ShellCommand command("echo $$ >{}; kill -INT $PPID; sleep 600;", std::nullopt);
    EXPECT_THROW((void)command.run(file_), Interrupted);
    EXPECT_TRUE(::kill(number_in(file_), 0) < 0 && errno == ESRCH);
}

}  // namespace shell_command_test
