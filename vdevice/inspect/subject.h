// What can be asked of a running device, and what can be done to it by hand. Each subject is a constant in the file of
// its topic; all of them are listed in subjects.cpp, and nowhere else.
#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "vdevice/device/device.h"
#include "vdevice/inspect/filter.h"

namespace vdevice::inspect {

/** A request that is not carried out; its text is a sentence that says why. */
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct Subject {
    const char *name;
    const char *arguments; /**< as the help shows them: "" for none, in brackets if they can be left out */
    const char *help;
    /** Does what the subject does to the device, if anything, and gives the answer. It may throw a Refusal. */
    nlohmann::json (*read)(Device &device, const nlohmann::json &request);
    /** The answer as text. */
    std::string (*show)(const nlohmann::json &answer);
    /** Which rows of the answer's tables can be asked for. */
    std::span<const Filter> filters = {};
    /** The members of the answer that count: two readings of them have a difference. */
    std::span<const char *const> counts = {};
    /** It reads a large table, which takes long when the table is full, and changes nothing. */
    bool is_long = false;
};

inline constexpr bool kLong = true;

/** Gives the next line for a client that is told what happens, in JSON, or nothing until something happens. */
using Lines = std::function<std::optional<std::string>()>;

/** All subjects, in the order of the help. */
std::span<const Subject *const> subjects();
/** All subjects with their options, as the help answers. */
nlohmann::json list_subjects();
/** The subject of that name, or null. */
const Subject *find(std::string_view name);
/** The subject of that name; throws a Refusal that suggests names close to it. */
const Subject &get(std::string_view name);

/** The version of the device. */
extern const char *const kVersionText;

/** A time as answers give it. */
inline double seconds(chip::Time time) {
    return std::chrono::duration<double>(time).count();
}

}  // namespace vdevice::inspect
