/**
 * @file vdev_equeue.h
 * The reading end of the virtual device's event queue: libdevice_services of the virtual device has this call besides
 * the services. Usually another process reads than the one that sent.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VDEV_EQUEUE_WORDS 8         /**< words of a message */
#define VDEV_EQUEUE_RECORD_FIELDS 4 /**< fields of a link-event record: unit, physical port, interface, link status */

/**
 * Takes the oldest message of a queue, waiting for one if there is none.
 *
 * @param queue       the queue, erps_event_queue for instance
 * @param message     the message; its last word, an address of the sender's, is 0
 * @param record      the record that the address named when the message was sent, all 0 if there was none
 * @param timeout_ms  how long to wait; 0 not at all, negative without limit
 * @return 1 with a message; 0 if none came in time; -1 if the device cannot be reached or an address is null
 */
int32_t vdev_equeue_receive(uintptr_t queue, uint32_t message[VDEV_EQUEUE_WORDS],
                            uint16_t record[VDEV_EQUEUE_RECORD_FIELDS], int32_t timeout_ms);

#ifdef __cplusplus
}
#endif
