// Library calls of a recording, made again.
#include "tools/adptrace/replay/replay.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>
#include <utility>

#include "calls/json_memory.h"
#include "tools/adptrace/replay/faults.h"

namespace adptrace::replay {

namespace {

using calls::CallId;
using nlohmann::json;

constexpr size_t kTextsKept = 16;
constexpr uint32_t kNarrowWord = 32;
constexpr char kNoCall[] = "no call";

/** It only calls the receiver of link changes, so whatever is called within it the receiver calls. */
constexpr std::string_view kOnlyCallsBack = "linkscan_handle_cb";

uint32_t narrower_word(const Header &header) {
    return sizeof(uintptr_t) * 8 == kNarrowWord ? kNarrowWord : header.word_bits;
}

int64_t number_of(const json &result) {
    return result.is_number_integer() ? result.get<int64_t>() : 0;
}

/** Gives memory that a call only writes the content that it had: it may be left as it is. */
void prepare(std::span<const calls::Param> params, const calls::Blocks &blocks, const json &arguments) {
    json contents = json::object();
    for (size_t index = 0; index < params.size(); ++index) {
        const calls::Param &param = params[index];
        const calls::Block &block = blocks[index];
        if (param.direction != calls::Direction::kOut || block.at == nullptr) {
            continue;
        }
        if (const auto found = arguments.find(param.name); found != arguments.end() && !found->is_null()) {
            contents[param.name] = *found;
        } else {
            std::memset(const_cast<void *>(block.at), 0, block.count * param.element.size);
        }
    }
    calls::store(params, blocks, contents);
}

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

}  // namespace

Replay::Replay(const Recording &recording, Library &library, Driver *driver, const Options &options, Reporter reporter)
    : Player(recording, driver, options, std::move(reporter)), library_(library), inner_(inner_calls(recording)) {}

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
    const UnderWay under_way(call);
    levels_.push_back({&call, &inner_[index]});
    int64_t result = 0;
    {
        const At library(this);
        result = library_.make(known, arguments);
    }
    if (call.has_returned) {
        report_missing(levels_.back(), inner_[index].size(), kNoCall);
    }
    levels_.pop_back();
    return result;
}

int64_t Replay::imported_call(CallId id, const void *const *arguments) {
    try {
        return is_stopped() ? no_answer(id) : answer(id, arguments);
    } catch (const std::exception &error) {  // no exception may pass through the library
        stop(*levels_.back().call, std::string(calls::call(id).name) + ": " + error.what());
        return no_answer(id);
    }
}

int64_t Replay::answer(CallId id, const void *const *arguments) {
    ++outcome().driver_calls;
    const auto params = params_of(id);
    const calls::Blocks blocks = calls::blocks_of(params, arguments);
    const json now = arguments_now(params, blocks);
    const Call *const call = take_next(calls::call(id).name, call_text(calls::call(id).name, now));
    if (is_stopped()) {
        return no_answer(id);
    }
    if (call == nullptr) {
        return driver() == nullptr ? no_answer(id) : driver()->ask(id, arguments);
    }
    const json recorded = arguments_of(*call);
    json expected = recorded;
    words().replace(params, expected);
    if (const auto found =
            difference_of_arguments(call->name, params, expected, now, narrower_word(recording().header()))) {
        differ(*call, "the argument " + found->where, found->recorded, found->now);
    }
    prepare(params, blocks, recorded);
    return is_stopped() ? no_answer(id) : answer_known(*call, id, arguments, blocks);
}

int64_t Replay::answer_known(const Call &call, CallId id, const void *const *arguments, const calls::Blocks &blocks) {
    if (driver() == nullptr) {
        return answer_as_recorded(call, id, blocks);
    }
    json outputs;
    const int64_t result = ask(*driver(), id, arguments, blocks, outputs);
    if (call.has_returned) {
        compare(call, params_of(id), outputs, result_now(calls::call(id).result, nullptr, result));
    }
    return result;
}

int64_t Replay::answer_as_recorded(const Call &call, CallId id, const calls::Blocks &blocks) {
    if (!call.has_returned) {
        return no_answer(id);
    }
    calls::store(params_of(id), blocks, outputs_of(call));
    const json result = result_of(call);
    if (calls::call(id).result != calls::Result::kText || !result.is_string()) {
        return number_of(result);
    }
    texts_.push_back(result.get<std::string>());
    if (texts_.size() > kTextsKept) {
        texts_.pop_front();
    }
    return static_cast<int64_t>(reinterpret_cast<intptr_t>(texts_.back().c_str()));
}

const Call *Replay::take_next(std::string_view name, const std::string &now) {
    Level &level = levels_.back();
    for (size_t place = level.next; place < level.inner->size(); ++place) {
        const Call &call = recording().calls()[(*level.inner)[place]];
        if (call.name == name) {
            report_missing(level, place, now);
            level.next = place + 1;
            return &call;
        }
    }
    ++level.surplus;
    if (level.next == level.inner->size()) {
        differ(*level.call, "the number of calls within it", kNoCall, now);
    } else {
        const Call &next = recording().calls()[(*level.inner)[level.next]];
        differ(next, "the call", call_text(next.name, arguments_of(next)), now);
    }
    return nullptr;
}

void Replay::report_missing(Level &level, size_t end, const std::string &now) {
    // Each call that was made instead of one of them has been reported with it.
    for (size_t place = level.next + level.surplus; place < end; ++place) {
        const Call &call = recording().calls()[(*level.inner)[place]];
        differ(call, "the call", call_text(call.name, arguments_of(call)), now);
    }
    level.surplus = 0;
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

std::optional<bool> Replay::frames_succeed() const {
    if (options().is_to_send_frames) {
        return std::nullopt;
    }
    return number_of(result_of(*levels_.back().call)) >= 0;
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
