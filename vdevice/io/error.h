// Failures of sockets and interfaces, as a sentence for the person at the terminal.
#pragma once

#include <stdexcept>
#include <string>

namespace vdevice::io {

class Error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** "cannot <action>: <reason of errno>", with advice if a privilege is missing. */
Error error_from_errno(const std::string &action);

}  // namespace vdevice::io
