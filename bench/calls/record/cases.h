/**
 * @file cases.h
 * Which calls are measured: each exported function with the arguments that the sweep of failing calls has for it.
 */
#pragma once

#include <string>
#include <vector>

namespace record {

struct Case {
    std::string name; /**< the function, and what tells its cases apart */
    std::string function;
    bool is_group;                   /**< its interface is the group with eight members */
    std::string call;                /**< as adpsh reads it */
    std::vector<std::string> before; /**< calls that make what it finds */
    bool has_any_result;             /**< it is the system's, and differs from run to run */
};

/**
 * The cases of all rows: a function's row in the file @p own, else its first one among the sweep's. A function that
 * takes an interface is measured on a port and on a group, and the attributes' functions with every attribute.
 */
std::vector<Case> all_cases(const std::string &own);

}  // namespace record
