// Reads lines until a limit is reached.
#include "tools/vdevctl/stream.h"

#include <nlohmann/json.hpp>

#include "tools/vdevctl/answer_text.h"
#include "tools/vdevctl/lines.h"
#include "tools/vdevctl/output.h"

namespace vdevctl {

void print_stream(const std::string &run_dir, const nlohmann::json &request, const StreamLimits &limits) {
    Lines lines{run_dir, request};
    const auto end = limits.time ? std::optional{Lines::Clock::now() + *limits.time} : std::nullopt;
    for (uint64_t count = 0; !limits.count || count < *limits.count; ++count) {
        const auto line = lines.next(end);
        if (!line) {
            return;
        }
        print(request.at("form") == "text" ? text_of(*line) : compact_json_text(*line));
    }
}

}  // namespace vdevctl
