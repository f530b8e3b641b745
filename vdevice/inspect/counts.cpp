// Walks through two readings side by side: rows belong together by what names them, not by their place.
#include "vdevice/inspect/counts.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "vdevice/inspect/subject.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

/** The members by which a row is known. */
constexpr const char *kIdentity[] = {"port", "direction", "type", "queue", "meter", "entry", "counter"};

bool is_count(const std::string &name, CountNames names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_nonzero(const json &count) {
    if (count.is_structured()) {
        return std::any_of(count.begin(), count.end(), is_nonzero);
    }
    return count != 0;
}

std::string identity_of(const json &row) {
    std::string identity;
    for (const char *name : kIdentity) {
        const auto found = row.find(name);
        identity += (found == row.end() ? "" : found->dump(-1, ' ', false, json::error_handler_t::replace)) + " ";
    }
    return identity;
}

class Difference {
  public:
    /** @p seconds is 0 for a difference that is no rate. */
    Difference(CountNames names, double seconds) : names_{names}, seconds_{seconds} {}

    void take_off(json &now, const json &before) const {
        if (now.is_object()) {
            for (const auto &[name, value] : now.items()) {
                const json earlier = before.is_object() ? before.value(name, json()) : json();
                if (is_count(name, names_) && !has_rows(value)) {
                    take_count_off(value, earlier);
                } else {
                    take_off(value, earlier);
                }
            }
        } else if (has_rows(now)) {
            take_rows_off(now, before);
        }
    }

  private:
    static bool has_rows(const json &value) { return value.is_array() && !value.empty() && value.front().is_object(); }

    void take_rows_off(json &now, const json &before) const {
        std::map<std::string, const json *> earlier;
        for (const json &row : before) {
            if (row.is_object()) {
                earlier[identity_of(row)] = &row;
            }
        }
        for (json &row : now) {
            const auto found = earlier.find(identity_of(row));
            take_off(row, found == earlier.end() ? json() : *found->second);
        }
    }

    void take_count_off(json &now, const json &before) const {
        if (now.is_object()) {
            for (const auto &[name, value] : now.items()) {
                take_count_off(value, before.is_object() ? before.value(name, json()) : json());
            }
        } else if (now.is_array()) {
            for (size_t i = 0; i < now.size(); ++i) {
                take_count_off(now[i], before.is_array() && i < before.size() ? before[i] : json());
            }
        } else if (now.is_number_integer()) {
            now =
                difference(now.get<uint64_t>(), before.is_number_integer() && before > 0 ? before.get<uint64_t>() : 0);
        }
    }

    uint64_t difference(uint64_t now, uint64_t before) const {
        const uint64_t counted = now < before ? now : now - before;
        return seconds_ == 0 ? counted : static_cast<uint64_t>(std::llround(static_cast<double>(counted) / seconds_));
    }

    CountNames names_;
    double seconds_;
};

double seconds_between(const json &answer, const json &before) {
    const auto time = before.is_object() ? before.find("time") : before.end();
    if (time == before.end() || !time->is_number()) {
        throw Refusal{"The earlier reading is not one of this command, as '--json' prints it."};
    }
    const double passed = answer.at("time").get<double>() - time->get<double>();
    if (!(passed > 0)) {
        throw Refusal{"The earlier reading is not of this run of the device: its time is later than now."};
    }
    return passed;
}

}  // namespace

bool has_nonzero_count(const json &value, CountNames names) {
    for (const auto &[name, member] : value.items()) {
        if (is_count(name, names) ? is_nonzero(member) : member.is_structured() && has_nonzero_count(member, names)) {
            return true;
        }
    }
    return false;
}

double subtract_earlier(json &answer, const json &request, const Subject &subject) {
    if (subject.counts.empty()) {
        throw Refusal{std::string{"The command '"} + subject.name + "' has no counts to compare."};
    }
    const json &before = request.at("since");
    const double passed = seconds_between(answer, before);
    Difference{subject.counts, request.value("per_second", false) ? passed : 0}.take_off(answer, before);
    return passed;
}

}  // namespace vdevice::inspect
