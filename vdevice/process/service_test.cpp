// What a service manager hears.
#include "vdevice/process/service.h"

#include <gtest/gtest.h>
#include <stddef.h>
#include <sys/socket.h>

#include <array>
#include <cstdlib>

#include "tests/support/temporary_folder.h"
#include "vdevice/sockets/unique_fd.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace service_test {

class Manager : public testing::Test {
  protected:
    /** Listens at the address, which the variable then names so. */
    void listen(sockaddr_un address, size_t name_size, const std::string &name) {
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_size);
        ASSERT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), size), 0);
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }
    std::string heard() {
        std::array<char, 1000> text{};
        const ssize_t size = recv(socket_.get(), text.data(), text.size(), MSG_DONTWAIT);
        return size < 0 ? "" : std::string(text.data(), static_cast<size_t>(size));
    }
    void TearDown() override { unsetenv("NOTIFY_SOCKET"); }

    TemporaryFolder folder_;

  private:
    UniqueFd socket_{socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
};

TEST_F(Manager, IsToldBySocketFile) {
    const std::string path = folder_.path() + "/notify";
    listen(*unix_address(path), path.size(), path);
    service::tell_ready();
    EXPECT_EQ(heard(), "READY=1");
    service::tell_status("in sync\nREADY=0");
    EXPECT_EQ(heard(), "STATUS=in sync\\nREADY=0");
    service::tell_alive();
    EXPECT_EQ(heard(), "WATCHDOG=1");
    service::tell_stopping();
    EXPECT_EQ(heard(), "STOPPING=1");
    service::tell_reloading();
    EXPECT_EQ(heard().rfind("RELOADING=1\nMONOTONIC_USEC=", 0), 0U);
}

TEST_F(Manager, IsToldByNameWithoutAFile) {
    const std::string name = "@" + folder_.path() + "/notify";
    sockaddr_un address = *unix_address(name);
    address.sun_path[0] = '\0';
    listen(address, name.size(), name);
    service::tell_alive();
    EXPECT_EQ(heard(), "WATCHDOG=1");
}

TEST_F(Manager, MayBeMissingOrDeaf) {
    const std::string path = folder_.path() + "/notify";
    for (const std::string &named : {std::string{}, std::string{"relative"}, path, std::string(300, '/')}) {
        setenv("NOTIFY_SOCKET", named.c_str(), 1);
        service::tell_ready();
    }
    unsetenv("NOTIFY_SOCKET");
    service::tell_ready();
    EXPECT_EQ(heard(), "");
    listen(*unix_address(path), path.size(), path);
    constexpr int kMoreThanItKeeps = 10000;
    for (int count = 0; count < kMoreThanItKeeps; ++count) {
        service::tell_alive();
    }
    EXPECT_EQ(heard(), "WATCHDOG=1");
}

}  // namespace service_test
}  // namespace vdevice
