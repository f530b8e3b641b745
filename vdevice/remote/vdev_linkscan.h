/**
 * @file vdev_linkscan.h
 * Link scan of the virtual device: libnetlink_api of the virtual device has this call besides those of the driver.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VDEV_LINKSCAN_WORDS 4  /**< words of the port information */
#define VDEV_LINKSCAN_SPEED 0  /**< word: Mb/s */
#define VDEV_LINKSCAN_DUPLEX 1 /**< word: 0 half, 1 full */
#define VDEV_LINKSCAN_FAULT 2  /**< word: why there is no link, one of the next four */
#define VDEV_LINKSCAN_LINK 3   /**< word: 0 down, 1 up */
#define VDEV_FAULT_NONE 0      /**< there is a link */
#define VDEV_FAULT_NO_SIGNAL 1 /**< a cable is in, but nothing is up at its other end */
#define VDEV_FAULT_NO_CABLE 2  /**< no cable is in */
#define VDEV_FAULT_DISABLED 3  /**< the port is disabled */

/** Called with a port's link; @p port is a physical port. The result is ignored. */
typedef int32_t (*vdev_linkscan_callback_t)(uint32_t unit, uint32_t port, const uint32_t info[VDEV_LINKSCAN_WORDS]);

/**
 * Registers a function that is called, on a thread of the library's own, first with each port's present link and then
 * whenever a port's link comes or goes, with every change in order. If the connection to the device is lost, or the
 * function falls so far behind that changes are, the thread connects again, and the function is again called first with
 * each port's present link. So it is also told of links that it knows.
 *
 * The function may make driver calls. It replaces the one before; a null address ends the calls. After a fork the child
 * must register again.
 *
 * @return 0; -1 if the device cannot be reached, and then nothing is called. Once the thread runs the result is 0, and
 *         the function is called when the device is reached
 */
int32_t vdev_linkscan_register(vdev_linkscan_callback_t callback);

#ifdef __cplusplus
}
#endif
