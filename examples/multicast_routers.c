/*
 * The ports where multicast routers are. When there is no room for another one, those that are known stay.
 */
#include "multicast_routers.h"

#include <stdio.h>
#include <sys/socket.h>

#include "igmp_snooping.h"

enum { kMaxRouters = 256 };

struct router {
    adp_intf_t intf; /* 0: the slot is free */
    uint32_t vid;
    int family;
    int64_t until;
};
static struct router routers[kMaxRouters];

uint32_t routers_of(uint32_t vid, int family) {
    uint32_t set = 0;
    for (size_t i = 0; i < kMaxRouters; i++)
        if (routers[i].vid == vid && routers[i].family == family)
            set |= set_of(routers[i].intf);
    return set;
}

/* The slot of a router, or if there is none a free one; null when the list is full. */
static struct router *find_router(const struct message *heard) {
    struct router *free_slot = NULL;
    for (size_t i = 0; i < kMaxRouters; i++) {
        struct router *router = &routers[i];
        if (router->intf == 0)
            free_slot = free_slot ? free_slot : router;
        else if (router->intf == heard->intf && router->vid == heard->vid && router->family == heard->family)
            return router;
    }
    return free_slot;
}

static void print_router(const struct router *router, const char *what) {
    printf("VLAN %u, IPv%c router: %s %u %s\n", (unsigned)router->vid, router->family == AF_INET ? '4' : '6',
           kind_of(router->intf), number_of(router->intf), what);
}

void hear_router(const struct message *heard, int64_t until, routers_changed changed) {
    struct router *router = find_router(heard);
    if (router == NULL)
        return;
    if (router->intf == 0) {
        const uint32_t before = routers_of(heard->vid, heard->family);
        *router = (struct router){heard->intf, heard->vid, heard->family, until};
        changed(heard->vid, heard->family, before);
        print_router(router, "found");
    }
    router->until = until;
}

void age_routers(int64_t now, routers_changed changed) {
    for (size_t i = 0; i < kMaxRouters; i++) {
        const struct router old = routers[i];
        if (old.intf == 0 || now < old.until)
            continue;
        const uint32_t before = routers_of(old.vid, old.family);
        routers[i].intf = 0;
        changed(old.vid, old.family, before);
        print_router(&old, "aged out");
    }
}
