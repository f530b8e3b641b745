// Messages to systemd.
#include "vdevice/daemon/service.h"

#include <systemd/sd-daemon.h>

#include <chrono>
#include <string>

namespace vdevice::service {

void tell_ready() {
    sd_notify(0, "READY=1");
}

void tell_reloading() {
    using std::chrono::duration_cast, std::chrono::microseconds, std::chrono::steady_clock;
    const auto now = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    sd_notify(0, ("RELOADING=1\nMONOTONIC_USEC=" + std::to_string(now.count())).c_str());
}

void tell_stopping() {
    sd_notify(0, "STOPPING=1");
}

void tell_alive() {
    sd_notify(0, "WATCHDOG=1");
}

}  // namespace vdevice::service
