// Recordings written by hand, and replays of them.
#include "tools/adptrace/replay/testing/fakes.h"

#include "tools/adptrace/replay/driver_only.h"

namespace adptrace::replay {

Text::Text(const std::string &byte_order, int word_bits) {
    line(R"({"adptrace":1,"byte_order":")" + byte_order + R"(","word_bits":)" + std::to_string(word_bits) +
         R"(,"started":"2026-11-22T18:00:00Z","command":["program"]})");
    line(R"({"process":7,"parent":0,"at":0,"program":"/bin/program","library":null})");
}

Text &Text::line(const std::string &text) {
    text_ += text + "\n";
    return *this;
}

uint64_t Text::begin(const std::string &call, const std::string &arguments, uint64_t around, uint32_t thread) {
    const std::string within = around == 0 ? "" : R"("within":)" + std::to_string(around) + ",";
    line(R"({"begin":)" + std::to_string(++calls_) + "," + within + R"("thread":)" + std::to_string(thread) +
         R"(,"at":1,"call":")" + call + R"(","arguments":)" + arguments + "}");
    return calls_;
}

Text &Text::end(uint64_t number, const std::string &result, const std::string &outputs) {
    return line(R"({"end":)" + std::to_string(number) + R"(,"at":1,"result":)" + result + R"(,"outputs":)" + outputs +
                "}");
}

Played replay(const Recording &recording, Library &library, Driver *driver, const Options &options) {
    Played played;
    Replay player(recording, library, driver, options, [&played](const std::string &text) { played.said += text; });
    played.outcome = player.run([](size_t, size_t) {});
    return played;
}

Played replay_driver(const Recording &recording, Driver &driver, const Options &options) {
    Played played;
    DriverReplay player(recording, &driver, options, [&played](const std::string &text) { played.said += text; });
    played.outcome = player.run([](size_t, size_t) {});
    return played;
}

}  // namespace adptrace::replay
