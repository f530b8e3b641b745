// The first two words of nearly every driver call: the chip's unit and a word that is always 0.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/status.h"

namespace vdevice::driver {

/** Carries out the operation if the words name this device's only chip, and gives its status as the call's result. */
template <typename Operation>
int32_t on_chip(uint32_t unit, uint32_t zero, Operation operation) {
    return chip::code(unit == 0 && zero == 0 ? operation() : chip::Status::kBadUnit);
}

/** The same for a call that reads one word: the operation writes it, if there is an address to write it to. */
template <typename Word, typename Operation>
int32_t read_word(uint32_t unit, uint32_t zero, Word *word, Operation operation) {
    return on_chip(unit, zero, [&] { return word == nullptr ? chip::Status::kBadArgument : operation(*word); });
}

template <typename Table>
int32_t clear_table(uint32_t unit, uint32_t zero, Table &table) {
    return on_chip(unit, zero, [&] {
        table.clear();
        return chip::Status::kOk;
    });
}

/** The same for the field processor's calls, which begin with a handle that is always 0 and have the unit behind it. */
template <typename Operation>
int32_t on_fields(int32_t handle, uint32_t unit, Operation operation) {
    return on_chip(unit, static_cast<uint32_t>(handle), operation);
}

}  // namespace vdevice::driver
