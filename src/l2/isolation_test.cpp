// Port isolation: interfaces and ports beyond the first word of a set.
#include "tests/support/library_test.h"

namespace isolation_test {

using ::testing::ElementsAre;

class Isolation : public library_test::LibraryTest {
  protected:
    static void script_read(std::initializer_list<uint32_t> words) {
        driver().on("user_port_egress_get").sets("egress", words);
    }

    uint32_t map_[2] = {};
};

TEST_F(Isolation, TheSecondWordNamesPorts32AndUp) {
    library_test::make_default_map(60);
    EXPECT_EQ(adp_set_port_isolate(60, 1u << 31, 1u << 0 | 1u << 8 | 1u << 28 | 1u << 29), 0);
    EXPECT_THAT(driver().trace(),
                ElementsAre("user_port_egress_set(unit=0, zero=0, port=63, module=0, egress={34,35,43,63})"));
}

TEST_F(Isolation, PortsFrom32AreReadIntoTheSecondWord) {
    library_test::make_default_map(60);
    script_read({0, 1u << 2 | 1u << 3 | 1u << 31});
    EXPECT_EQ(adp_get_port_isolatestatus(60, map_), 0);
    EXPECT_THAT(map_, ElementsAre(1u << 31, 1u << 0 | 1u << 28));
}

TEST_F(Isolation, InterfacesFrom64AreNotReported) {
    library_test::make_default_map(70);
    script_read({0, 0, 1u << 2 | 1u << 3});
    EXPECT_EQ(adp_get_port_isolatestatus(1, map_), 0);
    EXPECT_THAT(map_, ElementsAre(0u, 1u << 31));
}

}  // namespace isolation_test
