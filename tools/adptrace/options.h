/**
 * @file options.h
 * The options of a command, as rows of a table.
 */
#pragma once

#include <stdint.h>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace adptrace {

struct Option {
    std::string_view name;  /**< "--output" */
    std::string_view value; /**< what it takes, empty for nothing */
    std::function<void(const std::string &)> set;
    std::string_view letter = {}; /**< "-o" */
};

/**
 * Sets the options that are among the words: `--output=FILE`, `--output FILE`, `-o FILE`. It throws a Refusal.
 *
 * @return the other words
 */
std::vector<std::string> read_options(std::span<const std::string> words, std::span<const Option> options);

/** The one FILE of a command that takes one. It throws a Refusal. */
std::string only_file(std::span<const std::string> words);

/** A number from 1 on. It throws a Refusal. */
uint64_t natural_of(const std::string &word, uint64_t most = UINT64_MAX);

}  // namespace adptrace
