// What the words kind and action of the calls on tags mean. The virtual device knows one of each.
#pragma once

#include <stdint.h>

namespace vdevice::driver {

constexpr uint32_t kByVlan = 0;     /**< kind: the entry is found by port and VLAN id */
constexpr uint32_t kReplaceTag = 0; /**< action of a translation: the new VLAN takes the old one's place */
constexpr uint32_t kAddTag = 0;     /**< action of a double-tag entry: the tag comes in front of what is there */

}  // namespace vdevice::driver
