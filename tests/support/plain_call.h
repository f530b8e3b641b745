/**
 * @file plain_call.h
 * For tests: arguments that no call refuses before it is carried out: zeros, and addresses of zeros.
 */
#pragma once

#include <stdint.h>
#include <array>
#include <deque>
#include <vector>

#include "calls/call_table.h"

class PlainCall {
  public:
    explicit PlainCall(calls::CallId id) {
        for (const calls::Param &param : calls::call(id).params) {
            blocks_.emplace_back();
            addresses_.push_back(&blocks_.back());
            arguments_.push_back(param.is_pointer() ? static_cast<const void *>(&addresses_.back())
                                                    : static_cast<const void *>(&blocks_.back()));
        }
    }
    PlainCall(const PlainCall &) = delete;
    PlainCall &operator=(const PlainCall &) = delete;

    [[nodiscard]] const void *const *arguments() const { return arguments_.data(); }

  private:
    static constexpr size_t kLongestWords = 32; /**< 64-bit ones; the longest block of a call has 256 bytes */

    std::deque<std::array<uint64_t, kLongestWords>> blocks_;
    std::deque<void *> addresses_;
    std::vector<const void *> arguments_;
};
