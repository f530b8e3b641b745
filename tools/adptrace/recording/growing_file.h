/**
 * @file growing_file.h
 * The lines of a recording that may still be written.
 */
#pragma once

#include <stdint.h>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace adptrace {

class GrowingFile {
  public:
    /** "-" for standard input. Throws BadRecording. */
    explicit GrowingFile(const std::string &name);

    /** Gives the lines that have been written since, without their ends. Throws BadRecording. */
    void read(const std::function<void(std::string_view line)> &take);
    /** What has been written of a line without an end. */
    [[nodiscard]] std::string_view rest() const { return rest_; }
    /** Throws BadRecording if nothing can follow: the file was truncated, removed or replaced. */
    void check() const;

  private:
    std::string name_;
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
    int64_t read_ = 0; /**< octets */
    std::string rest_;
};

}  // namespace adptrace
