// Tells those who follow frames what becomes of each as it passes.
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "vdevice/chip/account/recorder.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/audience.h"
#include "vdevice/inspect/bounded_queue.h"
#include "vdevice/inspect/frame_filter.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

class Following final : private chip::Recorder {
  public:
    static constexpr size_t kMostFollowers = 16;
    static constexpr size_t kMostWaiting = 512; /**< accounts, for one of them */

    /** The device must outlive it. */
    explicit Following(Device &device) : Recorder{device.chip().tables()}, device_{device} {}

    /** As Streams::open(). */
    Lines open(const nlohmann::json &request, const std::function<void()> &wake);
    /** To be called once a second. */
    void tick();

  private:
    using AccountPtr = std::shared_ptr<const chip::Account>;

    struct Follower {
        FrameFilter filter;
        BoundedQueue<AccountPtr> queue;
    };

    bool is_listening() const override;
    bool wants(const chip::Passage &frame, const std::vector<chip::Copy> &copies) override;
    void unheard(const chip::Passage &frame) override;
    void tell(chip::Account account) override;

    Device &device_;
    Audience<Follower> audience_;
    std::vector<Follower *> takers_; /**< of the account that comes next */
};

}  // namespace vdevice::inspect
