/**
 * @file json_memory.h
 * The way back: the arguments of a call in memory of their own, from JSON as json_text.h writes it.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <stdexcept>
#include <vector>

#include "calls/element.h"
#include "calls/json_text.h"

namespace calls {

/** JSON that is not the arguments of the call; what() is a sentence. */
class BadValue : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** A call's arguments. Their addresses are valid as long as the object. */
class Memory {
  public:
    /** Memory as it was before the call. Throws BadValue; no count that the JSON gives is believed without limit. */
    Memory(std::span<const Param> params, const nlohmann::json &arguments);
    Memory(const Memory &) = delete;
    Memory &operator=(const Memory &) = delete;

    /** The address of each argument, as stubs collect them and call_function() takes them. */
    [[nodiscard]] const void *const *arguments() const { return arguments_.data(); }
    [[nodiscard]] Blocks blocks() const;

  private:
    void *allocate(size_t size);

    std::span<const Param> params_;
    std::deque<std::vector<uint64_t>> memory_;
    std::vector<const void *> arguments_;
};

/**
 * Writes JSON to the memory of a call under way: arguments as they were before it, or outputs. Members that are left
 * out are left alone, and so is what the call may not write. Throws BadValue before anything is written.
 */
void store(std::span<const Param> params, const Blocks &blocks, const nlohmann::json &values);

}  // namespace calls
