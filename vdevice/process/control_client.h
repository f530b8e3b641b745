// One request to a daemon's control socket, and its answer.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevice {

/** Whom a program asks, as its sentences to people call it. */
struct ControlPeer {
    std::string path;    /**< of the socket */
    std::string name;    /**< "the device" */
    std::string program; /**< "vdeviced" */
    std::string advice;  /**< what to do if none is running */
};

/** Sends the request and gives the answer; throws a std::runtime_error with a sentence if there is none. */
nlohmann::json ask(const ControlPeer &peer, const nlohmann::json &request);

}  // namespace vdevice
