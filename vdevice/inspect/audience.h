// The clients that listen to what is told frame by frame, each by a queue of its own. One that has left is found when
// its queue is gone.
#pragma once

#include <stddef.h>
#include <algorithm>
#include <memory>
#include <vector>

namespace vdevice::inspect {

template <typename Queue>
class Audience {
  public:
    bool empty() const { return queues_.empty(); }
    size_t size() const { return queues_.size(); }

    std::shared_ptr<Queue> add(Queue queue) {
        auto kept = std::make_shared<Queue>(std::move(queue));
        queues_.push_back(kept);
        return kept;
    }
    /** Forgets those who have left. */
    void forget_absent() {
        std::erase_if(queues_, [](const auto &queue) { return queue.expired(); });
    }

    template <typename Visit>
    void for_each(Visit visit) const {
        for (const auto &queue : queues_) {
            if (const auto kept = queue.lock()) {
                visit(*kept);
            }
        }
    }

  private:
    std::vector<std::weak_ptr<Queue>> queues_;
};

}  // namespace vdevice::inspect
