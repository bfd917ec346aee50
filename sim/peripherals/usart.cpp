// The USART in asynchronous mode (8 or 9 data bits). One bit lasts
// 16 * (SPBRG + 1) instruction cycles, 4 * (SPBRG + 1) with BRGH set.
//
// Transmit: a byte written to TXREG moves to the shift register one cycle
// later when the shift register is empty and SPEN and TXEN are set; TXIF is set
// while TXREG is empty (and TXEN is set), TRMT while nothing is shifting. The
// frame (start bit, LSB first, TX9D when TX9, stop bit) is driven on the TX
// pin whatever its TRIS bit, as the USART owns the pin while SPEN is set.
// Receive: with SPEN and CREN set, a falling edge on the RX pin starts a frame;
// each bit is sampled once in its middle. A start bit found high again is
// ignored; a low stop bit sets FERR for that byte. Bytes go to a 2-deep FIFO
// read through RCREG (RCIF set while it holds data); a byte completing while
// the FIFO is full is lost and sets OERR, which stops reception until CREN is
// cleared. Synchronous mode (SYNC) and address detection (ADDEN) are not
// modelled.
#include "sim/peripherals/peripherals.h"
#include "sim/peripherals/support.h"
#include "sim/pic16.h"

#include <deque>

namespace zorvel::sim {

namespace {

// TXSTA, RCSTA and PIR1 bits.
constexpr int TX9D = 0, TRMT = 1, BRGH = 2, SYNC = 4, TXEN = 5, TX9 = 6;
constexpr int RX9D = 0, OERR = 1, FERR = 2, CREN = 4, RX9 = 6, SPEN = 7;
constexpr int TXIF = 4, RCIF = 5;

struct Received {
    uint8_t data;
    bool ninth;
    bool framingError;
};

class Usart : public Peripheral, public PinListener {
public:
    explicit Usart(CoreAccess& core) : core_(core) {
        const DeviceLayout& l = core.layout();
        txsta_ = l.address("TXSTA");
        rcsta_ = l.address("RCSTA");
        spbrg_ = l.address("SPBRG");
        txreg_ = l.address("TXREG");
        rcreg_ = l.address("RCREG");
        pir1_ = l.address("PIR1");
        choosePins();
        core.hookWrite(txsta_, [this](uint8_t v) { onTxstaWrite(v); });
        core.hookWrite(rcsta_, [this](uint8_t v) { onRcstaWrite(v); });
        core.hookWrite(txreg_, [this](uint8_t v) { onTxregWrite(v); });
        core.hookRead(rcreg_, [this](uint8_t stored) { return readRcreg(stored); });
        // The pins and the peripherals belong to the same device and go together.
        if (rx_) rx_->addListener(this);
    }

    void reset(ResetKind) override {
        stopTransmitter();
        stopReceiver();
        txFull_ = false;
        fifo_.clear();
        core_.storage(txsta_) = 1u << TRMT;
        core_.storage(rcsta_) = 0;
        core_.storage(spbrg_) = 0;
        core_.storage(rcreg_) = 0;
        previousHardware_ = 0;
    }

    void pinChanged(Pin&, bool level, uint64_t cycle) override {
        if (level || receiving_ != 0 || !receiverOn()) return;
        if (periph::bitSet(rcsta(), OERR)) return;
        startReceive(cycle);
    }

private:
    void choosePins() {
        const DeviceLayout& l = core_.layout();
        if (l.has("PORTC")) {
            tx_ = periph::portPin(core_, 'C', 6);
            rx_ = periph::portPin(core_, 'C', 7);
        } else if (l.name == "16F88" || l.name == "16F87") {
            tx_ = periph::portPin(core_, 'B', 5);
            rx_ = periph::portPin(core_, 'B', 2);
        } else {
            tx_ = periph::portPin(core_, 'B', 2);
            rx_ = periph::portPin(core_, 'B', 1);
        }
    }

    uint8_t& txsta() { return core_.storage(txsta_); }
    uint8_t& rcsta() { return core_.storage(rcsta_); }
    uint64_t bitCycles() {
        uint64_t perCount = periph::bitSet(txsta(), BRGH) ? 4 : 16;
        return perCount * (uint64_t(core_.storage(spbrg_)) + 1);
    }
    bool asyncOn() { return periph::bitSet(rcsta(), SPEN) && !periph::bitSet(txsta(), SYNC); }
    bool transmitterOn() { return asyncOn() && periph::bitSet(txsta(), TXEN); }
    bool receiverOn() { return asyncOn() && periph::bitSet(rcsta(), CREN); }

    // Transmitter.

    void onTxstaWrite(uint8_t v) {
        txsta() = uint8_t((v & 0xF5) | (shifting_ ? 0 : 1u << TRMT));
        updateTransmitter();
    }

    void onTxregWrite(uint8_t v) {
        txData_ = v;
        txFull_ = true;
        if (periph::bitSet(txsta(), TXEN)) periph::clearFlag(core_, pir1_, TXIF);
        uint64_t now = core_.cycles();
        core_.scheduler().schedule(now + 1, [this](uint64_t cycle) { tryTransmit(cycle); });
    }

    void updateTransmitter() {
        if (!transmitterOn()) {
            stopTransmitter();
            return;
        }
        if (!shifting_ && tx_) tx_->setPeripheralOutput(true, core_.cycles());
        if (!txFull_) periph::raiseFlag(core_, pir1_, TXIF);
        tryTransmit(core_.cycles());
    }

