// Several watchers in the place of the chip's one.
#pragma once

#include <vector>

#include "vdevice/chip/pipeline/watcher.h"

namespace vdevice::chip {

class Watchers final : public Watcher {
  public:
    bool empty() const { return watchers_.empty(); }
    void add(Watcher &watcher) { watchers_.push_back(&watcher); }
    void remove(Watcher &watcher) { std::erase(watchers_, &watcher); }

    void begun() override {
        for (Watcher *watcher : watchers_) {
            watcher->begun();
        }
    }
    void passed(const Passage &frame) override {
        for (Watcher *watcher : watchers_) {
            watcher->passed(frame);
        }
    }
    void left(int port, const Frame &copy, const Dispatch &dispatch) override {
        for (Watcher *watcher : watchers_) {
            watcher->left(port, copy, dispatch);
        }
    }
    void queued(int port, const Frame &copy, const Dispatch &dispatch) override {
        for (Watcher *watcher : watchers_) {
            watcher->queued(port, copy, dispatch);
        }
    }
    void lost(int port, const Frame &copy, const Dispatch &dispatch, Lost reason) override {
        for (Watcher *watcher : watchers_) {
            watcher->lost(port, copy, dispatch, reason);
        }
    }

  private:
    std::vector<Watcher *> watchers_;
};

}  // namespace vdevice::chip
