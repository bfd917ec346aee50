// Constants that the runtime routines take from the crystal frequency, in
// whole MHz, with truncating integer division. A crystal below 1 MHz counts
// as 1 here (no microsecond routine exists for it, so such a program does
// not assemble anyway); the formulas never divide by zero.
#pragma once

namespace zorvel {

// Microseconds that one millisecond step of dly@w waits through dlus@w: a
// millisecond less the loop's own overhead. 991 at 4 MHz, 999 at 20 MHz.
int millisecondStep(int mhz);

// Microseconds of one serial bit at `baud`, less the bit loop's overhead.
int bitTime(int mhz, int baud);

// Passes of a 20-cycle polling loop that make one millisecond.
int millisecondLoops(int mhz);

// Microseconds of padding per SOUND step (used from 8 MHz up).
int soundStepDelay(int mhz);

// Passes of the FREQOUT loop per output period step.
int toneStepCount(int mhz);

// Correction added to the received bit time: 20 minus 124/X rounded.
int receiveBitCorrection(int mhz);

// Whether the microsecond delay has a body for this crystal.
bool hasMicrosecondDelay(int mhz);

} // namespace zorvel
