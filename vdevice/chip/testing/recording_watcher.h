// For tests: a watcher that keeps what it sees.
#pragma once

#include <utility>
#include <vector>

#include "vdevice/chip/pipeline/watcher.h"

namespace vdevice::chip::test {

class RecordingWatcher final : public Watcher {
  public:
    struct LostCopy {
        int port;
        Lost reason;
        Origin origin;

        friend bool operator==(const LostCopy &, const LostCopy &) = default;
    };

    void passed(const Passage &frame) override { passages_.push_back(frame); }
    void left(int port, const Frame & /*copy*/, const Dispatch &dispatch) override {
        left_.emplace_back(port, dispatch.origin);
    }
    void lost(int port, const Frame & /*copy*/, const Dispatch &dispatch, Lost reason) override {
        lost_.push_back({port, reason, dispatch.origin});
    }

    /** What it has seen since the last call. The octets that a passage points to are gone. */
    std::vector<Passage> take_passages() { return std::exchange(passages_, {}); }
    std::vector<std::pair<int, Origin>> take_left() { return std::exchange(left_, {}); }
    std::vector<LostCopy> take_lost() { return std::exchange(lost_, {}); }

  private:
    std::vector<Passage> passages_;
    std::vector<std::pair<int, Origin>> left_;
    std::vector<LostCopy> lost_;
};

}  // namespace vdevice::chip::test
