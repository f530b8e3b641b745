// A group's VLANs, which are read from the chip in chunks.
#include "tests/support/library_test.h"

namespace vlan_list_test {

using ::testing::ElementsAre;

constexpr uint32_t kChunk = 1024;
constexpr uint32_t kVlans = 2 * kChunk + 1;
constexpr uint16_t kUntouched = 0xAAAA;

class StgVlans : public library_test::LibraryTest {};

TEST_F(StgVlans, OfAChunkAreWithTheCallerBeforeTheNextIsRead) {
    std::vector<uint16_t> out(ADP_VLANS + 1, kUntouched);
    std::vector<size_t> copied;
    driver().on("user_stg_stg_count_get").sets("count", 1u);
    driver().on("user_stg_each_time_list").sets("groups", {1});
    driver().on("user_stg_vlan_count_get").sets("count", kVlans);
    driver().on("user_stg_vlan_each_time_list").does([&](recording::Arguments &arguments) {
        copied.push_back(static_cast<size_t>(std::find(out.begin(), out.end(), kUntouched) - out.begin()));
        std::fill_n(static_cast<uint16_t *>(arguments.pointer("vids")), kChunk, uint16_t{7});
        return 0;
    });
    EXPECT_EQ(adp_get_stg_vlan_list(1, out.data()), static_cast<int32_t>(kVlans));
    EXPECT_THAT(copied, ElementsAre(0, kChunk, 2 * kChunk));
}

}  // namespace vlan_list_test
