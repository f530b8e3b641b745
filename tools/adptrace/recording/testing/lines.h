/**
 * @file lines.h
 * Lines of recordings, for tests: a process 40 with the calls that a test wants.
 */
#pragma once

#include <stdint.h>
#include <string>

namespace adptrace::testing {

inline const std::string kHeader =
    R"({"adptrace":1,"byte_order":"big","word_bits":32,"started":"2024-05-06T07:08:09Z","command":["agent","-v"]})"
    "\n";
inline const std::string kStart = kHeader +
                                  R"({"process":40,"parent":0,"at":0,"program":"/usr/bin/agent","library":"a1b2"})"
                                  "\n";

struct Begin {
    uint64_t number = 1;
    uint64_t within = 0; /**< 0 for none */
    std::string call = "adp_vlan_create";
    std::string arguments = R"({"vid":100})";
    int64_t at = 10;
    uint32_t thread = 1;
    int64_t process = 0; /**< 0 for the first */
};

inline std::string of(int64_t process) {
    return process == 0 ? std::string() : R"(,"of":)" + std::to_string(process);
}

inline std::string begin(const Begin &call) {
    const std::string within = call.within == 0 ? std::string() : R"(,"within":)" + std::to_string(call.within);
    return R"({"begin":)" + std::to_string(call.number) + of(call.process) + within + R"(,"thread":)" +
           std::to_string(call.thread) + R"(,"at":)" + std::to_string(call.at) + R"(,"call":")" + call.call +
           R"(","arguments":)" + call.arguments + "}\n";
}

struct End {
    uint64_t number = 1;
    std::string result = "0";
    int64_t at = 20;
    std::string outputs = "{}";
    int64_t process = 0;
};

inline std::string end(const End &call) {
    return R"({"end":)" + std::to_string(call.number) + of(call.process) + R"(,"at":)" + std::to_string(call.at) +
           R"(,"result":)" + call.result + R"(,"outputs":)" + call.outputs + "}\n";
}

}  // namespace adptrace::testing
