/**
 * @file measure.h
 * What marks the functions whose instructions are counted: those that measure() calls, and all that they call.
 *
 * bench/instructions.py reads the count of each out of a profile or a log of the process, by its name. So the functions
 * must not be inlined, and each one measured must have a name of its own.
 */
#pragma once

/** Calls the function and has it counted. */
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
