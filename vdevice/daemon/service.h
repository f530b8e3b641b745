// What a service manager is told; without one nothing happens.
#pragma once

namespace vdevice::service {

void tell_ready();
/** Until tell_ready() is called again. */
void tell_reloading();
void tell_stopping();
/** To be called once a second: a daemon that does not is started again. */
void tell_alive();

}  // namespace vdevice::service
