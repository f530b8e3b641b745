/**
 * @file player.h
 * What the two ways to play a recording have in common: which calls are made, what is compared, and what ends it. The
 * recording is mistrusted: whatever it says ends in a difference or a sentence.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/replay/boundary.h"
#include "tools/adptrace/replay/values.h"

namespace adptrace::replay {

struct Options {
    size_t process = 0;            /**< index of the process whose calls are made */
    size_t last_line = kNone;      /**< calls that begin behind it are not made, but those within one that is */
    bool is_to_keep_going = false; /**< after a difference */
    bool is_to_crash = false;      /**< calls that had not returned are made */
    bool is_to_send_frames = false;
};

struct Outcome {
    size_t library_calls = 0;
    size_t driver_calls = 0;
    size_t differences = 0;
    const Call *last = nullptr; /**< the last call that was made, of those that are in no other one */
    std::string reason;         /**< why calls are left that were to be made: a sentence, else empty */
    bool is_trouble = false;    /**< the reason is one of the library, or the recording's text */
};

/** Told of each difference: a text of some lines. */
using Reporter = std::function<void(const std::string &text)>;
/** Told how many calls are done, of how many. */
using Progress = std::function<void(size_t done, size_t all)>;

class Player {
  public:
    /** @param driver  null: the recording answers in its place */
    Player(const Recording &recording, Driver *driver, const Options &options, Reporter reporter);
    Player(const Player &) = delete;
    Player &operator=(const Player &) = delete;

    /** Throws a Refusal for calls that are unknown. */
    Outcome run(const Progress &progress);

  protected:
    ~Player();

    /** Whether run() makes the call; else it is made in the course of another one, or not at all. */
    [[nodiscard]] virtual bool is_played(const Call &call) const = 0;
    virtual void play(size_t index) = 0;
    /** Called at the end, unless it was stopped or has left calls. */
    virtual void finish() {}

    /** Makes an imported call with the arguments that it had. */
    void ask_again(const Call &call);
    /** Compares what a call gave. */
    void compare(const Call &call, std::span<const calls::Param> params, const nlohmann::json &outputs,
                 const nlohmann::json &result);

    void differ(const Call &call, const std::string &what, const std::string &recorded, const std::string &now);
    void stop(const Call &call, const std::string &why);
    [[nodiscard]] bool is_stopped() const { return is_stopped_; }

    [[nodiscard]] const Recording &recording() const { return recording_; }
    [[nodiscard]] const Options &options() const { return options_; }
    [[nodiscard]] Driver *driver() { return driver_; }
    [[nodiscard]] Words &words() { return words_; }
    [[nodiscard]] Outcome &outcome() { return outcome_; }

  private:
    void check_names() const;
    [[nodiscard]] bool is_to_be_left(const Call &call);
    [[nodiscard]] std::string place_of(const Call &call) const;

    const Recording &recording_;
    Driver *const driver_;
    const Options options_;
    const Reporter reporter_;
    Words words_;
    Outcome outcome_;
    bool is_stopped_ = false;
};

/** The parameters of an imported call; of the logger those that a recording has. */
std::span<const calls::Param> params_of(calls::CallId id);

/** Asks the driver. @return what it gave, @p outputs receives what it wrote */
int64_t ask(Driver &driver, calls::CallId id, const void *const *arguments, const calls::Blocks &blocks,
            nlohmann::json &outputs);

}  // namespace adptrace::replay
