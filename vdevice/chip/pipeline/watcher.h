// Who looks at frames as they pass. The chip has room for one watcher, and none for most of the time.
#pragma once

#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/queues/port_queues.h"

namespace vdevice::chip {

/** Why a copy did not leave by a port that was chosen for it. */
enum class Lost : uint8_t {
    kTooLong,    /**< for the port */
    kNoRoom,     /**< in its queue */
    kFlushed,    /**< the port went down, or into loopback, while it waited */
    kLoopback,   /**< looped back too often */
    kMirrorDown, /**< it is a mirror's, whose port is down */
};

class Watcher {
  public:
    virtual ~Watcher() = default;
    /** A frame begins its way. What is told until it has passed is about it. */
    virtual void begun() {}
    /** A frame has passed, or was dropped. Its octets and pointers hold during the call only. */
    virtual void passed(const Passage & /*frame*/) {}
    /** A copy leaves by the port, to the wire or back into the port. A queued one leaves after its frame has passed. */
    virtual void left(int /*port*/, const Frame & /*copy*/, const Dispatch & /*dispatch*/) {}
    /** A copy waits in its queue. */
    virtual void queued(int /*port*/, const Frame & /*copy*/, const Dispatch & /*dispatch*/) {}
    virtual void lost(int /*port*/, const Frame & /*copy*/, const Dispatch & /*dispatch*/, Lost /*reason*/) {}

  protected:
    Watcher() = default;
    Watcher(const Watcher &) = default;
    Watcher &operator=(const Watcher &) = default;
};

}  // namespace vdevice::chip
