// The I/O ports: PORTx/GPIO reads the pin levels, writes the output latch;
// TRISx selects inputs; RA4 is open drain; PORTB weak pull-ups follow
// OPTION_REG.RBPU on input pins; RB0/INT edges set INTF and RB4-RB7 changes
// against the last PORTB read set RBIF. Pins the device starts as analogue
// inputs (16F87x ADCON1, 16F62x CMCON) read 0 while analogue.
#pragma once

#include "sim/pic16.h"
#include "sim/pins.h"

#include <array>
#include <cstdint>

namespace zorvel::sim::core {

class Ports : public PinListener {
public:
    explicit Ports(Pic16::Impl& core);
    void reset();
    void pinChanged(Pin& pin, bool level, uint64_t cycle) override;
    Pin* pin(int port, int bit) const;
    // A program read of PORTx; a program write of PORTx or TRISx. The core
    // calls these directly (no hook) for the registers it was told of with
    // hookPort().
    uint8_t readPort(int index);
    void drive(int index);

private:
    struct Port {
        int data = -1; // PORTx address
        int tris = -1; // TRISx address
        uint8_t mask = 0;
        std::array<Pin*, 8> pins{};
        // What the pins were last told: only pins whose state changes are
        // told again. Unknown after a reset.
        bool known = false;
        uint8_t outputs = 0; // pins the PIC drives (TRIS bit 0)
        uint8_t latch = 0;
        bool pullUpsKnown = false;
        uint8_t pullUps = 0;
    };
    enum class Analog { None, Adcon1, Cmcon };
    void updatePullUps();
    uint8_t analogMask(int index) const;

    Pic16::Impl& core_;
    std::array<Port, 5> ports_;
    Pin* intPin_ = nullptr;
    int portB_ = -1; // index of the port with RB4-RB7 change interrupts
    uint8_t lastRead_ = 0;
    Analog analog_ = Analog::None;
    int analogRegister_ = -1; // canonical ADCON1 or CMCON
};

} // namespace zorvel::sim::core
