/**
 * @file fake_system.h
 * System calls for unit tests: sockets, memory and time of the code under test, recorded and scripted.
 *
 * The linker redirects every call of socket, ioctl, sendto, close, malloc, calloc, free, usleep and time that an object
 * of the test program makes to this file. While the fake is off, all of them go to the system.
 *
 *     fake_system::Session session;   // on; off again at the end of the scope
 *     session.system().fail("socket", EPERM);
 *     EXPECT_EQ(adp_transmit_frame(...), -1);
 *     EXPECT_THAT(session.system().trace(), ElementsAre("socket(17, 3, 2048) -> -1"));
 *
 * While it is on, no socket call reaches the system: descriptors are invented, usleep() only advances the fake's time,
 * and time() is what the test set. Memory is allocated and counted; allocations can fail.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <ctime>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fake_system {

/** A frame given to sendto(), with its link-layer address. */
struct SentFrame {
    int descriptor = -1;
    std::vector<uint8_t> bytes;
    int flags = 0;
    uint32_t address_length = 0;
    uint16_t family = 0;
    uint16_t protocol = 0; /**< as in the address: network order */
    int32_t interface_index = 0;
    uint16_t hardware_type = 0;
    uint8_t packet_type = 0;
    uint8_t hardware_length = 0;
    std::vector<uint8_t> hardware_address;
};

class System {
  public:
    static constexpr int kFirstDescriptor = 1000;

    /** The answer to SIOCGIFINDEX for this interface; a name without one gets ENODEV. "eth0" starts as 7. */
    void set_interface(const std::string &name, int index) { interfaces_[name] = index; }
    void remove_interface(const std::string &name) { interfaces_.erase(name); }
    /** What time() returns, plus the seconds slept since. */
    void set_time(time_t now) { time_ = now; }

    /** Makes every call of this name (socket, ioctl, sendto, close) fail with @p error. */
    void fail(const std::string &name, int error) { failing_[name] = error; }
    /** Makes call number @p k of this name from now on fail. */
    void fail_call(const std::string &name, size_t k, int error);
    /** Makes the next sendto() report that many bytes instead of all. */
    void send_only(size_t bytes) { short_send_ = bytes; }
    /** Makes allocation number @p k from now on (0 is the next) return a null pointer. */
    void fail_allocation(size_t k) { failing_allocation_ = allocations_ + k; }

    /** Off: calls are counted and answered, but not traced, which is fast and needs no memory. */
    void record(bool on) { recording_ = on; }

    /** The calls in order, e.g. `ioctl(1000, SIOCGIFINDEX, "eth0") -> 0`; memory and time() are not in it. */
    [[nodiscard]] const std::vector<std::string> &trace() const { return trace_; }
    [[nodiscard]] const std::vector<SentFrame> &sent() const { return sent_; }
    /** Called with each line of the trace, for instance to merge it with the driver's. */
    void on_call(std::function<void(const std::string &)> listener) { listener_ = std::move(listener); }

    /** Called before memory is freed that was allocated while the fake was on. */
    void on_free(std::function<void(const void *)> listener) { free_listener_ = std::move(listener); }

    [[nodiscard]] size_t allocations() const { return allocations_; }
    /** Allocated while the fake was on, and not freed. */
    [[nodiscard]] size_t outstanding_allocations() const { return allocated_.size(); }
    [[nodiscard]] size_t open_descriptors() const { return open_.size(); }
    /** Microseconds of all usleep() calls. */
    [[nodiscard]] uint64_t slept() const { return slept_; }

    /** @name The wrapped calls */
    /** @{ */
    int socket(int domain, int type, int protocol);
    int ioctl(int descriptor, unsigned long request, void *argument);
    long sendto(int descriptor, const void *data, size_t size, int flags, const void *address, uint32_t length);
    int close(int descriptor);
    void *allocated(void *memory);
    bool fails_allocation();
    void freed(void *memory);
    int usleep(uint32_t microseconds);
    [[nodiscard]] time_t time() const;
    /** @} */

  private:
    /** The error of this call, or 0. */
    int error_of(const std::string &name);
    void add(const std::string &line);
    long finish(const std::string &line, long result, int error);
    int make_descriptor();

    std::map<std::string, int> interfaces_{{"eth0", 7}};
    std::map<std::string, int> failing_;
    std::map<std::string, std::map<size_t, int>> failing_calls_;
    std::map<std::string, size_t> counts_;
    std::optional<size_t> short_send_;
    std::optional<size_t> failing_allocation_;
    size_t allocations_ = 0;
    std::set<void *> allocated_;
    std::set<int> open_;
    std::vector<std::string> trace_;
    std::vector<SentFrame> sent_;
    std::function<void(const std::string &)> listener_;
    std::function<void(const void *)> free_listener_;
    bool recording_ = true;
    int next_descriptor_ = kFirstDescriptor;
    uint64_t slept_ = 0;
    time_t time_ = 0;
};

/** The system of the running session, or null. */
extern System *active;

/** A new fake system, on for the lifetime of the object. Only one at a time. */
class Session {
  public:
    Session();
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    System &system() { return system_; }

  private:
    System system_;
};

}  // namespace fake_system
