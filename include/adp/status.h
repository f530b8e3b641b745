/**
 * @file status.h
 * Names and sentences of results, for programs that report them: the library's codes and the virtual device's results.
 * They are in the static library adp_status, not in libadp.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** A result and what it means. */
typedef struct {
    int32_t
        status; /**< 0, -1 or above 0 one of the library's codes; from -2 down one of the virtual device's results */
    const char *name; /**< ADP_E_DRIVER for one of the library, vlan_exists for one of the virtual device */
    const char *text; /**< what it means */
} adp_status_entry_t;

/**
 * Lists all results that have a name: those of the library in ascending order, then those of the virtual device.
 *
 * @param[out] count  number of entries
 * @return the first of them
 */
const adp_status_entry_t *adp_status_entries(uint32_t *count);

/**
 * Finds what is known of a result.
 *
 * @param status  result of a call of the library, or of a driver call; any number
 * @return its entry; null for a number without a name
 */
const adp_status_entry_t *adp_status_find(int32_t status);

/**
 * Gives what a result means, to be printed.
 *
 * @param status  as in adp_status_find()
 * @return the entry's text; "unknown result" for a number without a name
 */
const char *adp_status_text(int32_t status);

ADP_END_DECLS
