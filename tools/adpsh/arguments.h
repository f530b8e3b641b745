/**
 * @file arguments.h
 * A call's arguments in memory. Every parameter has storage of exactly its extent, filled from the line.
 */
#pragma once

#include "calls/exported.h"
#include "tools/adpsh/convert.h"
#include "tools/adpsh/parser.h"

#include <stddef.h>
#include <deque>
#include <string>
#include <vector>

namespace adpsh {

/** One parameter's storage; null when the call gets a null address. */
struct Slot {
    const calls::Param *parameter = nullptr;
    Bytes storage;
    size_t elements = 0;
    bool is_null = false;
    Bytes before;                    ///< storage of a set whose address is a word, before the call
    const Bytes *pointed = nullptr;  ///< that storage, or the frame of a frame record
};

/** All of a call's arguments. Their addresses are valid as long as the object. */
class Arguments {
  public:
    /** Reads the line's arguments; throws a LineError. */
    Arguments(const exported::Call &call, const Command &command, const Variables &variables);
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    /** Fills what the call only writes, so that a test sees what was not written. */
    void fill_outputs(uint8_t byte);

    /** Makes the call. @return the result, an address as a number */
    int64_t invoke();

    [[nodiscard]] const std::vector<Slot> &slots() const { return slots_; }
    /** Memory whose addresses the slots hold: frames, nodes of lists, words given as lists. */
    [[nodiscard]] const std::deque<Bytes> &blocks() const { return blocks_; }

  private:
    std::vector<const Value *> assign(const Command &command) const;
    std::vector<size_t> positions(size_t given, const std::vector<const Value *> &named) const;
    [[nodiscard]] size_t parameter_named(const std::string &name) const;
    void fill(size_t index, const Value &value);
    void fill_value(Slot &slot, const Value &value);
    void fill_array(Slot &slot, const Value &value);
    void fill_list(Slot &slot, const Value &value);
    void fill_frame_record(Slot &slot, const Value &value);
    void infer_counts(const std::vector<const Value *> &values);
    void extend(Slot &slot);
    [[nodiscard]] size_t extent(const calls::Param &parameter) const;

    const exported::Call &call_;
    const Variables &variables_;
    std::deque<Bytes> blocks_;
    std::vector<Slot> slots_;
};

}  // namespace adpsh
