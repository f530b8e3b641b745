/**
 * @file device.h
 * The running virtual device, as vdevctl asks it.
 */
#pragma once

#include "tools/adpsh/report.h"

#include <string>
#include <vector>

namespace adpsh {

/** The device's answer to a command and its arguments; only one of its forms. Throws a LineError without one. */
Answer ask_device(const std::vector<std::string> &words, bool is_json);

/** What the device can be asked; nothing if it is not running. */
std::vector<std::string> device_subjects();

/** The ids of the device's VLANs; nothing if it is not running. */
std::vector<std::string> device_vlans();

}  // namespace adpsh
