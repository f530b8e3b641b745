// The commands of the control socket, carried out by the daemon.
#pragma once

#include "switchd/daemon/control.h"
#include "switchd/daemon/switchd.h"

namespace switchd {

/** The daemon must live as long as they are used. */
Handlers handlers_of(Switchd &daemon);

}  // namespace switchd
