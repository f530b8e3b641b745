/**
 * @file pkt.h
 * The CPU's frame path: frames sent out of chosen switch ports, and frames received from the switch.
 *
 * The CPU reaches the switch through its Ethernet interface "eth0". A switch tag behind the source MAC address tells
 * the switch what to do with a frame from the CPU, and tells the CPU the ingress port of a received frame. All
 * multi-byte fields of frames and tags are big-endian.
 *
 * Tag of a sent frame, 10 bytes at offset 12: the type 0x8874, word 1 (bits 31..29 opcode, 28..25 flags, 24..0
 * destination) and word 2. The destination is one physical port (opcodes 3, 5, 6) or, for opcodes 4 and 7, a bitmap of
 * the ports 0..24 in word 1 and of the ports 25..56 in word 2 (bit p - 25).
 *
 * Tag of a received frame, 6 bytes at offset 12: a type that is ignored, and a word whose low six bits are the ingress
 * physical port. The switch puts a VLAN tag behind it in every frame, with the VLAN and the priority that it chose: a
 * received frame does not show whether it came in with a VLAN tag or without.
 *
 * No call of this header makes a driver call; some call the device's VLAN service, get_vlan_info(). Nothing takes a
 * lock: all threads share the socket of __adp_transmit_frame(), and each send is a single system call.
 *
 * Packet sockets are opened for the protocol 0x0800 in host byte order. On the target that is IPv4: the kernel puts a
 * copy of each IPv4 packet that comes in on any interface into the socket of adp_pkt_init() until its receive buffer is
 * full, and nothing reads them. Packet sockets stay open in the programs that the process starts, unless it closes them
 * there.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** How __adp_transmit_frame() chooses the ports of a frame. */
enum adp_tx_mode {
    ADP_TX_PORTS = 0,          /**< every port of the list, or without a list every port (of the VLAN) */
    ADP_TX_SWITCH = 1,         /**< let the switch forward the frame */
    ADP_TX_VLAN_PORT = 2,      /**< one port, a member of the VLAN */
    ADP_TX_ONE_PORT = 3,       /**< one port, a member of the VLAN when one is given */
    ADP_TX_VLAN_NOT_SOURCE = 4 /**< as 2, passing over the source interface */
};

/** Opcodes of the switch tag of a sent frame: the switch's codes, as the virtual device has them. */
enum adp_tag_opcode {
    ADP_OPCODE_SWITCH = 1,     /**< the switch forwards the frame; the destination is not used */
    ADP_OPCODE_PORT = 3,       /**< out of one port, its VLAN tag removed where the VLAN leaves untagged */
    ADP_OPCODE_PORTS = 4,      /**< likewise out of the ports of a bitmap */
    ADP_OPCODE_PORT_AS_IS = 5, /**< out of one port as given */
    ADP_OPCODE_PORT_RAW = 6,   /**< the same */
    ADP_OPCODE_PORTS_RAW = 7   /**< out of the ports of a bitmap as given */
};

/** A frame to send. */
typedef struct {
    const uint8_t *frame; /**< the frame from its destination MAC address on, without a switch tag */
    uint32_t length;      /**< its length in bytes */
    adp_intf_t source;    /**< interface that it came in on or that flooding leaves out, 0 for none */
} adp_tx_frame_t;

/** A node of a destination list: a circular doubly linked list whose head is a plain adp_list_link_t. */
typedef struct {
    adp_list_link_t link; /**< next and previous node, or the head */
    adp_intf_t intf;      /**< destination: user port or aggregation interface */
} adp_tx_dest_t;

/**
 * A received frame and what parsing found in it. The caller clears the record, then fills frame and length, and
 * vlan_tag when the VLAN is to be checked. Outputs are written only as far as the parse gets.
 */
typedef struct {
    uint32_t reserved1;       /**< the caller's */
    uint32_t reserved2;       /**< the caller's */
    uint8_t *frame;           /**< in: the frame as received, with its switch tag */
    uint32_t length;          /**< in: length in bytes, low 16 bits used; out: ten less */
    uint8_t *ethernet_header; /**< out: the frame start */
    uint8_t *udp_header;      /**< out: UDP over IPv4, or over IPv6 without extension headers */
    uint8_t *ipv4_header;     /**< out */
    uint8_t *ipv6_header;     /**< out */
    uint8_t *vlan_tag;        /**< in for the VLAN check, out: the innermost 802.1Q tag, at its type 0x8100 */
    uint8_t *l4_header;       /**< out: what follows the IP header */
    adp_intf_t intf;          /**< out: aggregation interface of the ingress port if it has one, else the user port */
    int32_t phy;              /**< out: ingress physical port */
} adp_rx_frame_t;

