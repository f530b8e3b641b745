/**
 * @file life.h
 * A life: a sequence of calls into the library and into the model, from tables as they are loaded, with everything
 * compared after each call. It lives in a process of its own, for the library cannot be put back.
 */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <cstdio>
#include <span>
#include <string>
#include <vector>

namespace lives {

/** One call of a life. It depends on nothing before it, so that a life can be cut short anywhere. */
struct Step {
    size_t call = 0;              /**< which, in the library's table of calls */
    uint64_t seed = 0;            /**< of its arguments, and of what the driver answers */
    std::vector<uint32_t> values; /**< given arguments; empty for random ones */
};

/** The steps of the life with this seed. */
std::vector<Step> make_life(uint64_t seed, size_t calls);

const char *name_of(const Step &step);

/** From now on this call's result counts as another one than the library gave: to see that differences are found. */
void falsify(const char *call);

/** Where the two parted, in words. */
struct Difference {
    std::string what;
    std::vector<std::string> library; /**< what the library did in that step */
    std::vector<std::string> model;
};

/** Lives through the steps. Only for a process that ends afterwards: its standard streams are taken over. */
class Life {
  public:
    /** @p trace: the complete trace goes there, null for none. */
    explicit Life(std::FILE *trace);
    ~Life();
    Life(const Life &) = delete;
    Life &operator=(const Life &) = delete;

    /** One step; true when library and model agree. */
    bool live(const Step &step);
    /** From now on every step is noted in words, too. */
    void describe();
    [[nodiscard]] const Difference &difference() const;
    /** What the library did in the last step, in words. */
    [[nodiscard]] const std::vector<std::string> &lines() const;
    /** Driver, service and system calls, and events, so far. */
    [[nodiscard]] uint64_t imported_calls() const;
    /** A step as a line for adpsh. */
    static std::string script(const Step &step);

  private:
    struct State;
    State *state_;
};

}  // namespace lives
