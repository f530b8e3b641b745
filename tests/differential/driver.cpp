// Answers that depend on the seed, the number of the call and its name alone.
#include "tests/differential/driver.h"

#include <pthread.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "calls/describe.h"
#include "calls/stub.h"
#include "platform/device_services.h"
#include "tests/differential/values.h"
#include "tests/support/trace_text.h"

namespace differential {

using calls::Call;
using calls::CallId;
using calls::Param;

Driver &driver() {
    static Driver instance;
    return instance;
}

void Driver::start(uint64_t seed) {
    constexpr uint32_t kChoices = 32;
    constexpr uint32_t kEarlyCall = 4;
    constexpr uint32_t kLateCall = 60;
    Random random(seed);
    seed_ = seed;
    count_ = 0;
    notes_.clear();
    lines_.clear();
    const uint32_t choice = random.below(kChoices);
    answers_ = choice < 5    ? Answers::kFailOnce
               : choice == 5 ? Answers::kFailOften
               : choice == 6 ? Answers::kFailAlways
               : choice == 7 ? Answers::kWriteNothing
                             : Answers::kSucceed;
    failing_ = random.below(choice < 4 ? kEarlyCall : kLateCall);
}

void Driver::add(const void *data, size_t size) {
    const auto *bytes = static_cast<const uint8_t *>(data);
    notes_.insert(notes_.end(), bytes, bytes + size);
}

void Driver::note(std::string_view line) {
    add(line.data(), line.size());
    if (describes_) {
        lines_.emplace_back(line);
    }
}

void Driver::note_arguments(CallId id, const void *const *arguments) {
    const Call &call = calls::call(id);
    add(&id, sizeof id);
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        const void *at = calls::target(param, arguments[index]);
        const uint8_t is_null = at == nullptr ? 1 : 0;
        add(&is_null, sizeof is_null);
        if (at == nullptr || !param.is_read()) {
            continue;
        }
        if (param.is_text()) {
            add(at, std::strlen(static_cast<const char *>(at)));
        } else if (param.shape == calls::Shape::kMessage) {
            const auto *message = static_cast<const uintptr_t *>(at);
            add(message, (DEVICE_MESSAGE_WORDS - 1) * sizeof *message);
            add(reinterpret_cast<const void *>(message[DEVICE_MESSAGE_WORDS - 1]),
                calls::kEventRecordNumbers * sizeof(uint16_t));
        } else {
            add(at, calls::extent(call.params, index, arguments) * param.element.size);
        }
    }
}

int32_t Driver::failure(Random &random) {
    constexpr uint32_t kOften = 3;
    const uint32_t number = count_++;
    const bool fails = answers_ == Answers::kFailAlways || (answers_ == Answers::kFailOnce && number == failing_) ||
                       (answers_ == Answers::kFailOften && random.one_in(kOften));
    constexpr int32_t kResults[] = {-1, -1, -1, -2, -7, 1, 5, 102, INT32_MIN, INT32_MAX};
    return fails ? random.one_of(kResults) : 0;
}

int64_t Driver::result_of(CallId id, Random &random, const void *const *arguments) {
    const int32_t failing = failure(random);
    switch (id) {
        case CallId::sys_trace_get:
            return random.one_in(16) ? 1 : 0;
        case CallId::equeue_send_ucast:
            return failing == 0 ? 1 : -(failing % 2);
        case CallId::onu_mac2str: {
            static char text[sizeof "aa:bb:cc:dd:ee:ff"];
            const auto *mac = *static_cast<const uint8_t *const *>(arguments[0]);
            std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                          mac[5]);
            return failing == 0 ? static_cast<int64_t>(reinterpret_cast<intptr_t>(text)) : 0;
        }
        case CallId::link_event_handle_cb:
            return static_cast<int32_t>(random.below(3)) - 1;
        default:
            return failing;
    }
}

void Driver::write_outputs(CallId id, Random &random, const void *const *arguments) {
    const Call &call = calls::call(id);
    for (size_t index = 0; index < call.params.size(); ++index) {
        const Param &param = call.params[index];
        if (!param.is_written() || answers_ == Answers::kWriteNothing) {
            continue;
        }
        if (void *to = *static_cast<void *const *>(arguments[index])) {
            fill_output(random, id, param, to, calls::extent(call.params, index, arguments));
        }
    }
}

int64_t Driver::answer(CallId id, const void *const *arguments) {
    Random random(seed_ + (uint64_t{count_} << 16) + static_cast<uint64_t>(id));
    note_arguments(id, arguments);
    std::string line = describes_ ? trace_text::describe_call(id, arguments) : "";
    const int64_t result = result_of(id, random, arguments);
    // A call that fails leaves its outputs alone.
    if (result == 0) {
        write_outputs(id, random, arguments);
    }
    if (describes_) {
        lines_.push_back(std::move(line) + " -> " + trace_text::describe_result(id, arguments, result));
    }
    return result;
}

int32_t Driver::answer_log(int32_t level, int32_t module, const char *word, const char *format, const char *text) {
    ++count_;
    add(&level, sizeof level);
    add(&module, sizeof module);
    for (const char *each : {word, format, text}) {
        add(each, std::strlen(each) + 1);
    }
    if (describes_) {
        lines_.push_back(calls::describe_log(level, module, word, format, text));
    }
    return 0;
}

int32_t Driver::answer_event(const std::string &text) {
    constexpr int32_t kResults[] = {0, 0, 5, -1};
    Random random(seed_ + (uint64_t{count_++} << 16));
    note(text);
    return random.one_of(kResults);
}

}  // namespace differential

int64_t calls::forward_call(CallId id, const void *const *arguments) {
    return differential::driver().answer(id, arguments);
}

extern "C" {

uintptr_t erps_event_queue = 77;

__attribute__((format(printf, 4, 5))) int32_t Log_logging_func(int32_t level, int32_t module, const char *word,
                                                               const char *format, ...) {
    constexpr size_t kTextSize = 1024;
    char text[kTextSize] = "";
    va_list values;
    va_start(values, format);
    std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    return differential::driver().answer_log(level, module, word, format, text);
}

}  // extern "C"
