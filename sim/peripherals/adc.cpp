// The A/D converter, ADCON0/ADCON1 with a 10-bit result in ADRESH:ADRESL
// (16F87x, 16F88) or an 8-bit result in ADRES (16C7x, 16F7x).
//
// Setting GO with ADON set samples the selected channel's pin voltage and
// finishes 12 TAD later (9.5 TAD for 8-bit converters): the result is stored
// (ADFM selects the justification of 10-bit results), GO/DONE clears and ADIF
// sets. TAD is 2, 8 or 32 Tosc (4, 16 or 64 with ADCS2 on devices that have
// it) or the internal RC clock (4 us typical, plus one cycle). Clearing GO
// during a conversion abandons it. The reference is always 0..5 V: ADCON1's
// external-reference settings are not modelled.
#include "sim/peripherals/peripherals.h"
#include "sim/peripherals/support.h"
#include "sim/pic16.h"

#include <algorithm>
#include <cmath>

namespace zorvel::sim {

namespace {

constexpr int ADON = 0, GO = 2, ADIF = 6, ADFM = 7, ADCS2 = 6;
constexpr double ReferenceVolts = 5.0;
constexpr double RcTadSeconds = 4e-6;

class AdConverter : public Peripheral {
public:
    explicit AdConverter(CoreAccess& core) : core_(core) {
        const DeviceLayout& l = core.layout();
        adcon0_ = l.address("ADCON0");
        adcon1_ = l.address("ADCON1");
        adresh_ = l.has("ADRESH") ? l.address("ADRESH") : l.address("ADRES");
        adresl_ = l.address("ADRESL");
        pir1_ = l.address("PIR1");
        tenBits_ = adresl_ >= 0;
        hasAdcs2_ = l.has("ANSEL") || (!l.name.empty() && l.name.back() == 'A' && tenBits_);
        core.hookWrite(adcon0_, [this](uint8_t value) { onAdcon0Write(value); });
    }

    void reset(ResetKind) override {
        cancel();
        core_.storage(adcon0_) = 0;
        if (adcon1_ >= 0) core_.storage(adcon1_) = 0;
    }

private:
    void onAdcon0Write(uint8_t value) {
        uint8_t& reg = core_.storage(adcon0_);
        reg = value & 0xFD; // bit 1 is unimplemented
        bool go = periph::bitSet(value, GO);
        if (!go) {
            cancel();
            return;
        }
        if (!periph::bitSet(value, ADON)) {
            periph::setBit(reg, GO, false);
            return;
        }
        if (pending_ == 0) start();
    }

    void start() {
        double volts = channelVoltage((core_.storage(adcon0_) >> 3) & 7);
        uint64_t due = core_.cycles() + conversionCycles();
        pending_ = core_.scheduler().schedule(due, [this, volts](uint64_t) { finish(volts); });
    }

    void cancel() {
        if (pending_ != 0) core_.scheduler().cancel(pending_);
        pending_ = 0;
    }

    uint64_t conversionCycles() const {
        uint8_t con0 = core_.storage(adcon0_);
        int select = (con0 >> 6) & 3;
        double tads = tenBits_ ? 12.0 : 9.5;
        if (select == 3) return periph::cyclesFor(core_, tads * RcTadSeconds) + 1;
        bool adcs2 = hasAdcs2_ && adcon1_ >= 0 && periph::bitSet(core_.storage(adcon1_), ADCS2);
        static constexpr int toscPerTad[2][3] = {{2, 8, 32}, {4, 16, 64}};
        double tadCycles = toscPerTad[adcs2 ? 1 : 0][select] / 4.0;
        return std::max<uint64_t>(1, uint64_t(std::ceil(tads * tadCycles)));
    }

    Pin* channelPin(int channel) {
        bool f88 = core_.layout().name == "16F88" || core_.layout().name == "16F87";
        if (channel < 4) return periph::portPin(core_, 'A', channel);
        if (f88) {
            if (channel == 4) return periph::portPin(core_, 'A', 4);
            return channel <= 6 ? periph::portPin(core_, 'B', channel + 1) : nullptr;
        }
        if (channel == 4) return periph::portPin(core_, 'A', 5);
        return periph::portPin(core_, 'E', channel - 5);
    }

    double channelVoltage(int channel) {
        Pin* pin = channelPin(channel);
        return pin ? pin->voltage() : 0.0;
    }

    void finish(double volts) {
        pending_ = 0;
        int steps = tenBits_ ? 1024 : 256;
        double clamped = std::clamp(volts, 0.0, ReferenceVolts);
        int code = std::min(steps - 1, int(std::floor(clamped / ReferenceVolts * steps)));
        store(code);
        periph::setBit(core_.storage(adcon0_), GO, false);
        periph::raiseFlag(core_, pir1_, ADIF);
    }

    void store(int code) {
        if (!tenBits_) {
            core_.storage(adresh_) = uint8_t(code);
            return;
        }
        bool right = adcon1_ >= 0 && periph::bitSet(core_.storage(adcon1_), ADFM);
        core_.storage(adresh_) = uint8_t(right ? code >> 8 : code >> 2);
        core_.storage(adresl_) = uint8_t(right ? code & 0xFF : (code & 3) << 6);
    }

    CoreAccess& core_;
    int adcon0_ = -1, adcon1_ = -1, adresh_ = -1, adresl_ = -1, pir1_ = -1;
    bool tenBits_ = true;
    bool hasAdcs2_ = false;
    int pending_ = 0;
};

} // namespace

std::unique_ptr<Peripheral> makeAdConverter(CoreAccess& core) {
    const DeviceLayout& l = core.layout();
    bool result = l.has("ADRES") || l.has("ADRESH");
    // Newer layouts (ANSELH, ADCON0 holding ADFM/VCFG) are not modelled.
    if (!l.has("ADCON0") || !l.has("ADCON1") || !result || l.has("ANSELH")) return nullptr;
    return std::make_unique<AdConverter>(core);
}

} // namespace zorvel::sim
