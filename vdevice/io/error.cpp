// The sentence for a failed system call.
#include "vdevice/io/error.h"

#include <cerrno>
#include <system_error>

namespace vdevice::io {

Error error_from_errno(const std::string &action) {
    const int reason = errno;
    std::string sentence = "cannot " + action + ": " + std::generic_category().message(reason) + ".";
    if (reason == EPERM || reason == EACCES) {
        sentence += " Run it as root or inside 'unshare -Urn'.";
    }
    return Error{sentence};
}

}  // namespace vdevice::io
