/**
 * @file script.h
 * Writes a recording call by call, with times and numbers of its own.
 */
#pragma once

#include <stdint.h>
#include <string>
#include <vector>

#include "tools/adptrace/recording/recording.h"
#include "tools/adptrace/recording/testing/lines.h"

namespace adptrace::testing {

class Script {
  public:
    explicit Script(int64_t process = 40, const std::string &library = "a1b2", bool is_big_endian = true)
        : process_(process), at_(process) {
        text_ = R"({"adptrace":1,"byte_order":")" + std::string(is_big_endian ? "big" : "little") +
                R"(","word_bits":32,"started":"2024-05-06T07:08:09Z","command":["agent"]})" + "\n";
        start(process, 0, library);
    }

    Script &start(int64_t id, int64_t parent, const std::string &library = "a1b2") {
        return line(R"({"process":)" + std::to_string(id) + R"(,"parent":)" + std::to_string(parent) + R"(,"at":)" +
                    std::to_string(at()) + R"(,"program":"/usr/bin/agent","library":")" + library + "\"}");
    }
    Script &of(int64_t process) {
        of_ = process == process_ ? 0 : process;
        return *this;
    }
    Script &in(uint32_t thread) {
        thread_ = thread;
        return *this;
    }
    Script &begin(const std::string &call, const std::string &arguments) {
        text_ += testing::begin({++number_, open_.empty() ? 0 : open_.back(), call, arguments, at(), thread_, of_});
        open_.push_back(number_);
        return *this;
    }
    Script &end(const std::string &result = "0") {
        text_ += testing::end({open_.back(), result, at(), "{}", of_});
        open_.pop_back();
        return *this;
    }
    Script &call(const std::string &name, const std::string &arguments, const std::string &result = "0") {
        return begin(name, arguments).end(result);
    }
    Script &line(const std::string &text) {
        text_ += text + "\n";
        return *this;
    }
    [[nodiscard]] Recording recording() const { return Recording(text_); }

  private:
    int64_t at() { return at_ += process_; }

    int64_t process_;
    int64_t at_;
    uint32_t thread_ = 1;
    uint64_t number_ = 0;
    std::vector<uint64_t> open_;
    int64_t of_ = 0;
    std::string text_;
};

}  // namespace adptrace::testing
