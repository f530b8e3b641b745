/*
 * The groups that hosts listen to, and the switch's entries for them.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#include "multicast_messages.h"

/* A listener joins or leaves. */
void follow(const struct wish *wish);

/* Makes the entries of the groups that are known; later ones are made at once. Before, all groups are flooded, since
 * an entry would cut off those listeners that have not been heard yet. */
void make_entries(void);

/* The entries of a VLAN follow its router ports, which get every stream that somebody wants. */
void follow_routers(uint32_t vid, int family, uint32_t before);

/* Deletes what can be deleted; false if that is not all. */
bool delete_groups(void);
