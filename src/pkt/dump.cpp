// Hex dump of a frame on standard error.
#include <adp/pkt.h>
#include <stdio.h>

namespace adp {
namespace {

constexpr int32_t kRowBytes = 16;
constexpr int32_t kHalfRowBytes = 8;

// Each row has a gap in the middle.
void print_byte(int32_t column, uint32_t value) {
    fprintf(stderr, "%02X ", value);
    if (column == kHalfRowBytes - 1) {
        fputs("  ", stderr);
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

int32_t adp_dump_packet(const char *title, const uint8_t *data, int32_t length) {
    fputs("--------------------------------------\r\n", stderr);
    fprintf(stderr, "%s:%d(0x%X)\r\n    ", title, length, static_cast<uint32_t>(length));
    for (int32_t column = 0; column < kRowBytes; ++column) {
        print_byte(column, static_cast<uint32_t>(column));
    }
    for (int32_t i = 0; i < length; ++i) {
        if (i % kRowBytes == 0) {
            fprintf(stderr, "\r\n%03d ", i / kRowBytes);
        }
        print_byte(i % kRowBytes, data[i]);
    }
    return fprintf(stderr, "\r\n");
}
