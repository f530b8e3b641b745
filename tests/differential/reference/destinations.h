/**
 * @file destinations.h
 * Where a frame of the CPU goes, as the two words of the switch tag say it.
 */
#pragma once

#include <stdint.h>
#include <optional>

#include "tests/differential/reference/tables.h"

namespace reference {

/** Word 1 and word 2 of the tag. */
struct Destination {
    uint32_t word1 = 0;
    uint32_t word2 = 0;
    bool has_port = false;

    void add(int32_t port) {
        if (port >= 0 && port <= 56) {
            (port < 25 ? word1 : word2) |= 1u << (port < 25 ? port : port - 25);
            has_port = true;
        }
    }
};

/** Word 1 with this port in place of its own. */
uint32_t with_port(uint32_t word1, int32_t port);

/** The destination of a frame in this mode; nothing when it is refused. */
std::optional<Destination> destination_of(uint32_t source, const adp_list_link_t *list, uint32_t vid, uint32_t mode);

}  // namespace reference
