// Translation and subnet entries: one driver call each, with VLAN ids cut to 16 bits and everything else passed on.
#include "vlan/testing/plain_calls.h"

namespace {

using ::testing::ElementsAre;
using vlan_test::PlainCall;

// Arguments that are not cut have bits above the low 16; those that are cut keep bit 15, which is not a sign.
constexpr adp_word_t kA = 0xA1110001;
constexpr adp_word_t kB = 0xB2220002;
constexpr adp_word_t kC = 0xC3330003;
constexpr adp_word_t kE = 0xE4440004;
constexpr adp_word_t kF = 0xF5550005;
constexpr uint32_t kVid = 0x18ABC;       // 35516
constexpr uint32_t kOther = 0xFFFF8001;  // 32769

uint32_t output[2];

class TranslationCall : public vlan_test::PlainVlanCall {};

TEST_P(TranslationCall, MakesItsDriverCallAndReturnsTheResultUnchanged) {
    makes_its_driver_call_and_returns_the_result_unchanged();
}

INSTANTIATE_TEST_SUITE_P(
    Vlan, TranslationCall,
    ::testing::Values(
        PlainCall{"Add", [] { return adp_vlan_translate_add(kA, kB, kC, kVid, kOther, kF); },
                  "user_vlan_translate_add(unit=0, zero=0, kind=2702245889, port=2988572674, action=3274899459, "
                  "old_vid=35516, new_vid=32769, priority=4115988485)"},
        PlainCall{"Delete", [] { return adp_vlan_translate_delete(kA, kB, kVid); },
                  "user_vlan_translate_delete(unit=0, zero=0, kind=2702245889, port=2988572674, old_vid=35516)"},
        PlainCall{"DeleteAll", adp_vlan_translate_delete_all, "user_vlan_translate_delete_all(unit=0, zero=0)"},
        PlainCall{"Get", [] { return adp_vlan_translate_get(kA, kVid, &output[0], &output[1]); },
                  "user_vlan_translate_get(unit=0, zero=0, port=2702245889, old_vid=35516)"},
        PlainCall{"EgressAdd", [] { return adp_vlan_translate_egress_add(kA, kB, kVid, kOther, kE); },
                  "user_vlan_translate_egress_add(unit=0, zero=0, kind=2702245889, port=2988572674, old_vid=35516, "
                  "new_vid=32769, priority=3829661700)"},
        PlainCall{"EgressDelete", [] { return adp_vlan_translate_egress_delete(kA, kB, kVid); },
                  "user_vlan_translate_egress_delete(unit=0, zero=0, kind=2702245889, port=2988572674, old_vid=35516)"},
        PlainCall{"EgressDeleteAll", adp_vlan_translate_egress_delete_all,
                  "user_vlan_translate_egress_delete_all(unit=0, zero=0)"},
        PlainCall{"EgressGet", [] { return adp_vlan_translate_egress_get(kA, kVid, &output[0], &output[1]); },
                  "user_vlan_translate_egress_get(unit=0, zero=0, port=2702245889, old_vid=35516)"},
        PlainCall{"Ip4Add", [] { return adp_vlan_ip4_add(kA, kB, kC, kVid, kE, kF); },
                  "user_vlan_ip4_add(unit=0, zero=0, port=2702245889, address=2988572674, mask=3274899459, vid=35516, "
                  "priority=3829661700, flags=4115988485)"},
        PlainCall{"Ip4Delete", [] { return adp_vlan_ip4_delete(kA, kB, kC); },
                  "user_vlan_ip4_delete(unit=0, zero=0, port=2702245889, address=2988572674, mask=3274899459)"},
        PlainCall{"Ip4DeleteAll", adp_vlan_ip4_delete_all, "user_vlan_ip4_delete_all(unit=0, zero=0)"},
        PlainCall{"DoubleTagDeleteAll", adp_vlan_dtag_delete_all, "user_vlan_dtag_delete_all(unit=0, zero=0)"}),
    vlan_test::name_of);

/** A call whose driver-specific arguments may be addresses: as wide as a pointer; the trace shows only 32 bits. */
struct WideCall {
    const char *name;
    adp_status_t (*run)(const adp_word_t *words);
    const char *driver_call;
    std::vector<const char *> words;
};

void PrintTo(const WideCall &call, std::ostream *out) {
    *out << call.name;
}

class WideArguments : public library_test::LibraryTest, public ::testing::WithParamInterface<WideCall> {};

TEST_P(WideArguments, ArePassedOnWhole) {
    constexpr adp_word_t kWords[] = {UINTPTR_MAX - 1, UINTPTR_MAX - 2, UINTPTR_MAX - 3, UINTPTR_MAX - 4,
                                     UINTPTR_MAX - 5};
    std::vector<adp_word_t> seen;
    driver().on(GetParam().driver_call).does([&seen](recording::Arguments &arguments) {
        for (const char *word : GetParam().words) {
            seen.push_back(arguments.word(word));
        }
        return 0;
    });
    EXPECT_EQ(GetParam().run(kWords), 0);
    EXPECT_EQ(seen, std::vector<adp_word_t>(kWords, kWords + GetParam().words.size()));
}

INSTANTIATE_TEST_SUITE_P(
    Vlan, WideArguments,
    ::testing::Values(
        WideCall{"Add",
                 [](const adp_word_t *w) { return adp_vlan_translate_add(w[0], w[1], w[2], 1, 2, w[3]); },
                 "user_vlan_translate_add",
                 {"kind", "port", "action", "priority"}},
        WideCall{"Delete",
                 [](const adp_word_t *w) { return adp_vlan_translate_delete(w[0], w[1], 1); },
                 "user_vlan_translate_delete",
                 {"kind", "port"}},
        WideCall{"Get",
                 [](const adp_word_t *w) { return adp_vlan_translate_get(w[0], 1, nullptr, nullptr); },
                 "user_vlan_translate_get",
                 {"port"}},
        WideCall{"EgressAdd",
                 [](const adp_word_t *w) { return adp_vlan_translate_egress_add(w[0], w[1], 1, 2, w[2]); },
                 "user_vlan_translate_egress_add",
                 {"kind", "port", "priority"}},
        WideCall{"EgressDelete",
                 [](const adp_word_t *w) { return adp_vlan_translate_egress_delete(w[0], w[1], 1); },
                 "user_vlan_translate_egress_delete",
                 {"kind", "port"}},
        WideCall{"EgressGet",
                 [](const adp_word_t *w) { return adp_vlan_translate_egress_get(w[0], 1, nullptr, nullptr); },
                 "user_vlan_translate_egress_get",
                 {"port"}},
        WideCall{"Ip4Add",
                 [](const adp_word_t *w) { return adp_vlan_ip4_add(w[0], w[1], w[2], 1, w[3], w[4]); },
                 "user_vlan_ip4_add",
                 {"port", "address", "mask", "priority", "flags"}},
        WideCall{"Ip4Delete",
                 [](const adp_word_t *w) { return adp_vlan_ip4_delete(w[0], w[1], w[2]); },
                 "user_vlan_ip4_delete",
                 {"port", "address", "mask"}},
        WideCall{"DoubleTagAdd",
                 [](const adp_word_t *w) { return adp_vlan_dtag_add(w[0], 1, w[1], 1, 2, w[2]); },
                 "user_vlan_dtag_add",
                 {"kind", "action", "priority"}},
        WideCall{"DoubleTagDelete",
                 [](const adp_word_t *w) { return adp_vlan_dtag_delete(w[0], 1, 1); },
                 "user_vlan_dtag_delete",
                 {"kind"}},
        WideCall{"DoubleTagTpid",
                 [](const adp_word_t *w) { return adp_double_tag_tipd_set(1, 2, w[0]); },
                 "user_port_tpid_set",
                 {"option"}}),
    [](const auto &row) { return std::string(row.param.name); });

/** The two reads, which differ only in the table. */
struct Read {
    const char *name;
    adp_status_t (*get)(adp_word_t, uint32_t, uint32_t *, uint32_t *);
    const char *driver_call;
};

class TranslationRead : public library_test::LibraryTest, public ::testing::WithParamInterface<Read> {};

TEST_P(TranslationRead, ReturnsWholeValuesInTheCallersOutputs) {
    driver().on(GetParam().driver_call).sets("new_vid", 0x12345678u).sets("priority", 0xFFFFFFFFu);
    uint32_t vid = 0;
    uint32_t priority = 0;
    EXPECT_EQ(GetParam().get(1, 2, &vid, &priority), 0);
    EXPECT_EQ(vid, 0x12345678u);
    EXPECT_EQ(priority, 0xFFFFFFFFu);
}

TEST_P(TranslationRead, LeavesTheOutputsWhenTheDriverFails) {
    uint32_t outputs[2] = {42, 43};
    for (const int32_t failure : {-1, 1, 77}) {
        driver().fail_every(GetParam().driver_call, failure);
        EXPECT_EQ(GetParam().get(1, 2, &outputs[0], &outputs[1]), failure);
        EXPECT_THAT(outputs, ElementsAre(42, 43));
    }
}

INSTANTIATE_TEST_SUITE_P(Vlan, TranslationRead,
                         ::testing::Values(Read{"Ingress", adp_vlan_translate_get, "user_vlan_translate_get"},
                                           Read{"Egress", adp_vlan_translate_egress_get,
                                                "user_vlan_translate_egress_get"}),
                         [](const auto &row) { return std::string(row.param.name); });

}  // namespace
