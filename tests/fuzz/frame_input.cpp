// Frames that users give, as digits and in capture files: a frame or a sentence, and a frame is the same when its
// digits are read again.
//
// Input: the number of the frame, and the bytes.
#include "tools/vdevctl/frame_input.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/fuzz/fuzz.h"

namespace {

using fuzz::Bytes;
using fuzz::expect;

constexpr size_t kMaxFrame = 65535;

/** The digits of the frame, with every way to separate octets. */
Bytes digits_of(const Bytes &frame) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::string_view kBetween = ": \n";
    Bytes digits;
    for (const uint8_t octet : frame) {
        if (!digits.empty()) {
            digits.push_back(static_cast<uint8_t>(kBetween[octet % kBetween.size()]));
        }
        digits.push_back(static_cast<uint8_t>(kDigits[octet / kDigits.size()]));
        digits.push_back(static_cast<uint8_t>(kDigits[octet % kDigits.size()]));
    }
    return digits;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Input input(data, size);
    const uint64_t number = input.u16() + uint64_t{1};
    const Bytes content = input.rest();
    Bytes frame;
    try {
        frame = vdevctl::frame_in(content, number, "the input");
    } catch (const std::runtime_error &error) {
        expect(std::string_view{error.what()}.ends_with('.'), "a refusal is a sentence");
        return 0;
    }
    expect(!frame.empty() && frame.size() <= kMaxFrame, "a frame has from 1 to 65535 octets");
    expect(vdevctl::frame_in(digits_of(frame), 1, "the digits") == frame, "the same frame again");
    return 0;
}
