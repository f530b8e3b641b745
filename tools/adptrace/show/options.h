/**
 * @file options.h
 * Command lines of `show` and `stat`.
 */
#pragma once

#include <stddef.h>
#include <optional>
#include <span>
#include <string>

#include "tools/adptrace/show/show.h"
#include "tools/adptrace/show/stat.h"

namespace adptrace {

struct Options {
    std::string file;
    ShowOptions show;
    std::string timeline; /**< the file of a picture, empty for none */
    Order order = Order::kTime;
    bool is_json = false;
    bool is_followed = false;
    std::optional<size_t> last; /**< so many calls, the newest */
};

/** Whether the recording is shown part by part, not as a whole. */
bool is_in_parts(const Options &options);

/** Both throw a Refusal. */
Options show_options(std::span<const std::string> words);
Options stat_options(std::span<const std::string> words);

extern const char *const kShowHelp;
extern const char *const kStatHelp;

}  // namespace adptrace
