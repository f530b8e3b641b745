// Library calls of a recording, made again.
#include "tools/adptrace/replay/replay.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "calls/json_memory.h"
#include "tools/adptrace/replay/faults.h"

namespace adptrace::replay {

namespace {

using calls::CallId;
using nlohmann::json;

/** It only calls the receiver of link changes, so whatever is called within it the receiver calls. */
constexpr std::string_view kOnlyCallsBack = "linkscan_handle_cb";

std::vector<std::vector<size_t>> inner_calls(const Recording &recording) {
    const auto &calls = recording.calls();
    std::vector<std::vector<size_t>> inner(calls.size());
    for (size_t index = 0; index < calls.size(); ++index) {
        if (calls[index].within != kNone) {
            inner[calls[index].within].push_back(index);
        }
    }
    return inner;
}

/** The frames that were sent, by the call within which it was; those of the program itself under kNone. */
std::map<size_t, std::vector<size_t>> sent_frames(const Recording &recording) {
    std::map<size_t, std::vector<size_t>> sent;
    for (size_t index = 0; index < recording.frames().size(); ++index) {
        const Frame &frame = recording.frames()[index];
        sent[frame.within];  // a recording with any frames has all
        if (frame.is_sent) {
            sent[frame.within].push_back(index);
        }
    }
    return sent;
}

}  // namespace

int64_t number_of(const json &result) {
    return result.is_number_integer() ? result.get<int64_t>() : 0;
}

Replay::Replay(const Recording &recording, Library &library, Driver *driver, const Options &options, Reporter reporter)
    : Player(recording, driver, options, std::move(reporter)),
      library_(library),
      inner_(inner_calls(recording)),
      frames_(sent_frames(recording)) {}

bool Replay::is_played(const Call &call) const {
    return call.within == kNone;
}

void Replay::play(size_t index) {
    update_board(index);
    if (!is_stopped()) {
        threads_.run(recording().calls()[index].thread, [this, index] { make(index); });
    }
}

void Replay::finish() {
    update_board(outcome().last == nullptr ? 0 : recording().calls().size());
}

void Replay::make(size_t index) {
    const Call &call = recording().calls()[index];
    try {
        if (call.kind == Call::Kind::kImported) {
            ask_again(call);
        } else if (const exported::Call *const known = exported::find_call(call.name); library_.has(*known)) {
            make_known(index, *known);
        } else {
            stop(call, "the library does not have this call.");
        }
    } catch (const calls::BadValue &error) {
        stop(call, error.what());
    }
}

void Replay::make_known(size_t index, const exported::Call &known) {
    const Call &call = recording().calls()[index];
    json arguments = arguments_of(call);
    words().replace(known.params, arguments);
    const calls::Memory memory(known.params, arguments);
    const calls::Blocks blocks = memory.blocks();
    std::vector<uint8_t> storage;
    const calls::Blocks before = calls::copies_of(known.params, blocks, storage);
    const int64_t result = make_in_library(index, known, memory.arguments());
    ++outcome().library_calls;
    if (!is_stopped() && call.has_returned) {
        compare(call, known.params, outputs_now(known.params, blocks, before),
                result_now(known.result, known.layout, result));
    }
}

int64_t Replay::make_in_library(size_t index, const exported::Call &known, const void *const *arguments) {
    const Call &call = recording().calls()[index];
    const UnderWay watched(call);
    levels_.push_back({&call, &inner_[index], 0, frames_.empty() ? nullptr : &frames_[index]});
    int64_t result = 0;
    {
        const At library(this);
        result = library_.make(known, arguments);
    }
    if (call.has_returned) {
        report_missing(levels_.back(), inner_[index].size(), kNoCall);
        report_missing_frames(levels_.back());
    }
    levels_.pop_back();
    return result;
}

int32_t Replay::callback() {
    const Level level = levels_.back();
    try {
        while (!is_stopped() && levels_.back().next < level.inner->size()) {
            const size_t index = (*level.inner)[levels_.back().next];
            if (recording().calls()[index].kind == Call::Kind::kImported && level.call->name != kOnlyCallsBack) {
                break;
            }
            ++levels_.back().next;
            make(index);
        }
        return static_cast<int32_t>(number_of(result_of(*level.call)));
    } catch (const std::exception &error) {  // no exception may pass through the library
        stop(*level.call, error.what());
        return 0;
    }
}

void Replay::update_board(size_t index) {
    const auto &boards = recording().boards();
    const Board *board = nullptr;
    for (; next_board_ < boards.size() && boards[next_board_].before <= index; ++next_board_) {
        if (boards[next_board_].process == options().process) {
            board = &boards[next_board_];
        }
    }
    if (board == nullptr) {
        return;
    }
    const json rows = json::parse(board->text)["board"];
    const json now = library_.board();
    // A map that no call has changed is the program's own work.
    if (now != rows && now != known_board_ && outcome().last != nullptr) {
        differ(*outcome().last, "the port map after it", text_of(rows), text_of(now));
    }
    if (now != rows) {
        library_.set_board(rows);
    }
    known_board_ = library_.board();
}

}  // namespace adptrace::replay
