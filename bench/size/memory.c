// Starts the library up, as a management process does, and prints the private memory of its mappings: a line "start-end
// size private" in bytes for each mapping of libadp.so. Private pages are those that the process has written to. Pages
// of a file that was built just now are dirty too, but shared.
#include <adp/adp.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define PORT_OFFSET 3u  // user port i is physical port i + 3 on the default board
#define LIBRARY "/libadp.so"
#define KILOBYTE 1024u
#define LONGEST_LINE 512

static int start_up(void) {
    int failed = adp_set_max_phy_port_num(ADP_USER_PORTS) != ADP_OK || adp_add_cpu_port(0, 0, 0, 0, 0) != ADP_OK;
    for (uint32_t port = 1; !failed && port <= ADP_USER_PORTS; ++port) {
        failed = adp_add_phy_port(port, 0, 0, port + PORT_OFFSET, 0) != ADP_OK;
    }
    return failed || adp_modules_init() != ADP_OK || adp_qos_init() != ADP_OK;
}

/** The number behind a label in a line, or -1 in other lines. */
static long kilobytes_in(const char *line, const char *label) {
    const size_t length = strlen(label);
    return strncmp(line, label, length) == 0 ? strtol(line + length, NULL, 10) : -1;
}

static int show_mappings(FILE *maps) {
    char line[LONGEST_LINE];
    char range[LONGEST_LINE] = "";
    long size = 0;
    int shown = 0;
    while (fgets(line, sizeof line, maps) != NULL) {
        unsigned long start = 0;
        unsigned long end = 0;
        if (sscanf(line, "%lx-%lx ", &start, &end) == 2) {
            const char *name = strstr(line, LIBRARY);
            snprintf(range, sizeof range, "%s", name != NULL && name[strlen(LIBRARY)] == '\n' ? line : "");
            range[strcspn(range, " ")] = '\0';
        } else if (kilobytes_in(line, "Size:") >= 0) {
            size = kilobytes_in(line, "Size:");
        } else if (range[0] != '\0' && kilobytes_in(line, "Anonymous:") >= 0) {
            printf("%s %ld %ld\n", range, size * (long)KILOBYTE, kilobytes_in(line, "Anonymous:") * (long)KILOBYTE);
            ++shown;
        }
    }
    return shown;
}

int main(void) {
    if (start_up() != 0) {
        fputs("start-up failed\n", stderr);
        return EXIT_FAILURE;
    }
    FILE *maps = fopen("/proc/self/smaps", "r");
    if (maps == NULL || show_mappings(maps) == 0) {
        fputs("the library's mappings cannot be read\n", stderr);
        return EXIT_FAILURE;
    }
    fclose(maps);
    return EXIT_SUCCESS;
}
