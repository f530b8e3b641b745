// The account of a frame's way for people, made of its JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace vdevice::inspect {

/** The member of a request that asks for add_texts(). */
constexpr const char *kTexts = "texts";

/** All steps, one a line, and the ports. */
std::string account_text(const nlohmann::json &account);
/** Gives each step, port and mirror of the account the member "text", what account_text() says of it. */
void add_texts(nlohmann::json &account);
/** The frame and what became of it, on one line. */
std::string account_line(const nlohmann::json &account);

}  // namespace vdevice::inspect
