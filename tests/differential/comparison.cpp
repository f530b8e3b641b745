// The library and the model, call by call.
#include "tests/differential/comparison.h"

#include <string_view>

#include "calls/exported.h"
#include "tests/differential/call_text.h"
#include "tests/differential/driver.h"
#include "tests/differential/reference_table.h"
#include "tests/differential/system_faults.h"
#include "tests/differential/table_compare.h"
#include "tests/support/trace_file.h"
#include "tests/support/trace_text.h"

namespace differential {
namespace {

int32_t answer_event(const exported::Callback &callback, const void *const *arguments) {
    std::string text = callback.name;
    for (size_t index = 0; index < callback.params.size(); ++index) {
        const calls::Param &parameter = callback.params[index];
        const void *from = calls::target(parameter, arguments[index]);
        text += " " + trace_text::words(from, parameter.extent * parameter.element.size);
    }
    return driver().answer_event(text);
}

std::string_view falsified;

}  // namespace

void falsify(const char *call) {
    falsified = call;
}

Comparison::Comparison(std::FILE *trace, bool describes) : trace_(trace), describes_(describes || trace != nullptr) {
    exported::receive_events(answer_event);
    for (fake_system::System *system : {&library_system_, &model_system_}) {
        system->on_call([system](const std::string &line) { note_system_call(*system, line); });
        clear_faults(*system);
    }
}

Effects Comparison::run_side(fake_system::System &system, const Step &step, void *function,
                             const Arguments &arguments) {
    Effects effects;
    driver().start(step.seed);
    if (step.values.empty()) {
        set_faults(system, step.seed, number_);
    }
    fake_system::active = &system;
    effects.result = exported::invoke(arguments.call(), function, arguments.pointers());
    fake_system::active = nullptr;
    clear_faults(system);
    effects.notes = driver().notes();
    effects.lines = driver().lines();
    effects.out = out_.take();
    effects.err = err_.take();
    return effects;
}

std::string Comparison::compare(const Arguments &library_arguments, const Arguments &model_arguments,
                                const Effects &library, const Effects &model) const {
    if (library.notes != model.notes) {
        return "the calls they made";
    }
    if (!is_same_result(library_arguments.call(), library.result, model.result)) {
        const exported::Call &call = library_arguments.call();
        return "the result: library " + result_text(call, library.result) + ", model " +
               result_text(call, model.result);
    }
    if (const char *name = library_arguments.difference(model_arguments)) {
        return "'" + std::string(name) + "' after the call: library" + outputs_text(library_arguments) + ", model" +
               outputs_text(model_arguments);
    }
    if (!is_same_text(library.out, model.out) || !is_same_text(library.err, model.err)) {
        return "the printed text: library \"" + library.out + library.err + "\", model \"" + model.out + model.err +
               "\"";
    }
    const std::string resources = compare_resources();
    return resources.empty() ? table_difference() : resources;
}

std::string Comparison::compare_resources() const {
    if (library_system_.outstanding_allocations() == model_system_.outstanding_allocations() &&
        library_system_.open_descriptors() == model_system_.open_descriptors()) {
        return "";
    }
    const auto text_of = [](const fake_system::System &system) {
        return std::to_string(system.outstanding_allocations()) + " allocations and " +
               std::to_string(system.open_descriptors()) + " descriptors";
    };
    return "the resources they hold: library " + text_of(library_system_) + ", model " + text_of(model_system_);
}

void Comparison::write_trace(const std::string &line, const Arguments &arguments, const Effects &effects) const {
    std::fprintf(trace_, "%s\n", line.c_str());
    for (const std::string &each : effects.lines) {
        std::fprintf(trace_, "    %s\n", trace_file::portable(each).c_str());
    }
    const bool is_address = arguments.call().result == calls::Result::kStruct;
    const std::string result = is_address ? (effects.result != 0 ? "an address" : "null")
                                          : std::to_string(static_cast<int32_t>(effects.result));
    std::fprintf(trace_, "= %s%s\n", result.c_str(), outputs_text(arguments).c_str());
    for (const std::string &text : {effects.out, effects.err}) {
        if (!text.empty()) {
            std::fprintf(trace_, "> %s\n", text.c_str());
        }
    }
}

bool Comparison::run(const Step &step) {
    const exported::Call &call = exported::calls()[step.call];
    const Arguments library_arguments(call, step.seed, step.values);
    const Arguments model_arguments(call, step.seed, step.values);
    const std::string line = describes_ ? trace_line(library_arguments) : "";
    driver().describe(describes_);
    ++number_;
    const Effects model = run_side(model_system_, step, models()[step.call], model_arguments);
    Effects library = run_side(library_system_, step, call.function, library_arguments);
    imported_calls_ += driver().count();
    if (falsified == call.name) {
        library.result ^= 1;
    }
    lines_ = library.lines;
    if (trace_ != nullptr) {
        write_trace(line, library_arguments, library);
    }
    const std::string what = compare(library_arguments, model_arguments, library, model);
    if (what.empty()) {
        return true;
    }
    difference_ = {what, library.lines, model.lines};
    return false;
}

std::string Comparison::script(const Step &step) {
    return script_line(Arguments(exported::calls()[step.call], step.seed, step.values));
}

}  // namespace differential
