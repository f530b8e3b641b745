// The device's answers as tables for people.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vdevice {

/** The text for a command's answer; empty where doing it was all there was to say. */
std::string show(const std::string &command, const nlohmann::json &answer);

}  // namespace vdevice
