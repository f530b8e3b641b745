// Link changes that a callback was called with, on whatever thread.
#pragma once

#include <stdint.h>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vdevice {

class LinkChanges {
  public:
    static constexpr std::chrono::seconds kPatience{60};

    void add(std::vector<uint32_t> change) {
        const std::lock_guard guard(mutex_);
        changes_.push_back(std::move(change));
        thread_ = std::this_thread::get_id();
        news_.notify_all();
    }
    /** Takes the changes when there are so many of them, or when no more come. */
    std::vector<std::vector<uint32_t>> wait_for(size_t number) {
        std::unique_lock lock(mutex_);
        news_.wait_for(lock, kPatience, [&] { return changes_.size() >= number; });
        return std::exchange(changes_, {});
    }
    /** The thread that the last change came on. */
    std::thread::id thread() {
        const std::lock_guard guard(mutex_);
        return thread_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable news_;
    std::vector<std::vector<uint32_t>> changes_;
    std::thread::id thread_;
};

}  // namespace vdevice
