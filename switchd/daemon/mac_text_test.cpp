// Addresses as text, and texts that are none.
#include "switchd/daemon/mac_text.h"

#include <gtest/gtest.h>

namespace switchd {
namespace mac_text_test {

TEST(MacText, IsReadAsItIsWritten) {
    const Mac mac{0x02, 0xAB, 0, 0x10, 0xFF, 9};
    EXPECT_EQ(text_of_mac(mac), "02:ab:00:10:ff:09");
    EXPECT_EQ(mac_of_text("02:ab:00:10:ff:09"), mac);
    EXPECT_EQ(mac_of_text("02:AB:00:10:FF:09"), mac);
}

TEST(MacText, IsNothingElse) {
    for (const char *text : {"", "02", "02:ab:00:10:ff", "02:ab:00:10:ff:9", "02:ab:00:10:ff:09:00",
                             "02-ab-00-10-ff-09", "02:ab:00:10:ff:0g", "02:ab:00:10:ff:-9", "02:ab:00:10:ff:+9",
                             "02:ab:00:10:ff: 9", "2:0ab:00:10:ff:09", "0x:ab:00:10:ff:09"}) {
        EXPECT_EQ(mac_of_text(text), std::nullopt) << text;
    }
}

TEST(MacText, IsAStationsUnlessItIsAGroups) {
    EXPECT_TRUE(is_station_address(Mac{2}));
    EXPECT_FALSE(is_station_address(Mac{}));
    EXPECT_FALSE(is_station_address(Mac{1, 0x80, 0xC2, 0, 0, 3}));
}

}  // namespace mac_text_test
}  // namespace switchd
