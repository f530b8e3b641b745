// What a client can be told line by line until it leaves: what happens, what becomes of frames, the frames themselves.
#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>

#include "vdevice/inspect/capturing.h"
#include "vdevice/inspect/following.h"
#include "vdevice/inspect/watching.h"

namespace vdevice::inspect {

class Streams {
  public:
    /** The device must outlive it. */
    explicit Streams(Device &device) : watching_{device}, following_{device}, capturing_{device} {}

    /**
     * What the request asks for, from now on and for as long as somebody keeps it; null if the request is for something
     * else or wrong: then the subject says what is wrong. @p wake is called when there is a line after there was none.
     */
    Lines open(const nlohmann::json &request, const std::function<void()> &wake);
    /** To be called once a second. */
    void tick();

  private:
    Watching watching_;
    Following following_;
    Capturing capturing_;
};

}  // namespace vdevice::inspect
