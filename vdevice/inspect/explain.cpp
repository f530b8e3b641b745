// What would become of a frame, asked of a copy of the chip.
#include "vdevice/chip/account/explain.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "vdevice/inspect/account_json.h"
#include "vdevice/inspect/account_text.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

constexpr size_t kMaxFrame = 16384;  // the chip says itself what is too long for a port

constexpr Filter kExplainOptions[] = {
    {"port", "PORT", "the port that the frame comes in by", FilterKind::kOwn, {}},
    {"cpu", "", "the frame comes from the CPU, with its switch tag", FilterKind::kOwn, {}},
};

/** The chip port. */
int ingress_port(const Device &device, const json &request) {
    const bool is_from_cpu = request.value("cpu", false);
    const auto port = request.find("port");
    if (is_from_cpu != (port == request.end())) {
        throw Refusal{"Say where the frame comes in: --port PORT or --cpu."};
    }
    if (is_from_cpu || *port == "cpu" || *port == 0) {
        return chip::Switch::kCpuPort;
    }
    const auto chip_port = port->is_number_integer() ? device.board().chip_port(port->get<int64_t>()) : std::nullopt;
    if (!chip_port) {
        throw Refusal{fmt::format("The port must be a user port, 1 to {}, or cpu.", device.board().user_ports)};
    }
    return *chip_port;
}

int digit_of(char letter) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const size_t place = kDigits.find(static_cast<char>(letter | ('a' ^ 'A')));
    const size_t digit = letter >= '0' && letter <= '9' ? static_cast<size_t>(letter - '0') : place;
    if (digit >= kDigits.size()) {
        throw Refusal{"The frame must be text of hexadecimal digits."};
    }
    return static_cast<int>(digit);
}

std::vector<uint8_t> requested_frame(const json &request) {
    const auto frame = request.find("frame");
    if (frame == request.end() || !frame->is_string()) {
        throw Refusal{"The frame must be text of hexadecimal digits."};
    }
    const auto &text = frame->get_ref<const std::string &>();
    if (text.empty() || text.size() % 2 != 0 || text.size() / 2 > kMaxFrame) {
        throw Refusal{fmt::format("The frame must have 1 to {} octets, each of two hexadecimal digits.", kMaxFrame)};
    }
    std::vector<uint8_t> octets;
    for (size_t at = 0; at < text.size(); at += 2) {
        octets.push_back(static_cast<uint8_t>(digit_of(text[at]) << 4 | digit_of(text[at + 1])));
    }
    return octets;
}

json explain(Device &device, const json &request) {
    const int port = ingress_port(device, request);
    const std::vector<uint8_t> frame = requested_frame(request);
    const bool with_texts = request.value(kTexts, false);
    json frames = json::array();
    for (const chip::Account &account : chip::Explainer{}.explain(device.chip().tables(), device.now(), port, frame)) {
        frames.push_back(to_json(account, device.board()));
        if (with_texts) {
            add_texts(frames.back());
        }
    }
    return {{"frames", frames}};
}

std::string show_explanation(const json &answer) {
    std::string text;
    for (const json &frame : answer["frames"]) {
        text += account_text(frame);
    }
    return text;
}

}  // namespace

extern constexpr Subject kExplain{"explain", "[FRAME]",        "what would become of a frame, and why",
                                  explain,   show_explanation, kExplainOptions};

}  // namespace vdevice::inspect
