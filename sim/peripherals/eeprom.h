// Data EEPROM and (on devices with EEDATH/EEADRH) program-memory self access
// through EEDATA/EEADR/EECON1/EECON2.
#pragma once

#include "sim/peripheral.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace zorvel::sim {

class DataEeprom : public Peripheral {
public:
    explicit DataEeprom(CoreAccess& core);
    ~DataEeprom() override;
    void reset(ResetKind kind) override;

    // Initial contents (the HEX file's EEPROM records, address -> byte);
    // bytes not given are erased (0xFF). Pic16::load() calls it.
    void load(const std::map<int, uint8_t>& image);
    uint8_t byte(int address) const;
    int size() const;
    // Instruction cycles a data EEPROM write takes at the simulated crystal.
    uint64_t writeCycles() const;

    struct State;

private:
    std::unique_ptr<State> state_;
};

// The data EEPROM among a device's peripherals, or nullptr when it has none.
DataEeprom* findDataEeprom(const std::vector<std::unique_ptr<Peripheral>>& peripherals);

} // namespace zorvel::sim
