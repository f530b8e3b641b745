// A small process that keeps descriptors open when the daemon is killed, and hands them to the next one: a TAP
// interface without an open descriptor has no carrier, and a bridge forgets what it knows about the port.
#pragma once

#include <map>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace switchd {

class Keeper {
  public:
    /**
     * Connects to the process that serves the path, or starts one. It ends when it is told so, or when the socket's
     * file is gone. A process of one thread calls this, since the other one is a fork of it. Throws an io::Error.
     *
     * @param path  of its socket, in a folder that is this user's alone
     */
    explicit Keeper(const std::string &path);

    /** All that it has, by name. It goes on holding them. */
    std::map<std::string, vdevice::UniqueFd> held();
    /** Holds a descriptor under a name, in the place of the one before; false if the process is gone. */
    bool hold(const std::string &name, int fd);
    bool drop(const std::string &name);
    /** Lets it close everything and end, and waits for that. */
    void end();

  private:
    vdevice::UniqueFd socket_;
};

}  // namespace switchd
