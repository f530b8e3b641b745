// Shared by the transmit tests: the fake system, a frame and the form in which it is sent, destination lists.
#pragma once

#include <deque>

#include "tests/support/fake_system.h"
#include "tests/support/library_test.h"

namespace transmit_test {

using Bytes = std::vector<uint8_t>;

inline constexpr uint32_t kAgg1 = ADP_AGG_INTF(1);
inline constexpr uint32_t kAgg2 = ADP_AGG_INTF(2);

constexpr uint64_t bit(uint32_t n) {
    return 1ull << n;
}

inline Bytes make_frame(size_t length) {
    Bytes frame(length);
    for (size_t i = 0; i < length; ++i) {
        frame[i] = static_cast<uint8_t>(0x10 + i);
    }
    return frame;
}

/** The frame as it must be sent: the tag after the source address. */
inline Bytes with_tag(const Bytes &frame, uint32_t word1, uint32_t word2 = 0) {
    Bytes tagged(frame.begin(), frame.begin() + 12);
    for (const uint32_t value : {0x88740000u | word1 >> 16, (word1 & 0xFFFF) << 16 | word2 >> 16}) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            tagged.push_back(static_cast<uint8_t>(value >> shift));
        }
    }
    tagged.push_back(static_cast<uint8_t>(word2 >> 8));
    tagged.push_back(static_cast<uint8_t>(word2));
    tagged.insert(tagged.end(), frame.begin() + 12, frame.end());
    return tagged;
}

/** A destination list as a caller builds it. */
class Destinations {
  public:
    explicit Destinations(std::initializer_list<uint32_t> intfs) {
        adp_list_link_t *last = &head_;
        for (const uint32_t intf : intfs) {
            nodes_.push_back({{nullptr, last}, intf});
            last->next = &nodes_.back().link;
            last = last->next;
        }
        last->next = &head_;
        head_.prev = last;
    }
    Destinations(const Destinations &) = delete;
    Destinations &operator=(const Destinations &) = delete;

    const adp_list_link_t *head() const { return &head_; }

  private:
    adp_list_link_t head_ = {};
    std::deque<adp_tx_dest_t> nodes_;
};

class TransmitTest : public library_test::LibraryTest {
  protected:
    /** The port map's tables are allocated while the fake is on, so they count as held from the start. */
    void SetUp() override {
        library_test::LibraryTest::SetUp();
        tables_ = system().outstanding_allocations();
        allocations_before_ = system().allocations();
    }

    fake_system::System &system() { return session_.system(); }

    /** Allocations since the start of the test, and those of them that were not freed. */
    size_t allocations() { return system().allocations() - allocations_before_; }
    size_t held() { return system().outstanding_allocations() - tables_; }

    /** A call has released everything that it allocated or opened. */
    void expect_nothing_held() {
        EXPECT_EQ(held(), 0u);
        EXPECT_EQ(system().open_descriptors(), 0u);
    }

  private:
    fake_system::Session session_;
    size_t tables_ = 0;
    size_t allocations_before_ = 0;
};

/** A frame for __adp_transmit_frame(), after a successful adp_pkt_init(). */
class TransmitModeTest : public TransmitTest {
  protected:
    void SetUp() override {
        TransmitTest::SetUp();
        ASSERT_GT(adp_pkt_init(), 0);
    }

    adp_status_t send(uint32_t mode, const Destinations *list, uint32_t vid = ADP_NO_VLAN, uint32_t source = 0) {
        const adp_tx_frame_t desc = {frame.data(), static_cast<uint32_t>(frame.size()), source};
        return __adp_transmit_frame(&desc, list == nullptr ? nullptr : list->head(), vid, mode);
    }

    void expect_sent(uint32_t word1, uint32_t word2 = 0) {
        ASSERT_FALSE(system().sent().empty());
        EXPECT_EQ(system().sent().back().bytes, with_tag(frame, word1, word2));
        EXPECT_EQ(held(), 0u);
    }

    void expect_nothing_sent() {
        EXPECT_TRUE(system().sent().empty());
        EXPECT_EQ(held(), 0u);
    }

    Bytes frame = make_frame(60);
};

}  // namespace transmit_test
