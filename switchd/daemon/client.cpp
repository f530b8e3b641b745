// Asks for JSON, and makes the text itself.
#include "switchd/daemon/client.h"

#include <nlohmann/json.hpp>

#include "switchd/daemon/options.h"
#include "switchd/daemon/status_text.h"
#include "vdevice/process/control_client.h"
#include "vdevice/sockets/run_dir.h"

namespace switchd {
namespace {

using nlohmann::json;

vdevice::ControlPeer daemon_in(const std::string &run_dir) {
    return {
        vdevice::control_socket(run_dir), "the daemon", "adp-switchd",
        std::string{"Start it, with 'systemctl start adp-switchd' or 'adp-switchd --config FILE', or name its folder "
                    "with --run-dir or in "} +
            kRunDirVariable + "."};
}

}  // namespace

std::string ask(const std::string &run_dir, const std::vector<std::string> &words, bool as_json) {
    constexpr int kIndent = 2;
    constexpr bool kOnlyAscii = true;
    const std::string &command = words.front();
    json request = {{"command", command}, {"arguments", std::vector<std::string>(words.begin() + 1, words.end())}};
    if (command == "status") {
        check_subject(words);
        request["arguments"] = json::array();
    }
    json answer = vdevice::ask(daemon_in(run_dir), request);
    if (command == "status" && words.size() > 1) {
        answer = subject_of(answer, words[1]);
    }
    return as_json ? answer.dump(kIndent, ' ', kOnlyAscii) + "\n" : text_of_answer(answer);
}

}  // namespace switchd
