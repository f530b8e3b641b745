/**
 * @file attributes.h
 * Speed, duplex, auto-negotiation and pause of one port, and what port attributes do on groups.
 */
#pragma once

#include <stdint.h>

#include "tests/differential/reference/tables.h"

namespace reference {

adp_status_t set_duplex(int32_t port, uint32_t value, uint32_t mode);
adp_status_t set_autoneg(int32_t port, uint32_t value);
adp_status_t set_pause(int32_t port, uint32_t value);

/** The maximum speed of a port, or the largest of a group's configured members. */
adp_status_t max_speed(uint32_t intf, uint32_t *speed);

/** Speed, advertised duplex and advertised speed: the method follows the maximum speed. */
adp_status_t set_by_max_speed(uint32_t intf, uint32_t selector, uint32_t value, uint32_t mode);

}  // namespace reference
