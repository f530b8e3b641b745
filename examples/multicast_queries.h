/*
 * General queries of a switch that has no IP address.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

enum { kQueryRoom = 96 };

/* Writes the frame of a query of IGMP version 3, which hosts with an older one understand too; gives its length. It
 * has a VLAN tag. Hosts answer within the response time, of at most 12 seconds. */
size_t write_igmp_query(uint8_t frame[kQueryRoom], const uint8_t mac[6], uint32_t vid, uint32_t milliseconds);

/* The same of MLD version 2. */
size_t write_mld_query(uint8_t frame[kQueryRoom], const uint8_t mac[6], uint32_t vid, uint32_t milliseconds);
