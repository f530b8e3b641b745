/**
 * @file silence.h
 * Discards what the code under test prints.
 */
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace silence {

/** Discards what the library prints, for the lifetime of the object. */
class Silence {
  public:
    Silence() {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            saved_[stream - STDOUT_FILENO] = dup(stream);
        }
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        replace(nowhere, nowhere);
        close(nowhere);
    }
    ~Silence() {
        replace(saved_[0], saved_[1]);
        close(saved_[0]);
        close(saved_[1]);
    }
    Silence(const Silence &) = delete;
    Silence &operator=(const Silence &) = delete;

  private:
    static void replace(int out, int err) {
        std::fflush(stdout);
        std::fflush(stderr);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
    }

    int saved_[2] = {-1, -1};
};

}  // namespace silence
