// Explains a frame, sends it, and takes both accounts apart.
#include "vdevice/inspect/testing/explained.h"

#include <nlohmann/json.hpp>

#include "vdevice/chip/account/explain.h"
#include "vdevice/chip/testing/follower.h"
#include "vdevice/inspect/account_json.h"
#include "vdevice/inspect/account_text.h"
#include "vdevice/inspect/port_names.h"

namespace vdevice::inspect::test {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

constexpr driver::Board kBoard;
constexpr chip::Time kNow = 1s;

json list_of(const std::vector<chip::Account> &accounts) {
    json list = json::array();
    for (const chip::Account &account : accounts) {
        list.push_back(to_json(account, kBoard));
    }
    return list;
}

std::string text_of(const json &value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void add_row(const std::string &kind, const json &row, Facts &facts) {
    for (const char *member : {"fate", "reason", "form", "origin"}) {
        if (row.contains(member)) {
            facts.insert(kind + " " + port_name(row) + ": " + text_of(row[member]));
        }
    }
}

Facts facts_of(const json &frames) {
    Facts facts;
    for (const json &frame : frames) {
        for (const json &step : frame["steps"]) {
            for (const auto &[member, value] : step.items()) {
                facts.insert(text_of(step["step"]) + "." + member + "=" + text_of(value));
            }
        }
        for (const json &row : frame["ports"]) {
            add_row("port", row, facts);
        }
        for (const json &row : frame["mirrors"]) {
            add_row("mirror", row, facts);
        }
    }
    return facts;
}

}  // namespace

void put_two(Chip &chip, int port) {
    EXPECT_EQ(chip->add_static_mac(chip::Mac::at(chip::test::station(2), 0), 1, port), chip::Status::kOk);
}

void Chip::make_trunk(const std::vector<int> &members) {
    for (const int port : members) {
        chip_.set_link(port, true);
    }
    EXPECT_EQ(chip_.create_trunk(3), chip::Status::kOk);
    EXPECT_EQ(chip_.set_trunk(3, members), chip::Status::kOk);
}

Facts explained(Chip &chip, int port, const chip::test::Octets &frame) {
    const json would = list_of(chip::Explainer{}.explain(chip->tables(), kNow, port, frame));
    chip::test::Follower follower{chip->tables()};
    chip->set_watcher(&follower);
    chip.send(port, frame, kNow);
    chip->set_watcher(nullptr);
    EXPECT_EQ(would, list_of(follower.take()));
    for (const json &each : would) {
        EXPECT_NE(account_text(each), "");
        EXPECT_NE(account_line(each), "");
    }
    return facts_of(would);
}

}  // namespace vdevice::inspect::test
