// A recording that is replayed: refused with a sentence, stopped with one, or played to its end, with differences that
// a terminal may show. The library in the place of libadp reads and writes all that it is given and makes the
// recording's driver calls as they come, whether they are its own or not. The input is the text of the recording.
#include "tools/adptrace/replay/replay.h"

#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "calls/json_memory.h"
#include "calls/json_text.h"
#include "calls/stub.h"
#include "tests/fuzz/fuzz.h"
#include "tools/adptrace/command.h"
#include "tools/adptrace/replay/driver_only.h"

namespace {

using adptrace::Call;
using adptrace::Recording;
using fuzz::expect;
namespace core = adptrace::replay;

constexpr size_t kDriverCallsOfEach = 3;
constexpr size_t kMostCalls = 2000;  // more of them would only take longer

void use_memory(std::span<const calls::Param> params, const void *const *arguments) {
    const calls::Blocks blocks = calls::blocks_of(params, arguments);
    std::string text;
    calls::append_arguments(text, params, blocks);
    for (size_t index = 0; index < params.size(); ++index) {
        const calls::Block &block = blocks[index];
        const bool is_plain = params[index].shape == calls::Shape::kPlain;
        if (is_plain && params[index].is_written() && block.at != nullptr) {
            std::memset(const_cast<void *>(block.at), 1, block.count * params[index].element.size);
        }
    }
}

class Library final : public core::Library {
  public:
    explicit Library(const Recording &recording) : recording_(recording) {}

    [[nodiscard]] bool has(const exported::Call &) const override { return true; }
    int64_t make(const exported::Call &call, const void *const *arguments) override {
        const calls::Blocks blocks = calls::blocks_of(call.params, arguments);
        exported::report_event({}, nullptr);
        for (size_t count = 0; count < kDriverCallsOfEach; ++count) {
            make_driver_call();
        }
        if (call.result == calls::Result::kText || call.result == calls::Result::kStruct) {
            return 0;
        }
        // After the driver calls: their arguments have memory of their own.
        use_memory(call.params, arguments);
        return blocks[0].at == nullptr ? 0 : -1;
    }
    [[nodiscard]] nlohmann::json board() const override { return rows_; }
    void set_board(const nlohmann::json &rows) override { rows_ = rows; }

  private:
    void make_driver_call() {
        while (next_ < recording_.calls().size()) {
            const Call &call = recording_.calls()[next_++];
            const auto id = calls::find_call(call.name);
            if (!id) {
                continue;
            }
            try {
                const calls::Memory memory(core::params_of(*id), arguments_of(call));
                calls::forward_call(*id, memory.arguments());
                return;
            } catch (const calls::BadValue &) {  // the next one then
            }
        }
    }

    const Recording &recording_;
    size_t next_ = 0;
    nlohmann::json rows_ = nlohmann::json::array();
};

class Driver final : public core::Driver {
  public:
    int64_t ask(calls::CallId id, const void *const *arguments) override {
        use_memory(core::params_of(id), arguments);
        return calls::call(id).result == calls::Result::kText ? 0 : 1;
    }
};

void expect_shown(const std::string &text) {
    for (const char c : text) {
        expect(c == '\n' || (c >= ' ' && c != '\x7f'), "a difference has nothing that a terminal obeys");
    }
}

template <typename Player>
void play(Player &&player) {
    try {
        const core::Outcome outcome = player.run([](size_t, size_t) {});
        expect(!outcome.is_trouble || !outcome.reason.empty(), "trouble is a sentence");
    } catch (const adptrace::Refusal &error) {
        expect(*error.what() != '\0', "a refusal is a sentence");
    }
}

void play_all(const Recording &recording) {
    core::Options options;
    options.is_to_keep_going = true;
    options.is_to_crash = true;
    Driver driver;
    Library first(recording);
    play(core::Replay(recording, first, nullptr, options, expect_shown));
    Library second(recording);
    play(core::Replay(recording, second, &driver, options, expect_shown));
    Library third(recording);
    play(core::Replay(recording, third, nullptr, {}, expect_shown));
    play(core::DriverReplay(recording, &driver, options, expect_shown));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    try {
        const Recording recording(std::string(data, data + size));
        if (recording.calls().size() <= kMostCalls) {
            play_all(recording);
        }
    } catch (const adptrace::BadRecording &) {
        return 0;
    }
    return 0;
}
