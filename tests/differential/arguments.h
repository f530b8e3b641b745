/**
 * @file arguments.h
 * The arguments of one call, made from a seed. Two objects with the same seed hold equal values, each in its own
 * memory.
 */
#pragma once

#include <adp/adp.h>

#include <stddef.h>
#include <stdint.h>
#include <string>
#include <vector>

#include "calls/exported.h"
#include "tests/differential/random.h"

namespace differential {

/** One parameter's storage. */
struct Slot {
    const calls::Param *parameter = nullptr;
    std::vector<uint64_t> storage; /**< the value, or what the address leads to */
    size_t elements = 1;
    bool is_null = false;
    std::vector<uint8_t> pointed;     /**< the frame of a frame record, or the set behind a word */
    std::vector<adp_tx_dest_t> nodes; /**< of a list, whose head is the storage */

    [[nodiscard]] size_t bytes() const { return elements * parameter->element.size; }
    [[nodiscard]] uint8_t *data() { return reinterpret_cast<uint8_t *>(storage.data()); }
    [[nodiscard]] const uint8_t *data() const { return reinterpret_cast<const uint8_t *>(storage.data()); }
    /** A value as a number. */
    [[nodiscard]] int64_t number() const;
};

class Arguments {
  public:
    /** @p preset: values for the call's parameters, in their order; empty for random ones. */
    Arguments(const exported::Call &call, uint64_t seed, const std::vector<uint32_t> &preset);
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    [[nodiscard]] void *const *pointers() const { return pointers_.data(); }
    [[nodiscard]] const std::vector<Slot> &slots() const { return slots_; }
    [[nodiscard]] const exported::Call &call() const { return call_; }

    /** The name of a parameter whose memory differs from that of the same parameter there; null if none does. */
    [[nodiscard]] const char *difference(const Arguments &other) const;

  private:
    void fill_value(Slot &slot);
    void fill_set(Slot &slot);
    void fill_number(Slot &slot);
    void fill_memory(size_t index);
    void fill_elements(Slot &slot);
    [[nodiscard]] size_t extent(const calls::Param &parameter) const;
    [[nodiscard]] bool may_be_null(const calls::Param &parameter) const;
    [[nodiscard]] bool is_receive() const;
    [[nodiscard]] std::vector<uint8_t> comparable(size_t index) const;

    const exported::Call &call_;
    Random random_;
    std::vector<Slot> slots_;
    std::vector<void *> pointers_;
};

}  // namespace differential
