// The link scan's thread: it has its own connection, on which the daemon sends link changes.
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "vdevice/remote/library.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/remote/vdev_linkscan.h"

namespace vdevice::remote {
namespace {

constexpr std::chrono::milliseconds kRetry{200};

/** The link scan of this process. */
struct Scan {
    const std::unique_ptr<Client> client = make_client();
    std::atomic<vdev_linkscan_callback_t> callback{nullptr};
    std::timed_mutex mutex;  /**< of those who register */
    bool is_running = false; /**< once and for all */
};

// A child of a fork has no such thread, and makes a scan of its own.
std::atomic<Scan *> the_scan{nullptr};

void forget_scan_in_child() {
    if (Scan *const parents = the_scan.exchange(nullptr)) {
        parents->client->start_anew_in_child();
    }
}

[[maybe_unused]] const int kScanSeesForks = pthread_atfork(nullptr, nullptr, forget_scan_in_child);

void tell(const Scan &scan, const std::vector<uint32_t> &change) {
    const vdev_linkscan_callback_t callback = scan.callback;
    if (callback != nullptr && change.size() == kLinkChangeWords) {
        callback(change[kLinkChangeUnit], change[kLinkChangePort], &change[kLinkChangeInfo]);
    }
}

[[noreturn]] void run(Scan &scan) {
    std::vector<uint32_t> words;
    for (;;) {
        if (scan.client->wait_for_message(words)) {
            tell(scan, words);
            continue;
        }
        do {
            std::this_thread::sleep_for(kRetry);
        } while (scan.client->request(Extra::kWatchLinks, {}, words, scan.client->deadline()) < 0);
    }
}

bool start(Scan &scan, Client::Clock::time_point end) {
    std::vector<uint32_t> words;
    if (scan.client->request(Extra::kWatchLinks, {}, words, end) < 0) {
        return false;
    }
    try {
        std::thread([&scan] { run(scan); }).detach();
    } catch (const std::system_error &) {
        return false;
    }
    return true;
}

int32_t watch(Scan &scan, vdev_linkscan_callback_t callback) {
    const auto end = scan.client->deadline();
    const std::unique_lock lock(scan.mutex, end);
    if (!lock) {
        return kCallLost;
    }
    scan.callback = callback;
    if (scan.is_running) {
        scan.client->ask_again(Extra::kWatchLinks);
    } else if (!start(scan, end)) {
        scan.callback = nullptr;
        return kCallLost;
    } else {
        scan.is_running = true;
    }
    return 0;
}

}  // namespace
}  // namespace vdevice::remote

extern "C" int32_t vdev_linkscan_register(vdev_linkscan_callback_t callback) {
    using vdevice::remote::Scan;
    Scan &scan = vdevice::remote::object_of_process(vdevice::remote::the_scan, [] { return std::make_unique<Scan>(); });
    if (callback != nullptr) {
        return vdevice::remote::watch(scan, callback);
    }
    scan.callback = nullptr;
    return 0;
}
