/**
 * @file log.h
 * Log lines, and words in the blocks of bytes of rule records.
 */
#pragma once

#include <stdint.h>
#include <cstdio>
#include <cstring>

#include "platform/device_services.h"
#include "tests/differential/reference/tables.h"

namespace reference {

// The format is a parameter so that every log point stands in one line.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
template <typename... Values>
void log(int level, int module, const char *word, const char *name, int line, const char *format, Values... values) {
    if (sys_trace_get() != 0) {
        char prefix[256] = "";
        char message[256] = "";
        snprintf(prefix, sizeof prefix, "%s():%d", name, line);
        snprintf(message, sizeof message, format, values...);
        sys_trace_add_log(prefix, message);
    }
    Log_logging_func(level, module, word, format, values...);
}

template <typename... Values>
void log(const char *format, const char *name, int line, Values... values) {
    log(7, 18, "ACL", name, line, format, name, line, static_cast<int>(values)...);
}
#pragma GCC diagnostic pop

inline uint32_t word_of(const uint8_t *bytes) {
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void put_word(uint8_t *bytes, uint32_t word) {
    std::memcpy(bytes, &word, sizeof word);
}

}  // namespace reference
