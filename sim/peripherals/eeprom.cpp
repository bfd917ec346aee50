// Data EEPROM and program-memory self access.
//
// Reads (RD) complete at once. A write needs WREN and the unlock sequence:
// 0x55 written to EECON2, then 0xAA written to EECON2 at most 2 cycles later
// (the MOVLW between them), then WR set at most 1 cycle after the 0xAA write
// (the next instruction). Any other EECON2 write, or a longer gap, cancels the
// sequence and setting WR does nothing. A data write takes the datasheet's
// typical time (10 ms on the 16F84/16F83/16C84, 4 ms elsewhere), then WR
// clears and EEIF sets. A program-memory write (EEPGD=1) stalls the core for
// 2 ms and writes the word at once. A program-memory read completes at once
// (the two instructions after it run normally). A reset other than power-on
// during a write abandons it and sets WRERR.
#include "sim/peripherals/eeprom.h"

#include "sim/peripherals/support.h"
#include "sim/pic16.h"

#include <algorithm>
#include <string>

namespace zorvel::sim {

namespace {

constexpr int RD = 0, WR = 1, WREN = 2, WRERR = 3, EEPGD = 7;

enum class Unlock { None, Got55, Got55AA };

} // namespace

struct DataEeprom::State {
    CoreAccess& core;
    std::vector<uint8_t> bytes;
    int eedata, eeadr, eedath, eeadrh, eecon1, eecon2;
    int flagAddress = -1, flagBit = 0;
    uint8_t implemented = 0x0F; // EECON1 bits that exist
    double writeSeconds = 4e-3;
    Unlock unlock = Unlock::None;
    uint64_t unlockCycle = 0;
    int pendingWrite = 0; // scheduler id, 0 when no write is in progress

    explicit State(CoreAccess& c) : core(c) {
        const DeviceLayout& l = core.layout();
        eedata = l.address("EEDATA");
        eeadr = l.address("EEADR");
        eedath = l.address("EEDATH");
        eeadrh = l.address("EEADRH");
        eecon1 = l.address("EECON1");
        eecon2 = l.address("EECON2");
        bytes.assign(size_t(l.eepromBytes > 0 ? l.eepromBytes : 64), 0xFF);
        chooseFlag(l);
        if (l.name == "16F84" || l.name == "16F83" || l.name == "16C84") writeSeconds = 10e-3;
    }

    void chooseFlag(const DeviceLayout& l) {
        if (!l.has("PIR1")) { // 16F84 style: EEIF is EECON1<4>
            flagAddress = eecon1;
            flagBit = 4;
            implemented = 0x1F;
        } else if (l.has("PIR2")) { // 16F87x, 16F88: PIR2<4>
            flagAddress = l.address("PIR2");
            flagBit = 4;
        } else { // 16F628A, 12F675: PIR1<7>
            flagAddress = l.address("PIR1");
            flagBit = 7;
        }
        if (eedath >= 0) implemented |= 0x80; // EEPGD
    }

    uint8_t& con1() { return core.storage(eecon1); }
    bool programAccess() { return eedath >= 0 && periph::bitSet(con1(), EEPGD); }
    int dataAddress() { return core.storage(eeadr) % int(bytes.size()); }
    int programAddress() {
        int high = eeadrh >= 0 ? core.storage(eeadrh) : 0;
        int words = core.layout().codeWords > 0 ? core.layout().codeWords : 8192;
        return ((high << 8) | core.storage(eeadr)) % words;
    }

    void onEecon2Write(uint8_t value) {
        core.storage(eecon2) = 0;
        uint64_t now = core.cycles();
        if (value == 0x55) {
            unlock = Unlock::Got55;
        } else if (value == 0xAA && unlock == Unlock::Got55 && now - unlockCycle <= 2) {
            unlock = Unlock::Got55AA;
        } else {
            unlock = Unlock::None;
        }
        unlockCycle = now;
    }

