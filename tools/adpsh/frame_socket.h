/**
 * @file frame_socket.h
 * Receives the frames that arrive on the CPU's interface.
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

    /** Opens the socket unless it is open. Throws a LineError if that fails. */
    void open(const std::string &interface);

    /** The next frame received since the socket was opened; nothing if there is none in time. */
    std::optional<Bytes> wait(std::chrono::milliseconds time);

  private:
    std::optional<Bytes> receive();

    int descriptor_ = -1;
};

}  // namespace adpsh
