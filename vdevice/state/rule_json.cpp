// Qualifiers and actions, with the values as people write them.
#include "vdevice/state/rule_json.h"

#include <arpa/inet.h>

#include <bit>
#include <nlohmann/json.hpp>
#include <string>

#include "vdevice/driver/mac_text.h"

namespace vdevice::state {
namespace {

using chip::Action;
using chip::ActionKind;
using chip::Field;
using chip::FieldWords;
using chip::Qualifier;
using nlohmann::json;

std::string address_text(int family, const FieldWords &words) {
    FieldWords network{};
    for (size_t i = 0; i < words.size(); ++i) {
        network[i] = htonl(words[i]);
    }
    char text[INET6_ADDRSTRLEN] = {};
    return inet_ntop(family, network.data(), text, sizeof(text));
}

json value_of(Field field, const FieldWords &words) {
    constexpr unsigned kWordBits = 32;
    switch (field) {
        case Field::kSourceMac:
        case Field::kDestinationMac:
            return driver::to_text(chip::Mac{uint64_t{words[0]} << kWordBits | words[1]});
        case Field::kSourceIpv4:
        case Field::kDestinationIpv4:
            return address_text(AF_INET, words);
        case Field::kSourceIpv6:
        case Field::kDestinationIpv6:
            return address_text(AF_INET6, words);
        default:
            return words[0];
    }
}

bool has_value(ActionKind kind) {
    return kind != ActionKind::kPermit && kind != ActionKind::kDrop && kind != ActionKind::kCopyToCpu &&
           kind != ActionKind::kToCpu;
}

}  // namespace

json qualifier_json(const Qualifier &qualifier, const PortNames &names) {
    json row = {{"field", describe(qualifier.field).name}};
    if (qualifier.field == Field::kInPorts) {
        row["ports"] =
            names(chip::PortSet::from_words(qualifier.data.data()) & chip::PortSet::from_words(qualifier.mask.data()));
    } else if (qualifier.field == Field::kIpKind || qualifier.field == Field::kFrameKind) {
        row["data"] = std::countr_zero(qualifier.data[0]);
    } else {
        row["data"] = value_of(qualifier.field, qualifier.data);
        row["mask"] = value_of(qualifier.field, qualifier.mask);
    }
    return row;
}

json action_json(const Action &action, const PortNames &names) {
    json row = {{"action", name(action)}};
    if (action.kind == ActionKind::kRedirect) {
        row["ports"] = names(action.ports);
    } else if (has_value(action.kind)) {
        row["value"] = action.value;
    }
    return row;
}

const char *word(chip::EntryPart part) {
    constexpr const char *kWords[] = {"whole", "first", "second"};
    return kWords[static_cast<size_t>(part)];
}

}  // namespace vdevice::state
