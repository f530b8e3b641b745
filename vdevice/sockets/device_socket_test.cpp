// Whom programs take for the device, and whom they do not.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "tests/support/temporary_folder.h"
#include "vdevice/sockets/device_socket.h"
#include "vdevice/sockets/private_folder.h"
#include "vdevice/sockets/run_dir.h"
#include "vdevice/sockets/unix_address.h"

namespace vdevice {
namespace device_socket_test {

constexpr uid_t kStranger = 12345;
constexpr char kNeedsRoot[] = "only root can be another user";

/** Acts as another user while it lives, if the process may. */
class As {
  public:
    explicit As(uid_t user) : succeeded_{seteuid(user) == 0} {}
    ~As() { EXPECT_EQ(seteuid(0), 0); }
    As(const As &) = delete;
    As &operator=(const As &) = delete;

    [[nodiscard]] bool succeeded() const { return succeeded_; }

  private:
    bool succeeded_;
};

bool may_be_stranger() {
    return geteuid() == 0 && As(kStranger).succeeded();
}

/** A socket that is bound, and served by nobody yet. */
class Listener {
  public:
    explicit Listener(std::string path) : path_{std::move(path)} {
        const sockaddr_un address = *unix_address(path_);
        EXPECT_EQ(bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
        EXPECT_EQ(chmod(path_.c_str(), 0666), 0);
    }
    void listen() const { EXPECT_EQ(::listen(socket_.get(), 1), 0); }
    [[nodiscard]] int connect() const {
        UniqueFd client;
        return connect_to_device(client, path_, std::chrono::steady_clock::now());
    }

  private:
    std::string path_;
    UniqueFd socket_ = unix_socket();
};

TEST(PrivateFolder, IsAFolderThatNobodyElseMayWriteTo) {
    const TemporaryFolder folder;
    EXPECT_EQ(check_private_folder(folder.path()), 0);
    EXPECT_EQ(check_private_folder(folder.path() + "/none"), ENOENT);
    const struct {
        mode_t mode;
        int error;
    } rows[] = {{0755, 0}, {0711, 0}, {0777, EPERM}, {0770, EPERM}, {0702, EPERM}};
    for (const auto &[mode, error] : rows) {
        ASSERT_EQ(chmod(folder.path().c_str(), mode), 0);
        EXPECT_EQ(check_private_folder(folder.path()), error) << mode;
    }
    ASSERT_EQ(chmod(folder.path().c_str(), 0700), 0);
    std::filesystem::create_symlink(folder.path(), folder.path() + "/link");
    EXPECT_EQ(check_private_folder(folder.path() + "/link"), EPERM);
}

TEST(PrivateFolder, IsThisUsersOrRoots) {
    if (!may_be_stranger()) {
        GTEST_SKIP() << kNeedsRoot;
    }
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    {
        const As stranger(kStranger);
        EXPECT_EQ(check_private_folder(folder.path()), 0) << "root's";
    }
    ASSERT_EQ(chown(folder.path().c_str(), kStranger, kStranger), 0);
    EXPECT_EQ(check_private_folder(folder.path()), EPERM) << "root does not trust a user";
    const As stranger(kStranger);
    EXPECT_EQ(check_private_folder(folder.path()), 0);
}

TEST(PrivateFolder, IsMadeIfThereIsNone) {
    const TemporaryFolder folder;
    EXPECT_EQ(make_private_folder(folder.path() + "/new"), 0);
    EXPECT_EQ(check_private_folder(folder.path() + "/new"), 0);
    EXPECT_EQ(make_private_folder(folder.path() + "/new"), 0);
    EXPECT_EQ(make_private_folder(folder.path() + "/none/new"), ENOENT);
}

TEST(DeviceSocket, IsServedByThisUser) {
    const TemporaryFolder folder;
    const Listener device(folder.path() + "/driver");
    EXPECT_EQ(device.connect(), ECONNREFUSED);
    device.listen();
    EXPECT_EQ(device.connect(), 0);
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    EXPECT_EQ(device.connect(), EPERM);
    UniqueFd client;
    EXPECT_EQ(connect_to_device(client, folder.path() + "/" + std::string(200, 'x'), {}), ENAMETOOLONG);
}

TEST(DeviceSocket, MayBeServedByRootAndNoOtherUser) {
    if (!may_be_stranger()) {
        GTEST_SKIP() << kNeedsRoot;
    }
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
    const Listener roots(folder.path() + "/roots");
    const Listener strangers(folder.path() + "/strangers");
    roots.listen();
    {
        const As stranger(kStranger);
        strangers.listen();
        EXPECT_EQ(roots.connect(), 0);
        EXPECT_EQ(strangers.connect(), 0);
    }
    EXPECT_EQ(roots.connect(), 0);
    EXPECT_EQ(strangers.connect(), EPERM);
}

TEST(RunDir, IsTheOneOfTheUserWhoseRightsTheProgramHas) {
    if (!may_be_stranger()) {
        GTEST_SKIP() << kNeedsRoot;
    }
    unsetenv("VDEVICE_DIR");
    EXPECT_EQ(default_run_dir(), "/tmp/vdevice-0");
    {
        const As stranger(kStranger);
        EXPECT_EQ(default_run_dir(), "/tmp/vdevice-12345");
    }
    setenv("VDEVICE_DIR", "/elsewhere", 1);
    EXPECT_EQ(default_run_dir(), "/elsewhere");
    unsetenv("VDEVICE_DIR");
}

}  // namespace device_socket_test
}  // namespace vdevice
