// Handles signals of invalid memory accesses during a call.
#include "tools/adpsh/guard.h"

#include <stddef.h>
#include <array>
#include <csetjmp>
#include <csignal>

namespace adpsh {

namespace {

constexpr std::array kSignals = {SIGSEGV, SIGBUS, SIGFPE};

thread_local sigjmp_buf t_return;
thread_local volatile std::sig_atomic_t t_guarding = 0;
thread_local Fault t_fault;

void on_fault(int signal, siginfo_t *info, void *) {
    if (t_guarding == 0) {
        std::signal(signal, SIG_DFL);  // not in a call: the default action when the instruction runs again
        return;
    }
    t_fault = {signal, reinterpret_cast<uintptr_t>(info->si_addr)};
    siglongjmp(t_return, 1);
}

/** Installs the handlers and restores the previous ones. */
class Handlers {
  public:
    Handlers() {
        struct sigaction action = {};
        action.sa_sigaction = on_fault;
        action.sa_flags = SA_SIGINFO | SA_NODEFER;
        sigemptyset(&action.sa_mask);
        for (size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &action, &before_[i]);
        }
    }
    ~Handlers() {
        for (size_t i = 0; i < kSignals.size(); ++i) {
            sigaction(kSignals[i], &before_[i], nullptr);
        }
    }
    Handlers(const Handlers &) = delete;
    Handlers &operator=(const Handlers &) = delete;

  private:
    std::array<struct sigaction, kSignals.size()> before_ = {};
};

}  // namespace

Fault run_guarded(const std::function<void()> &function) {
    const Handlers handlers;
    t_fault = {};
    if (sigsetjmp(t_return, 1) == 0) {
        t_guarding = 1;
        function();
    }
    t_guarding = 0;
    return t_fault;
}

}  // namespace adpsh
