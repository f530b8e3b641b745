/**
 * @file frames.h
 * The frames that the program sends and receives itself, on packet sockets.
 */
#pragma once

#include <stddef.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace adptrace::record {

/** Whether frames are recorded at all. */
bool records_frames() noexcept;

struct Transfer {
    bool is_sent;
    int fd;
    const struct iovec *parts;
    size_t part_count;
    size_t octets;
    const void *address; /**< the address of the packet socket that came with it, or null */
    size_t address_size;
};

/** Writes a line if it went through a packet socket with whole frames. */
void record_frame(const Transfer &transfer) noexcept;

}  // namespace adptrace::record
