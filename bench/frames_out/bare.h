/* The system calls that send a frame, made directly, with the frame ready. */
#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

enum { kTagBytes = 10, kLongestFrame = 1514, kLongestTagged = kLongestFrame + kTagBytes };

/** A frame with its switch tag. */
struct tagged_frame {
    uint8_t bytes[kLongestTagged];
    size_t length;
};

/** Opens a packet socket as the library does; negative when the system refuses. */
int open_packet_socket(void);

/** Opens a socket that receives on an interface; negative when the system refuses. */
int listen_on(const char *interface);

/** Receives the next frame there; false when none comes within a second. */
bool take_frame(int ears, struct tagged_frame *frame);

/** Looks up "eth0" and sends the frame there. */
bool send_bare(int socket, const struct tagged_frame *frame);

/** The same on a packet socket that is opened and closed for it. */
bool send_bare_on_own_socket(const struct tagged_frame *frame);
