/*
 * The groups that hosts listen to. Several of them share a MAC address, which is all that the switch looks at.
 */
#include "multicast_groups.h"

#include <arpa/inet.h>
#include <net/ethernet.h>
#include <stdio.h>
#include <string.h>

#include <adp/adp.h>

#include "igmp_snooping.h"
#include "multicast_routers.h"

enum { kMaxGroups = 1024 }; /* as many as fit into the chip */

struct group {
    uint32_t listeners; /* a set of interfaces; empty: the slot is free */
    uint32_t vid;
    int family;
    uint8_t address[16];
    uint8_t mac[ETH_ALEN];
};
static struct group groups[kMaxGroups];
static bool has_entries;

static bool share_an_entry(const struct group *one, const struct group *other) {
    return one->vid == other->vid && memcmp(one->mac, other->mac, ETH_ALEN) == 0;
}

/* The interfaces in the entry of a group when its VLAN has these routers; none if there is no entry. */
static uint32_t entry_of(const struct group *group, uint32_t routers) {
    uint32_t listeners = group->listeners;
    for (size_t i = 0; i < kMaxGroups; i++)
        if (groups[i].listeners != 0 && share_an_entry(&groups[i], group))
            listeners |= groups[i].listeners;
    return listeners == 0 || !has_entries ? 0 : listeners | routers;
}

/* Makes the switch's entry follow. Adding an aggregation group to an entry has no effect, so the entry is then made
 * anew with everybody in it. */
static bool update_entry(const struct group *group, uint32_t before, uint32_t after) {
    const uint16_t vid = (uint16_t)group->vid;
    const uint32_t joined = after & ~before;
    adp_intf_t list[kMaxInterfaces] = {0};

    if (before == after)
        return true;
    if (after == 0)
        return succeeded("delete a group", adp_delete_igmpsn_group(group->mac, vid));
    if (before == 0 || (joined & BIT(kGroupBit)))
        return succeeded("create a group", adp_create_igmpsn_group(group->mac, vid, list_of(after, list), list));
    if (joined != 0)
        return succeeded("add a port", adp_add_igmpsn_member(group->mac, vid, list_of(joined, list), list, &vid));
    return succeeded("remove a port", adp_del_igmpsn_member(group->mac, vid, list_of(before & ~after, list), list));
}

/* When the switch refuses, the list stays as it was too: hosts repeat what they say. */
static bool set_listeners(struct group *group, uint32_t listeners) {
    const uint32_t routers = routers_of(group->vid, group->family);
    const uint32_t before = group->listeners;
    const uint32_t entry_before = entry_of(group, routers);
    group->listeners = listeners;
    if (update_entry(group, entry_before, entry_of(group, routers)))
        return true;
    group->listeners = before;
    return false;
}

/* The slot of a group, or if there is none a free one; null when the list is full. */
static struct group *find_group(const struct group *wanted) {
    struct group *free_slot = NULL;
    for (size_t i = 0; i < kMaxGroups; i++) {
        struct group *group = &groups[i];
        if (group->listeners == 0)
            free_slot = free_slot ? free_slot : group;
        else if (group->vid == wanted->vid && group->family == wanted->family &&
                 memcmp(group->address, wanted->address, sizeof group->address) == 0)
            return group;
    }
    return free_slot;
}

static void print_listener(const struct group *group, const struct wish *wish) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(group->family, group->address, text, sizeof text);
    printf("VLAN %u, %s: %s %u %s\n", (unsigned)group->vid, text, kind_of(wish->intf), number_of(wish->intf),
           wish->joins ? "joined" : "left");
}

/* Groups of which a switch delivers everything to everybody, because hosts need not ask for them, or that stay within
 * a host: 224.0.0.0/24, ff02::1 and the scopes 0 and 1. What is no group at all is none to follow either. */
static bool is_followed(const struct group *group) {
    static const uint8_t kAllNodes[16] = {0xFF, 0x02, [15] = 1};
    const uint8_t *address = group->address;
    if (group->family == AF_INET)
        return address[0] >> 4 == 0xE && !(address[0] == 224 && address[1] == 0 && address[2] == 0);
    return address[0] == 0xFF && (address[1] & 0xF) > 1 && memcmp(address, kAllNodes, sizeof kAllNodes) != 0;
}

/* The MAC address that stands for a group's IP address: RFC 1112, section 6.4, and RFC 2464, section 7. */
static void fill_mac(struct group *group) {
    const uint8_t *a = group->address;
    const uint8_t ipv4[] = {0x01, 0x00, 0x5E, a[1] & 0x7F, a[2], a[3]};
    const uint8_t ipv6[] = {0x33, 0x33, a[12], a[13], a[14], a[15]};
    memcpy(group->mac, group->family == AF_INET ? ipv4 : ipv6, ETH_ALEN);
}

void follow(const struct wish *wish) {
    struct group wanted = {.vid = wish->vid, .family = wish->family};
    const uint32_t listener = set_of(wish->intf);
    memcpy(wanted.address, wish->address, sizeof wanted.address);
    fill_mac(&wanted);
    struct group *group = is_followed(&wanted) ? find_group(&wanted) : NULL;
    if (group == NULL)
        return;
    if (group->listeners == 0)
        *group = wanted;
    if (wish->joins != ((group->listeners & listener) != 0) && set_listeners(group, group->listeners ^ listener))
        print_listener(group, wish);
}

void make_entries(void) {
    has_entries = true;
    for (size_t i = 0; i < kMaxGroups; i++) {
        struct group *group = &groups[i];
        if (group->listeners != 0 && !update_entry(group, 0, entry_of(group, routers_of(group->vid, group->family))))
            group->listeners = 0;
    }
}

void follow_routers(uint32_t vid, int family, uint32_t before) {
    const uint32_t after = routers_of(vid, family);
    for (size_t i = 0; i < kMaxGroups; i++)
        if (groups[i].listeners != 0 && groups[i].vid == vid && groups[i].family == family)
            update_entry(&groups[i], entry_of(&groups[i], before), entry_of(&groups[i], after));
}

bool delete_groups(void) {
    bool good = true;
    for (size_t i = 0; i < kMaxGroups; i++)
        if (groups[i].listeners != 0)
            good &= set_listeners(&groups[i], 0);
    return good;
}
