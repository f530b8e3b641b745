// The client of a library that stands for the device: one each, which outlives everything that may call it.
#pragma once

#include "vdevice/remote/client.h"

namespace vdevice::remote {

/** This library's client; the library's name is vdevice_library_name(). */
Client &library_client();

}  // namespace vdevice::remote

/** Defined by each library: its name for messages. */
const char *vdevice_library_name();
