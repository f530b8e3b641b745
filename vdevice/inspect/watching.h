// Shows those who watch what happens on the device. While nobody does, the chip has no watcher.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "vdevice/chip/pipeline/watcher.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/happening.h"
#include "vdevice/io/event_loop.h"

namespace vdevice::inspect {

class Watching final : private chip::Watcher {
  public:
    /** Loop and device must outlive it. */
    Watching(io::EventLoop &loop, Device &device);

    /** What happens from now on comes into the queue, for as long as somebody keeps it. */
    std::shared_ptr<HappeningQueue> begin(HappeningKinds kinds, std::function<void()> wake);

    /** The kinds of a request, all of them if it names none; throws a Refusal for another word. */
    static HappeningKinds kinds_of(const nlohmann::json &request);

  private:
    static constexpr size_t kLostReasons = 5;
    static constexpr uint64_t kMaxAddresses = 100; /**< told one by one in a second */

    /** Of one port, in this second. */
    struct Sums {
        std::array<uint64_t, chip::kDropReasons> drops{};
        std::array<uint64_t, kLostReasons> lost{};
        uint64_t no_room = 0;
    };

    void passed(const chip::Passage &frame) override;
    void lost(int port, const chip::Frame &copy, const chip::Dispatch &dispatch, chip::Lost reason) override;
    void tell(const Happening &happening);
    void tell_address(const chip::Passage &frame);
    void tell_link(int port);
    void tell_sums();
    void tell_sums_of(int port, const Sums &sums);
    void tell_count(HappeningKind kind, int port, const char *what, uint64_t count);
    void end_if_alone();

    io::EventLoop &loop_;
    Device &device_;
    UniqueFd timer_;
    std::vector<std::weak_ptr<HappeningQueue>> queues_;
    std::array<Sums, chip::kChipPorts> sums_{};
    uint64_t addresses_ = 0; /**< in this second */
    uint64_t aged_ = 0;      /**< up to the last second */
};

}  // namespace vdevice::inspect
