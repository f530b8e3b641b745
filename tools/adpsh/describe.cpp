// Descriptions from the headers' text.
#include "tools/adpsh/describe.h"

#include "tools/adpsh/parameter.h"
#include "tools/adpsh/search.h"
#include "tools/adpsh/usage.h"

#include <fmt/format.h>

#include <algorithm>

namespace adpsh {

namespace {

std::string constant_row(const exported::Constant &constant) {
    return fmt::format("\n  {:<28} {:>4}  {}", constant.name, constant.value, constant.doc);
}

/** The constants that a call's parameters take, in words: one paragraph for each parameter. */
std::string constants_text(const exported::Call &call) {
    std::string text;
    for (const calls::Param &parameter : call.params) {
        const auto constants = constants_of(call, parameter);
        text += constants.empty() ? "" : fmt::format("\n\n{}:", parameter.name);
        for (const exported::Constant *const constant : constants) {
            text += constant_row(*constant);
        }
    }
    return text;
}

}  // namespace

Answer describe(const exported::Call &call) {
    return {fmt::format("{};\n{}{}\n\nusage: {}", call.declaration, call.doc, constants_text(call), usage(call)),
            {{"help", call.name}, {"declaration", call.declaration}, {"usage", usage(call)}, {"doc", call.doc}}};
}

Answer describe(const exported::Table &table) {
    return {fmt::format("{}\n{}", table.name, table.doc), {{"help", table.name}, {"doc", table.doc}}};
}

Answer describe(const exported::Constant &constant) {
    const std::string enumeration =
        *constant.enumeration == '\0' ? "" : fmt::format("\nof enum {}", constant.enumeration);
    return {fmt::format("{} = {}{}{}{}", constant.name, constant.value, enumeration, *constant.doc == '\0' ? "" : "\n",
                        constant.doc),
            {{"help", constant.name}, {"value", constant.value}, {"doc", constant.doc}}};
}

Answer describe(const exported::Structure &structure) {
    Answer answer{fmt::format("{}\n{}", structure.layout->name, structure.doc),
                  {{"help", structure.layout->name}, {"doc", structure.doc}, {"fields", Json::array()}}};
    for (size_t i = 0; i < structure.layout->fields.size(); ++i) {
        const calls::Field &field = structure.layout->fields[i];
        const std::string name = field.count == 1 ? field.name : fmt::format("{}[{}]", field.name, field.count);
        answer.text += fmt::format("\n  {:<20} {}", name, structure.remarks[i]);
        answer.object["fields"].push_back({{"name", field.name}, {"doc", structure.remarks[i]}});
    }
    return answer;
}

Answer describe(const Topic &topic) {
    Answer answer{fmt::format("{}\n", topic.purpose),
                  {{"help", topic.name}, {"calls", calls_of(topic)}, {"example", example_of(topic)}}};
    for (const std::string &name : calls_of(topic)) {
        const exported::Call *const call = exported::find_call(name);
        answer.text += fmt::format("\n  {:<36} {}", name, call == nullptr ? "" : purpose_of(call->doc));
    }
    answer.text += "\n\nExample:";
    for (const std::string &line : example_of(topic)) {
        answer.text += "\n  " + line;
    }
    return answer;
}

std::optional<Answer> describe_enumeration(const std::string &tag) {
    std::vector<const exported::Constant *> found;
    for (const exported::Constant &constant : exported::constants()) {
        if (!tag.empty() && constant.enumeration == tag) {
            found.push_back(&constant);
        }
    }
    if (found.empty()) {
        return std::nullopt;
    }
    std::stable_sort(found.begin(), found.end(), [](const auto *a, const auto *b) { return a->value < b->value; });
    Answer answer{"enum " + tag, {{"help", tag}, {"constants", Json::array()}}};
    for (const exported::Constant *const constant : found) {
        answer.text += constant_row(*constant);
        answer.object["constants"].push_back(constant->name);
    }
    return answer;
}

}  // namespace adpsh
