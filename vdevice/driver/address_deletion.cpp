// The delete family. A call's key picks entries; one that names a single entry refuses when there is none, one that
// names a set succeeds also when the set is empty. Ports of one trunk are one place: the key of a port in a trunk picks
// what is behind the trunk.
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Mac;
using chip::MacFilter;
using chip::Place;
using chip::Status;
using chip::Switch;
using chip::TrunkTable;
using chip::Vid;
using Kind = MacFilter::Kind;

constexpr uint32_t kLearnTypeMask = 0xFF;
constexpr int32_t kAnyModule = -1;
constexpr int32_t kOwnModule = 0;

/** The switch of the calls that delete dynamic entries, and with 1 static ones too. */
constexpr std::optional<Kind> kind_of(uint32_t all) {
    switch (all) {
        case 0:
            return Kind::kDynamic;
        case 1:
            return Kind::kAll;
        default:
            return std::nullopt;
    }
}

constexpr std::optional<Kind> kind_of_learn_type(uint32_t type) {
    constexpr Kind kTypes[] = {Kind::kDynamic, Kind::kStatic, Kind::kAll};
    return type < std::size(kTypes) ? std::optional{kTypes[type]} : std::nullopt;
}

/** A filter that the arguments of a call fill one by one; the first that means nothing makes the refusal. */
class Key {
  public:
    explicit Key(const Switch &chip) : chip_{chip} {}

    Key &kind(std::optional<Kind> kind) {
        require(kind.has_value(), Status::kBadArgument);
        filter_.kind = kind.value_or(Kind::kDynamic);
        return *this;
    }
    Key &mac(const uint8_t *bytes) {
        filter_.mac = Mac::from_bytes(bytes);
        require(!filter_.mac->is_group(), Status::kMacNotUnicast);
        return *this;
    }
    Key &vid(uint32_t vid) {
        require(chip::is_vid(vid), Status::kVlanRange);
        filter_.vid = static_cast<Vid>(vid);
        return *this;
    }
    Key &module(int32_t module) {
        require(module == kAnyModule || module == kOwnModule, Status::kBadArgument);
        return *this;
    }
    /** The port, or the trunk that it belongs to. */
    Key &port(int32_t port) {
        if (require(Switch::has_port(port), Status::kNoPort)) {
            filter_.place = chip_.place_of(port);
        }
        return *this;
    }
    Key &trunk(int32_t trunk) {
        require(TrunkTable::is_trunk(trunk), Status::kTrunkRange);
        filter_.place = Place{0, trunk};
        return *this;
    }
    Key &trunk_of(int32_t member) {
        port(member);
        require(!filter_.place || filter_.place->is_trunk(), Status::kTrunkMissing);
        return *this;
    }
    Key &none(uint32_t flags) {
        require(flags == 0, Status::kBadArgument);
        return *this;
    }

    Status status() const { return status_; }
    const MacFilter &filter() const { return filter_; }

  private:
    bool require(bool holds, Status refusal) {
        if (!holds && status_ == Status::kOk) {
            status_ = refusal;
        }
        return holds;
    }

    const Switch &chip_;
    MacFilter filter_;
    Status status_ = Status::kOk;
};

class AddressDeletion : public AddressDeletionCalls {
  public:
    explicit AddressDeletion(Switch &chip) : chip_{chip} {}

    Status user_l2_addr_del_all_addr_by_lrntype(uint32_t type) override {
        return delete_set(entries().kind(kind_of_learn_type(type & kLearnTypeMask)));
    }

    Status user_l2_addr_delete_by_vlan(uint32_t vid, uint32_t all) override {
        return delete_set(entries().kind(kind_of(all)).vid(vid));
    }

    Status user_l2_addr_delete_static_by_vlan(uint32_t vid, uint32_t flags) override {
        return delete_set(entries().kind(Kind::kStatic).vid(vid).none(flags));
    }

    Status user_l2_addr_delete_by_mac(const uint8_t *key, uint32_t all) override {
        return delete_set(entries().kind(kind_of(all)).mac(key));
    }

    Status user_l2_addr_delete_static_by_mac(const uint8_t *key, uint32_t flags) override {
        return delete_set(entries().kind(Kind::kStatic).mac(key).none(flags));
    }

    Status user_l2_addr_delete_by_port(int32_t module, int32_t port, uint32_t all) override {
        return delete_set(entries().kind(kind_of(all)).module(module).port(port));
    }

    Status user_l2_addr_delete_static_by_port(int32_t module, int32_t port) override {
        return delete_set(entries().kind(Kind::kStatic).module(module).port(port));
    }

    Status user_l2_addr_delete_by_vlan_port(uint32_t vid, int32_t module, int32_t port, uint32_t all) override {
        return delete_set(entries().kind(kind_of(all)).vid(vid).module(module).port(port));
    }

    Status user_l2_addr_delete_static_by_vlan_port(uint32_t vid, int32_t port) override {
        return delete_set(entries().kind(Kind::kStatic).vid(vid).port(port));
    }

    Status user_l2_addr_delete_by_vlan_trunk(uint32_t vid, int32_t trunk, uint32_t all) override {
        return delete_set(entries().kind(kind_of(all)).vid(vid).trunk(trunk));
    }

    Status user_l2_addr_delete_dynaic_by_mac_port(const uint8_t *key, int32_t port, uint32_t /*option*/) override {
        return delete_set(entries().kind(Kind::kDynamic).mac(key).port(port));
    }

    Status user_l2_addr_delete_static_by_mac_port(const uint8_t *key, int32_t port, uint32_t /*option*/) override {
        return delete_set(entries().kind(Kind::kStatic).mac(key).port(port));
    }

    Status user_l2_addr_delete_all_by_mac_port(const uint8_t *key, int32_t port) override {
        return delete_set(entries().kind(Kind::kAll).mac(key).port(port));
    }

    Status user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(const uint8_t *key, int32_t port, uint32_t vid) override {
        return delete_one(entries().kind(Kind::kDynamic).mac(key).trunk_of(port).vid(vid));
    }

    Status user_l2_addr_delete_trunk_static_by_port_mac_vlan(const uint8_t *key, int32_t port, uint32_t vid) override {
        return delete_one(entries().kind(Kind::kStatic).mac(key).trunk_of(port).vid(vid));
    }

    Status user_l2_addr_delete_all_dynamic_by_port_mac_vlan(const uint8_t *key, int32_t port, uint32_t vid) override {
        return delete_one(entries().kind(Kind::kAll).mac(key).port(port).vid(vid));
    }

  private:
    Key entries() const { return Key{chip_}; }

    Status delete_set(const Key &key) {
        if (key.status() == Status::kOk) {
            chip_.macs().remove_all(key.filter());
        }
        return key.status();
    }

    Status delete_one(const Key &key) {
        if (key.status() != Status::kOk) {
            return key.status();
        }
        return chip_.macs().remove_all(key.filter()) != 0 ? Status::kOk : Status::kMacMissing;
    }

    Switch &chip_;
};

}  // namespace

std::unique_ptr<AddressDeletionCalls> address_deletion(Switch &chip) {
    return std::make_unique<AddressDeletion>(chip);
}

}  // namespace vdevice::driver