    void stopTransmitter() {
        if (txEvent_ != 0) core_.scheduler().cancel(txEvent_);
        txEvent_ = 0;
        if (tx_) tx_->setPeripheralOutput(std::nullopt, core_.cycles());
        shifting_ = false;
        periph::setBit(txsta(), TRMT, true);
    }

    void tryTransmit(uint64_t cycle) {
        if (!txFull_ || shifting_ || !transmitterOn()) return;
        txFull_ = false;
        shifting_ = true;
        periph::setBit(txsta(), TRMT, false);
        bool nine = periph::bitSet(txsta(), TX9);
        frame_ = uint16_t(txData_) << 1; // start bit 0
        frameBits_ = nine ? 11 : 10;
        if (nine && periph::bitSet(txsta(), TX9D)) frame_ |= 1u << 9;
        frame_ |= uint16_t(1u << (frameBits_ - 1)); // stop bit
        txBitCycles_ = bitCycles();
        periph::raiseFlag(core_, pir1_, TXIF);
        sendBit(0, cycle);
    }

    void sendBit(int index, uint64_t cycle) {
        if (index == frameBits_) {
            txEvent_ = 0;
            shifting_ = false;
            periph::setBit(txsta(), TRMT, true);
            tryTransmit(cycle);
            return;
        }
        if (tx_) tx_->setPeripheralOutput(bool((frame_ >> index) & 1), cycle);
        uint64_t next = cycle + txBitCycles_;
        txEvent_ = core_.scheduler().schedule(
            next, [this, index, next](uint64_t) { sendBit(index + 1, next); });
    }

    // Receiver.

    void onRcstaWrite(uint8_t v) {
        // The stored byte already holds `v`; recover the hardware bits from before.
        rcsta() = uint8_t((v & 0xF8) | (previousHardware_ & 0x07));
        if (!periph::bitSet(v, CREN)) {
            periph::setBit(rcsta(), OERR, false);
            stopReceiver();
        }
        if (!periph::bitSet(v, SPEN)) fifo_.clear();
        refreshReceiveFlags();
        updateTransmitter();
    }

    void stopReceiver() {
        if (receiving_ != 0) core_.scheduler().cancel(receiving_);
        receiving_ = 0;
    }

    void startReceive(uint64_t edge) {
        rxBitCycles_ = bitCycles();
        rxNine_ = periph::bitSet(rcsta(), RX9);
        rxFrame_ = 0;
        scheduleSample(0, edge + rxBitCycles_ / 2);
    }

    void scheduleSample(int index, uint64_t at) {
        receiving_ = core_.scheduler().schedule(at, [this, index, at](uint64_t) {
            receiving_ = 0;
            sample(index, at);
        });
    }

    void sample(int index, uint64_t at) {
        bool level = rx_->level();
        if (index == 0 && level) return; // a glitch, not a start bit
        if (level) rxFrame_ |= uint16_t(1u << index);
        int stop = rxNine_ ? 10 : 9;
        if (index < stop) {
            scheduleSample(index + 1, at + rxBitCycles_);
            return;
        }
        Received byte{uint8_t(rxFrame_ >> 1), rxNine_ && ((rxFrame_ >> 9) & 1), !level};
        if (fifo_.size() >= 2) {
            periph::setBit(rcsta(), OERR, true);
            saveHardware();
            return;
        }
        fifo_.push_back(byte);
        refreshReceiveFlags();
    }

    uint8_t readRcreg(uint8_t stored) {
        if (fifo_.empty()) return stored;
        Received top = fifo_.front();
        fifo_.pop_front();
        core_.storage(rcreg_) = top.data;
        refreshReceiveFlags();
        return top.data;
    }

    // FERR and RX9D describe the byte at the head of the FIFO; RCIF is set while
    // the FIFO holds a byte.
    void refreshReceiveFlags() {
        bool any = !fifo_.empty();
        periph::setBit(rcsta(), FERR, any && fifo_.front().framingError);
        periph::setBit(rcsta(), RX9D, any && fifo_.front().ninth);
        if (any) core_.storage(rcreg_) = fifo_.front().data;
        saveHardware();
        if (any)
            periph::raiseFlag(core_, pir1_, RCIF);
        else
            periph::clearFlag(core_, pir1_, RCIF);
    }

    void saveHardware() { previousHardware_ = rcsta() & 0x07; }

    CoreAccess& core_;
    int txsta_ = -1, rcsta_ = -1, spbrg_ = -1, txreg_ = -1, rcreg_ = -1, pir1_ = -1;
    Pin* tx_ = nullptr;
    Pin* rx_ = nullptr;
    // Transmitter.
    uint8_t txData_ = 0;
    bool txFull_ = false;
    bool shifting_ = false;
    uint16_t frame_ = 0;
    int frameBits_ = 10;
    uint64_t txBitCycles_ = 16;
    int txEvent_ = 0;
    // Receiver.
    int receiving_ = 0;
    uint64_t rxBitCycles_ = 16;
    bool rxNine_ = false;
    uint16_t rxFrame_ = 0;
    std::deque<Received> fifo_;
    uint8_t previousHardware_ = 0;
};

} // namespace

std::unique_ptr<Peripheral> makeUsart(CoreAccess& core) {
    const DeviceLayout& l = core.layout();
    for (const char* reg : {"TXSTA", "RCSTA", "SPBRG", "TXREG", "RCREG"})
        if (!l.has(reg)) return nullptr;
    return std::make_unique<Usart>(core);
}

} // namespace zorvel::sim
