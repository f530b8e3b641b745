/* The ways in which the library sends a frame. */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#include <adp/adp.h>

/** A way of sending; `single` is adp_transmit_frame(), all others are __adp_transmit_frame(). */
struct way {
    const char *name;
    bool single;
    bool with_list;
    uint32_t vid;
    uint32_t mode;
};

/** The way of this name, null if there is none. */
const struct way *find_way(const char *name);

/** Prepares the library: the port map, the send socket and the destination list. */
bool prepare_ways(void);

/** Sends a frame. */
bool send_by(const struct way *way, const adp_tx_frame_t *frame);
