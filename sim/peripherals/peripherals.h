// Constructors of the peripherals createPeripherals() assembles, for the
// registry and for tests. Each returns nullptr when the device lacks the
// registers the peripheral needs.
#pragma once

#include "sim/peripheral.h"

#include <memory>

namespace zorvel::sim {

class Timer2;

std::unique_ptr<Peripheral> makeDataEeprom(CoreAccess& core);
std::unique_ptr<Peripheral> makeAdConverter(CoreAccess& core);
std::unique_ptr<Timer2> makeTimer2(CoreAccess& core);
// CCP module `index` (1 or 2) in PWM mode, timed by `timer2`.
std::unique_ptr<Peripheral> makeCcp(CoreAccess& core, Timer2& timer2, int index);
std::unique_ptr<Peripheral> makeUsart(CoreAccess& core);

} // namespace zorvel::sim
