// What the software on the device logged and sent to its event queue, and the trace value that it reads.
#include <fmt/core.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "text/printable.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

json read_log(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const driver::LogLine &line : device.journal().lines()) {
        rows.push_back({{"time", seconds(line.time)},
                        {"level", line.level},
                        {"module", line.module},
                        {"word", line.word},
                        {"text", line.text}});
    }
    return {{"log", rows}, {"total", device.journal().total()}};
}

std::string show_log(const json &answer) {
    std::string lines;
    for (const json &line : answer["log"]) {
        lines += fmt::format("{:>12.6f}  {}/{} {:<7} {}\n", line["time"].get<double>(), line["level"].get<int>(),
                             line["module"].get<int>(), text::on_one_line(line["word"].get<std::string>()),
                             text::on_one_line(line["text"].get<std::string>()));
    }
    return lines;
}

json read_events(Device &device, const json & /*request*/) {
    json rows = json::array();
    for (const driver::Event &event : device.events().events()) {
        rows.push_back(
            {{"time", seconds(event.time)}, {"queue", event.queue}, {"words", event.words}, {"record", event.record}});
    }
    return {{"events", rows}};
}

std::string show_events(const json &answer) {
    std::string text;
    for (const json &event : answer["events"]) {
        text += fmt::format("{:>12.6f}  queue {}  words {}  record {}\n", event["time"].get<double>(),
                            event["queue"].get<uint32_t>(), numbers(event["words"]), numbers(event["record"]));
    }
    return text;
}

json set_trace(Device &device, const json &request) {
    using Limits = std::numeric_limits<int32_t>;
    const auto value = request.find("value");
    if (value == request.end() || !value->is_number_integer() || *value < Limits::min() || *value > Limits::max()) {
        throw Refusal{"The trace value must be a number, 0 for off."};
    }
    device.set_trace(value->get<int32_t>());
    return json::object();
}

constexpr Filter kLogFilters[] = {
    kLast,
    {"level", "LEVELS", "lines of these levels: 3 or 0-4", FilterKind::kNumbers, {"level"}},
    {"word", "WORD", "lines of the module with this name", FilterKind::kWord, {"word"}}};
constexpr Filter kEventFilters[] = {
    kLast, {"queue", "QUEUES", "messages of these queues: 1 or 1-4", FilterKind::kNumbers, {"queue"}}};

}  // namespace

extern constexpr Subject kLog{"log", "",   "what the device and its software logged", read_log, show_log, kLogFilters,
                              {},    kLong};
extern constexpr Subject kEvents{
    "events", "", "messages waiting in the event queue", read_events, show_events, kEventFilters, {}, kLong};
extern constexpr Subject kTrace{"trace", "VALUE", "set what sys_trace_get() answers: 0 off, other numbers on",
                                set_trace, show_nothing};

}  // namespace vdevice::inspect
