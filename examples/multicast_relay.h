/*
 * Frames of the CPU about multicast: messages of hosts and routers on their way, and queries of the switch's own.
 */
#pragma once

#include <stdbool.h>
#include <stdint.h>

#include "multicast_messages.h"

/* Opens what relay() and query_hosts() send with, and reads the switch's MAC address. */
bool prepare_to_send(void);

/* Sends a message that the switch handed to the CPU on to its audience, out of these interfaces at most. */
void relay(const struct message *message, uint32_t everybody);

/* Asks all hosts behind these interfaces, in every VLAN, for the groups that they want; false if some were not asked.
 */
bool query_hosts(uint32_t everybody, uint32_t milliseconds);
