// The public face of the simulator; the state and the instruction loop are
// in sim/core.
#include "sim/pic16.h"

#include "sim/core/core_impl.h"
#include "sim/peripherals/eeprom.h"

#include <cctype>

namespace zorvel::sim {

Pic16::Pic16(DeviceLayout layout, double crystalMhz)
    : impl_(std::make_unique<Impl>(std::move(layout), crystalMhz)) {}

Pic16::~Pic16() = default;

void Pic16::load(const HexData& hex) {
    impl_->load(hex);
}
void Pic16::reset(ResetKind kind) {
    impl_->reset(kind);
}
int Pic16::step() {
    return impl_->step();
}

StopReason Pic16::run(uint64_t cycles, bool stopOnSleep) {
    return impl_->run(cycles, stopOnSleep, nullptr);
}

StopReason Pic16::runUntil(const std::function<bool()>& condition, uint64_t maxCycles) {
    if (condition()) return StopReason::Condition;
    return impl_->run(maxCycles, false, &condition);
}

void Pic16::addBreakpoint(uint16_t pc) {
    impl_->breakpoints_[pc & 0x1FFF] = true;
    impl_->hasBreakpoints_ = true;
}

uint8_t Pic16::w() const {
    return impl_->w_;
}
uint16_t Pic16::pc() const {
    return impl_->pc_;
}
uint8_t Pic16::status() const {
    return impl_->ram_[reg::STATUS];
}
uint64_t Pic16::cycles() const {
    return impl_->cycles_;
}
bool Pic16::sleeping() const {
    return impl_->sleeping_;
}
int Pic16::stackDepth() const {
    return impl_->depth_;
}
const DeviceLayout& Pic16::layout() const {
    return impl_->layout_;
}
double Pic16::crystalMhz() const {
    return impl_->crystalMhz;
}
double Pic16::cycleSeconds() const {
    return impl_->cycleSeconds();
}

uint8_t Pic16::peek(int address) const {
    return impl_->peek(address);
}
void Pic16::poke(int address, uint8_t value) {
    impl_->poke(address, value);
}
int Pic16::address(const std::string& name) const {
    return impl_->layout_.address(name);
}
uint8_t Pic16::peek(const std::string& name) const {
    int a = address(name);
    return a < 0 ? 0 : peek(a);
}
void Pic16::setW(uint8_t value) {
    impl_->w_ = value;
}

uint16_t Pic16::programWord(int address) const {
    return impl_->programWord(address);
}
uint8_t Pic16::eepromByte(int address) const {
    const DataEeprom* eeprom = findDataEeprom(impl_->peripherals_);
    return eeprom ? eeprom->byte(address) : 0xFF;
}

Pin* Pic16::pin(const std::string& name) {
    std::string n;
    for (char c : name)
        n += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    int port = -1;
    int bit = -1;
    auto dot = n.find('.');
    if (dot != std::string::npos && dot + 2 == n.size() &&
        std::isdigit(static_cast<unsigned char>(n.back()))) {
        std::string reg = n.substr(0, dot);
        bit = n.back() - '0';
        if (reg == "GPIO")
            port = 0;
        else if (reg.size() == 5 && reg.rfind("PORT", 0) == 0)
            port = reg[4] - 'A';
    } else if (n.size() == 3 && n[0] == 'R' && std::isdigit(static_cast<unsigned char>(n[2]))) {
        port = n[1] - 'A';
        bit = n[2] - '0';
    } else if (n.size() == 3 && n.rfind("GP", 0) == 0 &&
               std::isdigit(static_cast<unsigned char>(n[2]))) {
        port = 0;
        bit = n[2] - '0';
    }
    if (port < 0 || port > 4 || bit < 0 || bit > 7) return nullptr;
    // GPIO names only on GPIO devices, PORTx names only on the others.
    bool gpioDevice = impl_->layout_.has("GPIO");
    bool gpioName = n.rfind("GP", 0) == 0;
    if (gpioDevice != gpioName) return nullptr;
    return impl_->pin(port, bit);
}

std::vector<Pin*> Pic16::pins() {
    std::vector<Pin*> result;
    for (auto& p : impl_->pins_)
        result.push_back(p.get());
    return result;
}

Scheduler& Pic16::scheduler() {
    return impl_->scheduler_;
}

void Pic16::attach(std::unique_ptr<Part> part) {
    Part& p = *part;
    impl_->parts_.push_back(std::move(part));
    p.attach(*this);
}

} // namespace zorvel::sim
