/**
 * @file recording_driver.h
 * The imported calls for unit tests: every call is recorded as text, answers are scripted, any call can fail.
 *
 *     recording::driver().on("user_vlan_port_get").returns(0).sets("members", {1u << 4});
 *     EXPECT_EQ(adp_vlan_port_get(...), 0);
 *     EXPECT_THAT(recording::driver().trace(), ElementsAre("user_vlan_port_get(unit=0, zero=0, vid=100)"));
 *
 * A call that nothing was scripted for returns 0 and leaves its outputs alone. Exceptions: equeue_send_ucast returns
 * 1, since its success is positive, and onu_mac2str gives its address as "aa:bb:cc:dd:ee:ff".
 */
#pragma once

#include <stdint.h>
#include <concepts>
#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calls/call_table.h"

namespace recording {

/** The arguments of a call under way, by name. A name that the call does not have throws std::logic_error. */
class Arguments {
  public:
    Arguments(calls::CallId id, const void *const *arguments) : id_(id), arguments_(arguments) {}

    [[nodiscard]] const char *call_name() const;
    /** An integer argument, or the integer that a pointer argument addresses. */
    [[nodiscard]] int64_t number(std::string_view name) const;
    [[nodiscard]] uint32_t u32(std::string_view name) const { return static_cast<uint32_t>(number(name)); }
    [[nodiscard]] int32_t i32(std::string_view name) const { return static_cast<int32_t>(number(name)); }
    [[nodiscard]] uintptr_t word(std::string_view name) const { return static_cast<uintptr_t>(number(name)); }
    /** The bytes of a value argument, or all that a pointer argument addresses; nothing for a null address. */
    [[nodiscard]] std::span<const uint8_t> bytes(std::string_view name) const;
    /** The address in a pointer argument, to write through if the call writes it. */
    [[nodiscard]] void *pointer(std::string_view name) const;
    [[nodiscard]] const char *text(std::string_view name) const;

  private:
    calls::CallId id_;
    const void *const *arguments_;
};

/** What calls of one name do. Setters return the script itself, so that they chain. */
class Script {
  public:
    explicit Script(calls::CallId id) : id_(id) {}

    Script &returns(int32_t result);
    /** For onu_mac2str: the text that it returns, or null. */
    Script &returns_text(const char *text);

    /** Sets a scalar output. */
    template <std::integral T>
    Script &sets(std::string_view output, T value) {
        const std::vector<int64_t> one{static_cast<int64_t>(value)};
        return sets_elements(output, one);
    }
    /** Sets the first elements of an output, whatever their width. */
    Script &sets(std::string_view output, std::initializer_list<uint32_t> elements);
    Script &sets(std::string_view output, const std::vector<uint32_t> &elements);
    /** Sets the first bytes of an output as they stand in memory. */
    Script &sets_bytes(std::string_view output, std::span<const uint8_t> bytes);
    Script &sets_bytes(std::string_view output, std::initializer_list<uint8_t> bytes);
    /** Sets a struct output, or any other, to a copy of @p object. */
    template <typename T>
    Script &sets_object(std::string_view output, const T &object) {
        return sets_bytes(output, std::span(reinterpret_cast<const uint8_t *>(&object), sizeof object));
    }
    /** Runs @p action after the outputs are set; its result is the call's. */
    Script &does(std::function<int32_t(Arguments &)> action);

    /** A script for one call only. Several queue up, one per call; then the script itself applies again. */
    Script &once();

  private:
    friend class Driver;

    Script &sets_elements(std::string_view output, const std::vector<int64_t> &elements);
    [[nodiscard]] size_t output_index(std::string_view output) const;
    [[nodiscard]] int64_t run(const void *const *arguments);
    void write_outputs(const void *const *arguments) const;

    calls::CallId id_;
    std::optional<int64_t> result_;
    std::map<size_t, std::vector<uint8_t>> outputs_;
    std::function<int32_t(Arguments &)> action_;
    std::deque<Script> queue_;
};

class Driver {
  public:
    /** Forgets scripts, failures, counts and the trace. */
    void reset();

    /** The script of every later call of this name; an unknown name throws std::logic_error. */
    Script &on(std::string_view name);
    /** The same as on(name).once(). */
    Script &once(std::string_view name) { return on(name).once(); }

    /** Makes call number @p k from now on (0 is the next) return @p result and write nothing. */
    void fail_call(size_t k, int32_t result = -1);
    /** The same, but the call writes its outputs as if it had succeeded. */
    void fail_call_after_writing(size_t k, int32_t result = -1);
    /** Makes every later call of this name return @p result and write nothing. */
    void fail_every(std::string_view name, int32_t result = -1);
    /** Cancels fail_call() and fail_every(). */
    void fail_nothing();

    [[nodiscard]] const std::vector<std::string> &trace() const { return trace_; }
    /** The trace so far, which is cleared. */
    [[nodiscard]] std::vector<std::string> take() { return std::exchange(trace_, {}); }
    /** Appends a line of the test's own, for instance a system call, so that the order of both is known. */
    void note(std::string line);
    /** Calls since reset(), recorded or not. */
    [[nodiscard]] size_t count() const { return count_; }
    [[nodiscard]] size_t count(std::string_view name) const;
    /** Off: calls are only counted and answered, which is fast. */
    void record(bool on) { recording_ = on; }

    /** One call, from the stubs. */
    int64_t answer(calls::CallId id, const void *const *arguments, const std::function<std::string()> &describe);
    [[nodiscard]] bool is_recording() const { return recording_; }

  private:
    int64_t give_answer(calls::CallId id, const void *const *arguments, const std::function<std::string()> &describe);
    [[nodiscard]] std::optional<int32_t> failure(calls::CallId id);

    std::vector<std::string> trace_;
    std::map<calls::CallId, Script> scripts_;
    std::map<calls::CallId, int32_t> failing_;
    std::map<calls::CallId, size_t> counts_;
    std::optional<std::pair<size_t, int32_t>> failing_call_;
    bool failing_call_writes_ = false;
    size_t count_ = 0;
    bool recording_ = true;
};

/** The one driver that the stubs of this program call. */
Driver &driver();

}  // namespace recording
