// The keeper's own side: a process that outlives the daemon.
#pragma once

#include <string>

namespace switchd {

/** Forks the process and waits until it serves the path; false if it cannot. */
bool start_keeper(const std::string &path);

}  // namespace switchd
