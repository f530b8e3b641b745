// What a port does with a frame whose source address it does not know. The numbers are the driver's.
#pragma once

#include <stdint.h>
#include <optional>

namespace vdevice::chip {

struct LearnMode {
    uint32_t number;
    bool learns;         /**< enters source addresses into the MAC table */
    bool passes_unknown; /**< forwards frames from addresses that are not known behind the port */
    bool tells_cpu;      /**< hands such frames to the CPU instead, whose software decides */
};

constexpr LearnMode kLearnModes[] = {
    {0, false, false, false}, /**< closed: an unknown source does not pass */
    {1, true, true, false},   /**< on: the same as 5 */
    {4, false, true, false},  /**< off: everything passes, nothing is learned */
    {5, true, true, false},   /**< normal */
    {8, false, false, true},  /**< pending: an unknown source waits for the software's decision */
};
constexpr LearnMode kNormalLearning = kLearnModes[3];

constexpr std::optional<LearnMode> find_learn_mode(int64_t number) {
    for (const LearnMode &mode : kLearnModes) {
        if (mode.number == number) {
            return mode;
        }
    }
    return std::nullopt;
}

}  // namespace vdevice::chip
