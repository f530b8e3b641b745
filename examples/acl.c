/*
 * A small management program: an access control list for one port, where guests are plugged in.
 *
 *     acl [PORT]
 *
 * Only the administrator's station may use SSH; Telnet is dropped; bulk transfers are limited to a rate; a watched
 * station is mirrored to another port; voice packets get the DSCP of expedited forwarding. Each rule counts the packets
 * that it matches. A line on standard input asks for the counts; at the end of the input the list is deleted.
 */
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <adp/adp.h>

#include "board.h"

enum { kGuestPort = 5, kMirrorPort = 26, kMirrorSession = 1, kMaxConditions = 3, kLineRoom = 64 };

/* Submodules with room for rules like these. In each group one rule acts on a packet, the one with the highest
 * priority; groups act in parallel. So the watched station is mirrored in addition to the other rules, unless one of
 * them drops the packet. The group of kWatch comes first, so its rule counts such a packet. Rules of kMeters have a
 * meter each and precede those of kGuards, which are in the same group. */
enum { kGuards = 20, kMeters = 30, kWatch = 12 };

enum { kTcp = 6, kUdp = 17, kSsh = 22, kTelnet = 23, kBulk = 9000, kVoice = 5004 };
enum { kAdministrator = 0x0A010009, kWatched = 0x0A010042 }; /* 10.1.0.9, 10.1.0.66 */
enum { kBulkRate = 200, kExpeditedForwarding = 46, kVoiceRule = 1 };

struct condition {
    uint32_t type;
    uint32_t value;
};

struct action {
    uint32_t type;
    uint32_t parameter;
    uint32_t second;
};

/* A rule for packets from the guarded port. A type of 0 ends the conditions: it would ask for an IPv6 address, which no
 * rule here does. */
struct rule {
    const char *name;
    uint32_t submodule;
    uint32_t entity;
    uint32_t priority;
    struct condition conditions[kMaxConditions];
    struct action action; /* in addition to counting */
};

#define FROM(address) \
    { ADP_FP_QUALIFY_SRC_IP, (address) }
#define OVER(protocol) \
    { ADP_FP_QUALIFY_IP_PROTOCOL, (protocol) }
#define TO(port) \
    { ADP_FP_QUALIFY_L4_DST_PORT, (port) }

static const struct rule kRules[] = {
    {"administrator", kGuards, 0, 2, {FROM(kAdministrator), OVER(kTcp), TO(kSsh)}, {ADP_FP_ACTION_PERMIT, 0, 0}},
    {"ssh", kGuards, 1, 1, {OVER(kTcp), TO(kSsh)}, {ADP_FP_ACTION_DROP, 0, 0}},
    {"telnet", kGuards, 2, 1, {OVER(kTcp), TO(kTelnet)}, {ADP_FP_ACTION_DROP, 0, 0}},
    {"bulk", kMeters, 0, 0, {OVER(kUdp), TO(kBulk)}, {ADP_FP_ACTION_METER, kBulkRate, 0}},
    {"watched", kWatch, 0, 0, {FROM(kWatched)}, {ADP_FP_ACTION_MIRROR, kMirrorSession - 1, 0}},
};

#define RULES (sizeof kRules / sizeof *kRules)

/* Each rule has the counter of its place in the table. */
static uint32_t counter_of(const struct rule *rule) {
    return (uint32_t)(rule - kRules);
}

static bool succeeded(const char *what, const char *name, adp_status_t status) {
    if (status == ADP_OK)
        return true;
    fprintf(stderr, "acl: Could not %s %s: the answer was %d.\n", what, name, (int)status);
    return false;
}

/* Start-up does this as part of adp_modules_init(); here it is all that is needed. */
static bool set_up_features(void) {
    return succeeded("set up", "the field processor", adp_fp_init()) &&
           succeeded("set up", "mirroring", adp_mirror_init()) &&
           succeeded("set up", "the flow mirror", adp_set_flow_mirror(kMirrorPort, kMirrorSession));
}

/* Ports are asked for as a bitmap of interfaces; the library translates them to the chip's. */
static bool add_port(FpEntity *record, adp_intf_t port) {
    adp_ports_t ports = {0};
    adp_ports_t mask;

    ports[port / 32] = 1u << port % 32;
    memset(mask, 0xFF, sizeof mask);
    return adp_fp_add_entity_qualify(record, ADP_FP_QUALIFY_IN_PORTS, ports, sizeof ports, mask, sizeof mask) >= 0;
}

