#include "sim/core/ports.h"

#include "sim/core/core_impl.h"

namespace zorvel::sim::core {

namespace {

constexpr uint8_t RBPU = 0x80, INTEDG = 0x40;

const char* const kPortNames[5] = {"PORTA", "PORTB", "PORTC", "PORTD", "PORTE"};
const char* const kTrisNames[5] = {"TRISA", "TRISB", "TRISC", "TRISD", "TRISE"};

bool startsWith(const std::string& s, const char* prefix) {
    return s.rfind(prefix, 0) == 0;
}

// 16F87x ADCON1.PCFG3:0 -> analogue channels AN7..AN0.
constexpr uint8_t kPcfgAnalog[16] = {0xFF, 0xFF, 0x1F, 0x1F, 0x0B, 0x0B, 0x00, 0x00,
                                     0xFF, 0x3F, 0x3F, 0x3F, 0x1F, 0x0F, 0x01, 0x0D};

} // namespace

Ports::Ports(Pic16::Impl& core) : core_(core) {
    const DeviceLayout& l = core.layout_;
    bool gpio = l.has("GPIO");
    for (int i = 0; i < 5; ++i) {
        Port& p = ports_[i];
        p.data = (i == 0 && gpio) ? l.address("GPIO") : l.address(kPortNames[i]);
        p.tris = (i == 0 && gpio) ? l.address(l.has("TRISIO") ? "TRISIO" : "TRISGPIO")
                                  : l.address(kTrisNames[i]);
        if (p.data < 0) continue;
        for (int b = 0; b < 8; ++b) {
            std::string bitName = gpio && i == 0
                                      ? "GP" + std::to_string(b)
                                      : std::string("R") + char('A' + i) + std::to_string(b);
            if (!l.bitNames.empty() && !l.bitNames.count(bitName)) continue;
            std::string pinName =
                (gpio && i == 0 ? "GPIO." : std::string(kPortNames[i]) + ".") + std::to_string(b);
            core.pins_.push_back(std::make_unique<Pin>(pinName, i, b));
            p.pins[b] = core.pins_.back().get();
            p.mask |= static_cast<uint8_t>(1 << b);
        }
        core.hookPort(p.data, i, true);
        if (p.tris >= 0) core.hookPort(p.tris, i, false);
    }
    if (startsWith(l.name, "16F87") && l.has("ADCON1") && !l.has("ANSEL")) {
        analog_ = Analog::Adcon1;
        analogRegister_ = core.canonical(l.address("ADCON1"));
    } else if ((startsWith(l.name, "16F62") || startsWith(l.name, "16F648")) && l.has("CMCON")) {
        analog_ = Analog::Cmcon;
        analogRegister_ = core.canonical(l.address("CMCON"));
    }
    if (analogRegister_ < 0) analog_ = Analog::None;
    if (Pin* ra4 = pin(0, 4); ra4 && !gpio) ra4->setOpenDrain(true);
    if (!gpio && ports_[1].data >= 0) portB_ = 1;
    // INT is RB0, or GP2/RA2 on parts without RB0 (12F6xx, 16F684, 16F690 ...).
    intPin_ = gpio ? pin(0, 2) : (pin(1, 0) ? pin(1, 0) : pin(0, 2));
    if (intPin_) intPin_->addListener(this);
    if (portB_ >= 0)
        for (int b = 4; b < 8; ++b)
            if (Pin* p = pin(1, b)) p->addListener(this);
    core.hookWrite(reg::OPTION, [this](uint8_t) { updatePullUps(); });
}

Pin* Ports::pin(int port, int bit) const {
    if (port < 0 || port > 4 || bit < 0 || bit > 7) return nullptr;
    return ports_[port].pins[bit];
}

void Ports::reset() {
    for (Port& p : ports_)
        p.known = p.pullUpsKnown = false;
    for (int i = 0; i < 5; ++i)
        if (ports_[i].data >= 0) drive(i);
    lastRead_ = 0;
}

uint8_t Ports::analogMask(int index) const {
    const auto& ram = core_.ram_;
    if (analog_ == Analog::Adcon1) {
        if (index != 0 && index != 4) return 0;
        uint8_t an = kPcfgAnalog[ram[analogRegister_] & 0x0F];
        if (index == 0) return static_cast<uint8_t>((an & 0x0F) | ((an & 0x10) << 1));
        return static_cast<uint8_t>(an >> 5);
    }
    if (analog_ == Analog::Cmcon && index == 0) {
        switch (ram[analogRegister_] & 0x07) {
        case 7: return 0x00;
        case 5: return 0x06;
        case 3:
        case 6: return 0x07;
        default: return 0x0F;
        }
    }
    return 0;
}

uint8_t Ports::readPort(int index) {
    const Port& p = ports_[index];
    uint8_t v = 0;
    for (int b = 0; b < 8; ++b)
        if (p.pins[b] && p.pins[b]->level()) v |= static_cast<uint8_t>(1 << b);
    v &= static_cast<uint8_t>(~analogMask(index));
    if (index == portB_ && !core_.peeking_) lastRead_ = v;
    return v;
}

void Ports::drive(int index) {
    Port& p = ports_[index];
    uint8_t latch = core_.ram_[p.data];
    // TRIS bits of pins the port does not have read 0 (TRISE keeps its PSP bits).
    if (p.tris >= 0 && index != 4) core_.ram_[p.tris] &= p.mask;
    uint8_t tris = p.tris >= 0 ? core_.ram_[p.tris] : 0xFF;
    auto outputs = static_cast<uint8_t>(~tris & p.mask);
    // Only pins whose direction or driven level changes are told.
    auto changed = static_cast<uint8_t>(
        p.known ? ((outputs ^ p.outputs) | ((latch ^ p.latch) & outputs)) & p.mask : p.mask);
    p.known = true;
    p.outputs = outputs;
    p.latch = latch;
    for (int b = 0; changed; ++b, changed >>= 1) {
        if (!(changed & 1)) continue;
        bool output = (outputs >> b) & 1;
        p.pins[b]->setPicOutput(output ? std::optional<bool>((latch >> b) & 1) : std::nullopt,
                                core_.cycles_);
    }
    if (index == portB_) updatePullUps();
}

void Ports::updatePullUps() {
    if (portB_ < 0) return;
    Port& p = ports_[portB_];
    bool enabled = !(core_.ram_[reg::OPTION] & RBPU);
    uint8_t tris = p.tris >= 0 ? core_.ram_[p.tris] : 0xFF;
    auto pullUps = static_cast<uint8_t>(enabled ? tris & p.mask : 0);
    auto changed = static_cast<uint8_t>(p.pullUpsKnown ? pullUps ^ p.pullUps : p.mask);
    p.pullUpsKnown = true;
    p.pullUps = pullUps;
    for (int b = 0; changed; ++b, changed >>= 1)
        if (changed & 1) p.pins[b]->setPullUp((pullUps >> b) & 1, core_.cycles_);
}

void Ports::pinChanged(Pin& pin, bool level, uint64_t) {
    auto& intcon = core_.ram_[reg::INTCON];
    if (&pin == intPin_) {
        bool rising = (core_.ram_[reg::OPTION] & INTEDG) != 0;
        if (level == rising) intcon |= reg::INTF;
    }
    if (portB_ >= 0 && pin.port() == portB_ && pin.bit() >= 4) {
        const Port& p = ports_[portB_];
        bool input = p.tris < 0 || ((core_.ram_[p.tris] >> pin.bit()) & 1);
        if (input && level != (((lastRead_ >> pin.bit()) & 1) != 0)) intcon |= reg::RBIF;
    }
    core_.interruptStateChanged();
}

} // namespace zorvel::sim::core
