// Shared by the attribute tests: the calls that a port gets, written once and expanded over ports, and a run that
// lets each driver call fail in turn. Sleeping shows in the trace between the driver calls, and takes no time.
#pragma once

#include <functional>

#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace attribute_test {

using Lines = std::vector<std::string>;

constexpr uint32_t kGroup = 2;
constexpr uint32_t kAgg = ADP_AGG_INTF(kGroup);
constexpr uint32_t kUnwritten = 0xA5A5A5A5;
constexpr int32_t kDriverError = -33;
constexpr int32_t kPositiveError = 77;

inline const std::vector<uint32_t> kNoGroups = {ADP_AGG_INTF(0), ADP_AGG_INTF(9), 0x1FFFFFFFu};
inline const std::vector<uint32_t> kOtherTypes = {0x20000001u, 0x30000000u, 0x80000001u, 0xFFFFFFFFu};

/** A driver call on a port, as the trace shows it, without the port. */
struct PortCall {
    std::string name;
    std::string values;
};
using Calls = std::vector<PortCall>;

inline std::string line_of(const PortCall &call, int32_t port) {
    return call.name + "(unit=0, zero=0, port=" + std::to_string(port) + (call.values.empty() ? "" : ", ") +
           call.values + ")";
}

/** All calls on the first port, then all on the second ... */
inline Lines lines_of(const Calls &calls, const std::vector<int32_t> &ports) {
    Lines lines;
    for (const int32_t port : ports) {
        for (const PortCall &call : calls) {
            lines.push_back(line_of(call, port));
        }
    }
    return lines;
}

inline Lines operator+(Lines first, const Lines &second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline std::string value_of(const char *name, uint32_t value) {
    return std::string(name) + "=" + std::to_string(value);
}

constexpr uint32_t kGigabit = 1000;
constexpr uint32_t kTenGigabit = 10000;
inline const PortCall kReadAbilities = {"user_port_ability_advert_get", ""};
inline const PortCall kStartAutoneg = {"user_port_autoneg_set", "enable=1"};

inline PortCall write_abilities(uint32_t abilities) {
    return {"user_port_ability_advert_set", value_of("abilities", abilities)};
}

inline Lines maximum_reads(const std::vector<int32_t> &ports) {
    return lines_of({{"user_port_speed_max", ""}}, ports);
}

inline const std::string kPause = "usleep(500000)";

/** Names of parametrised tests. */
template <typename Case>
std::string name_of(const ::testing::TestParamInfo<Case> &info) {
    return info.param.name;
}
inline std::string selector_name(const ::testing::TestParamInfo<uint32_t> &info) {
    return "Selector" + std::to_string(info.param);
}

class AttributeTest : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        session_.system().on_call([](const std::string &line) { driver().note(line); });
        library_test::LibraryTest::SetUp();
    }

    fake_system::System &system() { return session_.system(); }

    /** What a trace shows up to the driver call of this number, 0 the first. */
    static Lines up_to_call(const Lines &lines, size_t number) {
        Lines first;
        size_t calls = 0;
        for (const std::string &line : lines) {
            first.push_back(line);
            calls += line == kPause ? 0u : 1u;
            if (calls > number) {
                break;
            }
        }
        return first;
    }

    /**
     * Runs an operation whose calls all succeed. Then runs it again with each of its driver calls failing in turn, with
     * a negative and a positive result: it returns 102 or the driver's own result, makes no further call, and the
     * tables are the same as after the success.
     */
    static void expect_each_failure(const std::function<void()> &prepare,
                                    const std::function<adp_status_t()> &operation, bool own_result = false) {
        start_over();
        prepare();
        EXPECT_EQ(operation(), 0);
        const Lines all = driver().take();
        const std::string tables = library_test::table_bytes();
        const size_t calls = driver().count();
        ASSERT_GT(calls, 0u);
        for (const int32_t result : {kDriverError, kPositiveError}) {
            for (size_t failing = 0; failing < calls; ++failing) {
                start_over();
                prepare();
                driver().fail_call(failing, result);
                EXPECT_EQ(operation(), own_result ? result : 102) << "call " << failing << " gave " << result;
                EXPECT_EQ(driver().take(), up_to_call(all, failing));
                EXPECT_EQ(library_test::table_bytes(), tables);
            }
        }
    }

  private:
    fake_system::Session session_;
};

/** Reads of one attribute. */
class GetAttributeTest : public AttributeTest {
  protected:
    adp_status_t get(uint32_t intf, uint32_t selector) { return adp_get_phy_port_attr(intf, selector, &value); }

    uint32_t value = kUnwritten;
};

/** A set whose calls on each port are these. */
struct SetCase {
    const char *name;
    uint32_t selector;
    uint32_t value;
    uint32_t mode;
    Calls calls;
    uint32_t read_abilities = 0; /**< the advertisement as the driver gives it */
    uint32_t read_autoneg = 0;
    uint32_t maximum = 0; /**< non-zero where the maximum speed is read first */
    bool own_result = false;
};

inline void PrintTo(const SetCase &set, std::ostream *out) {
    *out << set.name;
}

/** Sets that go to the port or to each configured member. */
class SetOnConfigured : public AttributeTest, public ::testing::WithParamInterface<SetCase> {
  protected:
    static void script() {
        driver().on("user_port_ability_advert_get").sets("abilities", GetParam().read_abilities);
        driver().on("user_port_autoneg_get").sets("enable", GetParam().read_autoneg);
        driver().on("user_port_speed_max").sets("speed", GetParam().maximum);
    }

    static adp_status_t set(uint32_t intf) {
        return adp_set_phy_port_attr(intf, GetParam().selector, GetParam().value, GetParam().mode);
    }

    /** What the set does on these ports. */
    static Lines lines_on(const std::vector<int32_t> &ports) {
        const Lines reads = GetParam().maximum == 0 ? Lines{} : maximum_reads(ports);
        return reads + lines_of(GetParam().calls, ports);
    }

    /** The set succeeds and does exactly this. */
    static void expect_set(uint32_t intf, const std::vector<int32_t> &ports) {
        const std::string tables = library_test::table_bytes();
        EXPECT_EQ(set(intf), 0);
        EXPECT_EQ(driver().take(), lines_on(ports));
        EXPECT_EQ(library_test::table_bytes(), tables);
    }
};

}  // namespace attribute_test
