// What the lines of a call say, and whether it failed.
#include <adp/types.h>

#include <nlohmann/json.hpp>

#include "tools/adptrace/recording/known_calls.h"
#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

using nlohmann::json;

json member_of(std::string_view line, const char *name) {
    json whole = json::parse(line);
    return std::move(whole[name]);
}

/** 0 is success, except for services whose header says something else. */
bool is_failure_of_import(std::string_view name, int64_t result) {
    if (name == "equeue_send_ucast") {
        return result <= 0;
    }
    return name == "sys_trace_get" ? result < 0 : result != 0;
}

bool is_failure(calls::Result kind, int64_t result) {
    switch (kind) {
        case calls::Result::kStatus:
            return result != ADP_OK;
        case calls::Result::kI32:
            return result < 0;  // otherwise a number that was asked for
        default:
            return false;
    }
}

}  // namespace

json arguments_of(const Call &call) {
    return member_of(call.begin_text, "arguments");
}

json outputs_of(const Call &call) {
    return call.has_returned ? member_of(call.end_text, "outputs") : json::object();
}

json result_of(const Call &call) {
    return call.has_returned ? member_of(call.end_text, "result") : json();
}

json end_of(const Call &call) {
    return json::parse(call.end_text);
}

bool has_failed(const Call &call) {
    return call.has_returned && has_failed(call, result_of(call));
}

bool has_failed(const Call &call, const json &result) {
    const KnownCall *const known = known_call(call.name);
    const calls::Result kind = known != nullptr ? known->result : calls::Result::kI32;
    if (result.is_null()) {
        return kind == calls::Result::kText || kind == calls::Result::kStruct;
    }
    if (!result.is_number_integer()) {
        return false;
    }
    const auto number = result.get<int64_t>();
    return call.kind == Call::Kind::kImported && kind == calls::Result::kI32 ? is_failure_of_import(call.name, number)
                                                                             : is_failure(kind, number);
}

}  // namespace adptrace
