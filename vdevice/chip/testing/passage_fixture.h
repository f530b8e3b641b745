// For tests: a chip of which one can see what it has decided about a frame.
#pragma once

#include "vdevice/chip/testing/field_fixture.h"
#include "vdevice/chip/testing/recording_watcher.h"

namespace vdevice::chip::test {

class PassageTest : public FieldRulesTest {
  protected:
    PassageTest() { chip_.set_watcher(&watcher_); }

    /** What has been decided about the frame. It must be the only one that passes. */
    Passage passage(int port, const Octets &frame, Time now = std::chrono::seconds{1}) {
        watcher_.take_passages();
        send(port, frame, now);
        const std::vector<Passage> passages = watcher_.take_passages();
        EXPECT_EQ(passages.size(), 1U);
        return passages.at(0);
    }

    RecordingWatcher watcher_;
};

}  // namespace vdevice::chip::test
