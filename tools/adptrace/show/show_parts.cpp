// A part is a small recording, so that it is checked, chosen and shown like a whole one.
#include "tools/adptrace/show/show_parts.h"

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <deque>
#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/growing_file.h"
#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/show/call_json.h"

namespace adptrace {
namespace {

constexpr int kPause = 100;                             /**< milliseconds */
constexpr size_t kMostInNewestCalls = size_t{64} << 20; /**< octets */

/** Waits for what is written meanwhile. False if nobody reads what is shown. */
bool wait_for_more() {
    struct pollfd output = {STDOUT_FILENO, 0, 0};
    return poll(&output, 1, kPause) <= 0 || (output.revents & (POLLERR | POLLHUP)) == 0;
}

class PartShower {
  public:
    PartShower(const Options &options, const Output &output, const Parts::Limits &limits)
        : options_(options),
          output_(output),
          parts_([this](Part part) { take(std::move(part)); }, limits),
          holds_(options.last.has_value()) {}

    void follow(GrowingFile &file);

  private:
    void take(Part part);
    /** From now on parts are shown as they come. */
    void show_newest();
    void show(const Part &part);
    void show_json(const Recording &recording, size_t left_out);
    void end(GrowingFile &file);

    const Options &options_;
    const Output &output_;
    Parts parts_;
    bool holds_; /**< the newest parts, until the end of what there is */
    std::deque<Part> newest_;
    size_t newest_calls_ = 0;
    size_t newest_octets_ = 0;
    bool is_empty_ = true;
};

void PartShower::follow(GrowingFile &file) {
    const auto add = [this](std::string_view line) { parts_.add(line); };
    for (file.read(add); options_.is_followed && !parts_.has_ended(); file.read(add)) {
        show_newest();
        output_.flush();
        file.check();
        if (!wait_for_more()) {
            return;
        }
    }
    end(file);
}

void PartShower::end(GrowingFile &file) {
    bool is_cut = false;
    if (!file.rest().empty() && !options_.is_followed) {
        is_cut = parts_.next_number() > 1 && !Line::of(file.rest(), parts_.next_number());
        if (!is_cut) {
            parts_.add(file.rest());
        }
    }
    if (parts_.next_number() == 1) {
        throw BadRecording("the recording is empty.");
    }
    parts_.finish();
    show_newest();
    if (is_empty_ && !options_.is_json && options_.show.filter.is_about_calls()) {
        output_.write("--- no call is chosen\n");
    }
    if (is_cut && !options_.is_json) {
        output_.write("--- the recording is cut: its last line is not whole\n");
    }
}

void PartShower::take(Part part) {
    if (!holds_ || part.first == 1) {
        return show(part);
    }
    newest_calls_ += size_t{part.is_call};
    newest_octets_ += part.text.size();
    newest_.push_back(std::move(part));
    while (newest_calls_ > *options_.last || newest_octets_ > kMostInNewestCalls) {
        newest_calls_ -= size_t{newest_.front().is_call};
        newest_octets_ -= newest_.front().text.size();
        newest_.pop_front();
    }
}

void PartShower::show_newest() {
    holds_ = false;
    for (; !newest_.empty(); newest_.pop_front()) {
        show(newest_.front());
    }
}

void PartShower::show(const Part &part) {
    const Recording recording(part.text, part.numbers);
    if (options_.is_json) {
        return show_json(recording, part.left_out);
    }
    ShowOptions options = options_.show;
    options.first_line = part.first;
    options.has_processes = parts_.has_processes();
    bool has_line = false;
    adptrace::show(recording, options, [&](const std::string &line) {
        output_.write(line);
        has_line = true;
    });
    if (has_line && part.left_out > 0) {
        output_.write(fmt::format("--- {} more calls within it are left out\n", part.left_out));
    }
    is_empty_ = is_empty_ && !has_line;
}

void PartShower::show_json(const Recording &recording, size_t left_out) {
    for (nlohmann::json &call : calls_json(recording, options_.show)) {
        if (left_out > 0) {
            call["left_out"] = left_out;
        }
        output_.write(call.dump() + "\n");
    }
}

}  // namespace

void show_parts(const Options &options, const Output &output, const Parts::Limits &limits) {
    try {
        GrowingFile file(options.file);
        PartShower(options, output, limits).follow(file);
    } catch (const BadRecording &error) {
        throw BadRecording((options.file == "-" ? "standard input" : options.file) + ": " + error.what());
    }
}

}  // namespace adptrace
