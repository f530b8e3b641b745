// Lists of numbers as people write them: "1-4,7".
#pragma once

#include <stdint.h>
#include <optional>
#include <string_view>
#include <vector>

namespace vdevice::inspect {

struct NumberRange {
    int64_t first;
    int64_t last;
};

/** "3", "1-4,7" or "cpu", which is 0; nothing if the text is no such list. */
std::optional<std::vector<NumberRange>> number_list(std::string_view text);

}  // namespace vdevice::inspect