/** Receiver of link changes: unit, physical port, link status. */
typedef int32_t (*adp_link_event_cb_t)(uint32_t unit, uint32_t port, uint32_t status);

/** The registered receiver of link changes, null for none. */
extern adp_link_event_cb_t link_event_handle;

/**
 * Looks up the index of a network interface.
 *
 * Opens and closes an Internet datagram socket and asks with SIOCGIFINDEX. A failure is printed on standard output.
 *
 * @param name  interface name; at most 16 characters are used
 * @return the index, or -1
 */
int32_t get_nic_index(const char *name);

/**
 * Opens the socket that __adp_transmit_frame() sends on: a raw packet socket, kept until the process ends.
 *
 * @return the descriptor; after a failure, which is printed on standard output, the number of characters printed: a
 *         positive number, so that only later __adp_transmit_frame() calls fail
 */
int32_t adp_pkt_init(void);

/**
 * Prints a hex dump on standard error: 16 bytes a row, each row opened by its number.
 *
 * @param title   printed in front of the length
 * @param data    bytes to print
 * @param length  number of bytes; below 1 only the head is printed
 * @return result of the last write
 */
int32_t adp_dump_packet(const char *title, ADP_COUNT(length) const uint8_t *data, int32_t length);

/**
 * Sends one frame to one interface, through a socket of its own that is opened and closed for it.
 *
 * The call does not need adp_pkt_init(). An aggregation interface is reached through its management interface; without
 * one "manage interface error. " is printed as a line. The send is tried at most four times. Closing a packet socket
 * takes the kernel some milliseconds, so this call is slow: use __adp_transmit_frame() for a stream of frames.
 *
 * @param frame   the frame from its destination MAC address on, at least 12 bytes
 * @param length  its length in bytes, low 16 bits used
 * @param unused  not used
 * @param intf    destination: the low 25 bits of its physical port fill the destination field, all ones for an
 *                interface that does not translate
 * @param opcode  the switch tag's opcode, enum adp_tag_opcode, low three bits used
 * @return 0; -1 for a null frame, a length below 12, no management interface, no memory, no socket, or an incomplete
 *         send
 */
adp_status_t adp_transmit_frame(ADP_COUNT16(length) const uint8_t *frame, uint32_t length, uint32_t unused,
                                adp_intf_t intf, uint32_t opcode);

/**
 * Sends one frame to the ports that the mode, the list and the VLAN choose, on the socket of adp_pkt_init().
 *
 * Without that socket, before adp_pkt_init() or after it has failed, the result is -1 and nothing is printed.
 *
 * - Mode 1, tag word 1 0x38000000: the switch forwards the frame; list and VLAN are not used.
 * - Mode 2, 0x78000000: to the list's last port. The VLAN record is fetched whatever vid is.
 * - Mode 3, 0xDA000000: to the list's last port. The VLAN record is fetched only when a VLAN is given.
 * - Mode 4, 0x78000000: as mode 2, but a node that equals the source is skipped.
 * - Mode 0 with a list, 0x98000000: to the bitmap of the list's ports but the source. The VLAN record is fetched only
 *   when a VLAN is given.
 * - Mode 0 without a list, 0x98000000 with a VLAN and 0xF8000000 without: to the bitmap of the user ports 1..26 but the
 *   source and, only with a VLAN, of the aggregation interfaces but the source.
 *
 * An aggregation interface stands for its management interface; without one it names no port. In modes 2 to 4 an index
 * of 0 is skipped, every other node must be a member of the fetched VLAN (in mode 3 only when a VLAN is given), a node
 * of another type ends the call with -1, and a list without a port leaves the destination 0. In mode 0 a node that is
 * not a member, not mapped or of another type is skipped, and an empty bitmap ends the call with -1. Physical ports
 * above 56 have no bit. A VLAN record is fetched with get_vlan_info(vid, record); its failure ends the call with -1.
 * The send is tried at most four times; the interface index of "eth0" is looked up for every frame.
 *
 * @param desc          the frame, at least 12 bytes, its length and its source interface
 * @param destinations  head of the list of adp_tx_dest_t nodes, or null
 * @param vid           VLAN id, or ADP_NO_VLAN
 * @param mode          enum adp_tx_mode, low 16 bits used
 * @return 0; -1 for a null frame or one shorter than 12 bytes, a mode of 5 or more, any of the cases above, no memory,
 *         no socket, or an incomplete send
 */
