/**
 * @file topics.h
 * What people want to do, and the calls for it.
 */
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace adpsh {

struct Topic {
    std::string_view name;
    std::string_view purpose;  ///< one sentence
    std::string_view calls;    ///< names in the order in which one needs them, separated by blanks
    std::string_view example;  ///< lines that succeed on a device as it is switched on
};

std::span<const Topic> topics();
/** Null if there is none of this name. */
const Topic *find_topic(std::string_view name);

std::vector<std::string> calls_of(const Topic &topic);
std::vector<std::string> example_of(const Topic &topic);

}  // namespace adpsh
