// Random sequences of calls on the field processor's table against a plain model of it: after every call the same rules
// win.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <random>

#include "vdevice/chip/fields/field_table.h"
#include "vdevice/chip/testing/frame_builder.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace field_model_test {

using namespace test;

constexpr int kCalls = 3000;
constexpr uint32_t kAll = 0xFFFFFFFF;

struct ModelRule {
    int32_t priority = 0;
    std::optional<Vid> vid;
};

struct ModelEntry {
    int group;
    ModelRule staged{};
    std::optional<ModelRule> installed{};
    bool is_first = false;
    bool is_second = false;
};

using Model = std::map<uint32_t, ModelEntry>;

/** The few entries that the sequences use, so that they collide often: a wide group, a plain one, and their ends. */
constexpr std::pair<int, uint32_t> kPlaces[] = {{1, 1280}, {1, 1281}, {1, 1282}, {1, 1283}, {1, 1534},
                                                {1, 1535}, {2, 896},  {2, 897},  {2, 898},  {9, 0}};

bool meets(const ModelRule &rule, Vid vid) {
    return !rule.vid || *rule.vid == vid;
}

/** Whether frames can meet the entry, and those of the VLAN do. */
bool is_met(const Model &model, uint32_t number, Vid vid) {
    const ModelEntry &entry = model.at(number);
    if (!entry.installed || entry.is_second || !meets(*entry.installed, vid)) {
        return false;
    }
    if (!entry.is_first) {
        return true;
    }
    const auto second = model.find(number + 1);
    return second != model.end() && second->second.is_second && second->second.installed &&
           meets(*second->second.installed, vid);
}

/** The winner of each group. */
std::map<int, uint32_t> winners(const Model &model, Vid vid) {
    std::map<int, uint32_t> best;
    for (const auto &[number, entry] : model) {
        if (!is_met(model, number, vid)) {
            continue;
        }
        const auto place = best.try_emplace(entry.group, number).first;
        if (entry.installed->priority > model.at(place->second).installed->priority) {
            place->second = number;
        }
    }
    return best;
}

/** Who wins is seen by whose count of matches grows. */
std::map<int, uint32_t> winners(FieldTable &table, Vid vid) {
    const auto counts = [&] {
        std::map<uint32_t, uint64_t> matches;
        table.for_each([&](uint32_t number, const FieldEntry &entry) { matches[number] = entry.matches; });
        return matches;
    };
    const auto before = counts();
    const test::Octets frame = test::station(1) + test::station(2) + test::kPayload;
    const auto header = read_header(split_frame(frame), kVlanTpid);
    const auto match = table.match(FieldKey{{4, frame.size(), *header, vid}});
    std::map<int, uint32_t> best;
    for (const auto &[number, matches] : counts()) {
        if (matches != before.at(number)) {
            EXPECT_TRUE(best.try_emplace(table.find(number)->group, number).second) << "two winners in a group";
        }
    }
    std::vector<uint32_t> listed;
    std::transform(best.begin(), best.end(), std::back_inserter(listed), [](const auto &each) { return each.second; });
    const MatchedRules rules = match ? match->rules : MatchedRules{};
    EXPECT_TRUE(std::ranges::equal(rules.list(), listed)) << "the match names its rules, the lowest group's first";
    return best;
}

class FieldLives : public testing::TestWithParam<unsigned> {
  protected:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }

    void create(int group, uint32_t number) {
        const bool is_new = model_.try_emplace(number, ModelEntry{group}).second;
        EXPECT_EQ(table_.create(group, number), is_new ? Status::kOk : Status::kFieldExists);
    }
    void destroy(uint32_t number) {
        EXPECT_EQ(table_.destroy(number), model_.erase(number) != 0 ? Status::kOk : Status::kFieldMissing);
    }
    void join(uint32_t number) {
        const bool may =
            model_.count(number) != 0 && number >= 1280 && number % 2 == 0 && model_.count(number + 1) != 0;
        if (may) {
            model_.at(number).is_first = true;
            model_.at(number + 1).is_second = true;
        }
        EXPECT_EQ(table_.join(number) == Status::kOk, may);
    }
    /** What needs an existing entry and nothing else. */
    void change(uint32_t number, const std::function<void(ModelEntry &)> &in_model, Status status) {
        const auto entry = model_.find(number);
        EXPECT_EQ(status, entry != model_.end() ? Status::kOk : Status::kFieldMissing);
        if (entry != model_.end()) {
            in_model(entry->second);
        }
    }
    void live() {
        const auto &[group, number] = kPlaces[below(std::size(kPlaces))];
        const auto priority = static_cast<int32_t>(below(3)) - 1;
        const auto vid = static_cast<Vid>(1 + below(3));
        switch (below(8)) {
            case 0:
            case 1:
                return create(group, number);
            case 2:
                return destroy(number);
            case 3:
                return join(number);
            case 4:
                return change(
                    number, [&](ModelEntry &entry) { entry.staged.priority = priority; },
                    table_.set_priority(number, priority));
            case 5:
                return change(
                    number, [&](ModelEntry &entry) { entry.staged.vid = vid; },
                    table_.qualify(number, qualifier(Field::kOuterVid, vid, kAll)));
            case 6:
                return change(
                    number, [](ModelEntry &entry) { entry.staged.vid.reset(); }, table_.clear_qualifiers(number));
            default:
                return change(
                    number, [](ModelEntry &entry) { entry.installed = entry.staged; }, table_.install(number));
        }
    }

    std::mt19937 random_{GetParam()};
    FieldTable table_;
    Model model_;
};

TEST_P(FieldLives, TheSameRulesWin) {
    size_t wins = 0;
    for (int call = 0; call < kCalls && !HasFailure(); ++call) {
        live();
        for (const Vid vid : {Vid{1}, Vid{2}, Vid{3}}) {
            const auto expected = winners(model_, vid);
            wins += expected.size();
            EXPECT_EQ(winners(table_, vid), expected) << "call " << call << " vid " << vid;
        }
    }
    EXPECT_GT(wins, size_t{kCalls}) << "a life in which something happens";
}

INSTANTIATE_TEST_SUITE_P(Seeds, FieldLives, test::seeds());

}  // namespace field_model_test
}  // namespace vdevice::chip
