// Results and texts, compared.
#include "tests/differential/effects.h"

#include <adp/adp.h>

#include <cstdlib>
#include <cstring>

#include "tests/differential/reference/tables.h"

namespace differential {

std::string result_text(const adpsh::Result &result) {
    return result.address != nullptr ? "an address" : std::to_string(result.number);
}

bool is_same_result(const adpsh::Call &call, const adpsh::Result &library, const adpsh::Result &model) {
    if (call.result != adpsh::ResultKind::kRecord) {
        return library.number == model.number;
    }
    if (library.address == nullptr || model.address == nullptr) {
        return library.address == model.address;
    }
    if (std::string_view(call.record->name) == "FpListNode") {
        const auto entity = [](const void *node) { return &static_cast<const FpListNode *>(node)->entity; };
        return std::memcmp(entity(library.address), entity(model.address), sizeof(FpEntity)) == 0;
    }
    return std::memcmp(library.address, model.address, call.record->size) == 0;
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
