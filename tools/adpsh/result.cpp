// Names of results. A driver's own number is looked up among those of the virtual device.
#include "tools/adpsh/result.h"

#include <adp/adp.h>
#include <adp/status.h>

#include <fmt/format.h>

#include <span>

namespace adpsh {

namespace {

using call_trace::Failure;

// Also the result of a driver call that does not reach the device.
constexpr int64_t kUnreached = ADP_FAIL;

struct Meaning {
    std::string name;  ///< empty if the number has none
    std::string text;
    bool is_the_devices = false;
};

bool is_the_devices(const adp_status_entry_t &entry) {
    return entry.status < ADP_FAIL;
}

/** The entry of a result of the library or of the device, or null. */
const adp_status_entry_t *find_result(int64_t result, bool of_the_device) {
    const adp_status_entry_t *const found =
        result == static_cast<int32_t>(result) ? adp_status_find(static_cast<int32_t>(result)) : nullptr;
    return found != nullptr && is_the_devices(*found) == of_the_device ? found : nullptr;
}

const adp_status_entry_t *find_device_result(int64_t result) {
    return find_result(result, true);
}

std::span<const adp_status_entry_t> all_results() {
    uint32_t count = 0;
    const adp_status_entry_t *const first = adp_status_entries(&count);
    return {first, count};
}

std::string port_text(int64_t port) {
    if (port < 0) {
        return fmt::format("port {} (no port)", port);
    }
    const int32_t intf = adp_phy_2_intf_id(static_cast<uint32_t>(port));
    return intf == 0  ? fmt::format("the CPU port ({})", port)
           : intf > 0 ? fmt::format("user port {} (physical port {})", intf, port)
                      : fmt::format("physical port {}", port);
}

/** What a driver call gave: `user_port_learn_set on user port 7 (physical port 10) gave -3, bad_argument ...`. */
std::string failure_text(const Failure &failure) {
    const std::string text = fmt::format("{}{} gave {}", failure.call,
                                         failure.port ? " on " + port_text(*failure.port) : "", failure.result);
    if (failure.result == kUnreached) {
        return text + ": the call did not reach the device; start vdeviced, or name its folder with --run-dir";
    }
    const adp_status_entry_t *const known = find_device_result(failure.result);
    return known == nullptr ? text : fmt::format("{}, {} of the virtual device: {}", text, known->name, known->text);
}

/** The meaning of one of the library's codes; a driver call that failed explains it. */
Meaning library_meaning(int64_t result, const std::optional<Failure> &failure) {
    const adp_status_entry_t *const status = find_result(result, false);
    if (status == nullptr) {
        return {{}, failure ? failure_text(*failure) : std::string()};
    }
    if (result == ADP_OK || !failure) {
        return {status->name, status->text};
    }
    const bool says_nothing_more = result == ADP_E_DRIVER || result == failure->result;
    return {status->name,
            (says_nothing_more ? std::string("a driver call failed") : status->text) + ": " + failure_text(*failure)};
}

Meaning meaning_of(const Outcome &outcome) {
    const bool is_status = outcome.call->result == calls::Result::kStatus;
    if (!is_status && (outcome.call->result != calls::Result::kI32 || outcome.result >= 0)) {
        return {};
    }
    if (const adp_status_entry_t *const known = find_device_result(outcome.result)) {
        return {known->name, known->text, true};
    }
    if (!is_status && !outcome.failure) {
        return {};  // a number of which the call's header says what it is
    }
    return library_meaning(outcome.result, outcome.failure);
}

Json failure_json(const Failure &failure) {
    const std::string_view name = device_name_of(failure.result);
    return {{"call", failure.call},
            {"port", failure.port ? Json(*failure.port) : Json()},
            {"result", failure.result},
            {"name", name.empty() ? Json() : Json(name)}};
}

Json text_or_null(const std::string &text) {
    return text.empty() ? Json() : Json(text);
}

}  // namespace

std::string_view device_name_of(int64_t result) {
    const adp_status_entry_t *const known = find_device_result(result);
    return known == nullptr ? std::string_view() : known->name;
}

std::string device_result_text(std::string_view word) {
    for (const adp_status_entry_t &row : all_results()) {
        if (is_the_devices(row) && (row.name == word || std::to_string(row.status) == word)) {
            return fmt::format("{} = {}\na result of the virtual device: {}", row.name, row.status, row.text);
        }
    }
    return {};
}

const exported::Constant *library_result(std::string_view number) {
    for (const adp_status_entry_t &row : all_results()) {
        if (!is_the_devices(row) && std::to_string(row.status) == number) {
            return exported::find_constant(row.name);
        }
    }
    return nullptr;
}

std::string result_text(const Outcome &outcome) {
    const std::string number = text_of(*outcome.call, outcome.result);
    const Meaning meaning = meaning_of(outcome);
    if (meaning.name.empty() || outcome.result == ADP_OK) {
        return meaning.text.empty() ? number : fmt::format("{} ({})", number, meaning.text);
    }
    return fmt::format("{} ({}{}: {})", number, meaning.name, meaning.is_the_devices ? " of the virtual device" : "",
                       meaning.text);
}

void add_result(const Outcome &outcome, Json &object) {
    const Meaning meaning = meaning_of(outcome);
    object["result"] = json_of(*outcome.call, outcome.result);
    object["result_name"] = text_or_null(meaning.name);
    object["meaning"] = text_or_null(meaning.text);
    object["failed"] = outcome.failure ? failure_json(*outcome.failure) : Json();
}

}  // namespace adpsh
