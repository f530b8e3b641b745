// The qualifiers of a rule: the call of each type, its arguments, its entry, and its log line.
#include "fp/testing/support.h"

namespace {

using fp_test::add_qualifier;
using fp_test::block_text;
using fp_test::joined;
using fp_test::kOfGroup1;
using fp_test::kOfGroup3;
using fp_test::kOfGroup5;
using fp_test::logged;
using fp_test::make_rule;
using fp_test::QualifierRow;
using fp_test::Takes;
using fp_test::Trace;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr char kInstall[] = "adp_fp_add_entity_rule";
constexpr uint32_t kData = 0x12345678;
constexpr uint32_t kMask = 0x9ABCDEF1;

std::string on_entry(const std::string &call, uint32_t entry, const std::string &rest) {
    return call + "(handle=0, unit=0, entry=" + std::to_string(entry) + rest + ")";
}

std::string select_template(uint32_t entry) {
    return on_entry("user_field_set_select_tempate_idx", entry, ", index=0");
}

/** The lines from the first qualifier's up to those of the actions. */
Trace qualifier_lines(const Trace &trace) {
    const auto has = [](const char *what) {
        return [=](const std::string &line) { return line.find(what) != std::string::npos; };
    };
    // After the lines of the priority, before those of the installation.
    auto first = std::find_if(trace.begin(), trace.end(), has("set entry [%d] priority"));
    const auto last = std::find_if(trace.begin(), trace.end(), has("add action ret"));
    return first == trace.end() || last == trace.end() ? Trace{} : Trace(first + 1, last - 1);
}

class Qualifiers : public fp_test::FpTest {};

/** One type in one group: which of the two entries it goes to. */
struct Place {
    QualifierRow row;
    uint32_t submodule_type;
};

class EachQualifier : public fp_test::FpTest, public ::testing::WithParamInterface<Place> {
  protected:
    static bool is_second() {
        return fp_test::is_on_second_half(fp_test::submodule(GetParam().submodule_type)->group, GetParam().row.type);
    }

    /** Data and mask as the call gets them. */
    static std::string taken() {
        FpQualify q = {};
        fp_test::set_condition(q.data, GetParam().row.type, {kData, 7});
        fp_test::set_condition(q.mask, GetParam().row.type, {kMask, 9});
        switch (GetParam().row.takes) {
            case Takes::kBytes:
                return ", data=" + block_text(q.data, 64) + ", mask=" + block_text(q.mask, 64);
            case Takes::kWord:
                return ", data=305419896, mask=2596069105";
            case Takes::kLow16:
                return ", data=22136, mask=57073";
            case Takes::kLow8:
                return ", data=120, mask=241";
            case Takes::kWordAlone:
                return ", data=305419896";
            case Takes::kPorts:
                break;
        }
        // The bits of both words up to 26, each of an interface n as physical port n + 3 and bit 0 as port 0.
        return ", data={6,7,8,9,12,13,15,17,21,23,24,28}, mask={0,7,8,9,10,12,13,14,15,17,18,21,22,23,24,26,28}";
    }

