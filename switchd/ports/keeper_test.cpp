// The keeper of descriptors. A pipe tells who holds its other end.
#include "switchd/ports/keeper.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "switchd/ports/keeper_message.h"
#include "vdevice/io/error.h"
#include "vdevice/sockets/device_socket.h"

namespace switchd {
namespace keeper_test {

using vdevice::UniqueFd;

constexpr int kPatience = 60000;

/** What is written into one end comes out of the other one, and is heard to end with the last holder. */
struct Pipe {
    Pipe() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        out = UniqueFd{ends[0]};
        in = UniqueFd{ends[1]};
    }
    bool is_ended(int patience) const {
        pollfd waiting{out.get(), POLLIN, 0};
        return poll(&waiting, 1, patience) == 1 && (waiting.revents & POLLHUP) != 0;
    }

    UniqueFd out;
    UniqueFd in;
};

class KeeperTest : public testing::Test {
  protected:
    KeeperTest() {
        EXPECT_NE(mkdtemp(folder_), nullptr);
        path_ = std::string{folder_} + "/keeper";
    }
    // Without its socket's file the process ends.
    ~KeeperTest() override {
        unlink(path_.c_str());
        rmdir(folder_);
    }

    char folder_[32] = "/tmp/keeper-test-XXXXXX";
    std::string path_;
};

TEST_F(KeeperTest, WhatItHoldsOutlivesTheGiver) {
    Pipe pipe;
    const pid_t child = fork();
    if (child == 0) {
        Keeper keeper{path_};
        _exit(keeper.hold("swp1", pipe.in.get()) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_EQ(status, 0);
    pipe.in.reset();
    EXPECT_FALSE(pipe.is_ended(100));
    Keeper keeper{path_};
    auto held = keeper.held();
    ASSERT_EQ(held.size(), 1U);
    ASSERT_TRUE(held.contains("swp1"));
    EXPECT_EQ(write(held["swp1"].get(), "x", 1), 1);
    char octet = 0;
    EXPECT_EQ(read(pipe.out.get(), &octet, 1), 1);
    EXPECT_EQ(octet, 'x');
    EXPECT_EQ(keeper.held().size(), 1U) << "it goes on holding it";
}

TEST_F(KeeperTest, WhatIsDroppedIsClosed) {
    Pipe first;
    Pipe second;
    Keeper keeper{path_};
    EXPECT_TRUE(keeper.hold("swp1", first.in.get()));
    EXPECT_TRUE(keeper.hold("swp2.100", second.in.get()));
    first.in.reset();
    second.in.reset();
    EXPECT_TRUE(keeper.drop("swp1"));
    EXPECT_TRUE(first.is_ended(kPatience));
    EXPECT_FALSE(second.is_ended(100));
    EXPECT_TRUE(keeper.held().contains("swp2.100"));
}

TEST_F(KeeperTest, ANewDescriptorTakesTheOldOnesPlace) {
    Pipe first;
    Pipe second;
    Keeper keeper{path_};
    EXPECT_TRUE(keeper.hold("swp1", first.in.get()));
    EXPECT_TRUE(keeper.hold("swp1", second.in.get()));
    first.in.reset();
    second.in.reset();
    EXPECT_TRUE(first.is_ended(kPatience));
    EXPECT_FALSE(second.is_ended(100));
}

TEST_F(KeeperTest, ItHoldsAsManyAsASwitchHas) {
    constexpr size_t kMany = 300;
    const Pipe pipe;
    Keeper keeper{path_};
    for (size_t i = 0; i < kMany; ++i) {
        ASSERT_TRUE(keeper.hold("swp" + std::to_string(i), pipe.in.get()));
    }
    EXPECT_EQ(keeper.held().size(), kMany);
}

TEST_F(KeeperTest, ItEndsWhenItIsTold) {
    Pipe pipe;
    Keeper keeper{path_};
    EXPECT_TRUE(keeper.hold("swp1", pipe.in.get()));
    pipe.in.reset();
    keeper.end();
    EXPECT_TRUE(pipe.is_ended(kPatience));
}

TEST_F(KeeperTest, ItEndsWithItsSocketsFile) {
    Pipe pipe;
    Keeper keeper{path_};
    EXPECT_TRUE(keeper.hold("swp1", pipe.in.get()));
    pipe.in.reset();
    EXPECT_FALSE(pipe.is_ended(100));
    EXPECT_EQ(unlink(path_.c_str()), 0);
    EXPECT_TRUE(pipe.is_ended(kPatience));
}

TEST_F(KeeperTest, ADeadOnesFileIsReplaced) {
    { Keeper{path_}.end(); }
    Pipe pipe;
    Keeper keeper{path_};
    EXPECT_TRUE(keeper.hold("swp1", pipe.in.get()));
    EXPECT_EQ(keeper.held().size(), 1U);
}

TEST_F(KeeperTest, NonsenseDoesNotDisturbIt) {
    Pipe pipe;
    {
        Keeper keeper{path_};
        EXPECT_TRUE(keeper.hold("swp1", pipe.in.get()));
    }
    for (const size_t length : {1U, 31U, 32U, 100U, 5000U}) {
        UniqueFd socket;
        ASSERT_EQ(vdevice::connect_to_device(socket, path_, std::chrono::steady_clock::now()), 0);
        const std::string nonsense(length, '\xFF');
        EXPECT_EQ(send(socket.get(), nonsense.data(), nonsense.size(), MSG_NOSIGNAL), static_cast<ssize_t>(length));
    }
    EXPECT_EQ(Keeper{path_}.held().size(), 1U);
}

TEST_F(KeeperTest, ANameWithoutADescriptorHoldsNothing) {
    Keeper keeper{path_};
    UniqueFd socket;
    ASSERT_EQ(vdevice::connect_to_device(socket, path_, std::chrono::steady_clock::now()), 0);
    wait_on(socket.get());
    EXPECT_TRUE(send_message(socket.get(), KeeperVerb::kHold, "swp1"));
    EXPECT_TRUE(Keeper{path_}.held().empty()) << "there is nothing to be held";
}

TEST_F(KeeperTest, AFolderThatOthersMayWriteToIsNotUsed) {
    ASSERT_EQ(chmod(folder_, 0777), 0);
    EXPECT_THROW(Keeper{path_}, vdevice::io::Error);
}

TEST_F(KeeperTest, WithoutAFolderThereIsNone) {
    EXPECT_THROW(Keeper{"/nonexistent/keeper"}, vdevice::io::Error);
}

}  // namespace keeper_test
}  // namespace switchd
