/**
 * @file frame_socket.h
 * The frames that arrive on the CPU's interface, as a program above the library would read them.
 */
#pragma once

#include "tools/adpsh/convert.h"

#include <chrono>
#include <optional>
#include <string>

namespace adpsh {

class FrameSocket {
  public:
    FrameSocket() = default;
    ~FrameSocket();
    FrameSocket(const FrameSocket &) = delete;
    FrameSocket &operator=(const FrameSocket &) = delete;

    /** Opens the socket unless it is open. A Refusal says why that fails. */
    void open(const std::string &interface);

    /** The next frame that came in since the socket was opened, nothing when none comes in time. */
    std::optional<Bytes> wait(std::chrono::milliseconds time);

  private:
    std::optional<Bytes> receive();

    int descriptor_ = -1;
};

}  // namespace adpsh