    static std::string text_after(const char *message) {
        const std::string whole = message;
        return whole.substr(std::string("%s:[%05d]").size(), whole.size() - std::string("%s:[%05d]\n").size());
    }
    static std::string replaced(std::string text, std::initializer_list<std::string> numbers) {
        for (const std::string &number : numbers) {
            text.replace(text.find("%d"), 2, number);
        }
        return text;
    }
};

TEST_P(EachQualifier, IsOneCallOnItsEntryBetweenItsTwoLogLines) {
    const QualifierRow &row = GetParam().row;
    FpEntity rule = make_rule(GetParam().submodule_type, 1);
    add_qualifier(&rule, row.type, {kData, 7}, {kMask, 9});
    EXPECT_EQ(install(rule), 0);
    const uint32_t first = recorded(0).true_entry;
    const uint32_t target = is_second() ? first + 1 : first;
    const std::string type_text = "  ---------i=[0] type=[" + std::to_string(row.type) + "] ret=[0]-------";
    const std::string message = text_after(row.message);
    EXPECT_THAT(qualifier_lines(last_trace()),
                ElementsAreArray(joined(
                    {is_second() ? Trace{} : Trace{select_template(first)},
                     logged(kInstall, 995, "  ---------i=[%d] type=[%d] ret=[%d]-------", type_text),
                     {on_entry(row.call, target, taken())},
                     logged(kInstall, row.line, message, replaced(message, {"0", "0", std::to_string(target)}))})));
}

TEST_P(EachQualifier, LogsItsIndexAndTheNewStatus) {
    const QualifierRow &row = GetParam().row;
    FpEntity rule = make_rule(GetParam().submodule_type, 1);
    add_qualifier(&rule, 29, {1}, {2});
    add_qualifier(&rule, row.type, {kData}, {kMask});
    fail_every(row.call, 12);
    trace_on();
    EXPECT_EQ(install(rule), 12);
    const std::string target = std::to_string(recorded(0).true_entry + (is_second() ? 1 : 0));
    const std::string message = text_after(row.message);
    const Trace shown = logged(kInstall, row.line, message, replaced(message, {"1", "12", target}), true);
    EXPECT_THAT(last_trace(), Contains(shown[1]));
    EXPECT_THAT(last_trace(), Contains(shown[2]));
}

TEST_P(EachQualifier, ReplacesTheStatusExceptTheIngressPorts) {
    const QualifierRow &row = GetParam().row;
    FpEntity rule = make_rule(GetParam().submodule_type, 1);
    add_qualifier(&rule, row.type, {kData}, {kMask});
    fail_every("user_field_entry_create_id", 1);
    fail_every("user_field_set_double_entry", 4);
    fail_every("user_field_set_select_tempate_idx", 16);
    fail_every(row.call, 2);
    // Only type 13 adds its result: to the template call's, which has replaced all results before it.
    EXPECT_EQ(install(rule), row.type == 13 ? 18 : 2);
}

TEST_P(EachQualifier, IsMadeForTheRecordsUnit) {
    const QualifierRow &row = GetParam().row;
    FpEntity rule = make_rule(GetParam().submodule_type, 1);
    rule.unit = 0xFFFFFFFE;
    add_qualifier(&rule, row.type, {kData}, {kMask});
    EXPECT_EQ(install(rule), 0);
    const Trace calls = last_driver_calls();
    const auto call =
        std::find_if(calls.begin(), calls.end(), [&](const std::string &line) { return line.rfind(row.call, 0) == 0; });
    ASSERT_NE(call, calls.end());
    EXPECT_EQ(call->find(std::string(row.call) + "(handle=0, unit=4294967294, entry="), 0u);
    EXPECT_EQ(call->find("data={}, mask={}") != std::string::npos, row.type == 13) << *call;
}

std::vector<Place> every_place() {
    std::vector<Place> places;
    for (const QualifierRow &row : fp_test::kQualifiers) {
        for (const uint32_t submodule_type : {kOfGroup1, kOfGroup5, kOfGroup3}) {
            places.push_back({row, submodule_type});
        }
    }
    return places;
}

INSTANTIATE_TEST_SUITE_P(OfTheTable, EachQualifier, ::testing::ValuesIn(every_place()), [](const auto &place) {
    return "Type" + std::to_string(place.param.row.type) + "InSubmodule" + std::to_string(place.param.submodule_type);
});

TEST_F(Qualifiers, ThereAreTwentyTypes) {
    EXPECT_EQ(std::size(fp_test::kQualifiers), 20u);
    FpEntity rule = make_rule(kOfGroup3, 1);
    rule.qualify_num = 1;
    for (uint32_t type = 0; type <= 400; ++type) {
        rule.qualifies[0].type = type;
        install(rule);  // the model knows the types
        EXPECT_EQ(last_printed().empty(), std::any_of(std::begin(fp_test::kQualifiers), std::end(fp_test::kQualifiers),
                                                      [&](const QualifierRow &row) { return row.type == type; }))
            << type;
    }
}

TEST_F(Qualifiers, AnUnknownTypeIsPrintedAndSkipped) {
    FpEntity rule = make_rule(kOfGroup1, 5);
    add_qualifier(&rule, 2, {1}, {1});
    add_qualifier(&rule, 0xFFFFFFFF, {1}, {1});
    add_qualifier(&rule, 29, {0x0800}, {0xFFFF});
    EXPECT_EQ(install(rule), 0);
    EXPECT_EQ(last_printed(),
              "adp_fp_add_entity_rule:[01135] set unknow qualify type = [2]\n"
              "adp_fp_add_entity_rule:[01135] set unknow qualify type = [-1]\n");
    const Trace place(1, select_template(1410));
    EXPECT_THAT(qualifier_lines(last_trace()),
                ElementsAreArray(joined({place,
                                         logged(kInstall, 995, "  ---------i=[%d] type=[%d] ret=[%d]-------",
                                                "  ---------i=[0] type=[2] ret=[0]-------"),
                                         place,
                                         logged(kInstall, 995, "  ---------i=[%d] type=[%d] ret=[%d]-------",
                                                "  ---------i=[1] type=[-1] ret=[0]-------"),
                                         place,
                                         logged(kInstall, 995, "  ---------i=[%d] type=[%d] ret=[%d]-------",
                                                "  ---------i=[2] type=[29] ret=[0]-------"),
                                         {on_entry("user_field_qualify_EtherType", 1410, ", data=2048, mask=65535")},
                                         logged(kInstall, 1076, "  ethertype i=[%d] ret=[%d] fent=[%d]-------",
                                                "  ethertype i=[2] ret=[0] fent=[1410]-------")})));
}

TEST_F(Qualifiers, TheTemplateCallReplacesTheStatusAlsoBeforeAnUnknownType) {
    FpEntity rule = make_rule(kOfGroup3, 1);
    add_qualifier(&rule, 2, {1}, {1});
    fail_every("user_field_entry_create_id", 1);
    fail_every("user_field_set_select_tempate_idx", 8);
    EXPECT_EQ(install(rule), 8);
    fail_every("user_field_set_select_tempate_idx", 0);
    EXPECT_EQ(install(rule), 0);
}

TEST_F(Qualifiers, OnTheSecondHalfThereIsNoTemplateCall) {
    FpEntity rule = make_rule(kOfGroup1, 5);
    add_qualifier(&rule, 13, {2}, {2});
    add_qualifier(&rule, 10, {1}, {1});
    fail_every("user_field_set_select_tempate_idx", 8);
    fail_every("user_field_qualify_InPorts", 2);
    fail_every("user_field_qualify_DstIp", 4);
    EXPECT_EQ(install(rule), 4);
    EXPECT_EQ(driver().count("user_field_set_select_tempate_idx"), 1u);
    rule.qualify_num = 1;
    EXPECT_EQ(install(rule), 10);
}

TEST_F(Qualifiers, TypesOfTwoGroupsShareTheHalvesDifferently) {
    FpEntity rule = make_rule(kOfGroup1, 0);
    for (const uint32_t type : {0u, 1u, 29u, 30u, 10u, 27u}) {
        add_qualifier(&rule, type, {1}, {1});
    }
    const auto halves = [&](uint32_t submodule_type) {
        rule.submodule_type = submodule_type;
        install(rule);
        std::string text;
        for (const std::string &line : last_driver_calls()) {
            if (line.rfind("user_field_qualify_", 0) == 0) {
                const std::string second = "entry=" + std::to_string(recorded(0).true_entry + 1) + ",";
                text += line.find(second) == std::string::npos ? '1' : '2';
            }
        }
        remove(submodule_type, 0);
        return text;
    };
    EXPECT_EQ(halves(kOfGroup1), "111122");
    EXPECT_EQ(halves(kOfGroup5), "121212");
    EXPECT_EQ(halves(kOfGroup3), "111111");
}

TEST_F(Qualifiers, SixteenOfThemAreApplied) {
    FpEntity rule = make_rule(kOfGroup3, 1);
    for (uint32_t i = 0; i < 16; ++i) {
        add_qualifier(&rule, 18, {i}, {0xFFF});
    }
    EXPECT_EQ(install(rule), 0);
    EXPECT_EQ(driver().count("user_field_qualify_OuterVlanId"), 16u);
    EXPECT_EQ(driver().count("user_field_set_select_tempate_idx"), 16u);
}

TEST_F(Qualifiers, IngressPortsComeFromTheWholeMap) {
    library_test::make_default_map(255);
    model().ports.clear();
    for (uint32_t intf = 1; intf <= 255; ++intf) {
        model().ports[intf] = static_cast<int32_t>(intf + 3);  // the last ones lie outside the set
    }
    model().ports[0] = 0;
    const auto map = [&](uint32_t intf, int32_t port) {
        ASSERT_EQ(adp_add_phy_port(intf, 0, 0, static_cast<uint32_t>(port), 0), 0);
        model().ports[intf] = port;
    };
    map(7, -1);
    map(8, INT32_MIN);
    map(9, INT32_MAX);
    map(10, 256);
    map(11, 255);
    map(12, 4);  // the same port as interface 1
    FpEntity rule = make_rule(kOfGroup3, 1);
    add_qualifier(&rule, 13, std::vector<uint32_t>(8, 0xFFFFFFFF), {0x1F82, 0, 0, 0, 0, 0, 0, 0x90000000});
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(last_driver_calls()[3], ::testing::HasSubstr("mask={4,255})"));
}

TEST_F(Qualifiers, IngressPortsWithoutAMapAreEmpty) {
    library_test::drop_map();
    model().ports.clear();
    FpEntity rule = make_rule(kOfGroup3, 1);
    add_qualifier(&rule, 13, std::vector<uint32_t>(8, 0xFFFFFFFF), std::vector<uint32_t>(8, 0xFFFFFFFF));
    EXPECT_EQ(install(rule), 0);
    EXPECT_THAT(last_driver_calls()[3], ::testing::HasSubstr("data={}, mask={})"));
}

}  // namespace
