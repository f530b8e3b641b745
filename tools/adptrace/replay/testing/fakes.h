/**
 * @file fakes.h
 * A recording written by hand, and a library and a driver that do what a test says.
 */
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/adptrace/replay/replay.h"

namespace adptrace::replay {

/** The text of a recording. */
class Text {
  public:
    explicit Text(const std::string &byte_order = "little", int word_bits = 64);

    /** @p around is the call within which it is made, 0 for none. @return its number */
    uint64_t begin(const std::string &call, const std::string &arguments, uint64_t around = 0, uint32_t thread = 1);
    Text &end(uint64_t number, const std::string &result = "0", const std::string &outputs = "{}");
    Text &line(const std::string &text);

    [[nodiscard]] const std::string &text() const { return text_; }
    [[nodiscard]] Recording recording() const { return Recording(text_); }

  private:
    std::string text_;
    uint64_t calls_ = 0;
};

using Function = std::function<int64_t(const void *const *arguments)>;

/** The value of an argument. */
template <typename T>
T value_of(const void *argument) {
    return *static_cast<const T *>(argument);
}

class FakeLibrary : public Library {
  public:
    std::map<std::string, Function, std::less<>> functions;
    nlohmann::json rows = nlohmann::json::array();

    [[nodiscard]] bool has(const exported::Call &call) const override { return functions.contains(call.name); }
    int64_t make(const exported::Call &call, const void *const *arguments) override {
        return functions.at(call.name)(arguments);
    }
    [[nodiscard]] nlohmann::json board() const override { return rows; }
    void set_board(const nlohmann::json &wanted) override { rows = wanted; }
};

/** Its adp_vlan_create() creates the VLAN in the driver and logs a failure, its adp_stg_default_get() asks the driver.
 */
struct VlanLibrary : FakeLibrary {
    VlanLibrary();
};

/** A call of adp_vlan_create() in the lines 3 to 6. */
Text vlan_recording();

/** With the last occurrence of a text replaced. */
Recording with(const Text &text, const std::string &from, const std::string &to);

/** Calls without a function give 0. */
class FakeDriver : public Driver {
  public:
    std::map<std::string, Function, std::less<>> functions;
    std::vector<std::string> asked;

    int64_t ask(calls::CallId id, const void *const *arguments) override {
        asked.emplace_back(calls::call(id).name);
        const auto found = functions.find(asked.back());
        return found == functions.end() ? 0 : found->second(arguments);
    }
};

/** What a replay said and did. */
struct Played {
    Outcome outcome;
    std::string said;
};

Played replay(const Recording &recording, Library &library, Driver *driver, const Options &options = {});
Played replay_driver(const Recording &recording, Driver &driver, const Options &options = {});

}  // namespace adptrace::replay
