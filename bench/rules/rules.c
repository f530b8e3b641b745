/*
 * Installs, finds, replaces and deletes a rule beside 1, 100 and 900 others, and counts what the library's list of
 * rules makes of it. Each time it is the rule that costs the list most: the one behind all the others.
 */
#include <stdio.h>
#include <stdlib.h>

#include <adp/adp.h>

#include "bench/measure.h"

enum { kSubmodule = 20, kSourcePort = 4711, kDrop = 201, kNoMeter = 0, kMostRules = 901 };

static FpEntity prepared[kMostRules]; /* ready to be handed over, so that only the library's work is counted */
static uint32_t others;               /* rules in the list besides the one that is measured, which has their number */

static void prepare(void) {
    const uint16_t port = kSourcePort;
    const uint16_t mask = UINT16_MAX;
    for (uint32_t number = 0; number < kMostRules; ++number) {
        FpEntity *rule = &prepared[number];
        rule->submodule_type = kSubmodule;
        rule->entity_id = number;
        adp_fp_add_entity_qualify(rule, ADP_FP_QUALIFY_L4_SRC_PORT, &port, sizeof port, &mask, sizeof mask);
        adp_fp_add_entity_action(rule, kDrop, NULL, 0, NULL, 0);
    }
}

static uint32_t rules_in_list(void) {
    uint32_t count = 0;
    for (const adp_list_link_t *link = acl_fp_list_head.next; link != &acl_fp_list_head; link = link->next) {
        ++count;
    }
    return count;
}

static long install(void) {
    return adp_fp_add_entity_rule(prepared[others]);
}

static long find(void) {
    const FpListNode *node = adp_fp_find_list_node_by_entity(kSubmodule, others);
    return node != NULL && node->entity.entity_id == others ? 0 : -1;
}

static long delete (void) {
    return adp_fp_delete_entity_rule(kSubmodule, others, kNoMeter);
}

/* The counts are kept by these names. */
#define WITH(number)                                                        \
    __attribute__((noinline, noclone)) static long install_##number(void) { \
        return install();                                                   \
    }                                                                       \
    __attribute__((noinline, noclone)) static long find_##number(void) {    \
        return find();                                                      \
    }                                                                       \
    __attribute__((noinline, noclone)) static long replace_##number(void) { \
        return install();                                                   \
    }                                                                       \
    __attribute__((noinline, noclone)) static long delete_##number(void) {  \
        return delete ();                                                   \
    }
WITH(1)
WITH(100)
WITH(900)

struct act {
    const char *name;
    long (*function)(void);
    uint32_t others;
    uint32_t more; /* rules in the list afterwards, besides the others */
};
#define ACTS(number)                                                              \
    {"install", install_##number, number, 1}, {"find", find_##number, number, 1}, \
        {"replace", replace_##number, number, 1}, {                               \
        "delete", delete_##number, number, 0                                      \
    }
static const struct act kActs[] = {ACTS(1), ACTS(100), ACTS(900)};

static int carry_out(const struct act *act, long (*way)(long (*)(void))) {
    const long result = way(act->function);
    const uint32_t count = rules_in_list();
    if (result == 0 && count == act->others + act->more) {
        return 0;
    }
    fprintf(stderr, "rules: %s beside %u others gives %ld and leaves %u\n", act->name, act->others, result, count);
    return 1;
}

/* What the library and the C library do only once has been done before anything is counted. */
static int carry_out_all(long (*way)(long (*)(void))) {
    int failures = adp_fp_init() != ADP_OK;
    others = 0;
    for (size_t i = 0; i < sizeof kActs / sizeof *kActs; ++i) {
        while (others < kActs[i].others) {
            failures += install() != 0;
            ++others;
        }
        failures += carry_out(&kActs[i], way);
    }
    while (others > 0) {
        --others;
        failures += delete () != 0;
    }
    return failures;
}

int main(void) {
    prepare();
    const int failures = carry_out_all(warm_up) + carry_out_all(measure);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
