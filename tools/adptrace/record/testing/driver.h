/* What the test program's driver does for some modes. */
#pragma once

enum {
    DRIVER_CRASHES = 0x100,
    DRIVER_WAITS = 0x101,
    DRIVER_CALLS_BACK = 0x102,
    DRIVER_SETS_ERRNO = 0x103,
    DRIVER_ERRNO = 77,
};

/* What was logged last. */
const char *driver_logged(void);
