/**
 * @file sink.h
 * The recording as the library writes it: one write(2) a line, at the end of the file. The program shares the process,
 * so it may close the descriptor, or open another file under its number.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>
#include <atomic>
#include <string>

namespace adptrace::record {

class Sink {
  public:
    /** False if there is no such file; then every line is ignored. */
    bool open(const char *path, uint64_t device, uint64_t inode);

    /** A line with its end. When it cannot be written, one sentence goes to standard error, and no line is written
     * again. */
    void write_line(const char *text, size_t size);

    [[nodiscard]] bool is_stopped() const { return is_stopped_.load(std::memory_order_relaxed); }
    /** The process may have another limit on the size of files. */
    void read_limit();

  private:
    [[nodiscard]] bool is_recording(int fd) const;
    int open_again();
    [[nodiscard]] bool has_room(int fd, size_t size) const;
    void stop(int error);

    std::string path_;
    uint64_t device_ = 0;
    uint64_t inode_ = 0;
    std::atomic<int> fd_{-1};
    int mark_ = 0;                        /**< the signal that marks the descriptor, 0 where it cannot be marked */
    std::atomic<size_t> limit_{SIZE_MAX}; /**< octets; SIZE_MAX: none */
    std::atomic<bool> is_stopped_{true};
    dev_t errors_device_ = 0; /**< standard error, as it was at the start */
    ino_t errors_inode_ = 0;
};

}  // namespace adptrace::record
