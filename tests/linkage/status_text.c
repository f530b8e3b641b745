// A C program that reports a result by name and text.
#include <adp/status.h>
#include <stddef.h>
#include <stdio.h>

int main(void) {
    const adp_status_entry_t *entry = adp_status_find(-12);
    if (entry == NULL) {
        return 1;
    }
    printf("%d is %s: %s\n", (int)entry->status, entry->name, adp_status_text(entry->status));
    return 0;
}
