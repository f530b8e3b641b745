/**
 * @file cases.h
 * A call that is measured and its floor, the driver's calls that it makes, made directly.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

/** The result of a call that hands out an address. */
#define SOME_ADDRESS (-123456789L)
/** The result of a call that has none, or the system's. */
#define ANY_RESULT (-123456790L)

/** Storage of an argument, fit for any type. */
#define BUFFER(size)               \
    union {                        \
        unsigned char bytes[size]; \
        unsigned long long align;  \
    }

struct bench_case {
    const char *name;
    void (*prepare)(void); /**< makes the arguments what they were when the call was recorded */
    void (*before)(void);  /**< the calls that make what this one finds */
    long (*call)(void);
    long (*floor)(void);
    long result; /**< the call's */
};

extern const struct bench_case bench_cases[];
extern const unsigned bench_case_count;
