// The address of a Unix socket in the file system.
#pragma once

#include <sys/un.h>

#include <optional>
#include <string>

namespace vdevice {

/** Nothing if the path is too long for an address. */
inline std::optional<sockaddr_un> unix_address(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        return std::nullopt;
    }
    path.copy(address.sun_path, path.size());
    return address;
}

}  // namespace vdevice
