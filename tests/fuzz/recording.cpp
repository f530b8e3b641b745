// A recording: refused with a sentence, or read, and then every command that reads one has an answer to it that a
// terminal may show and that is not many times as long. The input is the text; what is cut from its end does not make
// it wrong.
#include "tools/adptrace/recording/recording.h"

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/fuzz/fuzz.h"
#include "tools/adptrace/compare/compare.h"
#include "tools/adptrace/recording/parts.h"
#include "tools/adptrace/show/call_json.h"
#include "tools/adptrace/show/show.h"
#include "tools/adptrace/show/stat.h"
#include "tools/adptrace/show/timeline.h"

namespace {

using adptrace::BadRecording;
using adptrace::Call;
using adptrace::kNone;
using adptrace::Recording;
using fuzz::expect;

constexpr size_t kMostForAnOctet = 64;
constexpr size_t kMostForNothing = 1 << 16;

std::string shown(const Recording &recording, bool is_tree) {
    adptrace::ShowOptions options;
    options.is_tree = is_tree;
    options.has_frames = is_tree;
    options.style.length = is_tree ? adptrace::Length::kShort : adptrace::Length::kFull;
    std::string text;
    adptrace::show(recording, options, [&text](const std::string &line) { text += line; });
    return text;
}

std::string shown_failures(const Recording &recording) {
    adptrace::ShowOptions options;
    options.is_tree = true;
    options.filter.is_failed = true;
    options.filter.patterns = {"*a*"};
    std::string text;
    adptrace::show(recording, options, [&text](const std::string &line) { text += line; });
    return text;
}

/** The differences from a recording of the first calls alone. */
std::string differences_from_less(const Recording &recording) {
    const std::string_view text = recording.text();
    const size_t header = std::min(text.find('\n'), text.size() - 1) + 1;
    const Recording less{std::string(text.substr(0, header + (text.size() - header) / 2))};
    return compare(recording, less, {.shows_all = true}).text + compare(less, recording, {.most_differences = 3}).text;
}

/** A recording that is right has only parts that are. */
std::string shown_in_parts(const Recording &recording) {
    std::string shown;
    size_t calls = 0;
    adptrace::Parts parts([&](const adptrace::Part &part) {
        const Recording own(part.text, part.numbers);
        calls += own.calls().size() + part.left_out;
        for (const auto &call : calls_json(own, {})) {
            shown += call.dump() + "\n";
        }
    });
    std::string_view text = recording.text();
    for (size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        parts.add(text.substr(0, end));
    }
    if (!text.empty() && !recording.is_cut()) {
        parts.add(text);
    }
    parts.finish();
    expect(calls <= recording.calls().size(), "each call is in one part");
    return shown;
}

/** What commands make of a recording; a command that reads recordings has a row here. */
const std::function<std::string(const Recording &)> kCommands[] = {
    [](const Recording &recording) { return shown(recording, false); },
    [](const Recording &recording) { return shown(recording, true); },
    shown_failures,
    shown_in_parts,
    [](const Recording &recording) { return stat_text(recording, {}, adptrace::Order::kTime); },
    [](const Recording &recording) { return stat_json(recording, {}, adptrace::Order::kName); },
    [](const Recording &recording) { return timeline_of(recording, {}).svg; },
    differences_from_less};

bool is_shown(char c) {
    return c == '\n' || (static_cast<unsigned char>(c) >= ' ' && c != '\x7f');
}

void expect_order(const Recording &recording) {
    for (size_t i = 0; i < recording.calls().size(); ++i) {
        const Call &call = recording.calls()[i];
        expect(!call.has_returned || call.ended >= call.began, "a call ends after its beginning");
        expect(call.process < recording.processes().size(), "a call has a process");
        expect(call.within == kNone || call.within < i, "a call is within an earlier one");
        expect(call.depth == (call.within == kNone ? 0 : recording.calls()[call.within].depth + 1),
               "depths are counted");
    }
}

void expect_equal_to_itself(const Recording &recording) {
    expect(compare(recording, recording, {}).differences == 0, "a recording has no difference from itself");
}

void expect_answers(const Recording &recording, size_t size) {
    for (const auto &command : kCommands) {
        const std::string text = command(recording);
        expect(text.size() <= kMostForAnOctet * size + kMostForNothing,
               "an answer is not much longer than the recording");
        for (const char c : text) {
            expect(is_shown(c), "an answer has nothing that a terminal obeys");
        }
    }
}

void expect_prefix(const std::string &text) {
    const size_t header = text.find('\n');
    const size_t size = header == std::string::npos ? text.size() : header + 1 + (text.size() - header - 1) / 2;
    expect(Recording(text.substr(0, size)).calls().size() <= text.size(), "a part of a recording is one");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(data, data + size);
    try {
        const Recording recording{std::string(text)};
        expect_order(recording);
        expect_answers(recording, size);
        expect_equal_to_itself(recording);
    } catch (const BadRecording &error) {
        const std::string_view reason = error.what();
        expect(reason.starts_with("line ") || reason == "the recording is empty.", "a refusal names the line");
        return 0;
    }
    expect_prefix(text);
    return 0;
}
