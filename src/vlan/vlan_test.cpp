// The plain VLAN calls: each makes one driver call, VLAN ids cut to 16 bits, and returns the driver's result.
#include "vlan/testing/plain_calls.h"

namespace {

using ::testing::ElementsAre;
using vlan_test::PlainCall;
using vlan_test::PlainVlanCall;

// Port sets that the plain membership calls pass on by address.
const adp_ports_t kPorts = {1u << 4 | 1u << 5, 0, 0, 0, 0, 0, 0, 1u << 31};
const adp_ports_t kUntagged = {1u << 5};
const adp_word_t kPortsWord = reinterpret_cast<adp_word_t>(kPorts);
const adp_word_t kUntaggedWord = reinterpret_cast<adp_word_t>(kUntagged);

TEST_P(PlainVlanCall, MakesItsDriverCallAndReturnsTheResultUnchanged) {
    makes_its_driver_call_and_returns_the_result_unchanged();
}

uint32_t scratch;

INSTANTIATE_TEST_SUITE_P(
    Vlan, PlainVlanCall,
    ::testing::Values(
        PlainCall{"Create", [] { return adp_vlan_create(100); }, "user_vlan_create(unit=0, zero=0, vid=100)"},
        PlainCall{"CreateCut", [] { return adp_vlan_create(0x11005); }, "user_vlan_create(unit=0, zero=0, vid=4101)"},
        PlainCall{"Destroy", [] { return adp_vlan_destroy(0xFFFF0001); }, "user_vlan_destroy(unit=0, zero=0, vid=1)"},
        PlainCall{"CreateEx", [] { return adp_vlan_createEx(0x1000A, 0x20014); },
                  "user_vlan_createEx(unit=0, zero=0, first_vid=10, last_vid=20)"},
        PlainCall{"DestroyEx", [] { return adp_vlan_destroyEx(0x1000A, 0x20014); },
                  "user_vlan_destroyEx(unit=0, zero=0, first_vid=10, last_vid=20)"},
        PlainCall{"PortAdd", [] { return adp_vlan_port_add(0x30007, kPortsWord, kUntaggedWord); },
                  "user_vlan_port_add(unit=0, zero=0, vid=7, ports={4,5,255}, untagged={5})"},
        PlainCall{"PortAddNone", [] { return adp_vlan_port_add(7, kPortsWord, 0); },
                  "user_vlan_port_add(unit=0, zero=0, vid=7, ports={4,5,255}, untagged=null)"},
        PlainCall{"PortAddEx", [] { return adp_vlan_port_addEx(0x30007, 0x30009, kPortsWord, kUntaggedWord); },
                  "user_vlan_port_addEx(unit=0, zero=0, first_vid=7, last_vid=9, ports={4,5,255}, untagged={5})"},
        PlainCall{"PortRemove", [] { return adp_vlan_port_remove(0x30007, kPortsWord); },
                  "user_vlan_port_remove(unit=0, zero=0, vid=7, ports={4,5,255})"},
        PlainCall{"PortRemoveEx", [] { return adp_vlan_port_removeEx(0x30007, 0x30009, 0); },
                  "user_vlan_port_removeEx(unit=0, zero=0, first_vid=7, last_vid=9, ports=null)"},
        PlainCall{"DefaultSet", [] { return adp_vlan_default_set(0x30007); },
                  "user_vlan_default_set(unit=0, zero=0, vid=7)"},
        PlainCall{"DefaultGet", [] { return adp_vlan_default_get(&scratch); },
                  "user_vlan_default_get(unit=0, zero=0)"}),
    vlan_test::name_of);

class VlanDefault : public library_test::LibraryTest {};

TEST_F(VlanDefault, ComesFromTheDriverWhole) {
    driver().on("user_vlan_default_get").sets("vid", 0x12345678u);
    uint32_t vlan = 0;
    EXPECT_EQ(adp_vlan_default_get(&vlan), 0);
    EXPECT_EQ(vlan, 0x12345678u);
}

TEST_F(VlanDefault, IsLeftAloneWhenTheDriverFails) {
    driver().fail_every("user_vlan_default_get", -5);
    uint32_t vlan = 42;
    EXPECT_EQ(adp_vlan_default_get(&vlan), -5);
    EXPECT_EQ(vlan, 42u);
}

}  // namespace
