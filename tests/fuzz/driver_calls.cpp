// Driver calls with any arguments, frames with any content and passing time, all on one virtual chip. The output must
// be valid, and the same when the steps are repeated on another chip.
//
// Input: steps until it ends. Each is a number, for a call, a frame on a port, or time, and its parameters.
#include <algorithm>
#include <chrono>

#include "tests/fuzz/fuzz.h"
#include "tests/support/random_call.h"
#include "vdevice/chip/testing/recording_sink.h"
#include "vdevice/driver/driver.h"
#include "vdevice/remote/message.h"

namespace {

using calls::CallId;
using fuzz::Bytes;
using fuzz::expect;
using vdevice::chip::Switch;

constexpr int kMostSteps = 48;
constexpr uint16_t kFrame = 0xFF00;  // smaller steps are calls
constexpr uint16_t kTime = 0xFFC0;
constexpr size_t kLongestGrowth = 64; /**< of a frame by all tags that the chip may add */

/** Numbers in few bytes: most of the interesting ones take one. */
class InputNumbers final : public random_call::Source {
  public:
    explicit InputNumbers(fuzz::Input *input) : input_(input) {}

    uint32_t next() override {
        constexpr uint8_t kTwoBytes = 0xC0;
        constexpr uint8_t kPowers = 0xD0;
        constexpr uint8_t kFourBytes = 0xF0;
        constexpr uint8_t kNegative = 0xF8;
        const uint8_t code = input_->u8();
        if (code < kTwoBytes) {
            return code;
        }
        if (code < kPowers) {
            return input_->u16();
        }
        if (code < kFourBytes) {
            return 1u << (code - kPowers);
        }
        return code < kNegative ? input_->u32() : uint32_t{0} - (code - kNegative + 1u);
    }

  private:
    fuzz::Input *input_;
};

class Device {
  public:
    /** Executes the steps. @return all output, as bytes */
    Bytes run(fuzz::Input input) {
        link_all();
        for (int step = 0; step < kMostSteps && !input.is_empty(); ++step) {
            const uint16_t what = input.u16();
            if (what >= kTime) {
                pass_time(what);
            } else if (what >= kFrame) {
                receive(what % Switch::kPorts, input.bytes(input.u8()));
            } else {
                call(static_cast<CallId>(what % calls::kCallCount), &input);
            }
        }
        return out_.take();
    }

  private:
    void link_all() {
        for (int port = 0; port < Switch::kPorts; ++port) {
            chip_.set_link(port, true);
        }
    }

    void pass_time(uint16_t what) {
        now_ += std::chrono::seconds(what - kTime + 1);
        chip_.tick(now_);
        keep_frames(0);
    }

    void receive(int port, const Bytes &frame) {
        chip_.receive(now_, port, frame);
        keep_frames(frame.size());
    }

    void call(CallId id, fuzz::Input *input) {
        if (!vdevice::is_answered(id)) {
            return;
        }
        InputNumbers numbers(input);
        const random_call::RandomCall call(id, numbers);
        const int64_t result = vdevice::dispatch(driver_, id, call.arguments());
        out_.word(static_cast<uint32_t>(id));
        out_.word(static_cast<uint32_t>(result));
        vdevice::remote::encode_outputs(out_, id, call.arguments());
        keep_frames(0);
    }

    void keep_frames(size_t received) {
        for (const auto &[port, octets] : sink_.take()) {
            expect(Switch::has_port(port), "a frame leaves by a port that there is");
            expect(octets.size() <= received + kLongestGrowth, "a frame is no longer than what came in and its tags");
            out_.word(static_cast<uint32_t>(port));
            out_.bytes(octets.data(), octets.size());
        }
        sink_.take_changes();
    }

    vdevice::chip::test::RecordingSink sink_;
    Switch chip_{sink_};
    vdevice::chip::Time now_{};
    vdevice::driver::Driver driver_{chip_, vdevice::driver::Board{}, [this] { return now_; }};
    vdevice::remote::Writer out_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const fuzz::Input input(data, size);
    const Bytes first = Device().run(input);
    // Not for every input: creating a chip takes most of the time.
    constexpr size_t kRepeatedOneIn = 4;
    if (size % kRepeatedOneIn == 0) {
        expect(first == Device().run(input), "the same happens twice");
    }
    return 0;
}
