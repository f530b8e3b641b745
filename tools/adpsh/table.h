/**
 * @file table.h
 * The shell's picture of the library: every exported call and table as data, generated from the public headers.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

/** What an element is. A word is a number or an address; opaque storage is bytes that only the driver understands. */
enum class Kind { kU8, kU16, kU32, kU64, kI16, kI32, kWord, kText, kRecord, kCallback, kOpaque };

struct Record;
struct Callback;

/** The type of one element. */
struct Type {
    Kind kind;
    size_t size;
    bool is_interface = false;  ///< an interface number, shown with its name when it is an aggregation interface
    const Record *record = nullptr;
    const Callback *callback = nullptr;
};

constexpr Type kWord32 = {Kind::kU32, sizeof(uint32_t)};
constexpr Type kCounter = {Kind::kU64, sizeof(uint64_t)};

/** A member of a record: `count` elements at `offset`, or the address of some. */
struct Field {
    const char *name;
    Type type;
    size_t count;
    size_t offset;
    bool is_pointer;
};

/** A C struct. */
struct Record {
    const char *name;
    size_t size;
    std::span<const Field> fields;
};

/** Which way a parameter's content goes. */
enum class Direction { kValue, kIn, kOut, kInOut };

/** How a parameter is written on the line and laid out in memory, where its type alone does not say. */
enum class Shape {
    kPlain,        ///< a value, or the address of elements
    kFrameRecord,  ///< a record that holds a frame's address and length
    kList,         ///< a linked list of interface numbers
    kOutPointer    ///< the address of a pointer that the call sets
};

constexpr int kNoCounter = -1;

/** A parameter of a call, or a callback's. `counter` is the index of the parameter that gives the extent. */
struct Parameter {
    const char *name;
    Type type;
    Direction direction;
    Shape shape;
    size_t count;
    int counter;
};

/** A type of callback; `print` reports each event to the shell. */
struct Callback {
    const char *name;
    std::span<const Parameter> parameters;
    void (*print)();
};

enum class ResultKind { kNone, kStatus, kI32, kU32, kInterface, kText, kRecord };

/** What a call returned: the number, or the address that it handed out. */
struct Result {
    int64_t number;
    const void *address;
};

/** An exported call. */
struct Call {
    const char *name;
    ResultKind result;
    const Record *record;
    std::span<const Parameter> parameters;
    Result (*invoke)(void *const *arguments);
    bool is_present;  ///< whether the loaded library has the call
    const char *declaration;
    const char *doc;
};

/** An exported table of `rows` x `columns` elements; behind a pointer there are as many rows as the port map has. */
struct Table {
    const char *name;
    Type type;
    size_t rows;
    size_t columns;
    bool is_pointer;
    const void *address;  ///< null when the loaded library does not have the table
    const char *doc;
};

/** A named constant of the headers, with the header's remark on it. */
struct Constant {
    const char *name;
    int64_t value;
    const char *doc;
};

std::span<const Call> calls();
std::span<const Table> tables();
std::span<const Constant> constants();

const Call *find_call(std::string_view name);
const Table *find_table(std::string_view name);
const Constant *find_constant(std::string_view name);
/** The constant that names a status, or null. */
const Constant *find_status(int64_t status);

/** Whether a parameter is given on the line. */
inline bool is_input(const Parameter &parameter) {
    return parameter.direction != Direction::kOut;
}
inline bool is_output(const Parameter &parameter) {
    return parameter.direction == Direction::kOut || parameter.direction == Direction::kInOut;
}
/** Whether the count can be told from an array that the line gives. */
bool is_inferable_count(const Call &call, size_t index);

/** How the call is written: its name, inputs in order with inferable counts in brackets, and outputs. */
std::string usage(const Call &call);

}  // namespace adpsh
