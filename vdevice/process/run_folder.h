// The run folder of a daemon, and the lock that keeps a second one out of it.
#pragma once

#include <stdint.h>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

class RunFolder {
  public:
    /**
     * Makes the folder if there is none, and holds it for as long as this lives. Throws an io::Error if it is not this
     * user's alone, or if another daemon holds it. The sentence names the program, and the variable that names its
     * folder.
     */
    RunFolder(const std::string &path, const char *program, const char *variable);

    /**
     * A number for what this daemon makes outside the folder. The next daemon of the same folder has the same one; no
     * two that live at the same time have, even if the folder of one was removed and made anew by the other.
     */
    uint32_t mark() const;

  private:
    UniqueFd folder_;
};

}  // namespace vdevice
