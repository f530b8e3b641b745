/**
 * @file exported.h
 * The library's interface as data: every exported call and table, and the headers' constants. The tables are generated
 * from the public headers. They refer to the library weakly: the program chooses the library.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <string_view>

#include "calls/element.h"
#include "calls/invoke.h"

namespace exported {

struct Call {
    const char *name;
    calls::Result result;
    const calls::Struct *layout; /**< of the struct whose address is the result, else null */
    std::span<const calls::Param> params;
    void *function; /**< null when the loaded library does not have the call */
    calls::Invoker invoker;
    const char *declaration;
    const char *doc;
};

/** A type of callback. */
struct Callback {
    const char *name;
    std::span<const calls::Param> params;
    void (*report)(); /**< passes each event to report_event() */
};

/** An exported table of rows x columns elements. */
struct Table {
    const char *name;
    calls::Element element;
    size_t rows;
    size_t columns;
    bool is_pointer;     /**< the table is the address of as many rows as the port map has */
    const void *address; /**< null when the loaded library does not have the table */
    const char *doc;
};

/** A struct of the headers, with the remark after each member. */
struct Structure {
    const calls::Struct *layout;
    const char *doc;
    const char *const *remarks; /**< as many as the layout has fields */
};

/** A constant of the headers, with the remark after it. */
struct Constant {
    const char *name;
    int64_t value;
    const char *doc;
    const char *enumeration; /**< the tag of its enumeration, empty for a macro */
};

std::span<const Call> calls();
std::span<const Table> tables();
std::span<const Structure> structures();
std::span<const Constant> constants();

/** Null if there is none of this name. */
const Call *find_call(std::string_view name);
const Table *find_table(std::string_view name);
const Structure *find_structure(std::string_view name);
const Constant *find_constant(std::string_view name);

/**
 * Makes the call.
 *
 * @param function  the library's own, or another one of the same type
 * @param memory    for each parameter the address of the value, or the address that is passed
 * @return the result; an address as a number, see calls::address_of()
 */
int64_t invoke(const Call &call, void *function, void *const *memory);

/** Receives events; @p arguments holds the address of each of the callback's arguments. */
using EventReceiver = int32_t (*)(const Callback &callback, const void *const *arguments);

/** Sets the receiver of the callbacks' events, which runs on the library's thread; null: events are ignored. */
void receive_events(EventReceiver receiver);

/** Passes an event to the receiver. @return the receiver's result, 0 without one */
int32_t report_event(const Callback &callback, const void *const *arguments);

}  // namespace exported
