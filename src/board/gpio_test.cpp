// The I/O pins: the traffic on the chip's registers, for the calls of both families.
#include <map>

#include "tests/support/library_test.h"
#include "tests/support/outcome.h"

namespace {

using library_test::Outcome;
using library_test::outcome_of;
using ::testing::ElementsAre;

constexpr uint32_t kInput = 8192;
constexpr uint32_t kOutput = 8196;
constexpr uint32_t kDirection = 8200;

constexpr uint32_t kPatterns[] = {0, 0xFFFFFFFF, 0xA5A5A5A5, 0x5A5A5A5A};
constexpr int32_t kResults[] = {0, 1, 77, -1, -33, INT32_MIN};
constexpr uint32_t kOtherValues[] = {2, 5, 0x80000000, 0x80000001, 0xFFFFFFFF};

/** The calls of one of the two families; both behave alike. */
struct Family {
    const char *name;
    adp_status_t (*init)();
    adp_status_t (*direct)(uint32_t pin, uint32_t value);
    adp_status_t (*write)(uint32_t pin, uint32_t value);
    int32_t (*get)(uint32_t pin);
    adp_status_t (*reverse)(uint32_t pin);
};

constexpr Family kFamilies[] = {
    {"Hal", hal_gpio_register_init, hal_set_gpio_direct, hal_set_gpio_write_bit, hal_get_gpio_val, hal_reverse_gpio},
    {"Adp", adp_gpio_register_init, adp_set_gpio_direct, adp_set_gpio_write_bit, adp_get_gpio_val, adp_reverse_gpio},
};

void PrintTo(const Family &family, std::ostream *out) {
    *out << family.name;
}

/** A pin number, and the bit that the writing calls use for it. */
struct Pin {
    uint32_t number;
    uint32_t mask;
};

std::vector<Pin> pins() {
    std::vector<Pin> pins;
    for (uint32_t pin = 0; pin < 32; ++pin) {
        pins.push_back({pin, 1u << pin});
    }
    // Numbers beyond the register wrap around to its bit 0.
    const Pin beyond[] = {{32, 1}, {33, 2}, {63, 0x80000000}, {64, 1}, {0x80000003, 8}, {0xFFFFFFFF, 0x80000000}};
    pins.insert(pins.end(), std::begin(beyond), std::end(beyond));
    return pins;
}

std::string read_line(uint32_t address) {
    return "user_pci_read(unit=0, zero=0, address=" + std::to_string(address) + ")";
}

std::string write_line(uint32_t address, uint32_t value) {
    return "user_pci_write(unit=0, zero=0, address=" + std::to_string(address) + ", value=" + std::to_string(value) +
           ")";
}

class Gpio : public library_test::LibraryTest, public ::testing::WithParamInterface<Family> {
  protected:
    void SetUp() override {
        library_test::LibraryTest::SetUp();
        driver().on("user_pci_read").does([this](recording::Arguments &arguments) {
            *static_cast<uint32_t *>(arguments.pointer("value")) = registers_.at(arguments.u32("address"));
            return read_result_;
        });
        driver().on("user_pci_write").does([this](recording::Arguments &arguments) {
            registers_.at(arguments.u32("address")) = arguments.u32("value");
            return write_result_;
        });
    }

    /** Runs a call on a register that holds @p before: it reads it, writes @p after and returns the write's result. */
    template <typename Call>
    void expect_rewritten(uint32_t address, uint32_t before, uint32_t after, Call call) {
        registers_.at(address) = before;
        EXPECT_EQ(call(), write_result_);
        EXPECT_THAT(driver().take(), ElementsAre(read_line(address), write_line(address, after)));
    }

    /** What the two calls that set one pin's bit have in common. */
    void expect_sets_bits(adp_status_t (*call)(uint32_t pin, uint32_t value), uint32_t address) {
        for (const Pin &pin : pins()) {
            for (const uint32_t old : kPatterns) {
                expect_rewritten(address, old, old | pin.mask, [&] { return call(pin.number, 1); });
                expect_rewritten(address, old, old & ~pin.mask, [&] { return call(pin.number, 0); });
            }
            for (const uint32_t value : kOtherValues) {
                expect_rewritten(address, 0xA5A5A5A5, 0xA5A5A5A5, [&] { return call(pin.number, value); });
            }
        }
    }