    bool unlocked() {
        bool ok = unlock == Unlock::Got55AA && core.cycles() - unlockCycle <= 1;
        unlock = Unlock::None;
        return ok;
    }

    void onEecon1Write(uint8_t value) {
        bool writing = pendingWrite != 0;
        uint8_t kept = value & implemented & uint8_t(~((1u << WR) | (1u << RD)));
        con1() = kept | (writing ? uint8_t(1u << WR) : 0);
        if (periph::bitSet(value, RD) && !writing) read();
        if (periph::bitSet(value, WR) && !writing && unlocked() && periph::bitSet(value, WREN))
            startWrite();
    }

    void read() {
        if (programAccess()) {
            uint16_t word = core.programWord(programAddress());
            core.storage(eedata) = uint8_t(word & 0xFF);
            core.storage(eedath) = uint8_t((word >> 8) & 0x3F);
        } else {
            core.storage(eedata) = bytes[size_t(dataAddress())];
        }
    }

    void startWrite() {
        if (programAccess()) {
            writeProgram();
            return;
        }
        int address = dataAddress();
        uint8_t value = core.storage(eedata);
        periph::setBit(con1(), WR, true);
        uint64_t due = core.cycles() + periph::cyclesFor(core, writeSeconds);
        pendingWrite = core.scheduler().schedule(due, [this, address, value](uint64_t) {
            bytes[size_t(address)] = value;
            finishWrite();
        });
    }

    void writeProgram() {
        int address = programAddress();
        uint16_t word = uint16_t(((core.storage(eedath) & 0x3F) << 8) | core.storage(eedata));
        core.stall(periph::cyclesFor(core, 2e-3));
        core.writeProgramWord(address, word);
        finishWrite();
    }

    void finishWrite() {
        pendingWrite = 0;
        periph::setBit(con1(), WR, false);
        periph::raiseFlag(core, flagAddress, flagBit);
    }

    void reset(ResetKind kind) {
        bool interrupted = pendingWrite != 0;
        if (interrupted) core.scheduler().cancel(pendingWrite);
        pendingWrite = 0;
        unlock = Unlock::None;
        if (kind == ResetKind::PowerOn) {
            con1() = 0;
            return;
        }
        uint8_t keep = con1() & uint8_t((1u << WRERR) | (1u << EEPGD));
        con1() = keep | (interrupted ? uint8_t(1u << WRERR) : 0);
    }
};

DataEeprom::DataEeprom(CoreAccess& core) : state_(std::make_unique<State>(core)) {
    State* s = state_.get();
    core.hookWrite(s->eecon1, [s](uint8_t value) { s->onEecon1Write(value); });
    core.hookWrite(s->eecon2, [s](uint8_t value) { s->onEecon2Write(value); });
    core.hookRead(s->eecon2, [](uint8_t) { return uint8_t(0); });
}

DataEeprom::~DataEeprom() = default;

void DataEeprom::reset(ResetKind kind) {
    state_->reset(kind);
}

void DataEeprom::load(const std::map<int, uint8_t>& image) {
    std::fill(state_->bytes.begin(), state_->bytes.end(), uint8_t(0xFF));
    for (auto [address, value] : image)
        if (address >= 0 && address < size()) state_->bytes[size_t(address)] = value;
}

uint8_t DataEeprom::byte(int address) const {
    if (address < 0 || address >= size()) return 0xFF;
    return state_->bytes[size_t(address)];
}

int DataEeprom::size() const {
    return int(state_->bytes.size());
}

uint64_t DataEeprom::writeCycles() const {
    return periph::cyclesFor(state_->core, state_->writeSeconds);
}

DataEeprom* findDataEeprom(const std::vector<std::unique_ptr<Peripheral>>& peripherals) {
    for (const auto& p : peripherals)
        if (auto* e = dynamic_cast<DataEeprom*>(p.get())) return e;
    return nullptr;
}

} // namespace zorvel::sim
