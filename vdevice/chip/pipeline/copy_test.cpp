// A copy of the tables is a copy of the chip: it does what the chip would do, and neither knows of the other.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "vdevice/chip/pipeline/pipeline.h"
#include "vdevice/chip/testing/random_chip.h"
#include "vdevice/chip/testing/seeds.h"

namespace vdevice::chip {
namespace copy_test {

using namespace test;

void write(std::ostream &out, const PortSet &ports) {
    out << '{';
    ports.for_each([&](int port) { out << port << ' '; });
    out << '}';
}

void write_port(std::ostream &out, const Tables &tables, int number) {
    const Port &port = tables.port(number);
    const PortCounters &counters = port.counters;
    out << "port " << number << ' ' << port.is_up() << ' ' << port.pvid << ' ' << port.learning.number << ' '
        << counters.rx_frames << ' ' << counters.rx_octets << ' ' << counters.tx_frames << ' ' << counters.tx_octets
        << ' ' << counters.tx_too_long << ' ' << port.policer.passed() << ' ' << port.policer.dropped() << " drops";
    for (const uint64_t drops : counters.drops) {
        out << ' ' << drops;
    }
    out << " storm";
    for (const StormTypeEntry &row : kStormTypeTable) {
        const PortStorm::Kind &kind = port.storm.of(row.type);
        out << ' ' << kind.limiter.passed() << ' ' << kind.limiter.dropped() << ' ' << kind.exceeded;
    }
    out << " violations";
    for (const auto &[vid, mac] : port.violations.addresses()) {
        out << ' ' << vid << '/' << mac.value();
    }
    out << " egress";
    write(out, port.egress);
    out << " queues";
    const PortQueues &queues = tables.queues.port(number);
    for (size_t queue = 0; queue < kQueues; ++queue) {
        out << ' ' << queues.counters(queue).frames << ' ' << queues.counters(queue).drops << ' '
            << queues.waiting_octets(queue);
    }
    out << " trunk " << tables.trunk_of(number) << ' ' << tables.trunks.trunk_of(number) << '\n';
}

void write_addresses(std::ostream &out, const MacTable &macs) {
    const MacTable::Counters &counters = macs.counters();
    out << "addresses " << counters.learned << ' ' << counters.moved << ' ' << counters.aged << '\n';
    for (const MacEntry &entry : macs.list()) {
        out << entry.vid << ' ' << entry.mac.value() << ' ' << entry.port << ' ' << entry.trunk << ' '
            << entry.is_static << ' ' << entry.last_seen.count();
        if (entry.is_group()) {
            write(out, macs.ports_of(entry));
        }
        out << '\n';
    }
}

void write_rules(std::ostream &out, const FieldProcessor &fields) {
    out << "rules\n";
    fields.table().for_each([&](uint32_t number, const FieldEntry &entry) {
        out << number << ' ' << entry.matches << ' ' << entry.staged.actions.size() << ' '
            << entry.staged.qualifiers.size() << ' ' << entry.installed.has_value() << '\n';
    });
    for (uint32_t counter = 0; counter < FieldCounters::kCounters; ++counter) {
        out << fields.counters().get(counter, CounterType::kOctets) << ' ';
    }
    for (uint32_t meter = 0; meter < MeterTable::kMeters; ++meter) {
        const std::optional<Meter> &found = fields.meters().find(meter);
        out << (found ? found->passed() : 0) << ' ' << (found ? found->dropped() : 0) << ' ';
    }
    out << '\n';
}

/** All that grows with traffic, and much of what is set. */
std::string describe(const Tables &tables) {
    std::ostringstream out;
    for (int port = 0; port < static_cast<int>(kChipPorts); ++port) {
        write_port(out, tables, port);
    }
    write_addresses(out, tables.macs);
    write_rules(out, tables.fields);
    for (const Vid vid : tables.vlans.list()) {
        out << "vlan " << vid;
        write(out, tables.vlans.find(vid)->members);
        write(out, tables.vlans.find(vid)->untagged);
        write(out, tables.stp.forwarding_in_vlan(vid));
        out << '\n';
    }
    for (const VidMap *map : {&tables.tag_rules.ingress, &tables.tag_rules.egress, &tables.tag_rules.double_tags}) {
        for (const auto &[key, change] : map->entries()) {
            out << "tag " << key.port << ' ' << key.vid << ' ' << change.vid << ' ' << change.priority << '\n';
        }
    }
    for (uint32_t session = 0; session < MirrorTable::kSessions; ++session) {
        const Mirror &mirror = tables.mirrors.session(session);
        out << "mirror " << mirror.destination << ' ' << mirror.flow_destination << ' ' << mirror.disabled;
        write(out, mirror.sources());
    }
    out << " pins " << tables.gpio.input() << " waiting " << tables.queues.waiting_octets();
    return out.str();
}

/** What tables make of frames. */
class CopiedChip {
  public:
    explicit CopiedChip(const Tables &tables) : tables_{std::make_unique<Tables>(tables)} {}

