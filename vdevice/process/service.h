// What a service manager is told; without one nothing happens.
#pragma once

#include <string>

namespace vdevice::service {

void tell_ready();
/** Until tell_ready() is called again. */
void tell_reloading();
void tell_stopping();
/** To be called once a second: a daemon that does not is started again. */
void tell_alive();
/** A line for a person who asks for the service's state. */
void tell_status(const std::string &line);

/** Whether standard error is a stream to the journal. */
bool is_logging_to_journal();

}  // namespace vdevice::service
