// A long text, made beside the daemon's other work.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice {

/**
 * Makes a text in a process of its own, a copy of this one: the text tells of the moment at which the copy was made,
 * and whatever happens to the copy, memory running out included, this process goes on.
 */
class BackgroundText {
  public:
    /** Throws an io::Error if no process can be made. */
    explicit BackgroundText(const std::function<std::string()> &make);
    /** Ends the process if it still runs. */
    ~BackgroundText();
    BackgroundText(const BackgroundText &) = delete;
    BackgroundText &operator=(const BackgroundText &) = delete;

    /** Readable when the text is made, or the process has ended without it. */
    int fd() const { return result_.get(); }
    /** Waits for the text. Gives a file with it, or none if it could not be made. */
    UniqueFd take();

  private:
    UniqueFd text_;
    pid_t pid_ = 0;
    UniqueFd result_;
};

}  // namespace vdevice
