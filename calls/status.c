// Looks a result up. The table itself is generated.
#include <adp/status.h>
#include <stddef.h>

const adp_status_entry_t *adp_status_find(int32_t status) {
    uint32_t count = 0;
    const adp_status_entry_t *entries = adp_status_entries(&count);
    for (uint32_t i = 0; i < count; ++i) {
        if (entries[i].status == status) {
            return &entries[i];
        }
    }
    return NULL;
}

const char *adp_status_text(int32_t status) {
    const adp_status_entry_t *entry = adp_status_find(status);
    return entry == NULL ? "unknown result" : entry->text;
}
