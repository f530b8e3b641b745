// Reads a recording line by line. Whatever a line says of another one is looked up; nothing that it says is believed.
#include "tools/adptrace/recording/recording.h"

#include <algorithm>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/known_calls.h"
#include "tools/adptrace/recording/line.h"

namespace adptrace {
namespace {

constexpr uint64_t kMostTime = std::numeric_limits<int64_t>::max();
constexpr uint64_t kMostId = std::numeric_limits<int32_t>::max();
constexpr uint64_t kMostThread = std::numeric_limits<uint32_t>::max();
constexpr uint64_t kMostNumber = std::numeric_limits<uint64_t>::max();
constexpr uint64_t kMostStatus = 255;
constexpr uint64_t kMostSignal = 64;
constexpr uint64_t kWordBits[] = {32, 64};

int64_t time_of(const Line &line) {
    return static_cast<int64_t>(line.integer("at", 0, kMostTime));
}

bool is_octets(std::string_view text) {
    return text.size() % 2 == 0 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

std::string number_text(uint64_t number) {
    return std::to_string(number);
}

/** The name of a call of another version of the library, in the text: the parsed one is gone with its line. */
std::string_view unknown_name(const Line &line, std::string_view text) {
    const std::string &name = line.text("call");
    const size_t place = is_call_name(name) ? text.find(name) : std::string_view::npos;
    if (place == std::string_view::npos) {
        line.refuse("needs the name of a call as 'call'");
    }
    return text.substr(place, name.size());
}

}  // namespace

/** Fills a recording. Maps, not hash tables: whoever wrote the text cannot make them slow. */
class Reader {
  public:
    explicit Reader(Recording &recording) : recording_(recording) {}
    void read(std::string_view text, const std::vector<size_t> &numbers);

  private:
    struct Progress {
        size_t process;                     /**< index */
        std::map<uint64_t, size_t> calls;   /**< index by number */
        std::map<uint32_t, int64_t> latest; /**< time by thread */
    };

    /** Lines of other kinds are ignored. */
    struct Kind {
        std::string_view name;
        void (Reader::*read)(const Line &line, std::string_view text);
    };
    static const Kind kKinds[];

    void read_line(std::string_view text, bool is_last);
    void read_header(const Line &line, std::string_view text);
    void refuse_header(const Line &line, std::string_view /*text*/) { line.refuse("is another header"); }
    void read_process(const Line &line, std::string_view text);
    void read_board(const Line &line, std::string_view text);
    void read_begin(const Line &line, std::string_view text);
    void read_end(const Line &line, std::string_view text);
    void read_frame(const Line &line, std::string_view text);
    void read_exit(const Line &line, std::string_view text);

    Progress &progress_of(const Line &line);
    Progress &progress_of(const Line &line, int64_t id);
    /** The time of a line of a thread, which has one clock. */
    int64_t time_in(Progress &progress, uint32_t thread, const Line &line);
    size_t around(Progress &progress, uint32_t thread, const Line &line);

