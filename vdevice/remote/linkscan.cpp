// The link scan's thread: it has its own connection, on which the daemon sends link changes.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "vdevice/remote/client.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/remote/vdev_linkscan.h"

namespace vdevice::remote {
namespace {

constexpr std::chrono::milliseconds kRetry{200};

std::atomic<vdev_linkscan_callback_t> registered{nullptr};

void tell(const std::vector<uint32_t> &change) {
    const vdev_linkscan_callback_t callback = registered;
    if (callback != nullptr && change.size() == kLinkChangeWords) {
        callback(change[kLinkChangeUnit], change[kLinkChangePort], &change[kLinkChangeInfo]);
    }
}

[[noreturn]] void scan(Client &client) {
    std::vector<uint32_t> words;
    for (;;) {
        if (client.wait_for_message(words)) {
            tell(words);
            continue;
        }
        do {
            std::this_thread::sleep_for(kRetry);
        } while (client.request(Extra::kWatchLinks, {}, words) < 0);
    }
}

bool start() {
    // Never destroyed: the thread runs until the process ends.
    auto *const client = new Client("libnetlink_api", driver_socket());
    std::vector<uint32_t> words;
    if (client->request(Extra::kWatchLinks, {}, words) < 0) {
        delete client;
        return false;
    }
    try {
        std::thread([client] { scan(*client); }).detach();
    } catch (const std::system_error &) {
        delete client;
        return false;
    }
    return true;
}

}  // namespace
}  // namespace vdevice::remote

extern "C" int32_t vdev_linkscan_register(vdev_linkscan_callback_t callback) {
    static std::mutex mutex;
    static pid_t owner = 0;  // of the thread: a child has none
    const std::lock_guard guard(mutex);
    if (callback != nullptr && owner != getpid()) {
        vdevice::remote::registered = callback;
        if (!vdevice::remote::start()) {
            vdevice::remote::registered = nullptr;
            return vdevice::remote::kCallLost;
        }
        owner = getpid();
    }
    vdevice::remote::registered = callback;
    return 0;
}
