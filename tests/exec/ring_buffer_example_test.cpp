// The ring buffer example keeps the last eight of twelve numbers, drains
// them in order and mixes them into the checksum its BASIC macro computes.
#include "compiler/driver/file_io.h"
#include "support/exec_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

TEST(RingBufferExample, DrainsTheNewestEightInOrderWithTheirChecksum) {
    auto source = readFile(dataFolder().parent_path() / "examples" / "ring_buffer.bas");
    ASSERT_TRUE(source.has_value());
    SimProgram p(*source);
    ASSERT_TRUE(p.ok()) << p.failure();
    ASSERT_TRUE(p.runToEnd());
    int sum = 0;
    for (int i = 0; i < 8; ++i) {
        int expected = i + 5; // 1..4 were overwritten
        EXPECT_EQ(p.byte("OUTBUF#" + std::to_string(i)), expected) << "OUTBUF[" << i << "]";
        sum ^= expected;
        sum = ((sum << 1) | (sum >> 7)) & 255;
    }
    EXPECT_EQ(p.byte("SUM"), sum);
    EXPECT_EQ(p.byte("FILLED"), 0);
    EXPECT_EQ(p.byte("HEAD"), 4);
    EXPECT_EQ(p.byte("TAIL"), 4);
    // The buffer holds 9..12 where 1..4 were, then 5..8.
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(p.byte("BUF#" + std::to_string(i)), i < 4 ? i + 9 : i + 1) << "BUF[" << i << "]";
}

} // namespace
} // namespace zorvel::test
