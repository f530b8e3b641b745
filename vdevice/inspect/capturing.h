// Hands the frames of ports to those who capture them, as they come in and leave.
#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "vdevice/chip/pipeline/watcher.h"
#include "vdevice/device/device.h"
#include "vdevice/inspect/audience.h"
#include "vdevice/inspect/bounded_queue.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {

class Capturing final : private chip::Watcher {
  public:
    static constexpr size_t kMostCaptures = 16;
    static constexpr size_t kMostWaiting = size_t{4} << 20; /**< octets, for one of them */

    /** What a request asks for. */
    struct Wanted {
        chip::PortSet ports;
        bool in;
        bool out;
        bool dropped; /**< those that are dropped or lost, too */
    };

    /** The device must outlive it. */
    explicit Capturing(Device &device) : device_{device} {}

    /** As Streams::open(). */
    Lines open(const nlohmann::json &request, const std::function<void()> &wake);
    /** To be called once a second. */
    void tick();

  private:
    struct Captured {
        chip::Time time;
        int port; /**< of the chip */
        bool is_in;
        const char *comment; /**< the reason of a drop or loss, or null */
        std::vector<uint8_t> octets;
    };

    struct Capture {
        Wanted wanted;
        BoundedQueue<Captured> queue;
        std::vector<Captured> copies; /**< of the frame on its way */
    };

    void begun() override;
    void passed(const chip::Passage &frame) override;
    void left(int port, const chip::Frame &copy, const chip::Dispatch &dispatch) override;
    void lost(int port, const chip::Frame &copy, const chip::Dispatch &dispatch, chip::Lost reason) override;
    void tell(chip::Time time, int port, bool is_in, const char *comment, const chip::Frame &frame);
    static void put(Capture &capture, Captured captured);
    std::string line_of(const Captured &captured) const;
    std::string first_line() const;

    Device &device_;
    Audience<Capture> audience_;
    bool is_on_way_ = false; /**< a frame is on its way through the chip */
};

}  // namespace vdevice::inspect
