// __adp_transmit_frame(): one frame to the ports that mode, list and VLAN choose, on the shared socket.
#include <adp/pkt.h>
#include <stdlib.h>

#include "pkt/destination.h"
#include "pkt/wire.h"

namespace adp {
namespace {

bool send_frame(const uint8_t *frame, uint32_t length, const TxTag &tag) {
    const uint32_t n = length + kTxTagLength;
    if (n < length) {
        return false;
    }
    auto *buffer = static_cast<uint8_t *>(malloc(n));
    if (buffer == nullptr) {
        return false;
    }
    write_tagged(buffer, frame, length, tag);
    const bool sent = send_tagged(send_socket(), buffer, n);
    free(buffer);
    return sent;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t __adp_transmit_frame(const adp_tx_frame_t *desc, const adp_list_link_t *destinations, uint32_t vid,
                                  uint32_t mode) {
    TxTag tag;
    // The tag follows the MAC addresses: a shorter frame has no place for it.
    const bool sent = desc->frame != nullptr && desc->length >= kMacAddressesLength &&
                      build_tag(low16(mode), destinations, vid, Intf(desc->source), &tag) &&
                      send_frame(desc->frame, desc->length, tag);
    return sent ? ADP_OK : ADP_FAIL;
}
