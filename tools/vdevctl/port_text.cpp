#include "tools/vdevctl/port_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

namespace vdevice {

std::string port_name(int port) {
    return port == 0 ? "cpu" : std::to_string(port);
}

std::string port_list(const nlohmann::json &ports) {
    std::vector<std::string> parts;
    const auto numbers = ports.get<std::vector<int>>();
    for (size_t first = 0; first < numbers.size();) {
        size_t last = first;
        while (numbers[first] != 0 && last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) {
            ++last;
        }
        parts.push_back(first == last ? port_name(numbers[first])
                                      : fmt::format("{}-{}", numbers[first], numbers[last]));
        first = last + 1;
    }
    return parts.empty() ? "-" : fmt::format("{}", fmt::join(parts, ","));
}

}  // namespace vdevice
