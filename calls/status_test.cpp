// The names of results: distinct, none of the device's that could be taken for the library's, and found by number.
#include <adp/status.h>
#include <gtest/gtest.h>

#include <set>
#include <span>
#include <string>

namespace status_test {

std::span<const adp_status_entry_t> entries() {
    uint32_t count = 0;
    const adp_status_entry_t *first = adp_status_entries(&count);
    return {first, count};
}

TEST(Status, NumbersAndNamesAreDistinct) {
    std::set<int32_t> numbers;
    std::set<std::string> names;
    for (const adp_status_entry_t &entry : entries()) {
        EXPECT_TRUE(numbers.insert(entry.status).second) << entry.name;
        EXPECT_TRUE(names.insert(entry.name).second) << entry.name;
        EXPECT_EQ(adp_status_find(entry.status), &entry) << entry.name;
        EXPECT_STREQ(adp_status_text(entry.status), entry.text) << entry.name;
    }
}

TEST(Status, TheDevicesResultsAreNoneOfTheLibrary) {
    size_t of_the_device = 0;
    for (const adp_status_entry_t &entry : entries()) {
        const bool is_the_librarys = std::string(entry.name).rfind("ADP_", 0) == 0;
        EXPECT_EQ(entry.status >= ADP_FAIL, is_the_librarys) << entry.name;
        of_the_device += is_the_librarys ? 0 : 1;
    }
    EXPECT_GT(of_the_device, 0U);
}

TEST(Status, AResultHasItsText) {
    EXPECT_STREQ(adp_status_find(ADP_E_DRIVER)->name, "ADP_E_DRIVER");
    EXPECT_STREQ(adp_status_find(-11)->name, "vlan_exists");
    EXPECT_STREQ(adp_status_text(-11), "the VLAN exists already");
    EXPECT_STREQ(adp_status_text(ADP_OK), "success");
    EXPECT_EQ(adp_status_find(-999999), nullptr);
    EXPECT_STREQ(adp_status_text(-999999), "unknown result");
}

}  // namespace status_test
