/**
 * @file measure.h
 * measure() marks the functions whose instructions are counted: those that it calls, with everything that they call.
 *
 * bench/instructions.py finds the count of each in a profile or a log of the process, by its name. So the functions
 * must not be inlined, and each needs a name of its own.
 */
#pragma once

/** Calls the function, counted. */
__attribute__((noipa)) static long measure(long (*function)(void)) {
    const long result = function();
    __asm__ volatile("" ::: "memory");  // so that this call is no jump
    return result;
}

/** Calls the function uncounted. */
__attribute__((noipa)) static long warm_up(long (*function)(void)) {
    const long result = function();
    __asm__ volatile("" ::: "memory");
    return result;
}
