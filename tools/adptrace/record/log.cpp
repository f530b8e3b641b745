// The logger, whose values have no types: they are handed on as they came, register by register and word by word.
#include <stdint.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "calls/call_table.h"
#include "platform/device_services.h"
#include "tools/adptrace/record/errno_guard.h"
#include "tools/adptrace/record/process.h"
#include "tools/adptrace/record/recorder.h"
#include "tools/adptrace/record/stubs.h"

namespace adptrace::record {
namespace {

constexpr size_t kLogTextSize = 4096;
using Logger = decltype(&Log_logging_func);

/** Whether numbers with a fraction come in registers of their own; on MIPS they are words as everything else. */
#ifdef __mips__
constexpr bool kHasFractions = false;
#else
constexpr bool kHasFractions = true;
#endif

/** What stands where the values may be. More of it is read than there are values, which does no harm on a stack. */
struct Values {
    static constexpr size_t kWords = 24;
    static constexpr size_t kFractions = 8;

    explicit Values(va_list values) {
        if constexpr (kHasFractions) {
            for (double &each : fractions) {
                each = va_arg(values, double);
            }
        }
        for (uintptr_t &each : words) {
            each = va_arg(values, uintptr_t);
        }
    }

    std::array<double, kFractions> fractions{};
    std::array<uintptr_t, kWords> words{};
};

template <size_t... Word>
int32_t make_call(Logger function, int32_t level, int32_t module, const char *word, const char *format,
                  const Values &values, std::index_sequence<Word...>) {
    if constexpr (kHasFractions) {
        const auto &[a, b, c, d, e, f, g, h] = values.fractions;
        return function(level, module, word, format, a, b, c, d, e, f, g, h, values.words[Word]...);
    } else {
        return function(level, module, word, format, values.words[Word]...);
    }
}

int32_t log(int32_t level, int32_t module, const char *word, const char *format, const char *text,
            const Values &values) {
    static Symbol symbol;
    const calls::Call &call = calls::call(calls::CallId::Log_logging_func);
    const RecordedCall recorded = {call.name, call.result, nullptr, calls::log_params(), false};
    const void *const arguments[] = {&level, &module, &word, &format, &text};
    Span span;
    const bool is_recorded = begin(span, recorded, arguments);
    const auto function = reinterpret_cast<Logger>(function_behind(symbol, call.name));
    const int32_t result =
        make_call(function, level, module, word, format, values, std::make_index_sequence<Values::kWords>());
    if (is_recorded) {
        end(span, recorded, result);
    }
    return result;
}

}  // namespace
}  // namespace adptrace::record

extern "C" __attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module,
                                                                          const char *word, const char *format, ...) {
    char text[adptrace::record::kLogTextSize] = "";
    va_list list;
    if (adptrace::record::is_recording(adptrace::record::process())) {
        const adptrace::record::ErrnoGuard guard;
        va_start(list, format);
        std::vsnprintf(text, sizeof text, format, list);
        va_end(list);
    }
    va_start(list, format);
    const adptrace::record::Values values(list);
    va_end(list);
    return adptrace::record::log(level, module, word, format, text, values);
}
