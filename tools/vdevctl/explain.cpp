// Reads frames for the device.
#include "tools/vdevctl/explain.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

#include "text/hex.h"
#include "tools/vdevctl/client.h"
#include "tools/vdevctl/frame_input.h"

namespace vdevctl {
namespace {

using nlohmann::json;

constexpr std::string_view kOption = "--";

/** Whether the word is an option whose value is the next word. */
bool has_value_behind(const json &options, const std::string &word) {
    return word.find('=') == std::string::npos && std::any_of(options.begin(), options.end(), [&](const json &option) {
               return word == std::string{kOption} + option.at("name").get<std::string>() &&
                      !option.at("value").get_ref<const std::string &>().empty();
           });
}

}  // namespace

std::string take_operand(const std::string &run_dir, json &request) {
    const json help = vdevice::ask_device(run_dir, {{"command", "help"}, {"subject", request.at("command")}});
    const json &options = help.at("subjects").at(0).at("options");
    std::vector<std::string> operands;
    json others = json::array();
    bool is_value = false;
    for (const std::string word : request.at("arguments")) {
        if (is_value || word.starts_with(kOption)) {
            others.push_back(word);
            is_value = !is_value && has_value_behind(options, word);
        } else {
            operands.push_back(word);
        }
    }
    if (operands.size() > 1) {
        throw std::runtime_error{"there is one argument too many: '" + operands.back() + "'."};
    }
    request["arguments"] = others;
    return operands.empty() ? "" : operands.front();
}

json with_frame(const std::string &run_dir, json request) {
    std::string word = take_operand(run_dir, request);
    if (word.empty() && isatty(STDIN_FILENO) != 0) {
        throw std::runtime_error{"a frame is missing: hexadecimal digits, FILE.pcap[:K], or - for standard input."};
    }
    request["frame"] = text::hex(read_frame(word.empty() ? "-" : word, stdin));
    return request;
}

}  // namespace vdevctl
