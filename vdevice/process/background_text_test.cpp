// Texts that another process makes: whole, of the moment they were asked for, or none.
#include "vdevice/process/background_text.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

#include <array>
#include <new>

namespace vdevice {
namespace background_text_test {

std::string text_of(const UniqueFd &file) {
    std::string text;
    std::array<char, 65536> buffer;
    for (ssize_t length = 0; (length = read(file.get(), buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<size_t>(length));
    }
    return text;
}

TEST(BackgroundText, TellsOfTheMomentAtWhichItWasStarted) {
    constexpr size_t kLength = 3000000;
    char letter = 'x';
    BackgroundText text{[&] { return std::string(kLength, letter); }};
    letter = 'y';
    pollfd ended{text.fd(), POLLIN, 0};
    ASSERT_EQ(poll(&ended, 1, 10000), 1);
    EXPECT_EQ(text_of(text.take()), std::string(kLength, 'x'));
}

TEST(BackgroundText, GivesNoneIfMakingItFails) {
    EXPECT_FALSE(BackgroundText{[]() -> std::string { throw std::bad_alloc{}; }}.take());
    EXPECT_FALSE(BackgroundText{[]() -> std::string { std::_Exit(3); }}.take());
}

TEST(BackgroundText, LeavesNoProcessBehind) {
    {
        const BackgroundText endless{[] {
            pause();
            return std::string{};
        }};
    }
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace background_text_test
}  // namespace vdevice
