// The reading end of the event queue. The daemon answers at once, so that no call waits in it; the waiting is done
// here.
#include "vdevice/services/vdev_equeue.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include "vdevice/remote/library.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenLooks{5};

}  // namespace

extern "C" int32_t vdev_equeue_receive(uintptr_t queue, uint32_t message[VDEV_EQUEUE_WORDS],
                                       uint16_t record[VDEV_EQUEUE_RECORD_FIELDS], int32_t timeout_ms) {
    constexpr size_t kAnswerWords = VDEV_EQUEUE_WORDS + VDEV_EQUEUE_RECORD_FIELDS;
    if (message == nullptr || record == nullptr) {
        return vdevice::remote::kCallLost;
    }
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeout_ms);
    const uint32_t asked[] = {static_cast<uint32_t>(queue)};
    std::vector<uint32_t> answer;
    vdevice::remote::Client &client = vdevice::remote::library_client();
    for (;;) {
        const int32_t result = client.request(vdevice::remote::Extra::kTakeEvent, asked, answer, client.deadline());
        if (result < 0) {
            return result;
        }
        if (answer.size() == kAnswerWords) {
            std::copy_n(answer.begin(), VDEV_EQUEUE_WORDS, message);
            std::transform(answer.begin() + VDEV_EQUEUE_WORDS, answer.end(), record,
                           [](uint32_t word) { return static_cast<uint16_t>(word); });
            return result;
        }
        if (timeout_ms >= 0 && Clock::now() >= end) {
            return 0;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
}
