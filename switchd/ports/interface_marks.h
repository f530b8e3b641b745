// The marks of our interfaces: an alias each, which survives the daemon and a new name.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "switchd/kernel/requests.h"
#include "switchd/ports/found_links.h"
#include "switchd/ports/interface.h"
#include "switchd/ports/port_name.h"

namespace switchd {

std::string mark_of(const PortName &port);
/** Of the far end of a pair. */
std::string far_mark_of(const PortName &port);

/** Of an interface that is made: its address, its MTU and its mark. */
LinkSettings first_settings_of(const PortName &port, const InterfaceSettings &settings);

/** The port of an interface that has such a mark. */
std::optional<PortName> marked_port_of(const FoundLink &link);

/** Null if there is none. */
const FoundLink *find_marked(const std::vector<FoundLink> &links, const std::string &mark);
const FoundLink *find_named(const std::vector<FoundLink> &links, const std::string &name);

/** Throws an io::Error with a sentence if the name is taken. */
void check_is_free(const std::vector<FoundLink> &links, const std::string &name);

/** Throws an io::Error for what the kernel has refused, as errno has it; 0 is no refusal. */
void check_done(int error, const std::string &action);

}  // namespace switchd
