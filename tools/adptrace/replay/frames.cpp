// Frames that the library sends: compared if frames are recorded, and sent only if that is wanted.
#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>

#include "text/hex.h"
#include "tools/adptrace/replay/replay.h"

namespace adptrace::replay {

namespace {

constexpr char kNoFrame[] = "no frame";

std::string small_letters(std::string octets) {
    std::transform(octets.begin(), octets.end(), octets.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return octets;
}

}  // namespace

void Replay::sends(std::span<const uint8_t> octets) {
    Level &level = levels_.back();
    if (level.frames == nullptr) {
        return;
    }
    const std::string now = text::hex(octets);
    if (level.frame == level.frames->size()) {
        differ(*level.call, "the number of frames", kNoFrame, now);
        return;
    }
    const Frame &frame = recording().frames()[(*level.frames)[level.frame++]];
    if (const std::string recorded = small_letters(frame.octets); recorded != now) {
        differ(*level.call, "the frame of line " + std::to_string(frame.line), recorded, now);
    }
}

void Replay::report_missing_frames(const Level &level) {
    for (size_t place = level.frame; level.frames != nullptr && place < level.frames->size(); ++place) {
        const Frame &frame = recording().frames()[(*level.frames)[place]];
        differ(*level.call, "the frame of line " + std::to_string(frame.line), frame.octets, kNoFrame);
    }
}

std::optional<bool> Replay::frames_succeed() const {
    if (options().is_to_send_frames) {
        return std::nullopt;
    }
    return number_of(result_of(*levels_.back().call)) >= 0;
}

}  // namespace adptrace::replay
