/**
 * @file session.h
 * The shell's state, and the execution of its lines.
 */
#pragma once

#include "tools/adpsh/convert.h"
#include "tools/adpsh/frame_socket.h"
#include "tools/adpsh/parser.h"
#include "tools/adpsh/report.h"

#include <stddef.h>
#include <string_view>

namespace adpsh {

struct SessionOptions {
    bool json = false;
    bool trace = false;
    bool numbered = false;  ///< errors name their line, because it is not on the screen above them
};

class Session {
  public:
    explicit Session(SessionOptions options);

    /** Executes one line and reports on it. @return whether it could be executed */
    bool run(std::string_view line);

    [[nodiscard]] bool is_over() const { return is_over_; }

    // For the shell's own commands.
    void end() { is_over_ = true; }
    void trace(bool on) { options_.trace = on; }
    [[nodiscard]] Variables &variables() { return variables_; }
    [[nodiscard]] FrameSocket &frames() { return frames_; }

  private:
    void execute_line(std::string_view line);

    SessionOptions options_;
    std::unique_ptr<Report> report_;
    size_t line_ = 0;
    bool is_over_ = false;
    bool is_crashed_ = false;
    Variables variables_;
    FrameSocket frames_;
};

}  // namespace adpsh
