/**
 * @file library.h
 * What the libraries that stand for the device share: one client each, which outlives everything that may call it.
 */
#pragma once

#include "vdevice/remote/client.h"

namespace vdevice::remote {

/** This library's client; the library's name is vdevice_library_name(). */
Client &library_client();

}  // namespace vdevice::remote

/** Defined by each library: its name for messages. */
const char *vdevice_library_name();
