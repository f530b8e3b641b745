// Subnets in order, the smallest first, so that the first match is the best.
#include "vdevice/chip/tables/subnet_table.h"

#include <algorithm>
#include <tuple>

#include "vdevice/chip/frame/ip_header.h"

namespace vdevice::chip {
namespace {

bool goes_before(const Subnet &a, const Subnet &b) {
    return std::tuple{~a.mask, a.port, a.address} < std::tuple{~b.mask, b.port, b.address};
}

/** A run of ones from the most significant bit on, or none at all. */
bool is_netmask(uint32_t mask) {
    return (~mask & (~mask + 1)) == 0;
}

}  // namespace

Status SubnetTable::add(const Subnet &subnet) {
    Status status = check_key(subnet);
    if (status == Status::kOk) {
        status = subnet.change.check();
    }
    if (status != Status::kOk) {
        return status;
    }
    const auto place = std::lower_bound(subnets_.begin(), subnets_.end(), subnet, goes_before);
    if (place != subnets_.end() && place->has_key_of(subnet)) {
        return Status::kTagEntryExists;
    }
    if (subnets_.size() >= kCapacity) {
        return Status::kTagTableFull;
    }
    subnets_.insert(place, subnet);
    return Status::kOk;
}

Status SubnetTable::remove(const Subnet &subnet) {
    if (const Status status = check_key(subnet); status != Status::kOk) {
        return status;
    }
    const auto place = std::lower_bound(subnets_.begin(), subnets_.end(), subnet, goes_before);
    if (place == subnets_.end() || !place->has_key_of(subnet)) {
        return Status::kTagEntryMissing;
    }
    subnets_.erase(place);
    return Status::kOk;
}

const TagChange *SubnetTable::find(int port, Bytes payload) const {
    if (subnets_.empty() || read16(payload, 0) != kTypeIpv4 || !is_ipv4(payload.subspan(kTypeBytes))) {
        return nullptr;
    }
    const uint32_t source = read32(payload, kTypeBytes + kIpv4SourceAt);
    const auto subnet = std::find_if(subnets_.begin(), subnets_.end(), [&](const Subnet &entry) {
        return entry.port == port && (source & entry.mask) == entry.address;
    });
    return subnet == subnets_.end() ? nullptr : &subnet->change;
}

Status SubnetTable::check_key(const Subnet &subnet) const {
    if (const Status status = ports_.check_user_port(subnet.port); status != Status::kOk) {
        return status;
    }
    return is_netmask(subnet.mask) && (subnet.address & ~subnet.mask) == 0 ? Status::kOk : Status::kBadArgument;
}

}  // namespace vdevice::chip
