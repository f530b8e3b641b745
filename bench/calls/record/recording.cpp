// One case, run with the recording driver.
#include "bench/calls/record/recording.h"

#include <adp/types.h>

#include <deque>
#include <stdexcept>

#include "bench/calls/record/driver_calls.h"
#include "bench/calls/record/library_call.h"
#include "bench/calls/state.h"

namespace record {

std::string Recording::expected() const {
    switch (kind) {
        case calls::Result::kNothing:
            return "ANY_RESULT";
        case calls::Result::kStruct:
        case calls::Result::kText:
            return result != 0 ? "SOME_ADDRESS" : "0";
        default:
            return std::to_string(static_cast<int32_t>(result)) + "L";
    }
}

bool Recording::is_refused() const {
    return kind == calls::Result::kStatus && result != ADP_OK && driver_calls.empty();
}

Recording run(const Case &one, Blocks &blocks) {
    if (bring_up() != 0) {
        throw std::runtime_error("the tables cannot be brought up");
    }
    Recording recording;
    const size_t at_first = remote_calls();
    std::deque<LibraryCall> earlier;  // their memory has to stay until all addresses are known
    for (const std::string &line : one.before) {
        earlier.emplace_back(line, blocks).invoke();
        recording.before.push_back(earlier.back().text());
    }
    LibraryCall subject(one.call, blocks);
    recording.call = subject.text();
    recording.kind = subject.result_kind();
    const size_t made_before = remote_calls();
    begin(blocks);
    recording.result = subject.invoke();
    recording.driver_calls = finish();
    recording.remote = remote_calls() - made_before;
    recording.remote_in_all = remote_calls() - at_first;
    return recording;
}

}  // namespace record
