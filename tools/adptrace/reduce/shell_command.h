/**
 * @file shell_command.h
 * A command that is run many times, each time on another file.
 */
#pragma once

#include <signal.h>

#include <chrono>
#include <exception>
#include <optional>
#include <string>

namespace adptrace {

/** Someone asked for the end while the command ran. */
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int signal) : signal_(signal) {}
    [[nodiscard]] const char *what() const noexcept override { return "interrupted"; }
    [[nodiscard]] int signal() const { return signal_; }

  private:
    int signal_;
};

/** While it exists, signals that ask for the end wait for run(). */
class ShellCommand {
  public:
    /** The shell's exit status for what it cannot run. */
    static constexpr int kNotRun = 126;
    static constexpr int kNotFound = 127;
    static constexpr int kSignalled = 128;

    /** In @p command `{}` stands for the file; without it the file's name is the last argument. */
    ShellCommand(std::string command, std::optional<std::chrono::milliseconds> limit);
    ShellCommand(const ShellCommand &) = delete;
    ShellCommand &operator=(const ShellCommand &) = delete;
    ~ShellCommand();

    /**
     * Runs the command in a process group of its own, without input and output. What is left of the group when the
     * command ends is killed.
     *
     * @return the exit status, 128 and more after a signal; none if it took too long. It may throw Interrupted.
     */
    [[nodiscard]] std::optional<int> run(const std::string &file) const;

  private:
    [[nodiscard]] std::string script(const std::string &file) const;
    [[nodiscard]] pid_t start(const std::string &file) const;

    std::string command_;
    std::optional<std::chrono::milliseconds> limit_;
    sigset_t awaited_{};
    sigset_t before_{};
};

}  // namespace adptrace
