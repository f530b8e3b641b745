// A socket's file: what it replaces, and what it leaves alone.
#include "vdevice/sockets/listening_socket.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/support/temporary_folder.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace listening_socket_test {

namespace fs = std::filesystem;

class Listening : public testing::Test {
  protected:
    [[nodiscard]] std::string path() const { return folder_.path() + "/socket"; }
    [[nodiscard]] UniqueFd client() const {
        UniqueFd fd{socket(AF_UNIX, SOCK_STREAM, 0)};
        const sockaddr_un address = *unix_address(path());
        EXPECT_EQ(connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
        return fd;
    }
    [[nodiscard]] static std::string refusal(const std::string &path) {
        try {
            const ListeningSocket listener{path};
        } catch (const std::runtime_error &error) {
            return error.what();
        }
        return {};
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(Listening, TakesClientsAndLeavesNoFile) {
    {
        ListeningSocket listener{path()};
        EXPECT_FALSE(listener.accept());
        EXPECT_FALSE(listener.is_exhausted());
        const UniqueFd waiting = client();
        EXPECT_TRUE(listener.accept());
    }
    EXPECT_FALSE(fs::exists(path()));
}

TEST_F(Listening, ReplacesTheSocketOfADeadServer) {
    {
        const UniqueFd dead{socket(AF_UNIX, SOCK_STREAM, 0)};
        const sockaddr_un address = *unix_address(path());
        ASSERT_EQ(bind(dead.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
    }
    ListeningSocket listener{path()};
    const UniqueFd waiting = client();
    EXPECT_TRUE(listener.accept());
}

TEST_F(Listening, RefusesAFileThatIsNoSocketAndLeavesItAlone) {
    std::ofstream{path()} << "notes";
    EXPECT_EQ(refusal(path()),
              "cannot listen on " + path() + ": a file of that name is there, and it is no socket. Move it away.");
    EXPECT_EQ(fs::file_size(path()), 5u);
    fs::remove(path());
    fs::create_symlink(path() + "-elsewhere", path());
    EXPECT_NE(refusal(path()), "");
    EXPECT_TRUE(fs::is_symlink(path()));
}

TEST_F(Listening, LeavesTheSocketOfItsSuccessorAlone) {
    auto first = std::make_unique<ListeningSocket>(path());
    ListeningSocket second{path()};
    first.reset();
    const UniqueFd waiting = client();
    EXPECT_TRUE(second.accept());
}

TEST_F(Listening, SaysWhyAPathCannotBeUsed) {
    EXPECT_EQ(refusal("/nowhere/socket"), "cannot listen on /nowhere/socket: No such file or directory.");
    const std::string endless = "/" + std::string(200, 'x');
    EXPECT_EQ(refusal(endless), "cannot listen on " + endless + ": the path is too long for a socket.");
}

TEST_F(Listening, TellsThatAClientWaitsWhenDescriptorsHaveRunOut) {
    ListeningSocket listener{path()};
    const UniqueFd waiting = client();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_FALSE(listener.accept());
    EXPECT_TRUE(listener.is_exhausted());
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(listener.accept());
    EXPECT_FALSE(listener.is_exhausted());
}

}  // namespace listening_socket_test
}  // namespace vdevice
