/**
 * @file session.h
 * What the command tells the library that is loaded in front of the program, in environment variables.
 */
#pragma once

#include <inttypes.h>
#include <stdint.h>

namespace adptrace::record {

inline constexpr char kFileVariable[] = "ADPTRACE_FILE"; /**< the recording, an absolute path */
/** What else there is in struct Session, as numbers in its order, with colons between them. */
inline constexpr char kSessionVariable[] = "ADPTRACE_SESSION";

struct Session {
    int64_t process = 0; /**< the first */
    int64_t began = 0;   /**< nanoseconds of the monotonic clock at the header */
    uint64_t device = 0; /**< of the recording, which may have been replaced meanwhile */
    uint64_t inode = 0;
    uint64_t follows = 0; /**< whether other processes than the first are recorded */
    uint64_t frames = 0;  /**< whether frames are */
};

inline constexpr char kSessionFormat[] = "%" PRId64 ":%" PRId64 ":%" PRIu64 ":%" PRIu64 ":%" PRIu64 ":%" PRIu64;
inline constexpr int kSessionNumbers = 6;

/** Nanoseconds of the monotonic clock, which is the same in all processes. */
int64_t nanoseconds_now();

}  // namespace adptrace::record
