/**
 * @file session.h
 * The shell's state, and the execution of its lines.
 */
#pragma once

#include "tools/adpsh/convert.h"
#include "tools/adpsh/frame_socket.h"
#include "tools/adpsh/multicast_groups.h"
#include "tools/adpsh/parser.h"
#include "tools/adpsh/report.h"

#include <stddef.h>
#include <string_view>

namespace adpsh {

struct SessionOptions {
    bool json = false;
    bool trace = false;
    bool at_terminal =
        false;  ///< somebody types the lines: errors need not name them, and a first empty line is a question
};

/** How to begin, for somebody at a terminal. */
constexpr std::string_view kHint =
    "'map' fills the port map, 'help' lists commands and topics, 'help vlan' is a topic, 'help WORD' searches.";

class Session {
  public:
    explicit Session(SessionOptions options);

    /** Executes one line and reports on it. @return whether it could be executed */
    bool run(std::string_view line);

    [[nodiscard]] bool is_over() const { return is_over_; }
    /** Whether an answer was a failure: a difference that an audit found. */
    [[nodiscard]] bool has_failed() const { return has_failed_; }

    // For the shell's own commands.
    void end() { is_over_ = true; }
    void trace(bool on) { options_.trace = on; }
    [[nodiscard]] bool is_json() const { return options_.json; }
    [[nodiscard]] Variables &variables() { return variables_; }
    [[nodiscard]] FrameSocket &frames() { return frames_; }
    [[nodiscard]] const MulticastGroups &multicast_groups() const { return multicast_groups_; }
    /** Throws a LineError when the library is in an unknown state. */
    void check_library() const;

  private:
    void execute_line(std::string_view line);
    void execute_unknown(const Command &command);
    void hint();

    SessionOptions options_;
    std::unique_ptr<Report> report_;
    size_t line_ = 0;
    bool is_over_ = false;
    bool has_failed_ = false;
    bool is_crashed_ = false;
    bool was_used_ = false;
    Variables variables_;
    FrameSocket frames_;
    MulticastGroups multicast_groups_;
};

}  // namespace adpsh
