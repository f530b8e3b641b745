// Joins the tables of exported and imported calls.
#include "tools/adptrace/recording/known_calls.h"

#include <map>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace {
namespace {

std::map<std::string_view, KnownCall> known_calls() {
    std::map<std::string_view, KnownCall> known;
    for (const exported::Call &call : exported::calls()) {
        known[call.name] = {call.name, Call::Kind::kLibrary, call.result, call.layout, call.params};
    }
    for (const calls::Call &call : calls::calls()) {
        known[call.name] = {call.name, Call::Kind::kImported, call.result, nullptr, call.params};
    }
    return known;
}

}  // namespace

const KnownCall *known_call(std::string_view name) {
    static const std::map<std::string_view, KnownCall> known = known_calls();
    const auto found = known.find(name);
    return found == known.end() ? nullptr : &found->second;
}

}  // namespace adptrace
