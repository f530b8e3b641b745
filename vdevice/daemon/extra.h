// What the driver socket carries besides driver calls: link changes and the messages of the event queue.
#pragma once

#include "vdevice/device/device.h"
#include "vdevice/remote/server.h"

namespace vdevice {

/** Lets the server's clients watch the device's links and read its event queue. Both must outlive the event loop. */
void serve_extra(remote::Server &server, Device &device);

}  // namespace vdevice
