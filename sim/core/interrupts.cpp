#include "sim/core/interrupts.h"

#include "sim/core/core_impl.h"

namespace zorvel::sim::core {

Interrupts::Interrupts(Pic16::Impl& core)
    : core_(core), pir1_(core.layout_.address("PIR1")), pie1_(core.layout_.address("PIE1")),
      pir2_(core.layout_.address("PIR2")), pie2_(core.layout_.address("PIE2")) {
    if (int a = core.layout_.address("EECON1"); pir1_ < 0 && a >= 0) eecon1_ = core.canonical(a);
    // Any program write of a flag or enable register re-evaluates interrupts.
    for (int a : {reg::INTCON, pir1_, pie1_, pir2_, pie2_, eecon1_})
        if (a >= 0) core.hookWrite(a, [&core](uint8_t) { core.interruptStateChanged(); });
}

void Interrupts::reset() {}

bool Interrupts::anyEnabled() const {
    const auto& ram = core_.ram_;
    uint8_t intcon = ram[reg::INTCON];
    if (intcon & (intcon >> 3) & 0x07) return true;
    constexpr uint8_t EEIE = 0x40, EEIF = 0x10;
    if (eecon1_ >= 0) return (intcon & EEIE) && (ram[eecon1_] & EEIF);
    if (!(intcon & reg::PEIE)) return false;
    auto masked = [&ram](int flags, int enables) {
        return flags >= 0 && enables >= 0 && (ram[flags] & ram[enables]) != 0;
    };
    return masked(pir1_, pie1_) || masked(pir2_, pie2_);
}

bool Interrupts::pending() const {
    return (core_.ram_[reg::INTCON] & reg::GIE) && anyEnabled();
}

} // namespace zorvel::sim::core
