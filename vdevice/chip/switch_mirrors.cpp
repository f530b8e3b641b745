// The copies that mirrors make of frames. A copy goes out as it is, whatever the VLANs of its port, and is not mirrored
// again.
#include "vdevice/chip/switch.h"

namespace vdevice::chip {
namespace {

/** Of copies that are made before the chip has given the frame a priority. */
constexpr uint32_t kMirrorPriority = 0;

}  // namespace

void Switch::mirror_ingress(int port, Bytes frame) {
    mirrors_.for_each_ingress_copy(
        port, [&](int destination) { send_copy(destination, split_frame(frame), kMirrorPriority); });
}

void Switch::mirror_egress(int port, const Frame &frame, uint32_t priority) {
    mirrors_.for_each_egress_copy(port, [&](int destination) { send_copy(destination, frame, priority); });
}

void Switch::copy_to_flow_mirror(uint32_t session, const Frame &frame) {
    if (const int destination = mirrors_.flow_destination(session); destination != Mirror::kNone) {
        send_copy(destination, frame, kMirrorPriority);
    }
}

// A mirror port that is down loses its copies; the frames themselves go their way.
void Switch::send_copy(int port, const Frame &frame, uint32_t priority) {
    if (up_.has(port)) {
        put_out(port, frame, {priority, Origin::kMirror});
    }
}

}  // namespace vdevice::chip
