// Threads that wait for work.
#include "tools/adptrace/replay/threads.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "tools/adptrace/command.h"

namespace adptrace::replay {

namespace {

constexpr size_t kMostThreads = 256;

}  // namespace

class Threads::Worker {
  public:
    Worker() : thread_([this] { work(); }) {}
    ~Worker() {
        hand_over(nullptr);
        thread_.join();
    }
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    void run(const std::function<void()> &work) {
        std::unique_lock lock = hand_over(&work);
        changed_.wait(lock, [this] { return !has_work_; });
        if (failure_ != nullptr) {
            std::rethrow_exception(std::exchange(failure_, nullptr));
        }
    }

  private:
    /** No work is the end. */
    std::unique_lock<std::mutex> hand_over(const std::function<void()> *work) {
        std::unique_lock lock(mutex_);
        work_ = work;
        has_work_ = true;
        changed_.notify_all();
        return lock;
    }

    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return has_work_; });
            if (work_ == nullptr) {
                return;
            }
            try {
                (*work_)();
            } catch (...) {
                failure_ = std::current_exception();
            }
            has_work_ = false;
            changed_.notify_all();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    const std::function<void()> *work_ = nullptr;
    bool has_work_ = false;
    std::exception_ptr failure_;
    std::thread thread_;  // last: it uses the others
};

Threads::Threads() = default;
Threads::~Threads() = default;

void Threads::run(uint32_t thread, const std::function<void()> &work) {
    std::unique_ptr<Worker> &worker = workers_[thread];
    if (worker == nullptr) {
        if (workers_.size() > kMostThreads) {
            throw Refusal("the recording has more than " + std::to_string(kMostThreads) + " threads.");
        }
        worker = std::make_unique<Worker>();
    }
    worker->run(work);
}

}  // namespace adptrace::replay
