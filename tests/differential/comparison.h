/**
 * @file comparison.h
 * Runs a sequence on the library and on the model, from tables as they are loaded, and compares everything after each
 * call. It needs a process of its own, since the library cannot be reset.
 */
#pragma once

#include <stdint.h>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/differential/sequence.h"

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
    /** @p trace: where the complete trace goes, null for none. */
    explicit Comparison(std::FILE *trace);
    ~Comparison();
    Comparison(const Comparison &) = delete;
    Comparison &operator=(const Comparison &) = delete;

    /** Makes one call on both sides; true when they agree. */
    bool run(const Step &step);
    /** From now on the calls of each step are described in text. */
    void describe();
    [[nodiscard]] const Difference &difference() const;
    /** The calls that the library made in the last step, as text. */
    [[nodiscard]] const std::vector<std::string> &lines() const;
    /** Driver, service and system calls, and events, so far. */
    [[nodiscard]] uint64_t imported_calls() const;
    /** A step as a line for adpsh. */
    static std::string script(const Step &step);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace differential
