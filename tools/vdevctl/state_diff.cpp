// Reads files and prints what differs.
#include "tools/vdevctl/state_diff.h"

#include <cerrno>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "text/differences.h"
#include "tools/vdevctl/client.h"
#include "tools/vdevctl/output.h"
#include "tools/vdevctl/state_file.h"

namespace vdevctl {
namespace {

using nlohmann::json;

constexpr const char *kRunning = "running"; /**< its members change by themselves */

std::string content_of(const std::string &file) {
    constexpr size_t kMaxFile = size_t{64} << 20;  // a full device's has a fourth of it
    constexpr size_t kPiece = 65536;
    std::ifstream stream(file, std::ios::binary);
    std::string content;
    while (stream && content.size() <= kMaxFile) {
        const size_t before = content.size();
        content.resize(before + kPiece);
        stream.read(content.data() + before, kPiece);
        content.resize(before + static_cast<size_t>(stream.gcount()));
    }
    if (!stream.eof() && !stream) {
        throw std::runtime_error{"cannot read " + file + ": " + std::generic_category().message(errno) + "."};
    }
    if (content.size() > kMaxFile) {
        throw std::runtime_error{file + " has more than " + std::to_string(kMaxFile >> 20) +
                                 " MiB, and no state is so large."};
    }
    return content;
}

json state_file(const std::string &file) {
    return state_in(content_of(file), file);
}

void check_forms(const json &first, const json &second) {
    if (first[kState] != second[kState]) {
        throw std::runtime_error{"the states have different forms, " + first[kState].dump() + " and " +
                                 second[kState].dump() + ", since other versions of the device printed them."};
    }
}

}  // namespace

int compare_states(const Options &options) {
    if (options.words.empty() || options.words.front() != kState || options.words.size() > 2) {
        throw std::runtime_error{"states are compared with 'vdevctl state --diff FILE [FILE]'."};
    }
    json first = state_file(*options.diff);
    json second = options.words.size() == 2 ? state_file(options.words[1])
                                            : vdevice::ask_device(options.run_dir, {{"command", kState}});
    check_forms(first, second);
    first.erase(kRunning);
    second.erase(kRunning);
    std::string text;
    for (const std::string &line : text::differences(first, second)) {
        text += line + "\n";
    }
    print(text);
    return text.empty() ? kEqual : kDifferent;
}

}  // namespace vdevctl
