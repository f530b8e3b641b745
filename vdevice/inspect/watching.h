// Shows those who watch what happens on the device. While nobody does, the chip has no watcher.
#pragma once

#include <array>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vdevice/chip/pipeline/watcher.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/audience.h"
#include "vdevice/inspect/notification.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

class Watching final : private chip::Watcher {
  public:
    /** The device must outlive it. */
    explicit Watching(Device &device);

    /** As Streams::open(). */
    Lines open(const nlohmann::json &request, const std::function<void()> &wake);
    /** To be called once a second. */
    void tick();

  private:
    static constexpr size_t kLostReasons = 5;
    static constexpr uint64_t kMaxAddresses = 100; /**< told one by one in a second */

    /** Of one port, in this second. */
    struct Sums {
        std::array<uint64_t, chip::kDropReasons> drops{};
        std::array<uint64_t, kLostReasons> lost{};
        uint64_t no_room = 0;
    };

    std::shared_ptr<NotificationQueue> begin(NotificationKinds kinds, std::function<void()> wake);
    void passed(const chip::Passage &frame) override;
    void lost(int port, const chip::Frame &copy, const chip::Dispatch &dispatch, chip::Lost reason) override;
    void tell(const Notification &notification);
    void tell_address(const chip::Passage &frame);
    void tell_link(int port);
    void tell_sums();
    void tell_sums_of(int port, const Sums &sums);
    void tell_count(NotificationKind kind, int port, const char *what, uint64_t count);

    Device &device_;
    Audience<NotificationQueue> audience_;
    std::array<Sums, chip::kChipPorts> sums_{};
    uint64_t addresses_ = 0; /**< in this second */
    uint64_t aged_ = 0;      /**< up to the last second */
};

}  // namespace vdevice::inspect
