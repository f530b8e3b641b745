/**
 * @file cases.h
 * The calls that are measured: each exported function with the arguments of its row in tests/fault_injection/rows.
 */
#pragma once

#include <string>
#include <vector>

namespace record {

struct Case {
    std::string name; /**< the function, and what distinguishes its cases */
    std::string function;
    bool is_group;                   /**< its interface is the group with eight members */
    std::string call;                /**< as adpsh reads it */
    std::vector<std::string> before; /**< calls that prepare the tables */
    bool has_any_result;             /**< the result comes from the system and differs from run to run */
};

/**
 * The cases of all rows: a function's row in the file @p own, else its first row in tests/fault_injection/rows. A
 * function that takes an interface is measured on a port and on a group, the attribute functions with every attribute.
 */
std::vector<Case> all_cases(const std::string &own);

}  // namespace record