    Recording &recording_;
    std::map<int64_t, Progress> processes_; /**< by id */
    int64_t first_ = 0;                     /**< id of the process whose lines have no `of` */
    size_t number_ = 0;
};

constexpr Reader::Kind Reader::kKinds[] = {{"begin", &Reader::read_begin},      {"end", &Reader::read_end},
                                           {"frame", &Reader::read_frame},      {"board", &Reader::read_board},
                                           {"process", &Reader::read_process},  {"exit", &Reader::read_exit},
                                           {"adptrace", &Reader::refuse_header}};

void Reader::read(std::string_view text, const std::vector<size_t> &numbers) {
    if (text.empty()) {
        throw BadRecording("the recording is empty.");
    }
    for (size_t place = 0; !text.empty(); ++place) {
        const size_t end = text.find('\n');
        number_ = numbers.empty() ? place + 1 : numbers.at(place);
        read_line(text.substr(0, end), end == std::string_view::npos);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
}

void Reader::read_line(std::string_view text, bool is_last) {
    const std::optional<Line> line = Line::of(text, number_);
    if (!line && is_last && number_ > 1) {
        recording_.is_cut_ = true;
        return;
    }
    if (!line) {
        throw BadRecording("line " + number_text(number_) + " is no JSON object.");
    }
    if (number_ == 1) {
        return read_header(*line, text);
    }
    for (const Kind &kind : kKinds) {
        if (line->kind() == kind.name) {
            return (this->*kind.read)(*line, text);
        }
    }
}

void Reader::read_header(const Line &line, std::string_view text) {
    if (line.kind() != "adptrace") {
        line.refuse("is no header of a recording, which begins with 'adptrace'");
    }
    const uint64_t version = line.integer("adptrace", 1, kMostNumber);
    if (version > kVersion) {
        line.refuse("says that the recording has version " + number_text(version) +
                    "; this adptrace knows versions up to " + number_text(kVersion) + ", a newer one is needed");
    }
    Header &header = recording_.header_;
    header.is_big_endian = line.text("byte_order") == "big";
    if (!header.is_big_endian && line.text("byte_order") != "little") {
        line.refuse("needs \"big\" or \"little\" as 'byte_order'");
    }
    header.word_bits = static_cast<uint32_t>(line.integer("word_bits", kWordBits[0], kWordBits[1]));
    if (std::find(std::begin(kWordBits), std::end(kWordBits), header.word_bits) == std::end(kWordBits)) {
        line.refuse("needs 32 or 64 as 'word_bits'");
    }
    header.started = line.text("started");
    line.expect_array("command");
    const auto whole = nlohmann::json::parse(text);
    for (const auto &word : whole["command"]) {
        if (!word.is_string()) {
            line.refuse("needs texts in 'command'");
        }
        header.command.push_back(word);
    }
}

void Reader::read_process(const Line &line, std::string_view /*text*/) {
    Process process;
    process.id = static_cast<int64_t>(line.integer("process", 1, kMostId));
    process.parent = static_cast<int64_t>(line.integer("parent", 0, kMostId));
    process.at = time_of(line);
    process.program = line.text("program");
    process.library = line.text_or_null("library");
    process.line = line.number();
    first_ = recording_.processes_.empty() ? process.id : first_;
    processes_[process.id] = {recording_.processes_.size(), {}, {}};
    recording_.processes_.push_back(std::move(process));
}

void Reader::read_board(const Line &line, std::string_view text) {
    line.expect_array("board");
    recording_.boards_.push_back(
        {progress_of(line).process, recording_.calls_.size(), time_of(line), line.number(), text});
}

void Reader::read_begin(const Line &line, std::string_view text) {
    Progress &progress = progress_of(line);
    Call call;
    call.number = line.integer("begin", 1, kMostNumber);
    call.process = progress.process;
    call.thread = static_cast<uint32_t>(line.integer("thread", 1, kMostThread));
    call.within = around(progress, call.thread, line);
    call.depth = call.within == kNone ? 0 : recording_.calls_[call.within].depth + 1;
    if (call.depth > kMaxDepth) {
        line.refuse("is within more than " + number_text(kMaxDepth) + " other calls");
    }
    const KnownCall *const known = known_call(line.text("call"));
    call.name = known != nullptr ? known->name : unknown_name(line, text);
    call.kind = known != nullptr ? known->kind : Call::Kind::kUnknown;
    line.expect_object("arguments");
    call.line = line.number();
    call.began = time_in(progress, call.thread, line);
    call.begin_text = text;
    if (!progress.calls.emplace(call.number, recording_.calls_.size()).second) {
        line.refuse("begins call " + number_text(call.number) + ", which has begun before");
    }
    recording_.calls_.push_back(call);
}

void Reader::read_end(const Line &line, std::string_view text) {
    Progress &progress = progress_of(line);
    const uint64_t number = line.integer("end", 1, kMostNumber);
    const auto found = progress.calls.find(number);
    if (found == progress.calls.end()) {
        line.refuse("ends call " + number_text(number) + ", which has not begun");
    }
    Call &call = recording_.calls_[found->second];
    if (call.has_returned) {
        line.refuse("ends call " + number_text(number) + ", which has ended before");
    }
    line.expect_any("result");
    line.expect_object("outputs");
    call.ended = time_in(progress, call.thread, line);
    call.has_returned = true;
    call.end_text = text;
}

void Reader::read_frame(const Line &line, std::string_view /*text*/) {
    Progress &progress = progress_of(line);
    Frame frame;
    frame.is_sent = line.text("frame") == "sent";
    if (!frame.is_sent && line.text("frame") != "received") {
        line.refuse("needs \"sent\" or \"received\" as 'frame'");
    }
    frame.process = progress.process;
    frame.thread = static_cast<uint32_t>(line.integer("thread", 1, kMostThread));
    frame.within = around(progress, frame.thread, line);
    frame.before = recording_.calls_.size();
    frame.at = time_in(progress, frame.thread, line);
    frame.line = line.number();
    frame.interface = line.text("interface");
    frame.octets = line.text("octets");
    if (!is_octets(frame.octets)) {
        line.refuse("needs hexadecimal text as 'octets'");
    }
    recording_.frames_.push_back(std::move(frame));
}

void Reader::read_exit(const Line &line, std::string_view /*text*/) {
    Progress &progress = progress_of(line, static_cast<int64_t>(line.integer("exit", 1, kMostId)));
    Process &process = recording_.processes_[progress.process];
    if (process.exit_line != 0) {
        line.refuse("says that process " + number_text(static_cast<uint64_t>(process.id)) + " exited, as line " +
                    number_text(process.exit_line) + " does");
    }
    if (line.has("signal")) {
        process.signal = static_cast<int32_t>(line.integer("signal", 1, kMostSignal));
    } else {
        process.status = static_cast<int32_t>(line.integer("status", 0, kMostStatus));
    }
    process.ended = time_of(line);
    process.exit_line = line.number();
}

Reader::Progress &Reader::progress_of(const Line &line) {
    return progress_of(line, line.has("of") ? static_cast<int64_t>(line.integer("of", 1, kMostId)) : first_);
}

Reader::Progress &Reader::progress_of(const Line &line, int64_t id) {
    const auto found = processes_.find(id);
    if (found == processes_.end()) {
        line.refuse(processes_.empty() ? "comes before the line of its process"
                                       : "belongs to process " + std::to_string(id) + ", which has no line");
    }
    return found->second;
}

int64_t Reader::time_in(Progress &progress, uint32_t thread, const Line &line) {
    const int64_t at = time_of(line);
    int64_t &latest = progress.latest[thread];
    if (at < latest) {
        line.refuse("is earlier than a line of the same thread before it");
    }
    latest = at;
    return at;
}

size_t Reader::around(Progress &progress, uint32_t thread, const Line &line) {
    if (!line.has("within")) {
        return kNone;
    }
    const uint64_t number = line.integer("within", 1, kMostNumber);
    const auto found = progress.calls.find(number);
    const std::string call = "is within call " + number_text(number) + ", which ";
    if (found == progress.calls.end()) {
        line.refuse(call + "has not begun");
    }
    const Call &outer = recording_.calls_[found->second];
    if (outer.thread != thread) {
        line.refuse(call + "another thread makes");
    }
    if (outer.has_returned) {
        line.refuse(call + "has ended");
    }
    return found->second;
}

Recording::Recording(std::string text, const std::vector<size_t> &numbers)
    : text_(std::make_unique<const std::string>(std::move(text))) {
    Reader(*this).read(*text_, numbers);
}

}  // namespace adptrace
