// Every word that an account of a frame can have is met by a case, in what explain says and in what follow says; and on
// random chips what explain says comes true.
#include "vdevice/chip/account/explain.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "vdevice/chip/account/names.h"
#include "vdevice/chip/testing/document.h"
#include "vdevice/chip/testing/follower.h"
#include "vdevice/chip/testing/random_chip.h"
#include "vdevice/inspect/account_json.h"
#include "vdevice/inspect/testing/explained.h"

namespace vdevice::inspect {
namespace explain_test {

using nlohmann::json;
using test::Case;
using test::Facts;
using namespace std::chrono_literals;

std::vector<Case> all_cases() {
    std::vector<Case> all = test::ingress_cases();
    for (const auto &part : {test::forwarding_cases(), test::egress_cases()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

TEST(Explain, TellsEachDecision) {
    for (const Case &each : all_cases()) {
        test::Chip chip;
        each.prepare(chip);
        const Facts facts = test::explained(chip, each.port, each.frame);
        for (const std::string &fact : each.facts) {
            EXPECT_TRUE(facts.contains(fact)) << each.name << ": " << fact << " of " << testing::PrintToString(facts);
        }
    }
}

class Words : public testing::Test {
  protected:
    Words() {
        for (const Case &each : all_cases()) {
            facts_.insert(each.facts.begin(), each.facts.end());
        }
    }

    /** A case has the word as the value of a step's member, or as what is said of a port. */
    bool is_met(const std::string &before, const std::string &word) const {
        return std::any_of(facts_.begin(), facts_.end(), [&](const std::string &fact) {
            return fact.starts_with(before) && (fact.ends_with("=" + word) || fact.ends_with(": " + word));
        });
    }
    void expect_met(const std::string &before, const chip::Wording &row) const {
        EXPECT_TRUE(is_met(before, row.word)) << "no case has " << before << "..." << row.word;
        chip::test::expect_row("explain.md", "| `" + std::string{row.word} + "` | " + row.text + " |");
    }
    template <typename Enum>
    void expect_all(const std::string &before, const std::set<Enum> &without = {}) const {
        const auto &rows = chip::Wordings<Enum>::kRows;
        for (size_t i = 0; i < rows.size(); ++i) {
            if (!without.contains(static_cast<Enum>(i))) {
                expect_met(before, rows[i]);
            }
        }
    }

  private:
    Facts facts_;
};

TEST_F(Words, OfDropsAreMet) {
    for (size_t drop = 0; drop < chip::kDropReasons; ++drop) {
        const char *word = chip::name(static_cast<chip::Drop>(drop));
        EXPECT_TRUE(is_met("dropped.reason", word)) << "no case is dropped for " << word;
    }
}

// A waiting copy that is flushed is lost when the account of its frame has been given.
TEST_F(Words, OfPortsAreMet) {
    expect_all<chip::Unsent>("port ");
    expect_all<chip::Lost>("", {chip::Lost::kFlushed});
    expect_all<chip::Fate>("", {chip::Fate::kLost});
    expect_all<chip::Form>("");
    expect_all<chip::Origin>("mirror ", {chip::Origin::kSwitched});
}

TEST_F(Words, OfStepsAreMet) {
    expect_all<chip::ChosenBy>("vlan.by", {chip::ChosenBy::kDscp});
    expect_all<chip::ChosenBy>("priority.by");
    expect_all<chip::MissAction>("no_rule.action");
    expect_all<chip::CpuReason>("cpu_alone.reason", {chip::CpuReason::kNone});
    expect_all<chip::StpState>("spanning_tree.state");
    expect_all<chip::Learned>("source.learned");
    expect_all<chip::NotLearned>("source.why");
    expect_all<chip::Found>("destination.found");
    expect_all<chip::Way>("way.way", {chip::Way::kNone, chip::Way::kToCpu});
}

/** How many frames each random chip gets; more by the environment, for a run of its own. */
int cases() {
    const char *given = std::getenv("VDEVICE_EXPLAINED_FRAMES");
    return given == nullptr ? VDEVICE_FRAMES : std::atoi(given);
}

class RandomFrames : public testing::TestWithParam<unsigned> {
  protected:
    RandomFrames() { random_.chip().set_watcher(&follower_); }

    /** The ports by which copies leave at once, in their order. */
    std::vector<int> wires(const std::vector<chip::Account> &accounts) const {
        std::vector<int> ports;
        for (const chip::Account &account : accounts) {
            for (const chip::Copy &copy : account.copies) {
                if (copy.fate == chip::Fate::kSent && random_.chip().port(copy.port).loopback == 0) {
                    ports.push_back(copy.port);
                }
            }
        }
        return ports;
    }
    static json to_json(const std::vector<chip::Account> &accounts) {
        json list = json::array();
        for (const chip::Account &account : accounts) {
            list.push_back(inspect::to_json(account, driver::Board{}));
        }
        return list;
    }
    /** Every copy that waits was told as queued, and none else. */
    size_t queued(const std::vector<chip::Account> &accounts) const {
        size_t count = 0;
        for (const chip::Account &account : accounts) {
            count += static_cast<size_t>(
                std::count_if(account.copies.begin(), account.copies.end(),
                              [](const chip::Copy &copy) { return copy.fate == chip::Fate::kQueued; }));
        }
        return count;
    }
    void compare(const chip::test::Arrival &arrival, chip::Time now);

    mutable chip::test::RandomChip random_{GetParam()};
    chip::test::Follower follower_{random_.chip().tables()};
    chip::Explainer explainer_;
    size_t copies_ = 0;
    size_t waiting_ = 0;
};

void RandomFrames::compare(const chip::test::Arrival &arrival, chip::Time now) {
    constexpr int kWholeAccounts = 8;  // as JSON only every eighth, which takes longer than all the rest
    chip::Switch &chip = random_.chip();
    chip.depart(now);
    follower_.take();
    random_.sink().take();
    const auto explained = explainer_.explain(chip.tables(), now, arrival.port, arrival.frame);
    const size_t expected_queued = queued(explained);
    const std::vector<int> expected = wires(explained);
    chip.receive(now, arrival.port, arrival.frame);
    const auto followed = follower_.take();
    ASSERT_EQ(expected, wires(followed));
    ASSERT_EQ(expected_queued, queued(followed));
    if (copies_++ % kWholeAccounts == 0) {
        ASSERT_EQ(to_json(explained), to_json(followed));
    }
    std::vector<int> left;
    for (const chip::test::Sent &sent : random_.sink().take()) {
        left.push_back(sent.first);
    }
    if (expected_queued == 0 && waiting_ == 0) {
        ASSERT_EQ(left, expected) << "what left by the wires";
    }
    waiting_ = chip.queues().waiting_octets();
}

TEST_P(RandomFrames, GoWhereExplainSays) {
    chip::Time now = random_.now();
    for (int i = 0; i < cases(); ++i) {
        if (i % 4 == 0) {
            random_.change();
        }
        now = std::max(now, random_.now()) + 300us;
        ASSERT_NO_FATAL_FAILURE(compare(random_.arrival(), now)) << "frame " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomFrames, testing::Range(1U, 9U));

}  // namespace explain_test
}  // namespace vdevice::inspect
