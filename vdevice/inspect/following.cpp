// Lines about frames: the filter is asked as the frame passes, the text is made when its reader takes it.
#include "vdevice/inspect/following.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "vdevice/inspect/account_json.h"
#include "vdevice/inspect/account_text.h"
#include "vdevice/inspect/arguments.h"
#include "vdevice/inspect/text.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

constexpr Filter kSteps{"steps", "", "all steps of each frame", FilterKind::kOwn, {}};
constexpr Filter kFollowOptions[] = {kFramePort,    kFrameVlan,   kFrameMac, kFrameType,
                                     kFrameDropped, kFrameReason, kSteps};

/** How accounts become lines. */
struct Form {
    explicit Form(const json &request)
        : as_text{request.value("form", json("json")) == "text"},
          with_steps{request.value(kSteps.name, false)},
          with_texts{request.value(kTexts, false)} {}

    bool as_text;
    bool with_steps; /**< matters to text alone: JSON always has them */
    bool with_texts; /**< likewise to JSON */
};

/** Says why a request could not be opened. */
json refuse_follow(Device &device, const json &request) {
    [[maybe_unused]] const FrameFilter filter{device, request};
    [[maybe_unused]] const Form form{request};
    throw Refusal{fmt::format("{} clients follow frames already.", Following::kMostFollowers)};
}

}  // namespace

extern constexpr Subject kFollow{"follow",      "",           "what becomes of each frame that passes, line by line",
                                 refuse_follow, show_nothing, kFollowOptions};

namespace {

std::string line_of(const chip::Account &account, const Device &device, const Form &form) {
    json object = to_json(account, device.board());
    if (!form.as_text) {
        if (form.with_texts) {
            add_texts(object);
        }
        return object.dump();
    }
    // With the time and port a client finds the frame in a capture.
    return json{{"text", form.with_steps ? account_text(object) : account_line(object)},
                {"time", object["time"]},
                {"port", object["port"]}}
        .dump();
}

std::string line_of(const Missed &missed, bool as_text) {
    json object = {{"missed", missed.count}};
    if (as_text) {
        object["text"] = fmt::format("{} frames missed\n", missed.count);
    }
    return object.dump();
}

}  // namespace

Lines Following::open(const json &request, const std::function<void()> &wake) {
    FrameFilter filter{device_, request};  // a request that is refused leaves no watcher behind
    const Form form{request};
    tick();  // those who have left make room
    if (audience_.size() >= kMostFollowers) {
        return nullptr;
    }
    if (audience_.empty()) {
        device_.add_watcher(*this);
    }
    const auto queue = audience_.add({std::move(filter), {kMostWaiting, wake}});
    return [this, form, has_begun = false, follower = queue]() mutable -> std::optional<std::string> {
        if (!std::exchange(has_begun, true)) {
            return json{{"following", true}}.dump();
        }
        const auto taken = follower->queue.take();
        if (!taken) {
            return std::nullopt;
        }
        const auto *account = std::get_if<AccountPtr>(&*taken);
        return account == nullptr ? line_of(std::get<Missed>(*taken), form.as_text) : line_of(**account, device_, form);
    };
}

void Following::tick() {
    if (!audience_.empty()) {
        audience_.forget_absent();
        if (audience_.empty()) {
            device_.remove_watcher(*this);
        }
    }
}

bool Following::is_listening() const {
    bool has_room = false;
    audience_.for_each([&](const Follower &follower) { has_room = has_room || follower.queue.has_room(); });
    return has_room;
}

bool Following::wants(const chip::Passage &frame, const std::vector<chip::Copy> &copies) {
    takers_.clear();
    audience_.for_each([&](Follower &follower) {
        if (follower.filter.fits(frame, copies)) {
            takers_.push_back(&follower);
        }
    });
    return !takers_.empty();
}

void Following::unheard(const chip::Passage &frame) {
    audience_.for_each([&](Follower &follower) {
        if (follower.filter.fits(frame, {})) {
            follower.queue.miss();
        }
    });
}

void Following::tell(chip::Account account) {
    const auto shared = std::make_shared<const chip::Account>(std::move(account));
    for (Follower *follower : takers_) {
        follower->queue.put(shared);
    }
}

}  // namespace vdevice::inspect
