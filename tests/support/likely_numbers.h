/**
 * @file likely_numbers.h
 * Random numbers that calls are likely to distinguish: small ones, the edges of tables, all ones.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <iterator>

#include "tests/support/random_call.h"

namespace random_call {

class LikelyNumbers final : public Source {
  public:
    explicit LikelyNumbers(uint64_t seed) : random_(seed) {}

    uint32_t next() override {
        constexpr uint32_t kKinds = 8;
        constexpr uint32_t kPorts = 32;
        constexpr uint32_t kBits = 32;
        constexpr uint32_t kEdges[] = {0,   1,    8,    16,   26,   32,   56,      64,         128,        256,
                                       768, 1024, 1280, 1536, 4094, 4096, 0x10000, 0x10000000, 0x7FFFFFFF, 0x80000000};
        switch (random_.below(kKinds)) {
            case 0:
                return random_.next();
            case 1:
                return kEdges[random_.below(std::size(kEdges))] + random_.below(3) - 1;
            case 2:
                return 1u << random_.below(kBits);
            case 3:
                return 0u - random_.below(3);
            default:
                return random_.below(kPorts);
        }
    }

  private:
    Random random_;
};

}  // namespace random_call
