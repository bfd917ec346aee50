#include "compiler/library/crystal.h"

#include <algorithm>

namespace zorvel {
namespace {

int atLeastOne(int value) {
    return std::max(value, 1);
}

} // namespace

int millisecondStep(int mhz) {
    return 1000 - 36 / atLeastOne(mhz);
}

int bitTime(int mhz, int baud) {
    return 1000000 / atLeastOne(baud) - 52 / atLeastOne(mhz);
}

int millisecondLoops(int mhz) {
    return 50 * mhz / 4;
}

int soundStepDelay(int mhz) {
    return 50 - 224 / atLeastOne(mhz);
}

int toneStepCount(int mhz) {
    return 250 * mhz / 76;
}

int receiveBitCorrection(int mhz) {
    int x = atLeastOne(mhz);
    return 20 - (x / 2 + 124) / x;
}

bool hasMicrosecondDelay(int mhz) {
    switch (mhz) {
    case 4:
    case 8:
    case 10:
    case 12:
    case 16:
    case 20: return true;
    default: return false;
    }
}

} // namespace zorvel
