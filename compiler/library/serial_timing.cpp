#include "compiler/library/serial_timing.h"

#include "compiler/driver/compilation.h"

namespace zorvel {
namespace {

// The shortest wait dlus@w can make at each crystal, in microseconds: the
// call overhead it subtracts from W.
int shortestWait(int mhz) {
    switch (mhz) {
    case 4: return 24;
    case 8: return 12;
    case 10: return 10;
    case 12: return 9;
    case 16: return 5;
    default: return 4;
    }
}

} // namespace

std::optional<std::string> serialModeProblem(const Compilation& c, int mode) {
    int mhz = c.device.settings[kXtal].number;
    int bit = (mode & 0x1FFF) + 20;
    int wait = bit - 20 + (20 - (mhz / 2 + 124) / mhz);
    if (wait >= shortestWait(mhz)) return std::nullopt;
    return "Serial mode " + std::to_string(mode) + " is too fast for SERIN/SEROUT at " +
           std::to_string(mhz) + " MHz";
}

std::optional<std::string> serialBaudProblem(const Compilation& c) {
    int mhz = c.device.settings[kXtal].number;
    int baud = c.device.settings[kSerialBaud].number;
    if (baud <= 0) return "SERIAL_BAUD must be above 0";
    int t = 1000000 / baud - 52 / mhz;
    if (t >= shortestWait(mhz) && t < 65536) return std::nullopt;
    return "Baud rate " + std::to_string(baud) + " cannot be timed for RSIN/RSOUT at " +
           std::to_string(mhz) + " MHz";
}

} // namespace zorvel
