// Reads the options, and looks at frames as they pass.
#include "vdevice/inspect/frame_filter.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "text/suggest.h"
#include "vdevice/chip/account/names.h"
#include "vdevice/driver/mac_text.h"
#include "vdevice/inspect/port_names.h"
#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

std::vector<std::string_view> reasons() {
    std::vector<std::string_view> words;
    for (size_t drop = 0; drop < chip::kDropReasons; ++drop) {
        words.emplace_back(chip::name(static_cast<chip::Drop>(drop)));
    }
    for (const chip::Wording &lost : chip::Wordings<chip::Lost>::kRows) {
        words.emplace_back(lost.word);
    }
    return words;
}

chip::Mac mac_of(const json &value) {
    const auto mac = value.is_string() ? driver::parse_mac(value.get<std::string>()) : std::nullopt;
    if (!mac) {
        throw Refusal{"The option --mac takes an address, as 02:00:00:00:00:01."};
    }
    return *mac;
}

uint16_t type_of(const json &value) {
    constexpr int64_t kMost = std::numeric_limits<uint16_t>::max();
    if (!value.is_number_integer() || value < 0 || value.get<int64_t>() > kMost) {
        throw Refusal{"The option --type takes a number from 0 to 0xffff, as 0x0806."};
    }
    return value.get<uint16_t>();
}

std::string reason_of(const json &value) {
    const std::vector<std::string_view> words = reasons();
    std::string word = value.is_string() ? value.get<std::string>() : value.dump();
    if (std::find(words.begin(), words.end(), word) == words.end()) {
        const std::string question = text::did_you_mean(word, words, ", ");
        throw Refusal{"There is no reason '" + word + "'" +
                      (question.empty() ? ". The command 'counters' lists the reasons of drops." : question)};
    }
    return word;
}

template <typename Value, typename Read>
std::optional<Value> option(const json &request, const Filter &filter, Read read) {
    const auto value = request.find(filter.name);
    return value == request.end() ? std::nullopt : std::optional<Value>{read(*value)};
}

}  // namespace

FrameFilter::FrameFilter(const Device &device, const json &request)
    : tables_{&device.chip().tables()},
      mac_{option<chip::Mac>(request, kFrameMac, mac_of)},
      type_{option<uint16_t>(request, kFrameType, type_of)},
      dropped_{request.value(kFrameDropped.name, false)},
      reason_{option<std::string>(request, kFrameReason, reason_of).value_or("")} {
    if (request.contains(kFramePort.name)) {
        ports_.emplace();
        for (const int port : wired_ports(device)) {
            ports_->put(port, asks_for(request, kFramePort, user_number(device, port)));
        }
    }
    if (request.contains(kFrameVlan.name)) {
        for (int vid = 0; vid <= chip::kMaxVid; ++vid) {
            vids_.push_back(asks_for(request, kFrameVlan, vid));
        }
    }
}

bool FrameFilter::fits(const chip::Passage &frame, const std::vector<chip::Copy> &copies) const {
    const chip::Header &header = frame.header;
    return (!mac_ || header.source == *mac_ || header.destination == *mac_) &&
           (!type_ || (header.payload.size() >= chip::kTypeBytes && chip::read16(header.payload, 0) == *type_)) &&
           (vids_.empty() || (frame.vid() < vids_.size() && vids_[frame.vid()])) && fits_port(frame) &&
           fits_reason(frame, copies);
}

bool FrameFilter::fits_port(const chip::Passage &frame) const {
    return !ports_ || ports_->has(frame.ingress) || !(*ports_ & frame.chosen).empty();
}

bool FrameFilter::fits_reason(const chip::Passage &frame, const std::vector<chip::Copy> &copies) const {
    if (!dropped_ && reason_.empty()) {
        return true;
    }
    const auto fits_word = [&](const char *word) { return reason_.empty() || reason_ == word; };
    const std::vector<chip::Drop> directed = directed_drops(*tables_, frame);
    return (frame.drop && fits_word(chip::name(*frame.drop))) ||
           std::any_of(directed.begin(), directed.end(),
                       [&](chip::Drop drop) { return fits_word(chip::name(drop)); }) ||
           std::any_of(copies.begin(), copies.end(), [&](const chip::Copy &copy) {
               return copy.fate == chip::Fate::kLost && fits_word(chip::wording(copy.lost).word);
           });
}

}  // namespace vdevice::inspect
