// The run folder of a daemon, and the lock that keeps a second one out of it.
#pragma once

#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

class RunFolder {
  public:
    /**
     * Makes the folder if there is none, and holds it for as long as this lives. Throws an io::Error if it is not this
     * user's alone, or if another daemon holds it.
     */
    explicit RunFolder(const std::string &path);

  private:
    UniqueFd folder_;
};

}  // namespace vdevice
