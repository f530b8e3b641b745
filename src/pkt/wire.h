// Sends frames with a switch tag on a raw packet socket to the CPU's network interface.
#pragma once

#include <stdint.h>

#include "pkt/switch_tag.h"

namespace adp {

/** Opens a raw packet socket; negative on failure. */
int open_packet_socket();

/** The socket of adp_pkt_init(), -1 before. */
int send_socket();

/** Lays out a frame of length bytes with its tag inserted; out has room for length + kTxTagLength. */
void write_tagged(uint8_t *out, const uint8_t *frame, uint32_t length, const TxTag &tag);

/**
 * Sends a tagged frame of n bytes to "eth0", trying at most four times.
 *
 * @return whether the system took all of it
 */
bool send_tagged(int socket, const uint8_t *tagged, uint32_t n);

}  // namespace adp
