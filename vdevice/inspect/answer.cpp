// Finds the subject, reads it, and turns every failure into a sentence.
#include "vdevice/inspect/answer.h"

#include <nlohmann/json.hpp>

#include "vdevice/inspect/arguments.h"
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
    const Subject *subject = find(name->get<std::string>());
    if (subject == nullptr) {
        throw Refusal{"There is no command '" + name->get<std::string>() + "'. The command 'help' lists them."};
    }
    return *subject;
}

bool is_text_wanted(const json &request) {
    const auto form = request.find("form");
    if (form != request.end() && *form != "json" && *form != "text") {
        throw Refusal{"The form must be \"json\" or \"text\"."};
    }
    return form != request.end() && *form == "text";
}

}  // namespace

json answer(Device &device, const json &request) {
    try {
        const Subject &subject = requested_subject(request);
        const bool as_text = is_text_wanted(request);
        json values = subject.read(device, with_named_arguments(request, subject));
        return as_text ? json{{"text", subject.show(values)}} : values;
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
