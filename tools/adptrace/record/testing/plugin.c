// A library that calls libadp, of a program that does not know libadp itself.
#include <adp/adp.h>

#include "tools/adptrace/record/testing/plugin.h"

enum { kPhysicalPort = 9, kMode = 3 };

int run_plugin(int is_again) {
    if (adp_set_max_phy_port_num(1) != 0 || adp_add_phy_port(1, 0, 0, kPhysicalPort, 0) != 0)
        return 1;
    // The virtual device's driver, which is never unloaded, is before the test's own by then.
    return is_again ? 0 : adp_double_tag_set(1, kMode);
}
