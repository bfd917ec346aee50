// Instruction execution, register-file access and the run loop.
#include "sim/core/core_impl.h"
#include "sim/core/interrupts.h"
#include "sim/core/ports.h"
#include "sim/core/timer0.h"
#include "sim/core/watchdog.h"

namespace zorvel::sim {

using core::Decoded;
using core::Op;

namespace {

constexpr uint16_t kPcMask = 0x1FFF;
constexpr uint16_t kInterruptVector = 0x0004;

inline uint8_t zero(uint8_t v) {
    return v == 0 ? reg::Z : 0;
}

} // namespace

// ---- Register file ----

inline uint8_t Pic16::Impl::read(int address) {
    int c = fast_[address];
    if (c >= 0) return ram_[c];
    return readSlow(map_.canonical[address]);
}

inline void Pic16::Impl::write(int address, uint8_t value) {
    int c = fast_[address];
    if (c >= 0) {
        ram_[c] = value;
        return;
    }
    writeSlow(map_.canonical[address], value);
}

uint8_t Pic16::Impl::readSlow(int canon) {
    switch (canon) {
    case -1: return 0;
    case reg::INDF: {
        int target = map_.canonical[((ram_[reg::STATUS] & reg::IRP) << 1) | ram_[reg::FSR]];
        if (target <= 0) return 0; // unimplemented, or INDF itself
        return readSlow(target);
    }
    case reg::PCL: return static_cast<uint8_t>(pc_);
    default:
        if (portRead_[canon] >= 0) return ports_->readPort(portRead_[canon]);
        if (readHooks_[canon]) return readHooks_[canon](ram_[canon]);
        return ram_[canon];
    }
}

void Pic16::Impl::writeSlow(int canon, uint8_t value) {
    switch (canon) {
    case -1: return;
    case reg::INDF: {
        int target = map_.canonical[((ram_[reg::STATUS] & reg::IRP) << 1) | ram_[reg::FSR]];
        if (target > 0) writeSlow(target, value);
        return;
    }
    case reg::PCL:
        ram_[reg::PCL] = value;
        pc_ = static_cast<uint16_t>(((ram_[reg::PCLATH] & 0x1F) << 8) | value);
        pclWritten_ = true;
        return;
    case reg::STATUS:
        // TO and PD are read-only.
        ram_[reg::STATUS] = static_cast<uint8_t>((value & ~(reg::TO | reg::PD)) |
                                                 (ram_[reg::STATUS] & (reg::TO | reg::PD)));
        bankBase_ = (ram_[reg::STATUS] & (reg::RP0 | reg::RP1)) << 2;
        return;
    case reg::PCLATH: ram_[reg::PCLATH] = value & 0x1F; return;
    default:
        ram_[canon] = value;
        if (portWrite_[canon] >= 0) ports_->drive(portWrite_[canon]);
        for (auto& hook : writeHooks_[canon])
            hook(value);
        return;
    }
}

uint8_t Pic16::Impl::peek(int address) const {
    int c = canonical(address);
    if (c < 0) return 0;
    auto* self = const_cast<Impl*>(this);
    self->peeking_ = true;
    uint8_t v = self->readSlow(c);
    self->peeking_ = false;
    return v;
}

void Pic16::Impl::poke(int address, uint8_t value) {
    int c = canonical(address);
    if (c < 0) return;
    ram_[c] = value;
    if (c == reg::STATUS) bankBase_ = (value & (reg::RP0 | reg::RP1)) << 2;
    if (c == reg::PCL) pc_ = static_cast<uint16_t>(((ram_[reg::PCLATH] & 0x1F) << 8) | value);
    irqPending_ = interrupts_->pending();
}

// ---- Instructions ----

void Pic16::Impl::push(uint16_t address) {
    stack_[sp_] = address;
    sp_ = (sp_ + 1) & 7;
    if (depth_ < 8) ++depth_;
}

uint16_t Pic16::Impl::pop() {
    sp_ = (sp_ - 1) & 7;
    if (depth_ > 0) --depth_;
    return stack_[sp_];
}

void Pic16::Impl::storeResult(const Decoded& d, uint8_t value) {
    if (d.arg)
        write(bankBase_ | d.f, value);
    else
        w_ = value;
}

// Executes one instruction whose address was pc_ - 1; returns with cycles_
// counting it. Inlined into the run loop.
[[gnu::always_inline]] inline void Pic16::Impl::execute(const Decoded& d) {
    int extra = 0;
    int f = bankBase_ | d.f;
    switch (d.op) {
    case Op::Nop: break;
    case Op::Movwf: write(f, w_); break;
    case Op::Clrw:
        w_ = 0;
        setFlags(reg::Z, reg::Z);
        break;
    case Op::Clrf:
        write(f, 0);
        setFlags(reg::Z, reg::Z);
        break;
    case Op::Subwf:
    case Op::Sublw: {
        uint8_t a = d.op == Op::Sublw ? static_cast<uint8_t>(d.k) : read(f);
        auto r = static_cast<uint8_t>(a - w_);
        uint8_t flags = static_cast<uint8_t>(zero(r) | (a >= w_ ? reg::C : 0) |
                                             ((a & 0xF) >= (w_ & 0xF) ? reg::DC : 0));
        if (d.op == Op::Sublw)
            w_ = r;
        else
            storeResult(d, r);
        setFlags(reg::Z | reg::C | reg::DC, flags);
        break;
    }
    case Op::Addwf:
    case Op::Addlw: {
        uint8_t a = d.op == Op::Addlw ? static_cast<uint8_t>(d.k) : read(f);
        int sum = a + w_;
        auto r = static_cast<uint8_t>(sum);
        uint8_t flags = static_cast<uint8_t>(zero(r) | (sum > 0xFF ? reg::C : 0) |
                                             (((a & 0xF) + (w_ & 0xF)) > 0xF ? reg::DC : 0));
        if (d.op == Op::Addlw)
            w_ = r;
        else
            storeResult(d, r);
        setFlags(reg::Z | reg::C | reg::DC, flags);
        break;
    }
    case Op::Decf: {
        auto r = static_cast<uint8_t>(read(f) - 1);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Incf: {
        auto r = static_cast<uint8_t>(read(f) + 1);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Iorwf: {
        auto r = static_cast<uint8_t>(read(f) | w_);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Andwf: {
        auto r = static_cast<uint8_t>(read(f) & w_);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Xorwf: {
        auto r = static_cast<uint8_t>(read(f) ^ w_);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Movf: {
        uint8_t r = read(f);
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Comf: {
        auto r = static_cast<uint8_t>(~read(f));
        storeResult(d, r);
        setFlags(reg::Z, zero(r));
        break;
    }
    case Op::Decfsz:
    case Op::Incfsz: {
        auto r = static_cast<uint8_t>(read(f) + (d.op == Op::Incfsz ? 1 : -1));
        storeResult(d, r);
        if (r == 0) {
            pc_ = (pc_ + 1) & kPcMask;
            extra = 1;
        }
        break;
    }
    case Op::Rrf: {
        uint8_t v = read(f);
        auto r = static_cast<uint8_t>((v >> 1) | ((ram_[reg::STATUS] & reg::C) << 7));
        storeResult(d, r);
        setFlags(reg::C, v & 1);
        break;
    }
    case Op::Rlf: {
        uint8_t v = read(f);
        auto r = static_cast<uint8_t>((v << 1) | (ram_[reg::STATUS] & reg::C));
        storeResult(d, r);
        setFlags(reg::C, static_cast<uint8_t>(v >> 7));
        break;
    }
    case Op::Swapf: {
        uint8_t v = read(f);
        storeResult(d, static_cast<uint8_t>((v >> 4) | (v << 4)));
        break;
    }
    case Op::Bcf: write(f, static_cast<uint8_t>(read(f) & ~(1 << d.arg))); break;
    case Op::Bsf: write(f, static_cast<uint8_t>(read(f) | (1 << d.arg))); break;
    case Op::Btfsc:
    case Op::Btfss: {
        bool set = (read(f) >> d.arg) & 1;
        if (set == (d.op == Op::Btfss)) {
            pc_ = (pc_ + 1) & kPcMask;
            extra = 1;
        }
        break;
    }
    case Op::Call: push(pc_); [[fallthrough]];
    case Op::Goto:
        pc_ = static_cast<uint16_t>(((ram_[reg::PCLATH] & 0x18) << 8) | d.k);
        extra = 1;
        break;
    case Op::Movlw: w_ = static_cast<uint8_t>(d.k); break;
    case Op::Retlw:
        w_ = static_cast<uint8_t>(d.k);
        pc_ = pop();
        extra = 1;
        break;
    case Op::Iorlw:
        w_ = static_cast<uint8_t>(w_ | d.k);
        setFlags(reg::Z, zero(w_));
        break;
    case Op::Andlw:
        w_ = static_cast<uint8_t>(w_ & d.k);
        setFlags(reg::Z, zero(w_));
        break;
    case Op::Xorlw:
        w_ = static_cast<uint8_t>(w_ ^ d.k);
        setFlags(reg::Z, zero(w_));
        break;
    case Op::Return:
        pc_ = pop();
        extra = 1;
        break;
    case Op::Retfie:
        pc_ = pop();
        ram_[reg::INTCON] |= reg::GIE;
        irqPending_ = interrupts_->pending();
        extra = 1;
        break;
    case Op::Sleep: enterSleep(); break;
    case Op::Clrwdt:
        watchdog_->clear();
        if (ram_[reg::OPTION] & 0x08) timer0_->clearPrescaler();
        ram_[reg::STATUS] |= reg::TO | reg::PD;
        break;
    case Op::Option: writeSlow(reg::OPTION, w_); break;
    case Op::Tris:
        if (int a = layout_.address(std::string("TRIS") + char('A' + d.f - 5)); a >= 0)
            writeSlow(canonical(a), w_);
        break;
    }
    if (pclWritten_) {
        pclWritten_ = false;
        extra = 1;
    }
    cycles_ += 1 + extra;
}

void Pic16::Impl::serviceInterrupt() {
    push(pc_);
    pc_ = kInterruptVector;
    ram_[reg::INTCON] &= static_cast<uint8_t>(~reg::GIE);
    irqPending_ = false;
    cycles_ += 2;
}

void Pic16::Impl::sleepUntilEvent(uint64_t limit) {
    uint64_t next = scheduler_.next();
    uint64_t target = next < limit ? next : limit;
    cycles_ = target > cycles_ ? target : cycles_ + 1;
}

int Pic16::Impl::step() {
    uint64_t start = cycles_;
    if (cycles_ >= scheduler_.next()) scheduler_.runDue(cycles_);
    if (sleeping_) {
        ++cycles_;
        if (cycles_ >= scheduler_.next()) scheduler_.runDue(cycles_);
        return static_cast<int>(cycles_ - start);
    }
    const Decoded& d = decoded_[pc_];
    pc_ = (pc_ + 1) & kPcMask;
    execute(d);
    if (irqPending_) serviceInterrupt();
    return static_cast<int>(cycles_ - start);
}

// The run loop, specialised on whether a condition or breakpoints are checked
// after each instruction so that the common case tests neither.
template <bool kChecks>
StopReason Pic16::Impl::runLoop(uint64_t limit, bool stopOnSleep,
                                const std::function<bool()>* condition) {
    while (cycles_ < limit) {
        if (cycles_ >= scheduler_.next()) [[unlikely]]
            scheduler_.runDue(cycles_);
        if (sleeping_) [[unlikely]] {
            if (stopOnSleep && scheduler_.next() == UINT64_MAX) return StopReason::Sleep;
            sleepUntilEvent(limit);
            continue;
        }
        const Decoded& d = decoded_[pc_];
        pc_ = (pc_ + 1) & kPcMask;
        execute(d);
        // A wake-up from SLEEP happens before the instruction after SLEEP
        // runs, so that instruction comes before the vector.
        if (irqPending_) [[unlikely]]
            serviceInterrupt();
        if constexpr (kChecks) {
            if (condition && (*condition)()) return StopReason::Condition;
            if (hasBreakpoints_ && breakpoints_[pc_]) return StopReason::Breakpoint;
        }
    }
    return StopReason::CycleLimit;
}

StopReason Pic16::Impl::run(uint64_t cycles, bool stopOnSleep,
                            const std::function<bool()>* condition) {
    const uint64_t limit = cycles_ + cycles;
    if (condition || hasBreakpoints_) return runLoop<true>(limit, stopOnSleep, condition);
    return runLoop<false>(limit, stopOnSleep, condition);
}

} // namespace zorvel::sim
