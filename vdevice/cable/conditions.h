// What a cable does to frames, and how people write it.
#pragma once

#include <stdint.h>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vdevice::cable {

/** Of both directions. All values are 0 on a good cable. */
struct Conditions {
    static constexpr uint64_t kWhole = 1'000'000; /**< a share of all frames */
    static constexpr uint64_t kDefaultSeed = 1;

    uint64_t loss = 0;      /**< millionths of the frames */
    uint64_t duplicate = 0; /**< likewise */
    uint64_t corrupt = 0;   /**< likewise */
    uint64_t rate = 0;      /**< kbit/s, 0 for no limit */
    uint64_t delay = 0;     /**< nanoseconds */
    uint64_t jitter = 0;    /**< nanoseconds, at most the delay */
    uint64_t seed = kDefaultSeed;

    /** The cable is a good one. */
    bool is_none() const;

    friend bool operator==(const Conditions &, const Conditions &) = default;
};

struct Unit {
    std::string_view name;
    uint64_t size;
};

/** A condition as it is named and written. */
struct Option {
    const char *name;
    const char *value; /**< as the help shows it */
    const char *help;
    const char *takes; /**< what its value must be */
    uint64_t Conditions::*condition;
    uint64_t most;
    std::span<const Unit> units; /**< from the smallest up; numbers are printed with these names */
};

inline constexpr uint64_t kPercent = Conditions::kWhole / 100;
inline constexpr uint64_t kMostNanoseconds = 10'000'000'000;
inline constexpr uint64_t kMostKilobits = 100'000'000;
inline constexpr uint64_t kMostSeed = UINT32_MAX;

inline constexpr Unit kShares[] = {{"%", kPercent}};
inline constexpr Unit kRates[] = {{"k", 1}, {"M", 1000}, {"G", 1'000'000}};
inline constexpr Unit kTimes[] = {{"us", 1000}, {"ms", 1'000'000}, {"s", 1'000'000'000}};
inline constexpr Unit kNumbers[] = {{"", 1}};

inline constexpr const char *kTakesShare = "a percentage from 0% to 100%, as 5% or 0.1%, with at most four decimals";
inline constexpr const char *kTakesTime = "a time up to 10s, as 20ms, 1.5ms or 300us";

/** All of them, in the order in which they act on a frame; the seed is the last one. */
inline constexpr Option kOptions[] = {
    {"loss", "PERCENT", "frames that are lost: 5% or 0.1%", kTakesShare, &Conditions::loss, Conditions::kWhole,
     kShares},
    {"duplicate", "PERCENT", "frames that come twice", kTakesShare, &Conditions::duplicate, Conditions::kWhole,
     kShares},
    {"corrupt", "PERCENT", "frames with one bit changed", kTakesShare, &Conditions::corrupt, Conditions::kWhole,
     kShares},
    {"rate", "RATE", "bits per second of the line: 64k, 100M or 2.5G", "a rate up to 100G, as 64k, 100M or 2.5G",
     &Conditions::rate, kMostKilobits, kRates},
    {"delay", "TIME", "how long frames take: 300us, 20ms or 1s", kTakesTime, &Conditions::delay, kMostNanoseconds,
     kTimes},
    {"jitter", "TIME", "how much more or less than the delay", kTakesTime, &Conditions::jitter, kMostNanoseconds,
     kTimes},
    {"seed", "N", "begins the random numbers; 1 if it is not given", "a number from 0 to 4294967295", &Conditions::seed,
     kMostSeed, kNumbers},
};

/** The value that a text as "5%" or "2.5ms" means; nothing if it is no value of the option. */
std::optional<uint64_t> value_of(const Option &option, std::string_view text);
/** The shortest text of a value. */
std::string text_of(const Option &option, uint64_t value);

/** Why no cable can be like this, or null. */
const char *fault_of(const Conditions &conditions);

}  // namespace vdevice::cable
