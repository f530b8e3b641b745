// What the program that the tests record does to descriptors and limits.
#include <adp/adp.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tools/adptrace/record/testing/program.h"

enum { kDescriptors = 1024, kFirst = 3, kMany = 2000, kFileMode = 0600 };

/* Closes every descriptor, and opens a file of its own under each of the numbers, as only an unlucky daemon does. */
int close_all(void) {
    const char *removed = getenv("REMOVED_FILE");
    if (set_up() != 0 || (removed != NULL && unlink(removed) != 0))
        return 1;
    for (int fd = kFirst; fd < kDescriptors; fd++)
        close(fd);
    const int file = open(getenv("OWN_FILE"), O_WRONLY | O_CREAT | O_APPEND, kFileMode);
    while (dup(file) >= 0 && fcntl(kDescriptors - 1, F_GETFD) < 0) {
    }
    return make_calls();
}

/* Makes calls under a limit on the size of files that a recording reaches: only the recording may suffer. */
int reach_limit(void) {
    int failed = set_up();
    for (uint32_t i = 0; i < kMany; i++)
        failed |= adp_double_tag_set(1, i % 2);
    return failed;
}

/* The same with a limit that the program sets itself, below the size that the recording has. */
int lower_limit(void) {
    const struct rlimit limit = {0, RLIM_INFINITY};
    return set_up() != 0 || setrlimit(RLIMIT_FSIZE, &limit) != 0 ? 1 : make_calls();
}
