// Finds the subject, reads it, and turns every failure into a sentence.
#include "vdevice/inspect/answer.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "text/suggest.h"
#include "vdevice/inspect/arguments.h"
#include "vdevice/inspect/counts.h"
#include "vdevice/inspect/subject.h"
#include "vdevice/io/error.h"

namespace vdevice::inspect {
namespace {

using nlohmann::json;

const Subject &requested_subject(const json &request) {
    const auto name = request.find("command");
    if (name == request.end() || !name->is_string()) {
        throw Refusal{"The request names no command."};
    }
    return get(name->get<std::string>());
}

bool is_text_wanted(const json &request) {
    const auto form = request.find("form");
    if (form != request.end() && *form != "json" && *form != "text") {
        throw Refusal{"The form must be \"json\" or \"text\"."};
    }
    return form != request.end() && *form == "text";
}

json answer_of(Device &device, const Subject &subject, const json &request) {
    const bool as_text = is_text_wanted(request);
    json values = subject.read(device, request);
    std::string remark;
    if (request.contains("since")) {
        const bool is_rate = request.value("per_second", false);
        const double passed = subtract_earlier(values, request, subject);
        remark += fmt::format("{} over {:.1f} s\n", is_rate ? "counts per second," : "counts", passed);
    }
    if (is_filtered(request, subject)) {
        const RowCount rows = filter(values, request, subject);
        remark += fmt::format("{} of {} rows\n", rows.shown, rows.all);
    }
    return as_text ? json{{"text", subject.show(values) + remark}} : values;
}

}  // namespace

json answer(Device &device, const json &request) {
    try {
        const Subject &subject = requested_subject(request);
        return answer_of(device, subject, with_named_arguments(request, subject));
    } catch (const io::Error &error) {
        return {{"error", std::string{"The device "} + error.what()}};
    } catch (const Refusal &refusal) {
        return {{"error", refusal.what()}};
    } catch (const json::exception &) {
        return {{"error", "An argument of the command has the wrong type."}};
    }
}

bool is_long(const json &request) {
    const auto name = request.find("command");
    const Subject *subject = name != request.end() && name->is_string() ? find(name->get<std::string>()) : nullptr;
    return subject != nullptr && subject->is_long;
}

}  // namespace vdevice::inspect
