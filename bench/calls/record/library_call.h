/**
 * @file library_call.h
 * A call of the library, read from a line: made here, and written as C.
 */
#pragma once

#include <string>

#include "bench/calls/record/blocks.h"
#include "tools/adpsh/arguments.h"

namespace record {

class LibraryCall {
  public:
    /** Throws std::runtime_error when the line is no call. The memory of its arguments is added to the blocks. */
    LibraryCall(const std::string &line, Blocks &blocks);

    int64_t invoke() { return arguments_.invoke(); }
    /** The call as a C expression. */
    [[nodiscard]] std::string text() const { return text_; }
    [[nodiscard]] calls::Result result_kind() const { return call_.result; }

  private:
    std::string argument(const adpsh::Slot &slot, const std::string &buffer, const Blocks &blocks) const;

    adpsh::Variables variables_;
    adpsh::Command command_;
    const exported::Call &call_;
    adpsh::Arguments arguments_;
    std::string text_;
};

}  // namespace record
