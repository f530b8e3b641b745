// For tests: what libadp calls, carried out on a chip in the same process.
#pragma once

#include <functional>

#include "vdevice/driver/driver.h"

namespace switchd::test {

/** The driver that libadp talks to from now on; null for none. */
void use_driver(vdevice::driver::Driver *driver);
/** Is called after each of libadp's calls. */
void watch_calls(std::function<void()> watcher);

}  // namespace switchd::test
