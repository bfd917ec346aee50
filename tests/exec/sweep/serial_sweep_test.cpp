// RSOUT, SEROUT, RSIN and SERIN at every crystal with a delay routine (4, 8,
// 10, 12, 16 and 20 MHz) and every standard rate from 300 to 57600 baud that
// the statement times there: every byte (0-127 for 7E1) sent arrives exactly
// with its bit time within 2 %, and every byte the transmitter sends is
// received. The worst bit-time error is printed per crystal and rate.
#include "support/serial_checks.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

using Kind = SerialLink::Kind;

const int kCrystals[] = {4, 8, 10, 12, 16, 20};

class SerialSweep : public testing::TestWithParam<int> {};

// One line per rate: the worst bit-time error of each sending link.
TEST_P(SerialSweep, SendEveryByte) {
    int mhz = GetParam();
    for (Kind kind : {Kind::Rsout, Kind::Serout}) {
        for (int baud : allowedRates(kind, mhz)) {
            std::vector<SerialLink> links = {{kind, mhz, baud, false}, {kind, mhz, baud, true}};
            if (kind == Kind::Serout) {
                links.push_back({kind, mhz, baud, false, true});
                links.push_back({kind, mhz, baud, true, true});
            }
            double worst = 0;
            int bytes = 0;
            for (const SerialLink& link : links) {
                SendFigures f = checkSend(link);
                bytes += f.bytes;
                if (std::fabs(f.worstError) > std::fabs(worst)) worst = f.worstError;
            }
            std::printf("%s %2d MHz %5d baud: %d bytes exact (true, inverted%s), worst bit "
                        "error %+.2f %%\n",
                        kind == Kind::Rsout ? "RSOUT " : "SEROUT", mhz, baud, bytes,
                        kind == Kind::Serout ? ", 8N1 and 7E1" : "", worst);
        }
    }
}

TEST_P(SerialSweep, ReceiveEveryByte) {
    int mhz = GetParam();
    for (Kind kind : {Kind::Rsin, Kind::Serin}) {
        for (int baud : allowedRates(kind, mhz)) {
            std::vector<SerialLink> links = {{kind, mhz, baud, false}, {kind, mhz, baud, true}};
            if (kind == Kind::Serin) {
                links.push_back({kind, mhz, baud, false, true});
                links.push_back({kind, mhz, baud, true, true});
            }
            int received = 0, sent = 0;
            for (const SerialLink& link : links) {
                std::vector<int> values = allValues(link.valueCount());
                sent += static_cast<int>(values.size());
                received += checkReceive(link, values);
            }
            EXPECT_EQ(received, sent);
            std::printf("%s %2d MHz %5d baud: %d of %d bytes received\n",
                        kind == Kind::Rsin ? "RSIN " : "SERIN", mhz, baud, received, sent);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Crystals, SerialSweep, testing::ValuesIn(kCrystals),
                         [](const testing::TestParamInfo<int>& info) {
                             return std::to_string(info.param) + "MHz";
                         });

} // namespace
} // namespace zorvel::test
