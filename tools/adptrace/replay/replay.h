/**
 * @file replay.h
 * Makes the library calls of a process of a recording again, each thread's on a thread of its own, one at a time and in
 * the order in which they began; answers what the library calls, and compares it with the recording.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <deque>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "calls/exported.h"
#include "tools/adptrace/replay/boundary.h"
#include "tools/adptrace/replay/player.h"
#include "tools/adptrace/replay/threads.h"

namespace adptrace::replay {

/** The library whose calls are made. */
class Library {
  public:
    Library() = default;
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;
    virtual ~Library() = default;

    [[nodiscard]] virtual bool has(const exported::Call &call) const = 0;
    virtual int64_t make(const exported::Call &call, const void *const *arguments) = 0;
    /** The rows of the port map, as a recording has them. */
    [[nodiscard]] virtual nlohmann::json board() const = 0;
    virtual void set_board(const nlohmann::json &rows) = 0;
};

class Replay final : public Player, private Boundary {
  public:
    Replay(const Recording &recording, Library &library, Driver *driver, const Options &options, Reporter reporter);

  private:
    /** A library call under way. */
    struct Level {
        const Call *call;
        const std::vector<size_t> *inner;  /**< the calls within it */
        size_t next = 0;                   /**< the first of them that is not made yet */
        const std::vector<size_t> *frames; /**< the frames that were sent within it, if frames are recorded */
        size_t frame = 0;                  /**< the first of them that is not sent yet */
        size_t surplus = 0;                /**< calls that the recording does not have, made in the place of that one */
    };

    [[nodiscard]] bool is_played(const Call &call) const override;
    void play(size_t index) override;
    void finish() override;

    int64_t imported_call(calls::CallId id, const void *const *arguments) override;
    int32_t callback() override;
    void sends(std::span<const uint8_t> octets) override;
    [[nodiscard]] std::optional<bool> frames_succeed() const override;

    void update_board(size_t index);
    void make(size_t index);
    void make_known(size_t index, const exported::Call &known);
    int64_t make_in_library(size_t index, const exported::Call &known, const void *const *arguments);
    int64_t answer(calls::CallId id, const void *const *arguments);
    int64_t answer_known(const Call &call, calls::CallId id, const void *const *arguments, const calls::Blocks &blocks);
    int64_t answer_as_recorded(const Call &call, calls::CallId id, const calls::Blocks &blocks);
    /** The call of this name among those that are left in the library call, else null. */
    const Call *take_next(std::string_view name, const std::string &now);
    void report_missing(Level &level, size_t end, const std::string &now);
    void report_missing_frames(const Level &level);

    Library &library_;
    std::vector<std::vector<size_t>> inner_;       /**< by the index of the outer call */
    std::map<size_t, std::vector<size_t>> frames_; /**< likewise; empty if none are recorded */
    std::vector<Level> levels_;
    Threads threads_;
    std::deque<std::string> texts_; /**< results that the library may still look at */
    size_t next_board_ = 0;
    nlohmann::json known_board_;
};

inline constexpr char kNoCall[] = "no call";

/** The number that a result is, 0 if it is none. */
int64_t number_of(const nlohmann::json &result);

}  // namespace adptrace::replay
