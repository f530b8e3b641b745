// Results and texts, compared.
#include "tests/differential/effects.h"

#include <adp/adp.h>

#include <cstdlib>
#include <cstring>

#include "tests/differential/reference/tables.h"

namespace differential {

std::string result_text(const exported::Call &call, int64_t result) {
    return call.result == calls::Result::kStruct && result != 0 ? "an address" : std::to_string(result);
}

bool is_same_result(const exported::Call &call, int64_t library, int64_t model) {
    if (call.result != calls::Result::kStruct) {
        return library == model;
    }
    if (library == 0 || model == 0) {
        return library == model;
    }
    if (std::string_view(call.layout->name) == "FpListNode") {
        const auto entity = [](int64_t node) {
            return &static_cast<const FpListNode *>(calls::address_of(node))->entity;
        };
        return std::memcmp(entity(library), entity(model), sizeof(FpEntity)) == 0;
    }
    return std::memcmp(calls::address_of(library), calls::address_of(model), call.layout->size) == 0;
}

bool is_same_text(std::string_view library, std::string_view model) {
    size_t at = 0;
    for (const char expected : model) {
        if (expected != reference::kAnyNumber[0]) {
            if (at >= library.size() || library[at++] != expected) {
                return false;
            }
            continue;
        }
        const size_t start = at;
        while (at < library.size() && library[at] >= '0' && library[at] <= '9') {
            ++at;
        }
        if (at == start) {
            return false;
        }
    }
    return at == library.size();
}

Capture::Capture(std::FILE **stream) : stream_(stream), was_(*stream) {
    *stream = open_memstream(&text_, &size_);
}

Capture::~Capture() {
    std::fclose(*stream_);
    *stream_ = was_;
    std::free(text_);
}

std::string Capture::take() {
    std::fflush(*stream_);
    if (size_ == 0) {
        return "";
    }
    std::string text(text_, size_);
    std::rewind(*stream_);
    return text;
}

}  // namespace differential
