/**
 * @file boundary.h
 * Where the library's calls come out: the program defines every imported call, and the few of the C library's that the
 * library sends frames with. They are found before those of the driver, since the program exports its symbols.
 */
#pragma once

#include <stdint.h>
#include <optional>
#include <span>

#include "calls/call_table.h"
#include "calls/exported.h"

namespace adptrace::replay {

/** Answers what the library calls while one of its calls is made. */
class Boundary {
  public:
    Boundary() = default;
    Boundary(const Boundary &) = delete;
    Boundary &operator=(const Boundary &) = delete;

    virtual int64_t imported_call(calls::CallId id, const void *const *arguments) = 0;
    virtual int32_t callback() = 0;
    /** A frame is about to be sent. */
    virtual void sends(std::span<const uint8_t> octets) = 0;
    /** Whether a frame is said to be sent, and an interface to be there; none: it is sent. */
    [[nodiscard]] virtual std::optional<bool> frames_succeed() const = 0;

  protected:
    ~Boundary() = default;
};

/** Asks the driver, or a service. Of a call of the logger the last argument is the text. */
class Driver {
  public:
    Driver() = default;
    Driver(const Driver &) = delete;
    Driver &operator=(const Driver &) = delete;
    virtual ~Driver() = default;

    virtual int64_t ask(calls::CallId id, const void *const *arguments) = 0;
};

/** Null while the driver runs, and on threads of others. */
Boundary *boundary_of_thread();

/** The result of an imported call that nobody answers. */
int64_t no_answer(calls::CallId id);

/** The thread's calls come out at @p boundary, or none while the driver runs, as long as the object lives. */
class At {
  public:
    explicit At(Boundary *boundary);
    ~At();
    At(const At &) = delete;
    At &operator=(const At &) = delete;

  private:
    Boundary *before_;
};

/** The driver of calls that come out elsewhere, those of its own threads for instance; null: they fail. */
void set_driver(Driver *driver);

/** The word that libadp takes as the ring-protection process's queue. */
void set_event_queue(uintptr_t queue);

}  // namespace adptrace::replay
