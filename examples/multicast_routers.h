/*
 * The ports where multicast routers are: a router was heard there, not too long ago.
 */
#pragma once

#include <stdint.h>

#include "multicast_messages.h"

/* The interfaces of a VLAN with routers of a family, AF_INET or AF_INET6, as a set. */
uint32_t routers_of(uint32_t vid, int family);

/* Told of a change: which interfaces had routers before it. */
typedef void (*routers_changed)(uint32_t vid, int family, uint32_t before);

/* A router was heard; it is remembered until then, in milliseconds. */
void hear_router(const struct message *heard, int64_t until, routers_changed changed);

/* Forgets the routers whose time is over. */
void age_routers(int64_t now, routers_changed changed);
