// Conditions as people write them.
#include "vdevice/cable/conditions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace vdevice::cable {
namespace conditions_test {

const Option &option(std::string_view name) {
    for (const Option &known : kOptions) {
        if (known.name == name) {
            return known;
        }
    }
    ADD_FAILURE() << "no option " << name;
    return kOptions[0];
}

struct Case {
    const char *name;
    const char *text;
    uint64_t value;
    const char *shortest;
};

TEST(Conditions, AreReadAndWritten) {
    constexpr Case kCases[] = {
        {"loss", "5%", 50'000, "5%"},
        {"loss", "0.1%", 1000, "0.1%"},
        {"corrupt", "0.0001%", 1, "0.0001%"},
        {"duplicate", "100%", 1'000'000, "100%"},
        {"loss", "0%", 0, "0%"},
        {"loss", "005.50%", 55'000, "5.5%"},
        {"delay", "20ms", 20'000'000, "20ms"},
        {"delay", "1500us", 1'500'000, "1.5ms"},
        {"delay", "0.001us", 1, "0.001us"},
        {"delay", "10s", 10'000'000'000, "10s"},
        {"jitter", "1.000000001s", 1'000'000'001, "1.000000001s"},
        {"rate", "1k", 1, "1k"},
        {"rate", "100M", 100'000, "100M"},
        {"rate", "2.5G", 2'500'000, "2.5G"},
        {"rate", "1000000k", 1'000'000, "1G"},
        {"seed", "0", 0, "0"},
        {"seed", "4294967295", 4294967295, "4294967295"},
    };
    for (const Case &row : kCases) {
        EXPECT_EQ(value_of(option(row.name), row.text), row.value) << row.text;
        EXPECT_EQ(text_of(option(row.name), row.value), row.shortest);
        EXPECT_EQ(value_of(option(row.name), row.shortest), row.value) << row.text;
    }
}

TEST(Conditions, AreReadAsTheyWereWritten) {
    constexpr uint64_t kStride = 9'999'991;  // a prime, so that all digits have their turn
    for (const Option &known : kOptions) {
        const uint64_t step = std::max<uint64_t>(known.most / kStride, 1) * 997;
        for (uint64_t value = 0; value <= known.most; value += step) {
            ASSERT_EQ(value_of(known, text_of(known, value)), value) << text_of(known, value);
        }
    }
}

TEST(Conditions, ThatMeanNothingAreRefused) {
    constexpr std::pair<const char *, const char *> kCases[] = {
        {"loss", ""},
        {"loss", "%"},
        {"loss", "5"},
        {"loss", "5%%"},
        {"loss", "-1%"},
        {"loss", "101%"},
        {"loss", "5 %"},
        {"loss", "100.0001%"},
        {"loss", "0.00001%"},
        {"loss", ".5%"},
        {"loss", "5.%"},
        {"loss", "1.2.3%"},
        {"loss", "nan%"},
        {"loss", "1e1%"},
        {"loss", "99999999999999999999%"},
        {"delay", "20"},
        {"delay", "20m"},
        {"delay", "11s"},
        {"delay", "0.0001us"},
        {"delay", "10000000001us"},
        {"rate", "100"},
        {"rate", "0.5k"},
        {"rate", "101G"},
        {"rate", "100m"},
        {"rate", "k"},
        {"seed", "1.5"},
        {"seed", "-1"},
        {"seed", "4294967296"},
        {"seed", "x"},
        {"seed", ""},
    };
    for (const auto &[name, text] : kCases) {
        EXPECT_EQ(value_of(option(name), text), std::nullopt) << name << " " << text;
    }
}

TEST(Conditions, CanBeImpossible) {
    Conditions conditions;
    conditions.delay = conditions.jitter = 5;
    EXPECT_EQ(fault_of(conditions), nullptr);
    conditions.jitter = 6;
    EXPECT_STREQ(fault_of(conditions), "the jitter of a cable is at most its delay.");
}

TEST(Conditions, AreNoneOnAGoodCable) {
    EXPECT_TRUE(Conditions{}.is_none());
    for (const Option &known : kOptions) {
        Conditions conditions;
        conditions.*known.condition = 7;
        EXPECT_EQ(conditions.is_none(), std::string{known.name} == "seed") << known.name;
    }
}

}  // namespace conditions_test
}  // namespace vdevice::cable
