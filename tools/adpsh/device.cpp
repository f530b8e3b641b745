// Sends commands to the device's control socket.
#include "tools/adpsh/device.h"

#include "tools/adpsh/line_error.h"
#include "tools/vdevctl/client.h"
#include "vdevice/sockets/run_dir.h"

#include <exception>

namespace adpsh {

namespace {

using nlohmann::json;
using Words = std::vector<std::string>;

json ask(const Words &words, const char *form) {
    return vdevice::ask_device(
        vdevice::default_run_dir(),
        {{"command", words.front()}, {"arguments", Words(words.begin() + 1, words.end())}, {"form", form}});
}

/** A member of each row of a list in the answer; nothing if there is no device, or one of another version. */
Words column(const char *command, const char *list, const char *member) {
    Words values;
    try {
        const json answer = ask({command}, "json");
        for (const json &row : answer.at(list)) {
            const json &value = row.at(member);
            values.push_back(value.is_string() ? value.get<std::string>() : value.dump());
        }
    } catch (const std::exception &) {
        values.clear();
    }
    return values;
}

}  // namespace

Answer ask_device(const Words &words, bool is_json) {
    try {
        const json answer = ask(words, is_json ? "json" : "text");
        Answer result;
        if (is_json) {
            result.object = {{"device", words.front()}, {"value", Json::parse(answer.dump())}};
            return result;
        }
        result.text = answer.at("text").get<std::string>();
        while (!result.text.empty() && result.text.back() == '\n') {
            result.text.pop_back();
        }
        return result;
    } catch (const std::exception &error) {
        throw LineError(error.what());
    }
}

Words device_subjects() {
    return column("help", "subjects", "name");
}

Words device_vlans() {
    return column("vlans", "vlans", "vid");
}

}  // namespace adpsh
