/**
 * @file recording_file.h
 * The file of a recording, as the command makes and ends it.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <span>
#include <string>

#include "tools/adptrace/record/program.h"
#include "tools/adptrace/record/session.h"
#include "vdevice/sockets/unique_fd.h"

namespace adptrace::record {

/** What is in it. */
struct Contents {
    size_t processes = 0;
    size_t calls = 0;
    uint64_t octets = 0;
    bool has_process = false; /**< that was asked for */
};

class RecordingFile {
  public:
    /** Makes a new file. One of this name is replaced if it is a recording, or empty. Throws a Refusal. */
    explicit RecordingFile(const std::string &name);

    /** @param command  the program and its arguments */
    void write_header(std::span<const std::string> command);
    void write_exit(const Ending &ending);
    void remove();

    /** But for the process. */
    [[nodiscard]] Session session(bool follows, bool frames) const;
    /** Absolute. */
    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] Contents contents(int64_t process) const;

  private:
    std::string name_;
    std::string path_;
    vdevice::UniqueFd fd_;
    int64_t began_ = 0;
};

}  // namespace adptrace::record
