// Saved states that users compare: a state or a sentence, and differences are lines that a terminal can show.
//
// Input: the length of the first file, and the bytes of both.
#include "tools/vdevctl/state_file.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "tests/fuzz/fuzz.h"
#include "text/differences.h"

namespace {

using fuzz::expect;
using nlohmann::json;

std::optional<json> state_of(const fuzz::Bytes &content) {
    try {
        return vdevctl::state_in({reinterpret_cast<const char *>(content.data()), content.size()}, "the input");
    } catch (const std::runtime_error &error) {
        expect(std::string_view{error.what()}.ends_with('.'), "a refusal is a sentence");
        return std::nullopt;
    }
}

bool is_one_line(const std::string &line) {
    return std::none_of(line.begin(), line.end(), [](unsigned char octet) { return octet < ' ' || octet == 0x7F; });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const uint16_t length = input.u16();
    const std::optional<json> first = state_of(input.bytes(length));
    const std::optional<json> second = state_of(input.rest());
    if (!first || !second) {
        return 0;
    }
    const std::vector<std::string> lines = text::differences(*first, *second);
    expect(lines.empty() == (*first == *second), "there are differences unless they are equal");
    expect(std::all_of(lines.begin(), lines.end(), is_one_line), "a difference is a line");
    expect(text::differences(*second, *first).size() == lines.size(), "there are as many the other way round");
    expect(text::differences(*first, *first).empty(), "a state does not differ from itself");
    return 0;
}
