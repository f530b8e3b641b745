/* A program with a function of an exported call's name: the library must still use its own. */
#include <adp/adp.h>
#include <stdio.h>

int32_t adp_phy_2_intf_id(uint32_t phy) {
    (void)phy;
    return 4711;
}

int main(void) {
    adp_set_max_phy_port_num(2);
    adp_add_phy_port(2, 0, 0, 9, 0);
    const int32_t found = adp_phy_2_intf_id_ex(0, 9);
    printf("the library found interface %d\n", (int)found);
    return adp_phy_2_intf_id(9) == 4711 && found == 2 ? 0 : 1;
}
