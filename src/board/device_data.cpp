// Storage that the library only exports.
#include <adp/port.h>

uint32_t ONU_ERR_CODE;
uint32_t sntp_cfg[ADP_SNTP_CFG_WORDS];
