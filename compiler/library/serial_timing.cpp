#include "compiler/library/serial_timing.h"

#include "compiler/driver/compilation.h"
#include "compiler/library/crystal.h"
#include "compiler/library/library_text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace zorvel {
namespace {

// Cycles of a SERIN/SEROUT bit besides the microseconds srin@d asks dlus@w
// for, before the padding: the bit loop (sro@b's or the sampling loop, the
// count and the call), srin@d's 9 cycles and the jump to dlus@w; dlus@w
// itself, reached by a jump, takes 4 cycles less than the microseconds asked
// for.
constexpr int kLoopCycles = 21;

// RSOUT and RSIN: a bit is T us through sr@dly's dlus@w and 13 cycles of
// the loop around it (rso@bit's and rsin@st's loops are alike).
constexpr int kRsLoopCycles = 13;

// SERIAL_BAUD is a 16-bit setting: 57600 is the fastest standard rate it holds.
constexpr int kStandardRates[] = {300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600};

// The period code of a standard rate: the bit in whole microseconds less 20
// (84 for 9600 baud).
int periodCode(int baud) {
    return 1000000 / baud - 20;
}

std::string mhzText(int mhz) {
    return std::to_string(mhz) + " MHz";
}

} // namespace

bool serialModeFits(int mhz, int mode) {
    int code = mode & 0x1FFF;
    return mode >= 0 && mode <= 65535 && code + serialBitCorrection(mhz) >= shortestExactWait(mhz);
}

// RSIN/RSOUT's bit at `baud`: T through dlus@w at least its shortest exact
// wait, and the whole bit within 2 % of 1 / baud.
bool rsBaudFits(int mhz, int baud) {
    if (baud <= 0) return false;
    int t = bitTime(mhz, baud);
    if (t < shortestExactWait(mhz) || t > 65535) return false;
    double cycles = t * mhz / 4.0 + kRsLoopCycles;
    double wanted = mhz * 1e6 / 4.0 / baud;
    return std::fabs(cycles - wanted) <= 0.02 * wanted;
}

// The loop's cycles are padded to whole microseconds: (21 + padding) x 4 / X.
int serialLoopPadding(int mhz) {
    for (int pad = 0; pad < 5; ++pad)
        if ((kLoopCycles + pad) * 4 % mhz == 0) return pad;
    return 0;
}

int serialLoopMicros(int mhz) {
    return (kLoopCycles + serialLoopPadding(mhz)) * 4 / mhz;
}

int serialBitCorrection(int mhz) {
    return 20 - serialLoopMicros(mhz);
}

// srin@sd's wait ends at the first data bit's middle with this 0 at every
// crystal: the start edge is seen 5 to 12 cycles late and srin@sd's
// arithmetic takes about as long as the half loop it replaces.
int serialStartCorrection(int) {
    return 0;
}

// Measured: dlus@w waits W x X / 4 - 4 cycles (from its first instruction
// to its return) for every W from these on.
int shortestExactWait(int mhz) {
    switch (mhz) {
    case 4: return 24;
    case 8: return 12;
    case 10: return 8;
    case 12: return 7;
    case 16: return 5;
    default: return 3;
    }
}

int fastestSerialBaud(int mhz) {
    int fastest = 0;
    for (int baud : kStandardRates)
        if (periodCode(baud) >= 0 && serialModeFits(mhz, periodCode(baud))) fastest = baud;
    return fastest;
}

int fastestRsBaud(int mhz) {
    int fastest = 0;
    for (int baud : kStandardRates)
        if (rsBaudFits(mhz, baud)) fastest = baud;
    return fastest;
}

std::optional<std::string> serialModeProblem(const Compilation& c, int mode) {
    int mhz = crystalMhz(c);
    if (!hasMicrosecondDelay(mhz)) return std::nullopt;
    if (mode < 0 || mode > 65535)
        return "Serial mode " + std::to_string(mode) + " does not fit the 16-bit mode word";
    int code = mode & 0x1FFF;
    if (serialModeFits(mhz, mode)) return std::nullopt;
    int shortest = std::max(shortestExactWait(mhz) - serialBitCorrection(mhz), 0);
    return "Serial mode " + std::to_string(mode) + " (a bit of " + std::to_string(code + 20) +
           " us) is too fast for SERIN/SEROUT at " + mhzText(mhz) + " (the shortest bit is " +
           std::to_string(shortest + 20) + " us, mode " + std::to_string(shortest) +
           "; the fastest standard rate is " + std::to_string(fastestSerialBaud(mhz)) + " baud)";
}

std::optional<std::string> serialBaudProblem(const Compilation& c) {
    int mhz = crystalMhz(c);
    int baud = c.device.settings[kSerialBaud].number;
    if (baud <= 0) return "SERIAL_BAUD must be above 0";
    if (!hasMicrosecondDelay(mhz)) return std::nullopt;
    if (bitTime(mhz, baud) > 65535)
        return "Baud rate " + std::to_string(baud) +
               " is too slow for RSIN/RSOUT (the slowest is 16)";
    if (rsBaudFits(mhz, baud)) return std::nullopt;
    std::string fastest = std::to_string(fastestRsBaud(mhz));
    if (bitTime(mhz, baud) < shortestExactWait(mhz) || baud > fastestRsBaud(mhz))
        return "Baud rate " + std::to_string(baud) + " is too fast for RSIN/RSOUT at " +
               mhzText(mhz) + " (the fastest standard rate is " + fastest + ")";
    double micros = bitTime(mhz, baud) + kRsLoopCycles * 4.0 / mhz;
    char text[120];
    std::snprintf(text, sizeof text, " (a bit would last %.2f us instead of %.2f us)", micros,
                  1e6 / baud);
    return "Baud rate " + std::to_string(baud) + " cannot be timed within 2 % for RSIN/RSOUT at " +
           mhzText(mhz) + text;
}

} // namespace zorvel
