// A copy of the process writes the text to a file in memory.
#include "vdevice/process/background_text.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <string_view>

#include "vdevice/io/error.h"

namespace vdevice {
namespace {

constexpr int kNiceness = 5;
constexpr std::string_view kMade = "!";

bool write_all(int fd, std::string_view text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t length = write(fd, text.data() + done, text.size() - done);
        if (length < 0) {
            return false;
        }
        done += static_cast<size_t>(length);
    }
    return true;
}

/** The process that makes the text. It ends without the destructors of what belongs to the other one. */
[[noreturn]] void run(int fd, int result, const std::function<std::string()> &make) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setpriority(PRIO_PROCESS, 0, kNiceness);
    try {
        _exit(write_all(fd, make()) && write_all(result, kMade) ? EXIT_SUCCESS : EXIT_FAILURE);
    } catch (const std::exception &) {
        _exit(EXIT_FAILURE);
    }
}

}  // namespace

BackgroundText::BackgroundText(const std::function<std::string()> &make) : text_{memfd_create("answer", MFD_CLOEXEC)} {
    std::array<int, 2> ends{};
    if (!text_ || pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw io::error_from_errno("make a long answer");
    }
    // At its end, whatever that is, the process has closed the other end.
    result_.reset(ends[0]);
    const UniqueFd other_end{ends[1]};
    pid_ = fork();
    if (pid_ == 0) {
        run(text_.get(), other_end.get(), make);
    }
    if (pid_ < 0) {
        throw io::error_from_errno("make a long answer");
    }
}

BackgroundText::~BackgroundText() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

UniqueFd BackgroundText::take() {
    std::string result(kMade.size(), 0);
    if (read(result_.get(), result.data(), result.size()) <= 0 || result != kMade) {
        return UniqueFd{};
    }
    lseek(text_.get(), 0, SEEK_SET);  // the processes share the place that the writing has come to
    return std::move(text_);
}

}  // namespace vdevice