    std::map<uint32_t, uint32_t> registers_{{kInput, 0xA5A5A5A5}, {kOutput, 0x12345678}, {kDirection, 0x9ABCDEF0}};
    int32_t read_result_ = 0;
    int32_t write_result_ = 0;
};

TEST_P(Gpio, InitWritesTheDirectionsWithoutReading) {
    for (const int32_t result : kResults) {
        write_result_ = result;
        EXPECT_EQ(outcome_of(GetParam().init), (Outcome{result, "", ""}));
        EXPECT_THAT(driver().take(), ElementsAre(write_line(kDirection, 9)));
    }
}

TEST_P(Gpio, DirectSetsAPinsBitInTheDirectionRegister) {
    expect_sets_bits(GetParam().direct, kDirection);
}

TEST_P(Gpio, WriteSetsAPinsBitInTheOutputRegister) {
    expect_sets_bits(GetParam().write, kOutput);
}

TEST_P(Gpio, WritesLeaveTheOtherRegistersAlone) {
    const auto before = registers_;
    EXPECT_EQ(GetParam().direct(2, 5), 0);
    EXPECT_EQ(GetParam().write(2, 5), 0);
    EXPECT_EQ(registers_, before);
    EXPECT_EQ(GetParam().direct(0, 1), 0);
    EXPECT_EQ(GetParam().write(31, 1), 0);
    EXPECT_EQ(registers_,
              (decltype(registers_){{kInput, 0xA5A5A5A5}, {kOutput, 0x92345678}, {kDirection, 0x9ABCDEF1}}));
}

TEST_P(Gpio, ReverseInvertsAPinsBitInTheOutputRegister) {
    for (const Pin &pin : pins()) {
        for (const uint32_t old : kPatterns) {
            expect_rewritten(kOutput, old, old ^ pin.mask, [&] { return GetParam().reverse(pin.number); });
        }
    }
}

TEST_P(Gpio, ReversingTwiceRestoresTheRegisters) {
    const auto before = registers_;
    for (const Pin &pin : pins()) {
        EXPECT_EQ(GetParam().reverse(pin.number), 0);
        EXPECT_EQ(registers_.at(kOutput), before.at(kOutput) ^ pin.mask);
        EXPECT_EQ(GetParam().reverse(pin.number), 0);
        EXPECT_EQ(registers_, before);
    }
}

TEST_P(Gpio, GetReadsThePinsLevelFromTheInputRegister) {
    for (uint32_t levels = 0; levels < 16; ++levels) {
        registers_.at(kInput) = 0xFFFFFFF0 | levels;
        for (uint32_t pin = 0; pin < 4; ++pin) {
            EXPECT_EQ(GetParam().get(pin), static_cast<int32_t>(levels >> pin & 1)) << pin;
            EXPECT_THAT(driver().take(), ElementsAre(read_line(kInput)));
        }
    }
}

TEST_P(Gpio, GetIsZeroForPinsFromFourOn) {
    registers_.at(kInput) = 0xFFFFFFFF;
    for (const Pin &pin : pins()) {
        if (pin.number >= 4) {
            EXPECT_EQ(GetParam().get(pin.number), 0) << pin.number;
            EXPECT_THAT(driver().take(), ElementsAre(read_line(kInput))) << pin.number;
        }
    }
}

TEST_P(Gpio, FailedReadsCountAsZeroAndTheWriteIsStillMade) {
    for (const int32_t failure : {-1, 1, INT32_MIN}) {
        driver().fail_every("user_pci_read", failure);
        expect_rewritten(kDirection, 0xFFFFFFFF, 4, [] { return GetParam().direct(2, 1); });
        expect_rewritten(kDirection, 0xFFFFFFFF, 0, [] { return GetParam().direct(2, 0); });
        expect_rewritten(kDirection, 0xFFFFFFFF, 0, [] { return GetParam().direct(2, 5); });
        expect_rewritten(kOutput, 0xFFFFFFFF, 8, [] { return GetParam().write(3, 1); });
        expect_rewritten(kOutput, 0xFFFFFFFF, 0, [] { return GetParam().write(3, 0); });
        expect_rewritten(kOutput, 0xFFFFFFFF, 2, [] { return GetParam().reverse(1); });
        registers_.at(kInput) = 0xFFFFFFFF;
        EXPECT_EQ(outcome_of([] { return GetParam().get(0); }), Outcome{});
        EXPECT_THAT(driver().take(), ElementsAre(read_line(kInput)));
    }
}

/** Only the value of a read counts: it is used even when the driver's result is a failure. */
TEST_P(Gpio, ResultsOfReadsAreIgnored) {
    for (const int32_t result : {-1, 77}) {
        read_result_ = result;
        expect_rewritten(kDirection, 0xF0, 0xF4, [] { return GetParam().direct(2, 1); });
        expect_rewritten(kOutput, 0xF0, 0xF1, [] { return GetParam().write(0, 1); });
        expect_rewritten(kOutput, 0xF0, 0xE0, [] { return GetParam().reverse(4); });
        registers_.at(kInput) = 0x8;
        EXPECT_EQ(GetParam().get(3), 1);
        EXPECT_THAT(driver().take(), ElementsAre(read_line(kInput)));
    }
}

TEST_P(Gpio, ResultIsTheWritesAndNothingIsPrinted) {
    for (const int32_t result : kResults) {
        write_result_ = result;
        const Outcome expected{result, "", ""};
        EXPECT_EQ(outcome_of([] { return GetParam().direct(2, 1); }), expected);
        EXPECT_EQ(outcome_of([] { return GetParam().direct(2, 5); }), expected);
        EXPECT_EQ(outcome_of([] { return GetParam().write(2, 0); }), expected);
        EXPECT_EQ(outcome_of([] { return GetParam().reverse(2); }), expected);
        EXPECT_EQ(driver().count("user_pci_read"), driver().count("user_pci_write"));
    }
}

INSTANTIATE_TEST_SUITE_P(Families, Gpio, ::testing::ValuesIn(kFamilies),
                         [](const auto &family) { return family.param.name; });

}  // namespace
