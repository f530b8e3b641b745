// Finds the stream by the command's name.
#include "vdevice/inspect/streams.h"

#include <nlohmann/json.hpp>

#include "vdevice/inspect/arguments.h"

namespace vdevice::inspect {

using nlohmann::json;

extern const Subject kWatch, kFollow, kCapture;

Lines Streams::open(const json &request, const std::function<void()> &wake) {
    const auto name = request.find("command");
    const auto is_for = [&](const Subject &subject) { return name != request.end() && *name == subject.name; };
    try {
        if (is_for(kWatch)) {
            return watching_.open(with_named_arguments(request, kWatch), wake);
        }
        if (is_for(kFollow)) {
            return following_.open(with_named_arguments(request, kFollow), wake);
        }
        if (is_for(kCapture)) {
            return capturing_.open(with_named_arguments(request, kCapture), wake);
        }
    } catch (const Refusal &) {
        return nullptr;
    } catch (const json::exception &) {
        return nullptr;
    }
    return nullptr;
}

void Streams::tick() {
    watching_.tick();
    following_.tick();
    capturing_.tick();
}

}  // namespace vdevice::inspect
