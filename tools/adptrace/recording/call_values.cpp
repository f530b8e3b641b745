// What the lines of a call say, and whether it failed.
#include <adp/types.h>

#include <nlohmann/json.hpp>

#include "calls/call_table.h"
#include "calls/exported.h"
#include "tools/adptrace/recording/recording.h"

namespace adptrace {
namespace {

using nlohmann::json;

json member_of(std::string_view line, const char *name) {
    json whole = json::parse(line);
    return std::move(whole[name]);
}

/** Services whose header says that success is another number than 0. */
bool is_failure_of_service(std::string_view name, int64_t result) {
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

bool has_failed(const Call &call) {
    const json result = result_of(call);
    const auto id = calls::find_call(call.name);
    const exported::Call *const known = exported::find_call(call.name);
    const calls::Result kind = known != nullptr ? known->result : id ? calls::call(*id).result : calls::Result::kI32;
    if (result.is_null()) {
        const bool is_address = kind == calls::Result::kText || kind == calls::Result::kStruct;
        return call.has_returned && is_address;
    }
    if (!result.is_number_integer()) {
        return false;
    }
    const auto number = result.get<int64_t>();
    return call.kind == Call::Kind::kImported && kind == calls::Result::kI32 ? is_failure_of_service(call.name, number)
                                                                             : is_failure(kind, number);
}

}  // namespace adptrace