adp_status_t __adp_transmit_frame(const adp_tx_frame_t *desc, const adp_list_link_t *destinations, uint32_t vid,
                                  uint32_t mode);

/**
 * Rewrites the destination of a switch tag from interface numbers to physical ports, in place.
 *
 * Opcode 4: both bitmaps are translated bit by bit, the 25 bits of word 1 as the interfaces 0..24 and the 32 bits of
 * word 2 as 25..56. An interface of word 1 may move to word 2. An interface of word 2 that translates to a port below
 * 25 is dropped, and so is any that translates to a port above 56 or does not translate. Opcodes 3, 5 and 6: the one
 * interface is translated, low 25 bits. Other opcodes: unchanged.
 *
 * @param[in,out] tag  words 1 and 2 of the switch tag, eight bytes
 */
void adp_bcmtag_dest_port_intf_2_phy(ADP_INOUT uint8_t tag[8]);

/**
 * Finds the ingress interface of a received frame and strips its switch tag in place.
 *
 * @param[in,out] frame    the frame as received; the bytes after the tag are moved over it
 * @param[out] out_frame   the frame start
 * @param length           its length in bytes, low 16 bits used
 * @param[out] out_length  its length in bytes, six less
 * @param[out] out_flag    0
 * @param[out] out_intf    user port of the ingress port, 0 for the CPU port's row; all ones for a port without a map
 *                         row
 * @return 0; -1 for a null frame or one shorter than 18 bytes, with nothing changed
 */
adp_status_t adp_receive_frame(ADP_COUNT16(length) ADP_INOUT uint8_t *frame, uint8_t **out_frame, uint32_t length,
                               uint16_t *out_length, uint8_t *out_flag, adp_intf_t *out_intf);

/**
 * Finds the ingress interface of a received frame, checks its VLAN on request, strips its switch tag in place and finds
 * its VLAN tag and headers.
 *
 * Only tagged frames parse: one or two 0x8100 tags, or 0x9100 followed by at most one 0x8100. A type other than IPv4
 * and IPv6 after the tags is not a failure. Do not pass the frame again after a failure: its tag may already be
 * stripped. Only a failed VLAN check and a frame shorter than 18 bytes leave the frame whole.
 *
 * @param[in,out] desc  see adp_rx_frame_t
 * @param check_vlan    1: vlan_tag must point to the frame's 802.1Q tag, and the ingress interface must be a member of
 *                      its VLAN, see check_port_vlan_ability(); any other value: no check
 * @return 0; -1 for a frame shorter than 18 bytes (nothing written), a failed check, an untagged or too deeply tagged
 *         frame, or one that ends before a byte that has to be read (what was written until then stays)
 */
adp_status_t __adp_receive_frame(ADP_INOUT adp_rx_frame_t *desc, int32_t check_vlan);

/**
 * Checks whether an interface is a member of a VLAN.
 *
 * Service call: get_vlan_info(vid, record). The record's member bitmap has bit i for user port i and bit 26 + g for
 * aggregation interface g.
 *
 * @param intf  user port or aggregation interface
 * @param vid   VLAN id, passed on uncut
 * @return 0 when it is a member; -1 when it is not, when the record cannot be fetched, and for an interface of another
 *         type
 */
adp_status_t check_port_vlan_ability(adp_intf_t intf, int32_t vid);

/**
 * Stores the receiver of link changes in link_event_handle.
 *
 * @param handler  called by linkscan_handle_cb(), null for none
 * @return 0
 */
adp_status_t adp_linkscan_register(adp_link_event_cb_t handler);

/**
 * The callback for the driver's link scan: forwards a change to link_event_handle. It runs on the link scan's thread.
 *
 * @param unit  passed through; 0 on the virtual device
 * @param port  physical port, passed through
 * @param info  the driver's port-information record; its fourth word is the link status, 0 down, 1 up on the virtual
 *              device
 * @return the receiver's result; 0 when none is registered
 */
int32_t linkscan_handle_cb(uint32_t unit, uint32_t port, const uint32_t info[4]);

ADP_END_DECLS
