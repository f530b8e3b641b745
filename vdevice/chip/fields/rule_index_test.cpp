// The index of rules against a walk along the same rules, at random: the same rule is always the first that is met.
#include "vdevice/chip/fields/rule_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "vdevice/chip/testing/packet_builder.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace rule_index_test {

using namespace test;

constexpr uint32_t kAll = 0xFFFFFFFF;
constexpr int kRules = 60;
constexpr int kFrames = 40;
constexpr int kPorts = 4;
constexpr uint32_t kLists = 3;

struct Rule {
    size_t list;
    std::vector<Qualifier> first;
    std::optional<std::vector<Qualifier>> second;
};

class RuleIndexLives : public testing::TestWithParam<unsigned> {
  protected:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    bool happens_in(uint32_t times) { return below(times) == 0; }

    /** Values and masks are few, so that rules meet the same frames, and each other. */
    Qualifier condition() {
        constexpr Field kFields[] = {Field::kOuterVid,   Field::kSourceIpv4,      Field::kDestinationIpv6,
                                     Field::kSourcePort, Field::kDestinationMac,  Field::kProtocol,
                                     Field::kInPorts,    Field::kDestinationIpv4, Field::kInnerVid};
        constexpr uint32_t kMasks[] = {kAll, kAll, kAll, kAll, kAll, 3, 1, 0};
        const Field field = kFields[below(std::size(kFields))];
        if (field == Field::kInPorts) {
            return qualifier(field, 1 + below((1U << kPorts) - 1), happens_in(2) ? kAll : 1U << below(kPorts));
        }
        const uint32_t mask = kMasks[below(std::size(kMasks))];
        Qualifier made = qualifier(field, below(4), mask);
        if (field == Field::kProtocol) {
            made.data[0] = happens_in(2) ? kUdp : kTcp;
        } else if (field == Field::kSourceIpv4 || field == Field::kDestinationIpv4) {
            made.data[0] |= 0x0A000000;
        } else if (field == Field::kDestinationMac) {
            made.data = {0x0200, below(4)};
            made.mask = {happens_in(2) ? kAll : 0, mask};
        } else if (field == Field::kDestinationIpv6) {
            made.data = {0xFD000000, 0, 0, below(4)};
            made.mask = {kAll, 0, 0, mask};
        }
        return made;
    }
    std::vector<Qualifier> conditions(size_t at_least) {
        std::vector<Qualifier> list(at_least + below(3));
        std::generate(list.begin(), list.end(), [&] { return condition(); });
        return list;
    }
    Rule rule() { return {below(kLists), conditions(2), happens_in(3) ? std::optional{conditions(0)} : std::nullopt}; }

    Octets frame() {
        const Octets ports = octets16(static_cast<uint16_t>(below(4))) + octets16(7);
        const uint8_t protocol = happens_in(2) ? kUdp : kTcp;
        const auto number = [&] { return static_cast<uint8_t>(below(4)); };
        const Octets packet =
            happens_in(3) ? test::ipv6({protocol, test::ipv6_address(number()), test::ipv6_address(number())}, ports)
                          : test::ipv4({protocol, test::ipv4_address(number()), test::ipv4_address(number())}, ports);
        const Octets tag = happens_in(3) ? test::vlan_tag(number()) : Octets{};
        return test::station(number()) + test::station(9) + tag + packet;
    }

    static bool meets_all(const std::vector<Qualifier> &conditions, const FieldKey &key) {
        return std::all_of(conditions.begin(), conditions.end(), [&](const auto &each) { return key.meets(each); });
    }
    /** What the index must find. */
    RuleIndex::Entries walk(const FieldKey &key) const {
        RuleIndex::Entries first;
        first.fill(RuleIndex::kNone);
        for (size_t i = 0; i < rules_.size(); ++i) {
            const Rule &rule = rules_[i];
            if (first[rule.list] == RuleIndex::kNone && meets_all(rule.first, key) &&
                (!rule.second || meets_all(*rule.second, key))) {
                first[rule.list] = static_cast<uint32_t>(i);
            }
        }
        return first;
    }
    void add_rule() {
        const Rule &added = rules_.emplace_back(rule());
        if (const auto terms = make_terms(added.first, added.second ? &*added.second : nullptr)) {
            index_.add(added.list, static_cast<uint32_t>(rules_.size() - 1), *terms);
        }
    }

    std::mt19937 random_{GetParam()};
    std::vector<Rule> rules_;
    RuleIndex index_;
};

TEST_P(RuleIndexLives, TheSameRuleIsTheFirstThatIsMet) {
    std::set<uint32_t> met;
    int missed = 0;
    for (int rules = 0; rules < kRules; ++rules) {
        add_rule();
        for (int frames = 0; frames < kFrames && !HasFailure(); ++frames) {
            const Octets octets = frame();
            const auto header = read_header(split_frame(octets), kVlanTpid);
            const FieldKey key{
                {static_cast<int>(below(kPorts)), octets.size(), *header, static_cast<uint16_t>(below(4))}};
            const auto expected = walk(key);
            EXPECT_EQ(index_.find(key), expected) << rules + 1 << " rules";
            for (size_t list = 0; list < kLists; ++list) {
                if (expected[list] == RuleIndex::kNone) {
                    ++missed;
                } else {
                    met.insert(expected[list]);
                }
            }
        }
    }
    EXPECT_GT(met.size(), kLists);
    EXPECT_GT(missed, kFrames / 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RuleIndexLives, test::seeds(6));

TEST(RuleTerms, TheFieldsOfAKeyHaveTheWordsOfTheirRows) {
    constexpr unsigned kWordBits = 32;
    for (const FieldInfo &info : field_table()) {
        const size_t words = info.field == Field::kInPorts ? 1 : (info.bits + kWordBits - 1) / kWordBits;
        EXPECT_EQ(key_words(info.field), words) << info.name;
    }
}

TEST(RuleTerms, HalvesThatContradictEachOtherAreNoRule) {
    const std::vector<Qualifier> odd{qualifier(Field::kOuterVid, 1, 1)};
    const std::vector<Qualifier> even{qualifier(Field::kOuterVid, 2, 3)};
    const std::vector<Qualifier> high{qualifier(Field::kOuterVid, 0x100, 0xF00)};
    EXPECT_FALSE(make_terms(odd, &even));
    const auto both = make_terms(odd, &high);
    ASSERT_TRUE(both);
    ASSERT_EQ(both->terms.size(), 1U);
    EXPECT_EQ(both->terms[0].mask, 0xF01U);
    EXPECT_EQ(both->terms[0].data, 0x101U);
}

TEST(RuleTerms, HalvesWithoutACommonPortAreNoRule) {
    const std::vector<Qualifier> here{qualifier(Field::kInPorts, 0x30, kAll)};
    const std::vector<Qualifier> there{qualifier(Field::kInPorts, 0xC0, kAll)};
    EXPECT_FALSE(make_terms(here, &there));
    EXPECT_TRUE(make_terms(here, &here));
}

}  // namespace rule_index_test
}  // namespace vdevice::chip