static bool add_condition(FpEntity *record, const struct condition *condition) {
    const uint32_t mask = UINT32_MAX;
    return adp_fp_add_entity_qualify(record, condition->type, &condition->value, sizeof condition->value, &mask,
                                     sizeof mask) >= 0;
}

static bool add_action(FpEntity *record, const struct action *action) {
    return adp_fp_add_entity_action(record, action->type, &action->parameter, sizeof action->parameter, &action->second,
                                    sizeof action->second) >= 0;
}

static bool build_record(FpEntity *record, const struct rule *rule, adp_intf_t port) {
    const struct action count = {ADP_FP_ACTION_COUNT, counter_of(rule), 0};

    memset(record, 0, sizeof *record);
    record->submodule_type = rule->submodule;
    record->entity_id = rule->entity;
    record->priority = rule->priority;
    bool done = add_port(record, port) && add_action(record, &rule->action) && add_action(record, &count);
    for (size_t i = 0; done && i < kMaxConditions && rule->conditions[i].type != 0; i++)
        done = add_condition(record, &rule->conditions[i]);
    if (!done)
        fprintf(stderr, "acl: The rule %s does not fit into a record.\n", rule->name);
    return done;
}

/* The library's list tells which of the chip's entries the rule got. */
static bool install(const struct rule *rule, adp_intf_t port) {
    FpEntity record;

    if (!build_record(&record, rule, port) || !succeeded("install", rule->name, adp_fp_add_entity_rule(record)))
        return false;
    const FpListNode *node = adp_fp_find_list_node_by_entity(rule->submodule, rule->entity);
    if (node == NULL) {
        fprintf(stderr, "acl: The rule %s is not in the list.\n", rule->name);
        return false;
    }
    printf("%s: entry %u\n", rule->name, (unsigned)node->entity.true_entry);
    return true;
}

/* Marking packets is common enough to have calls of its own. Bit k of the request's bitmap is interface k + 1. */
static bool install_voice_remark(adp_intf_t port) {
    const uint32_t voice_port = kVoice;
    RemarkRule request = {.rule_id = kVoiceRule,
                          .port_bitmap = {0, 1u << (port - 1)},
                          .remark_kind = 2,
                          .remark_value = kExpeditedForwarding,
                          .rule_form = ADP_REMARK_FORM_FIELD,
                          .match_field = ADP_REMARK_L4_DST_PORT};

    memcpy(request.match_value, &voice_port, sizeof voice_port);
    return succeeded("install", "the remark of voice packets", adp_add_remark_rule(&request));
}

static bool install_all(adp_intf_t port) {
    for (size_t i = 0; i < RULES; i++)
        if (!install(&kRules[i], port))
            return false;
    return install_voice_remark(port);
}

/* A rule that was never installed is no error to delete, so this clears up after a failure as well. */
static bool delete_all(void) {
    bool done = succeeded("delete", "the remark of voice packets", adp_del_remark_rule(kVoiceRule));
    for (size_t i = 0; i < RULES; i++) {
        const struct rule *rule = &kRules[i];
        /* With the action's type a meter goes with its rule. */
        const adp_status_t status = adp_fp_delete_entity_rule(rule->submodule, rule->entity, rule->action.type);
        done = succeeded("delete", rule->name, status) && done;
    }
    return done;
}

static void print_counts(void) {
    for (size_t i = 0; i < RULES; i++) {
        const int32_t counter = (int32_t)counter_of(&kRules[i]);
        printf("%s: %d frames, %d octets\n", kRules[i].name, (int)adp_fp_get_statistics(counter, ADP_FP_VALUE_FRAMES),
               (int)adp_fp_get_statistics(counter, ADP_FP_VALUE_OCTETS));
    }
}

static void serve(void) {
    char line[kLineRoom];
    while (fgets(line, sizeof line, stdin) != NULL)
        print_counts();
}

int main(int argc, char **argv) {
    const unsigned long port = argc > 1 ? strtoul(argv[1], NULL, 10) : kGuestPort;
    if (argc > 2 || port < 1 || port > ADP_USER_PORTS) {
        fprintf(stderr, "usage: acl [PORT], a user port from 1 to %d\n", ADP_USER_PORTS);
        return 2;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    if (!succeeded("set up", "the port map", set_up_board()) || !set_up_features())
        return 1;
    const bool installed = install_all((adp_intf_t)port);
    if (installed) {
        printf("ready: %u rules for port %lu, and voice packets are marked\n", (unsigned)RULES, port);
        serve();
    }
    const bool deleted = delete_all();
    if (installed && deleted)
        printf("deleted: the port is open\n");
    return installed && deleted ? 0 : 1;
}
