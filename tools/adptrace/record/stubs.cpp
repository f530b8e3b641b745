// The calls that the library stands in front of: each is recorded, and made where it is defined.
#include "calls/stub.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "calls/call_table.h"
#include "calls/exported.h"
#include "calls/invoke.h"
#include "tools/adptrace/record/loaded.h"
#include "tools/adptrace/record/recorder.h"
#include "tools/adptrace/record/stubs.h"

namespace adptrace::record {
namespace {

constexpr size_t kMostExported = 512;
constexpr int kNoSuchSymbol = 127; /**< the loader's own status */

}  // namespace

void *function_behind(Symbol &symbol, const char *name) {
    void *function = symbol.function(name);
    if (function == nullptr) {
        std::fprintf(stderr, "adptrace: symbol lookup error: undefined symbol: %s\n", name);
        _exit(kNoSuchSymbol);
    }
    return function;
}

}  // namespace adptrace::record

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    static std::array<adptrace::record::Symbol, kCallCount> symbols;
    const Call &call = calls::call(id);
    const adptrace::record::RecordedCall recorded = {call.name, call.result, nullptr, call.params, false};
    adptrace::record::Span span;
    const bool is_recorded = begin(span, recorded, arguments);
    void *function = adptrace::record::function_behind(symbols[static_cast<size_t>(id)], call.name);
    const int64_t result = call_function(function, id, arguments);
    if (is_recorded) {
        end(span, recorded, result);
    }
    return result;
}

int64_t exported::forward_call(size_t index, const void *const *arguments) {
    static std::array<adptrace::record::Symbol, adptrace::record::kMostExported> symbols;
    const Call &call = calls()[index];
    const adptrace::record::RecordedCall recorded = {call.name, call.result, call.layout, call.params, true};
    adptrace::record::Span span;
    const bool is_recorded = begin(span, recorded, arguments);
    void *function = adptrace::record::function_behind(symbols[index], call.name);
    const int64_t result = call.invoker(function, arguments);
    if (is_recorded) {
        end(span, recorded, result);
    }
    return result;
}
