// Requests of the driver socket that are no driver calls: link changes and messages of the event queue.
#pragma once

#include "vdevice/device/device.h"
#include "vdevice/remote/server.h"

namespace vdevice {

/** Lets the server's clients watch links and read the event queue. Server and device must outlive the event loop. */
void serve_extra(remote::Server &server, Device &device);

}  // namespace vdevice
