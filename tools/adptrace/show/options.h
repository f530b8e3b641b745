/**
 * @file options.h
 * Command lines of `show` and `stat`.
 */
#pragma once

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
};

/** Both throw a Refusal. */
Options show_options(std::span<const std::string> words);
Options stat_options(std::span<const std::string> words);

extern const char *const kShowHelp;
extern const char *const kStatHelp;

}  // namespace adptrace
