/**
 * @file silence.h
 * Keeps what the code under test prints from the reader.
 */
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace silence {

/** Sends what the library prints nowhere, for its lifetime. */
class Silence {
  public:
    Silence() {
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            kept_[stream - STDOUT_FILENO] = dup(stream);
        }
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        replace(nowhere, nowhere);
        close(nowhere);
    }
    ~Silence() {
        replace(kept_[0], kept_[1]);
        close(kept_[0]);
        close(kept_[1]);
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

    int kept_[2] = {-1, -1};
};

}  // namespace silence
