// Marks are texts: "adp-switchd swp3", and "adp-switchd swp3 far" for the far end of a pair.
#include "switchd/ports/interface_marks.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "vdevice/io/error.h"

namespace switchd {
namespace {

constexpr std::string_view kMark = "adp-switchd ";
constexpr std::string_view kFar = " far";

const FoundLink *find_link(const std::vector<FoundLink> &links, std::string FoundLink::*member,
                           const std::string &text) {
    const auto found =
        std::find_if(links.begin(), links.end(), [&](const FoundLink &link) { return link.*member == text; });
    return found == links.end() ? nullptr : &*found;
}

}  // namespace

std::string mark_of(const PortName &port) {
    return std::string{kMark} + name_of(port);
}

std::string far_mark_of(const PortName &port) {
    return mark_of(port) + std::string{kFar};
}

LinkSettings first_settings_of(const PortName &port, const InterfaceSettings &settings) {
    return {.mtu = settings.mtu, .mac = mac_of(port, settings.base_mac), .alias = mark_of(port)};
}

std::optional<PortName> marked_port_of(const FoundLink &link) {
    std::string_view alias = link.alias;
    if (!alias.starts_with(kMark)) {
        return std::nullopt;
    }
    alias.remove_prefix(kMark.size());
    if (alias.ends_with(kFar)) {
        alias.remove_suffix(kFar.size());
    }
    return port_of_name(alias);
}

const FoundLink *find_marked(const std::vector<FoundLink> &links, const std::string &mark) {
    return find_link(links, &FoundLink::alias, mark);
}

const FoundLink *find_named(const std::vector<FoundLink> &links, const std::string &name) {
    return find_link(links, &FoundLink::name, name);
}

void check_is_free(const std::vector<FoundLink> &links, const std::string &name) {
    if (find_named(links, name) != nullptr) {
        throw vdevice::io::Error{"cannot make interface " + name + ": there is one of that name, which is not " +
                                 "adp-switchd's. Remove it or give it another name."};
    }
}

void check_done(int error, const std::string &action) {
    if (error != 0) {
        errno = error;
        throw vdevice::io::error_from_errno(action);
    }
}

}  // namespace switchd
