// What becomes of each frame on a cable, drawn by lot. A draw depends on the seed, the port, the direction, the frame's
// number and the question alone: another condition changes no other draw, and every machine draws the same.
#pragma once

#include <stdint.h>

namespace vdevice::cable {

enum class Direction : uint8_t {
    kIn,  /**< from the wire to the chip */
    kOut, /**< from the chip to the wire */
};

enum class Question : uint8_t { kLoss, kDuplicate, kCorrupt, kBit, kJitter };

class Fates {
  public:
    Fates(uint64_t seed, int user_port, Direction direction);

    /** 64 random bits for the question about the frame of that number; a duplicate is copy 1 of its frame. */
    uint64_t draw(Question question, uint64_t frame, unsigned copy = 0) const;
    /** Whether it happens to so many millionths of the frames. */
    bool happens(uint64_t share, Question question, uint64_t frame, unsigned copy = 0) const;

  private:
    uint64_t key_;
};

}  // namespace vdevice::cable
