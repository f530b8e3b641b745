// adp_receive_frame(), the receive tag, and the link-scan hook.
#include "pkt/receive.h"

#include <adp/pkt.h>
#include <string.h>

#include "core/port_map.h"

adp_link_event_cb_t link_event_handle;

namespace adp {

PhyPort ingress_port_of(const uint8_t *frame) {
    // The type of the tag, two bytes, is ignored.
    return PhyPort(static_cast<int32_t>(kRxIngressPort.get(read_be32(frame + kMacAddressesLength + 2))));
}

void strip_rx_tag(uint8_t *frame, uint32_t length) {
    memmove(frame + kMacAddressesLength, frame + kRxTaggedHeaderLength, length - kRxTaggedHeaderLength);
}

}  // namespace adp

using namespace adp;

adp_status_t adp_receive_frame(uint8_t *frame, uint8_t **out_frame, uint32_t length, uint16_t *out_length,
                               uint8_t *out_flag, adp_intf_t *out_intf) {
    const uint32_t used = low16(length);
    if (frame == nullptr || used < kRxTaggedHeaderLength) {
        return ADP_FAIL;
    }
    *out_frame = frame;
    *out_intf = number(intf_of(ingress_port_of(frame)));
    strip_rx_tag(frame, used);
    *out_length = static_cast<uint16_t>(used - kRxTagLength);
    *out_flag = 0;
    return ADP_OK;
}

adp_status_t adp_linkscan_register(adp_link_event_cb_t handler) {
    link_event_handle = handler;
    return ADP_OK;
}

int32_t linkscan_handle_cb(uint32_t unit, uint32_t port, const uint32_t info[4]) {
    constexpr int kLinkStatusWord = 3;
    return link_event_handle == nullptr ? 0 : link_event_handle(unit, port, info[kLinkStatusWord]);
}
