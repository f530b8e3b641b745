/**
 * @file comparison.h
 * Runs a sequence on the library and on the model, from tables as they are loaded, and compares everything after each
 * call. It needs a process of its own, since the library cannot be reset.
 */
#pragma once

#include <stdint.h>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/differential/arguments.h"
#include "tests/differential/effects.h"
#include "tests/differential/sequence.h"
#include "tests/support/fake_system.h"

namespace differential {

/** From now on this call's result counts as another one than the library gave, to see that differences are found. */
void falsify(const char *call);

/** Where library and model differ. */
struct Difference {
    std::string what;
    std::vector<std::string> library; /**< the calls that the library made in that step */
    std::vector<std::string> model;
};

/** Only for a process that ends afterwards: it takes over the standard streams. */
class Comparison {
  public:
    /** @p trace: where the complete trace goes, null for none; with @p describes the calls are described in text. */
    Comparison(std::FILE *trace, bool describes);
    Comparison(const Comparison &) = delete;
    Comparison &operator=(const Comparison &) = delete;

    /** Makes one call on both sides; true when they agree. */
    bool run(const Step &step);
    [[nodiscard]] const Difference &difference() const { return difference_; }
    /** Driver, service and system calls, and events, so far. */
    [[nodiscard]] uint64_t imported_calls() const { return imported_calls_; }
    /** The calls that the library made in the last step, as text. */
    [[nodiscard]] const std::vector<std::string> &lines() const { return lines_; }
    /** A step as a line for adpsh. */
    static std::string script(const Step &step);

  private:
    Effects run_side(fake_system::System &system, const Step &step, void *function, const Arguments &arguments);
    [[nodiscard]] std::string compare(const Arguments &library_arguments, const Arguments &model_arguments,
                                      const Effects &library, const Effects &model) const;
    [[nodiscard]] std::string compare_resources() const;
    void write_trace(const std::string &line, const Arguments &arguments, const Effects &effects) const;

    std::FILE *trace_;
    bool describes_;
    Capture out_{&stdout};
    Capture err_{&stderr};
    fake_system::System library_system_;
    fake_system::System model_system_;
    uint32_t number_ = 0;
    uint64_t imported_calls_ = 0;
    std::vector<std::string> lines_;
    Difference difference_;
};

}  // namespace differential
