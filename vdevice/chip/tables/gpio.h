// The chip's general-purpose pins: one bit per pin in each of three registers.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

class Gpio {
  public:
    static constexpr unsigned kPins = 32;
    static constexpr uint32_t kInputAt = 0x2000;
    static constexpr uint32_t kOutputAt = 0x2004;
    static constexpr uint32_t kDirectionAt = 0x2008;

    /** Registers as software reads and writes them, by address. */
    Status read(uint32_t address, uint32_t &value) const {
        switch (address) {
            case kInputAt:
                value = input_;
                return Status::kOk;
            case kOutputAt:
                value = output_;
                return Status::kOk;
            case kDirectionAt:
                value = direction_;
                return Status::kOk;
            default:
                return Status::kRegisterMissing;
        }
    }

    Status write(uint32_t address, uint32_t value) {
        switch (address) {
            case kInputAt:
                return Status::kRegisterReadOnly;
            case kOutputAt:
                output_ = value;
                return Status::kOk;
            case kDirectionAt:
                direction_ = value;
                return Status::kOk;
            default:
                return Status::kRegisterMissing;
        }
    }

    uint32_t input() const { return input_; }
    uint32_t output() const { return output_; }
    uint32_t direction() const { return direction_; }

    /** Sets the level of a pin from outside, whatever its direction. */
    Status drive(int64_t pin, bool level) {
        if (pin < 0 || pin >= static_cast<int64_t>(kPins)) {
            return Status::kBadArgument;
        }
        const uint32_t bit = uint32_t{1} << static_cast<unsigned>(pin);
        input_ = level ? input_ | bit : input_ & ~bit;
        return Status::kOk;
    }

  private:
    uint32_t input_ = 0;
    uint32_t output_ = 0;
    uint32_t direction_ = 0;
};

}  // namespace vdevice::chip
