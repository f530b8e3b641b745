// Traces of the field processor's tests: numbers, blocks of bytes and sets of ports as text.
#pragma once

#include <adp/fp.h>

#include <stdint.h>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace fp_test {

using Trace = std::vector<std::string>;

/** The text that printf makes of the format; every text of the field processor fits. */
inline std::string text_of(const char *format, ...) {
    char text[512];
    va_list values;
    va_start(values, format);
    // The formats come from tables, so the compiler does not see literals.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::vsnprintf(text, sizeof text, format, values);
#pragma GCC diagnostic pop
    va_end(values);
    return text;
}

/** Bytes as the trace shows a block of more than 16. */
inline std::string block_text(const uint8_t *bytes, size_t size) {
    size_t shown = size;
    while (shown > 1 && bytes[shown - 1] == 0) {
        --shown;
    }
    std::string text;
    for (size_t i = 0; i < shown; ++i) {
        text += text_of(i == 0 ? "%02x" : ":%02x", unsigned{bytes[i]});
    }
    return text + (shown < size ? ".." : "");
}

inline uint32_t word_of(const uint8_t *bytes) {
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void set_word(uint8_t *bytes, uint32_t word) {
    std::memcpy(bytes, &word, sizeof word);
}

/** An action's parameter as the trace shows it: words, so that the text is the same on every machine. */
inline std::string param_text(const uint8_t *param) {
    constexpr size_t kWords = ADP_FP_ACTION_BYTES / sizeof(uint32_t);
    size_t shown = kWords;
    while (shown > 1 && word_of(param + 4 * (shown - 1)) == 0) {
        --shown;
    }
    std::string text;
    for (size_t i = 0; i < shown; ++i) {
        text += (i == 0 ? "" : ", ") + std::to_string(word_of(param + 4 * i));
    }
    return "[" + text + (shown < kWords ? ", ..]" : "]");
}

/** A port set as the trace shows it. */
inline std::string ports_text(const std::vector<uint32_t> &words) {
    std::string text;
    for (uint32_t n = 0; n < words.size() * 32; ++n) {
        if ((words[n / 32] >> n % 32 & 1) != 0) {
            text += (text.empty() ? "" : ",") + std::to_string(n);
        }
    }
    return "{" + text + "}";
}

}  // namespace fp_test
