/**
 * @file cases.h
 * A measured call, and its floor: its driver calls made directly.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>

/** The result of a call that returns an address. */
#define SOME_ADDRESS (-123456789L)
/** The result of a call without one, or with one of the system. */
#define ANY_RESULT (-123456790L)

/** Storage of an argument of any type. */
#define BUFFER(size)               \
    union {                        \
        unsigned char bytes[size]; \
        unsigned long long align;  \
    }

struct bench_case {
    const char *name;
    void (*prepare)(void); /**< gives the arguments their recorded values */
    void (*before)(void);  /**< calls that prepare the tables */
    long (*call)(void);
    long (*floor)(void);
    long result; /**< the call's */
};

extern const struct bench_case bench_cases[];
extern const unsigned bench_case_count;
