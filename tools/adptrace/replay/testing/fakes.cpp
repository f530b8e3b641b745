// Recordings written by hand, and replays of them.
#include "tools/adptrace/replay/testing/fakes.h"

#include <stdexcept>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
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

VlanLibrary::VlanLibrary() {
    functions["adp_vlan_create"] = [](const void *const *arguments) -> int64_t {
        const auto vid = value_of<uint32_t>(arguments[0]);
        const int32_t result = user_vlan_create(0, 0, vid);
        if (result != 0) {
            Log_logging_func(3, 1, "vlan", "%u fails", vid);
        }
        return result;
    };
    functions["adp_stg_default_get"] = [](const void *const *arguments) -> int64_t {
        return user_stg_default_get(0, 0, value_of<uint32_t *>(arguments[0]));
    };
}

Text vlan_recording() {
    Text text;
    const uint64_t outer = text.begin("adp_vlan_create", R"({"vid":100})");
    const uint64_t inner = text.begin("user_vlan_create", R"({"unit":0,"zero":0,"vid":100})", outer);
    text.end(inner).end(outer);
    return text;
}

Recording with(const Text &text, const std::string &from, const std::string &to) {
    std::string changed = text.text();
    const size_t at = changed.rfind(from);
    if (at == std::string::npos) {
        throw std::invalid_argument(from);
    }
    return Recording(changed.replace(at, from.size(), to));
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
