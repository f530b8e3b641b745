// For tests: the virtual chip in the test's own process, behind the library's driver calls.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "generated/call_id.h"
#include "vdevice/chip/switch.h"
#include "vdevice/chip/testing/recording_sink.h"
#include "vdevice/driver/driver.h"

namespace switchd::test {

/** While it lives, the library's driver calls go to it. The library's port map is that of the default board. */
class VirtualSwitch {
  public:
    VirtualSwitch();
    ~VirtualSwitch();
    VirtualSwitch(const VirtualSwitch &) = delete;
    VirtualSwitch &operator=(const VirtualSwitch &) = delete;

    vdevice::chip::Switch &chip() { return chip_; }
    static int chip_port_of(uint32_t user_port) { return *vdevice::driver::Board{}.chip_port(user_port); }

    /** Lets a frame's source be learned. */
    void learn(uint64_t mac, uint16_t vid, uint32_t user_port);

    /** Calls since the last question. */
    size_t take_count() { return std::exchange(count_, 0); }
    /** Keeps the calls' texts from now on. */
    void record() { recording_ = true; }
    std::vector<std::string> take_trace() { return std::exchange(trace_, {}); }

    /** Call number @p k from now on, 0 for the next, fails without having done anything. */
    void fail_call(size_t k) { failing_ = count_ + k; }
    /** So do all calls of a name, until an empty one is given. */
    void fail_every(std::string name) { failing_name_ = std::move(name); }
    /** Called after each call. */
    void watch(std::function<void()> watcher) { watcher_ = std::move(watcher); }

    int64_t call(calls::CallId id, const void *const *arguments);

  private:
    VirtualSwitch *before_;
    vdevice::chip::test::RecordingSink sink_;
    vdevice::chip::Switch chip_{sink_};
    vdevice::driver::Driver driver_;
    std::vector<std::string> trace_;
    bool recording_ = false;
    size_t count_ = 0;
    std::optional<size_t> failing_;
    std::string failing_name_;
    std::function<void()> watcher_;
};

/** The library's tables as those of a process that has just begun. */
void begin_new_process();

}  // namespace switchd::test
