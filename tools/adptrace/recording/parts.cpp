// Only what says where a line belongs is read here. Each part is a recording, which is checked as every other one.
#include "tools/adptrace/recording/parts.h"

#include <algorithm>
#include <optional>

#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

constexpr uint64_t kHighestId = INT32_MAX;
constexpr size_t kRootSize = 512; /**< about what a call takes besides its lines */

uint32_t thread_of(const Line &line) {
    return static_cast<uint32_t>(line.integer("thread", 1, UINT32_MAX));
}

}  // namespace

void Parts::add(std::string_view text) {
    const std::optional<Line> line = Line::of(text, ++number_);
    if (!line) {
        throw BadRecording("line " + std::to_string(number_) + " is no JSON object.");
    }
    if (number_ == 1) {
        header_ = std::string(text) + "\n";
        return take_({header_, {1}, 1});
    }
    const std::string_view kind = line->kind();
    if (kind == "process") {
        add_process(*line, text);
    } else if (kind == "begin") {
        add_begin(process_of(*line, "of"), *line, text);
    } else if (kind == "end") {
        add_end(process_of(*line, "of"), *line, text);
    } else if (kind == "frame") {
        add_frame(process_of(*line, "of"), *line, text);
    } else if (kind == "board") {
        hand_on_line(process_of(*line, "of"), text);
    } else if (kind == "exit") {
        add_exit(process_of(*line, "exit"), *line, text);
    } else if (kind == "adptrace") {
        line->refuse("is another header");
    }
    while (kept_ > limits_.kept) {
        hand_on_oldest();
    }
}

void Parts::finish() {
    while (kept_ > 0) {
        hand_on_oldest();
    }
}

void Parts::add_process(const Line &line, std::string_view text) {
    const auto id = static_cast<int64_t>(line.integer("process", 1, kHighestId));
    const auto before = processes_.find(id);
    if (before != processes_.end()) {
        hand_on_all(before->second);
    } else if (processes_.size() >= limits_.processes) {
        forget_a_process();
    }
    has_processes_ = has_processes_ || !processes_.empty();
    first_ = processes_.empty() ? id : first_;
    processes_[id] = {std::string(text) + "\n", number_, number_, {}, {}};
    take_({header_ + processes_[id].line, {1, number_}, number_});
}

void Parts::add_begin(Process &process, const Line &line, std::string_view text) {
    if (line.has("within")) {
        return keep_within(process, line, text);
    }
    const uint32_t thread = thread_of(line);
    hand_on(process, thread);  // the call before was left without an end
    open_call(process, thread, line);
    Root &root = process.roots[thread];
    root.calls = {line.integer("begin", 1, UINT64_MAX)};
    kept_ += kRootSize;
    keep(root, text);
}

void Parts::open_call(Process &process, uint32_t thread, const Line &line) {
    const uint64_t number = line.integer("begin", 1, UINT64_MAX);
    if (!process.open.emplace(number, thread).second) {
        line.refuse("begins call " + std::to_string(number) + ", which has begun before");
    }
}

/** What is within a call that is unknown or has no room is left out. */
void Parts::keep_within(Process &process, const Line &line, std::string_view text) {
    const uint32_t thread = thread_of(line);
    const auto root = process.roots.find(thread);
    if (root == process.roots.end()) {
        return;
    }
    const auto around = process.open.find(line.integer("within", 1, UINT64_MAX));
    const bool is_known = around != process.open.end() && around->second == thread;
    const bool is_call = line.kind() == "begin";
    if (!is_known || root->second.text.size() + text.size() > limits_.in_call || kept_ + text.size() > limits_.kept) {
        root->second.left_out += size_t{is_call};
        return;
    }
    if (is_call) {
        open_call(process, thread, line);
        root->second.calls.push_back(line.integer("begin", 1, UINT64_MAX));
    }
    keep(root->second, text);
}

void Parts::add_end(Process &process, const Line &line, std::string_view text) {
    const auto found = process.open.find(line.integer("end", 1, UINT64_MAX));
    if (found == process.open.end()) {
        return;  // of a call that was left out
    }
    const auto [number, thread] = *found;
    process.open.erase(found);
    Root &root = process.roots.at(thread);
    keep(root, text);
    if (root.calls.front() == number) {
        hand_on(process, thread);
    }
}

void Parts::add_frame(Process &process, const Line &line, std::string_view text) {
    if (line.has("within")) {
        keep_within(process, line, text);
    } else {
        hand_on_line(process, text);
    }
}

void Parts::add_exit(Process &process, const Line &line, std::string_view text) {
    hand_on_all(process);
    hand_on_line(process, text);
    has_ended_ = has_ended_ || line.integer("exit", 1, kHighestId) == static_cast<uint64_t>(first_);
}

void Parts::keep(Root &root, std::string_view text) {
    root.text += text;
    root.text += '\n';
    root.numbers.push_back(number_);
    kept_ += text.size() + 1;
}

void Parts::hand_on_line(const Process &process, std::string_view text) {
    take_({header_ + process.line + std::string(text) + "\n", {1, process.number, number_}, number_});
}

void Parts::hand_on(Process &process, uint32_t thread) {
    const auto found = process.roots.find(thread);
    if (found == process.roots.end()) {
        return;
    }
    const Root root = std::move(found->second);
    process.roots.erase(found);
    for (const uint64_t number : root.calls) {
        process.open.erase(number);
    }
    kept_ -= root.text.size() + kRootSize;
    std::vector<size_t> numbers = {1, process.number};
    numbers.insert(numbers.end(), root.numbers.begin(), root.numbers.end());
    take_({header_ + process.line + root.text, std::move(numbers), root.numbers.front(), true, root.left_out});
}

void Parts::hand_on_all(Process &process) {
    while (!process.roots.empty()) {
        const auto oldest = std::min_element(
            process.roots.begin(), process.roots.end(),
            [](const auto &a, const auto &b) { return a.second.numbers.front() < b.second.numbers.front(); });
        hand_on(process, oldest->first);
    }
}

void Parts::hand_on_oldest() {
    size_t least = SIZE_MAX;
    Process *of = nullptr;
    uint32_t oldest = 0;
    for (auto &[id, process] : processes_) {
        for (const auto &[thread, root] : process.roots) {
            if (root.numbers.front() < least) {
                least = root.numbers.front();
                of = &process;
                oldest = thread;
            }
        }
    }
    hand_on(*of, oldest);
}

/** The one that has been silent for longest, but for the first. */
void Parts::forget_a_process() {
    auto silent = processes_.end();
    for (auto each = processes_.begin(); each != processes_.end(); ++each) {
        if (each->first != first_ && (silent == processes_.end() || each->second.latest < silent->second.latest)) {
            silent = each;
        }
    }
    hand_on_all(silent->second);
    processes_.erase(silent);
}

Parts::Process &Parts::process_of(const Line &line, const char *member) {
    const int64_t id = line.has(member) ? static_cast<int64_t>(line.integer(member, 1, kHighestId)) : first_;
    const auto found = processes_.find(id);
    if (found == processes_.end()) {
        line.refuse(processes_.empty() ? "comes before the line of its process"
                                       : "belongs to process " + std::to_string(id) + ", which has no line");
    }
    found->second.latest = number_;
    return found->second;
}

}  // namespace adptrace
