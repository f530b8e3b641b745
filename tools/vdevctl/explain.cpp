// Reads frames for the device.
#include "tools/vdevctl/explain.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "tools/vdevctl/client.h"
#include "tools/vdevctl/frame_input.h"

namespace vdevctl {
namespace {

using nlohmann::json;

constexpr std::string_view kOption = "--";

/** Whether the word is an option whose value is the next word. */
bool has_value_behind(const json &options, const std::string &word) {
    return word.find('=') == std::string::npos && std::any_of(options.begin(), options.end(), [&](const json &option) {
               return word == std::string{kOption} + option.at("name").get<std::string>() && option.at("value") != "";
           });
}

std::string hex_of(const Octets &octets) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    for (const uint8_t octet : octets) {
        text += kDigits[octet >> 4];
        text += kDigits[octet & 0xFU];
    }
    return text;
}

}  // namespace

std::string take_operand(const std::string &run_dir, json &request) {
    const json help = vdevice::ask_device(run_dir, {{"command", "help"}, {"subject", request.at("command")}});
    const json &options = help.at("subjects").at(0).at("options");
    json &words = request.at("arguments");
    for (size_t at = 0; at < words.size(); ++at) {
        const auto word = words[at].get<std::string>();
        if (!word.starts_with(kOption)) {
            words.erase(at);
            return word;
        }
        at += has_value_behind(options, word) ? 1U : 0U;
    }
    return "";
}

json with_frame(const std::string &run_dir, json request) {
    std::string word = take_operand(run_dir, request);
    if (word.empty() && isatty(STDIN_FILENO) != 0) {
        throw std::runtime_error{"a frame is missing: hexadecimal digits, FILE.pcap[:K], or - for standard input."};
    }
    request["frame"] = hex_of(read_frame(word.empty() ? "-" : word, stdin));
    return request;
}

}  // namespace vdevctl
