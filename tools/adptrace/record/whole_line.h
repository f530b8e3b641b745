// A line that is in the file whole or not at all.
#pragma once

#include <stddef.h>

namespace adptrace::record {

/**
 * Appends to a file opened with O_APPEND. Where there is no room for all of it what was written is taken back, since
 * other processes may write lines behind it once there is room again.
 *
 * @return 0, or an error number
 */
int append_whole(int fd, const char *text, size_t size);

}  // namespace adptrace::record
