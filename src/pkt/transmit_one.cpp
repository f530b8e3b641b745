// adp_transmit_frame(): one frame to one interface, through a socket of its own.
#include <adp/pkt.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "core/resolve.h"
#include "pkt/wire.h"

namespace adp {
namespace {

bool send_on_own_socket(const uint8_t *tagged, uint32_t n) {
    const int socket = open_packet_socket();
    if (socket <= 0) {
        return false;
    }
    const bool sent = send_tagged(socket, tagged, n);
    close(socket);
    return sent;
}

bool transmit(uint8_t *buffer, const uint8_t *frame, uint32_t length, Intf intf, uint32_t opcode) {
    const Intf port = representative_of(intf);
    if (port == kNoIntf && kind_of(intf) == IntfKind::kAggregation) {
        puts("manage interface error. ");
        return false;
    }
    TxTag tag(opcode, 0);
    tag.aim_at(phy_of(port));
    write_tagged(buffer, frame, length, tag);
    return send_on_own_socket(buffer, length + kTxTagLength);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_transmit_frame(const uint8_t *frame, uint32_t length, uint32_t, adp_intf_t intf, uint32_t opcode) {
    const uint32_t used = low16(length);
    // The tag follows the MAC addresses: a shorter frame has no place for it.
    if (frame == nullptr || used < kMacAddressesLength) {
        return ADP_FAIL;
    }
    auto *buffer = static_cast<uint8_t *>(calloc(used + kTxTagLength, 1));
    if (buffer == nullptr) {
        return ADP_FAIL;
    }
    const bool sent = transmit(buffer, frame, used, Intf(intf), opcode);
    free(buffer);
    return sent ? ADP_OK : ADP_FAIL;
}
