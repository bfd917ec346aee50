// What the software serial routines can time at the configured crystal: the
// compile-time checks of a constant SERIN/SEROUT mode word and of the
// SERIAL_BAUD setting that RSIN and RSOUT use, and the constants that the
// routine texts take from the crystal.
#pragma once

#include <optional>
#include <string>

namespace zorvel {

class Compilation;

// A message when the SERIN/SEROUT routines cannot time the bit of `mode` at
// the configured crystal, std::nullopt when they can.
std::optional<std::string> serialModeProblem(const Compilation& c, int mode);
// A message when RSIN and RSOUT cannot time SERIAL_BAUD at the crystal.
std::optional<std::string> serialBaudProblem(const Compilation& c);

// The SERIN/SEROUT bit loops at crystal `mhz` (4, 8, 10, 12, 16 or 20): a
// bit lasts the wait srin@d asks dlus@w for (period code m plus the
// correction, in us) and the loop's own cycles, which are padded to a whole
// number of microseconds.
int serialLoopPadding(int mhz);     // 0..2 cycles of padding in srin@d
int serialLoopMicros(int mhz);      // the loop's own time in us
int serialBitCorrection(int mhz);   // 20 - serialLoopMicros: srin@d waits m + this
int serialStartCorrection(int mhz); // srin@sd waits 1.5 (m + correction) + this

// The shortest wait in us that dlus@w times exactly at the crystal.
int shortestExactWait(int mhz);

// Whether SERIN/SEROUT time the bit of `mode` at the crystal, and RSIN/RSOUT
// the baud rate: what the two checks above test.
bool serialModeFits(int mhz, int mode);
bool rsBaudFits(int mhz, int baud);

// The fastest standard rate (300 .. 57600) SERIN/SEROUT and RSIN/RSOUT
// time at the crystal; 0 when none.
int fastestSerialBaud(int mhz);
int fastestRsBaud(int mhz);

} // namespace zorvel
