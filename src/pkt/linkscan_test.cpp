// The link-scan hook.
#include "tests/support/library_test.h"

namespace {

class LinkScan : public library_test::LibraryTest {
  protected:
    void SetUp() override {
        library_test::LibraryTest::SetUp();
        seen.clear();
    }

    static int32_t note(uint32_t unit, uint32_t port, uint32_t status) {
        seen = {unit, port, status};
        return -77;
    }

    static inline std::vector<uint32_t> seen;
    const uint32_t info[4] = {10, 11, 12, 13};
};

TEST_F(LinkScan, WithoutAHandlerReturnsAtOnce) {
    EXPECT_EQ(linkscan_handle_cb(1, 2, info), 0);
}

TEST_F(LinkScan, WithoutAHandlerReadsNoRecord) {
    EXPECT_EQ(linkscan_handle_cb(1, 2, nullptr), 0);
}

TEST_F(LinkScan, ForwardsTheFourthWordAndReturnsTheHandlersResult) {
    EXPECT_EQ(adp_linkscan_register(note), 0);
    EXPECT_EQ(link_event_handle, &note);
    EXPECT_EQ(linkscan_handle_cb(1, 2, info), -77);
    EXPECT_EQ(seen, (std::vector<uint32_t>{1, 2, 13}));
}

TEST_F(LinkScan, HandlerCanBeRemoved) {
    adp_linkscan_register(note);
    EXPECT_EQ(adp_linkscan_register(nullptr), 0);
    EXPECT_EQ(linkscan_handle_cb(1, 2, info), 0);
    EXPECT_TRUE(seen.empty());
}

}  // namespace
