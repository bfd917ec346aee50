// Creates the peripherals a device has, decided by the registers its layout
// names.
#include "sim/peripheral.h"
#include "sim/peripherals/eeprom.h"
#include "sim/peripherals/peripherals.h"
#include "sim/peripherals/timer2.h"

namespace zorvel::sim {

std::unique_ptr<Peripheral> makeDataEeprom(CoreAccess& core) {
    const DeviceLayout& l = core.layout();
    for (const char* reg : {"EEDATA", "EEADR", "EECON1", "EECON2"})
        if (!l.has(reg)) return nullptr;
    return std::make_unique<DataEeprom>(core);
}

std::vector<std::unique_ptr<Peripheral>> createPeripherals(CoreAccess& core) {
    std::vector<std::unique_ptr<Peripheral>> list;
    auto add = [&list](std::unique_ptr<Peripheral> p) {
        if (p) list.push_back(std::move(p));
    };
    add(makeDataEeprom(core));
    add(makeAdConverter(core));
    if (auto timer2 = makeTimer2(core)) {
        Timer2& t2 = *timer2;
        list.push_back(std::move(timer2));
        add(makeCcp(core, t2, 1));
        add(makeCcp(core, t2, 2));
    }
    add(makeUsart(core));
    return list;
}

} // namespace zorvel::sim