    const Tables &tables() const { return *tables_; }
    std::vector<Sent> receive(Time now, const Arrival &arrival) {
        pipeline_.receive(now, arrival.port, arrival.frame);
        return sink_.take();
    }

  private:
    RecordingSink sink_;
    std::unique_ptr<Tables> tables_;
    Pipeline pipeline_{*tables_, sink_};
};

class Copies : public testing::TestWithParam<unsigned> {
  protected:
    Copies() {
        random_.live(1000);
        for (int port = 0; port < Switch::kPorts; ++port) {
            random_.chip().set_enabled(port, true);
            random_.chip().set_link(port, true);
            random_.chip().change_port(port, [](Port &settings) {
                settings.loopback = 0;
                return Status::kOk;
            });
        }
        random_.sink().take();
    }

    /** Frames for the copies; the chip of this source has had none of them. */
    std::vector<Arrival> arrivals() {
        std::vector<Arrival> list;
        for (int i = 0; i < 1000; ++i) {
            list.push_back(random_.arrival());
        }
        return list;
    }

    std::vector<std::vector<Sent>> run(CopiedChip &copy, Time now, const std::vector<Arrival> &arrivals) {
        std::vector<std::vector<Sent>> sent;
        for (const Arrival &arrival : arrivals) {
            now += std::chrono::microseconds{300};
            sent.push_back(copy.receive(now, arrival));
        }
        return sent;
    }

    RandomChip random_{GetParam()};
};

TEST_P(Copies, DoWhatTheChipDoes) {
    CopiedChip copy{random_.chip().tables()};
    ASSERT_EQ(describe(copy.tables()), describe(random_.chip().tables()));
    Time now = random_.now();
    size_t copies = 0;
    for (const Arrival &arrival : arrivals()) {
        now += std::chrono::microseconds{300};
        random_.chip().receive(now, arrival.port, arrival.frame);
        const std::vector<Sent> sent = random_.sink().take();
        ASSERT_EQ(copy.receive(now, arrival), sent);
        copies += sent.size();
    }
    EXPECT_GT(copies, 50U);
    EXPECT_EQ(describe(copy.tables()), describe(random_.chip().tables()));
}

TEST_P(Copies, LeaveTheChipAlone) {
    const std::vector<Arrival> frames = arrivals();
    const std::string before = describe(random_.chip().tables());
    CopiedChip untouched{random_.chip().tables()};
    CopiedChip copy{random_.chip().tables()};
    run(copy, random_.now(), frames);
    EXPECT_NE(describe(copy.tables()), before);
    EXPECT_EQ(describe(random_.chip().tables()), before);
    CopiedChip later{random_.chip().tables()};
    EXPECT_EQ(run(later, random_.now(), frames), run(untouched, random_.now(), frames));
    EXPECT_TRUE(random_.sink().take().empty());
}

TEST_P(Copies, StayAsTheyAreWhateverBecomesOfTheChip) {
    const std::vector<Arrival> frames = arrivals();
    const Time then = random_.now();
    CopiedChip copy{random_.chip().tables()};
    CopiedChip second{random_.chip().tables()};
    const std::string before = describe(copy.tables());
    const auto expected = run(second, then, frames);
    random_.live(1000);
    random_.chip().fields().reset();
    EXPECT_NE(describe(random_.chip().tables()), before);
    EXPECT_EQ(describe(copy.tables()), before);
    EXPECT_EQ(run(copy, then, frames), expected);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Copies, test::seeds());

}  // namespace copy_test
}  // namespace vdevice::chip
