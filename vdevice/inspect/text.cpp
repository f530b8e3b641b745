// Lists and switches as text.
#include "vdevice/inspect/text.h"

#include <nlohmann/json.hpp>

#include "vdevice/inspect/filter.h"

namespace vdevice::inspect {

std::string joined(const std::vector<std::string> &parts, const char *separator) {
    std::string text;
    const char *before = "";
    for (const std::string &part : parts) {
        text += before + part;
        before = separator;
    }
    return text;
}

std::string numbers(const nlohmann::json &list) {
    std::vector<std::string> parts;
    for (const nlohmann::json &number : list) {
        parts.push_back(number.dump());
    }
    return joined(parts, " ");
}

std::string on_or_off(const nlohmann::json &value) {
    return value.get<bool>() ? "on" : "off";
}

size_t all_rows(const nlohmann::json &answer, const char *table) {
    const auto sizes = answer.find(kSizes);
    return sizes == answer.end() ? answer[table].size() : (*sizes)[table].get<size_t>();
}

std::string show_nothing(const nlohmann::json & /*answer*/) {
    return {};
}

}  // namespace vdevice::inspect
