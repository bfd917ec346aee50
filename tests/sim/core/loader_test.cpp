// HEX files, device files, the scheduler and pins.
#include "sim/core/sim_harness.h"
#include "sim/scheduler.h"
#include "support/test_support.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace zorvel::test {
namespace {

// One Intel HEX record with its checksum.
std::string record(int type, int offset, std::initializer_list<int> bytes) {
    std::vector<int> all = {static_cast<int>(bytes.size()), offset >> 8, offset & 0xFF, type};
    all.insert(all.end(), bytes);
    int sum = 0;
    std::string text = ":";
    char buf[4];
    for (int b : all) {
        sum += b;
        std::snprintf(buf, sizeof buf, "%02X", b & 0xFF);
        text += buf;
    }
    std::snprintf(buf, sizeof buf, "%02X", (-sum) & 0xFF);
    return text + buf + "\n";
}

TEST(HexLoader, ReadsWordsConfigAndEeprom) {
    std::string text = record(0, 0x0000, {0x83, 0x16, 0xFF, 0x30}) + // bsf STATUS,RP0; movlw 0xFF
                       record(0, 0x400E, {0x3A, 0x3F}) +
                       record(0, 0x4200, {0x12, 0x00, 0x34, 0x00}) + record(1, 0, {});
    std::string error;
    auto hex = sim::parseHex(text, error);
    ASSERT_TRUE(hex) << error;
    EXPECT_EQ(hex->program.at(0), 0x1683);
    EXPECT_EQ(hex->program.at(1), 0x30FF);
    ASSERT_TRUE(hex->configWord);
    EXPECT_EQ(*hex->configWord, 0x3F3A);
    EXPECT_EQ(hex->eeprom.at(0), 0x12);
    EXPECT_EQ(hex->eeprom.at(1), 0x34);
}

TEST(HexLoader, ExtendedLinearAddressRecords) {
    std::string text = record(4, 0, {0x00, 0x00}) + record(0, 0x0010, {0x01, 0x28}) +
                       record(0, 0x43FE, {0xAA, 0x00}) + record(1, 0, {});
    std::string error;
    auto hex = sim::parseHex(text, error);
    ASSERT_TRUE(hex) << error;
    EXPECT_EQ(hex->program.at(8), 0x2801);
    EXPECT_EQ(hex->eeprom.at(0xFF), 0xAA); // byte 0x43FE, the last EEPROM byte
}

// Nothing of a PIC16 lies at byte 0x4400 or above (a HEX file for another chip).
TEST(HexLoader, DataOutsidePic16MemoryIsAnError) {
    std::string error;
    std::string above =
        record(4, 0, {0x00, 0x01}) + record(0, 0x0000, {0xAA, 0x00}) + record(1, 0, {});
    EXPECT_FALSE(sim::parseHex(above, error));
    EXPECT_EQ(error, "line 2: data beyond byte address 0x43FF, outside PIC16 memory");
    std::string across = record(0, 0x43FF, {0x01, 0x02}) + record(1, 0, {});
    EXPECT_FALSE(sim::parseHex(across, error));
    EXPECT_EQ(error, "line 1: data beyond byte address 0x43FF, outside PIC16 memory");
    std::string top = record(4, 0, {0xFF, 0xFF}) + record(0, 0xFFFF, {0x01}) + record(1, 0, {});
    EXPECT_FALSE(sim::parseHex(top, error));
    EXPECT_EQ(error, "line 2: data beyond byte address 0x43FF, outside PIC16 memory");
}

TEST(HexLoader, ErrorsNameTheLine) {
    std::string good = record(0, 0, {0x00, 0x00});
    std::string bad = good;
    bad[bad.size() - 2] = bad[bad.size() - 2] == '0' ? '1' : '0'; // break the checksum
    std::string error;
    EXPECT_FALSE(sim::parseHex(good + bad + record(1, 0, {}), error));
    EXPECT_NE(error.find("line 2"), std::string::npos) << error;
    EXPECT_NE(error.find("checksum"), std::string::npos) << error;
    EXPECT_FALSE(sim::parseHex(good, error));
    EXPECT_NE(error.find("end-of-file"), std::string::npos) << error;
    EXPECT_FALSE(sim::parseHex(":0G00000000\n", error));
    EXPECT_NE(error.find("line 1"), std::string::npos) << error;
    EXPECT_FALSE(sim::parseHex(":0200000000\n", error));
    EXPECT_NE(error.find("length"), std::string::npos) << error;
}

TEST(HexLoader, RefusesWhatIsNotARegularFileBeforeOpeningIt) {
    TempDir dir;
    std::filesystem::path fifo = dir.path() / "fifo.hex";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", dir.path() / "zero.hex");
    std::string error;
    // Opening the FIFO for reading would block until a writer came.
    EXPECT_FALSE(sim::readHex(fifo, error));
    EXPECT_EQ(error, "HEX file " + fifo.string() + " is not a regular file");
    EXPECT_FALSE(sim::readHex(dir.path() / "zero.hex", error));
    EXPECT_NE(error.find("is not a regular file"), std::string::npos) << error;
    EXPECT_FALSE(sim::readHex(dir.path(), error));
    EXPECT_NE(error.find("is not a regular file"), std::string::npos) << error;
    EXPECT_FALSE(sim::readHex(dir.path() / "absent.hex", error));
    EXPECT_EQ(error, "cannot open HEX file " + (dir.path() / "absent.hex").string());
}

TEST(HexLoader, RefusesAFileAbove16MiB) {
    TempDir dir;
    std::filesystem::path big = dir.path() / "big.hex";
    { std::ofstream(big) << ":00000001FF\n"; }
    std::filesystem::resize_file(big, (16u << 20) + 1); // sparse: no disk space used
    std::string error;
    EXPECT_FALSE(sim::readHex(big, error));
    EXPECT_EQ(error, "HEX file " + big.string() + " is larger than 16 MiB");
    std::filesystem::resize_file(big, 16u << 20); // at the limit it is read (and parsed)
    EXPECT_FALSE(sim::readHex(big, error));
    EXPECT_NE(error.find("line 2"), std::string::npos) << error;
}

TEST(DeviceLayout, RefusesADeviceFileThatIsNotARegularFile) {
    TempDir dir;
    ASSERT_EQ(mkfifo((dir.path() / "P16F877.inf").c_str(), 0600), 0);
    std::string error;
    EXPECT_FALSE(sim::loadDeviceLayout(dir.path(), "16F877", error));
    EXPECT_EQ(error,
              "device file " + (dir.path() / "P16F877.inf").string() + " is not a regular file");
}

TEST(DeviceLayout, RefusesADeviceFileAbove1MiB) {
    TempDir dir;
    std::filesystem::path file = dir.path() / "P16F877.inf";
    std::filesystem::copy_file(dataFolder() / "inc" / "P16F877.inf", file);
    std::filesystem::resize_file(file, (1u << 20) + 1);
    std::string error;
    EXPECT_FALSE(sim::loadDeviceLayout(dir.path(), "16F877", error));
    EXPECT_EQ(error, "device file " + file.string() + " is larger than 1 MiB");
}

// The 16F877's device file with one line replaced is refused with the reason.
TEST(DeviceLayout, RefusesValuesNoMidRangePicHas) {
    struct Row {
        const char* from;
        const char* to;
        const char* error; // after "<file>: " or "<file> line N: "
    };
    const Row rows[] = {
        {"CODE_WORDS = 8192", "CODE_WORDS = 0", "CODE_WORDS must be 1 to 8192"},
        {"EEPROM_BYTES = 256", "EEPROM_BYTES = 2147483647", "EEPROM_BYTES must be 0 to 256"},
        {"RAM_BANKS = 4", "RAM_BANKS = 0", "RAM_BANKS must be 1 to 4"},
        {"BANK3_END = 495", "BANK3_END = 4095",
         "the bank limits must be register addresses 0 to 511"},
        {"TRISA = $85", "TRISA = $8FF", "register TRISA is outside the register file (0 to 511)"},
    };
    std::ifstream in(dataFolder() / "inc" / "P16F877.inf");
    std::string original((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (const Row& row : rows) {
        size_t at = original.find(row.from);
        ASSERT_NE(at, std::string::npos) << row.from;
        std::string text = original;
        text.replace(at, std::string(row.from).size(), row.to);
        TempDir dir;
        dir.write("P16F877.inf", text);
        std::string error;
        EXPECT_FALSE(sim::loadDeviceLayout(dir.path(), "16F877", error)) << row.to;
        EXPECT_NE(error.find(row.error), std::string::npos) << row.to << ": " << error;
    }
}

TEST(DeviceLayout, Reads16F877) {
    sim::DeviceLayout l = deviceLayout("16F877");
    EXPECT_EQ(l.name, "16F877");
    EXPECT_EQ(l.codeWords, 8192);
    EXPECT_EQ(l.bankCount, 4);
    EXPECT_EQ(l.eepromBytes, 256);
    EXPECT_EQ(l.bankStart[1], 0xA0);
    EXPECT_EQ(l.bankEnd[3], 0x1EF);
    EXPECT_EQ(l.ramBanks, 4);
    EXPECT_EQ(l.configAddress, 0x2007);
    EXPECT_EQ(l.fuseWdt, 4);
    EXPECT_EQ(l.address("PORTB"), 6);
    EXPECT_EQ(l.address("EECON1"), 0x18C);
    EXPECT_EQ(l.fuses.at("WDTE_OFF"), 0x3FFB);
    EXPECT_TRUE(l.bitNames.count("RB0"));
    EXPECT_FALSE(l.has("GPIO"));
}

TEST(DeviceLayout, Reads16F84AndNamesWithPrefix) {
    sim::DeviceLayout l = deviceLayout("p16f84a");
    EXPECT_EQ(l.name, "16F84A");
    EXPECT_EQ(l.bankCount, 2);
    EXPECT_EQ(l.bankStart[0], 0x0C);
    EXPECT_EQ(l.bankEnd[1], 0);
}

TEST(DeviceLayout, UnknownDeviceIsAnError) {
    std::string error;
    EXPECT_FALSE(sim::loadDeviceLayout(dataFolder() / "inc", "16F9999", error));
    EXPECT_NE(error.find("P16F9999.inf"), std::string::npos) << error;
}

TEST(Scheduler, RunsDueEventsInCycleOrderAndCancels) {
    sim::Scheduler s;
    std::vector<int> order;
    s.schedule(30, [&](uint64_t) { order.push_back(30); });
    int id = s.schedule(10, [&](uint64_t) { order.push_back(10); });
    s.schedule(20, [&](uint64_t c) {
        order.push_back(static_cast<int>(c));
        s.schedule(25, [&](uint64_t) { order.push_back(25); });
    });
    EXPECT_EQ(s.next(), 10u);
    s.cancel(id);
    EXPECT_EQ(s.next(), 20u);
    s.runDue(26);
    EXPECT_EQ(order, (std::vector<int>{20, 25}));
    EXPECT_EQ(s.next(), 30u);
    s.clear();
    EXPECT_EQ(s.next(), UINT64_MAX);
}

struct Recorder : sim::PinListener {
    std::vector<std::pair<bool, uint64_t>> changes;
    void pinChanged(sim::Pin&, bool level, uint64_t cycle) override {
        changes.push_back({level, cycle});
    }
};

TEST(Pins, DrivePriorityPullUpAndOpenDrain) {
    sim::Pin pin("PORTA.4", 0, 4);
    Recorder r;
    pin.addListener(&r);
    EXPECT_FALSE(pin.level());
    pin.setPullUp(true, 1);
    EXPECT_TRUE(pin.level());
    pin.setExternal(false, 2);
    EXPECT_FALSE(pin.level());
    pin.setPicOutput(true, 3);
    EXPECT_TRUE(pin.level());
    EXPECT_TRUE(pin.picDrives());
    pin.setOpenDrain(true);
    pin.setPicOutput(true, 4); // open drain high floats: the part's low wins
    EXPECT_FALSE(pin.picDrives());
    EXPECT_FALSE(pin.level());
    pin.removeListener(&r);
    pin.setExternal(std::nullopt, 5);
    EXPECT_EQ(r.changes.size(), 4u);
    EXPECT_EQ(r.changes[0], std::make_pair(true, uint64_t{1}));
}

// Removes `others` and itself from the pin when first told.
struct Remover : sim::PinListener {
    std::vector<sim::PinListener*> others;
    int told = 0;
    void pinChanged(sim::Pin& pin, bool, uint64_t) override {
        ++told;
        for (sim::PinListener* l : others)
            pin.removeListener(l);
        pin.removeListener(this);
    }
};

TEST(Pins, ListenersRemovedWhileToldAreNotToldAgain) {
    sim::Pin pin("PORTB.0", 1, 0);
    Remover remover;
    Recorder later;
    Recorder kept;
    remover.others = {&later};
    pin.addListener(&remover);
    pin.addListener(&later);
    pin.addListener(&kept);
    pin.setExternal(true, 1);
    EXPECT_EQ(remover.told, 1);
    EXPECT_TRUE(later.changes.empty());
    EXPECT_EQ(kept.changes.size(), 1u);
    pin.setExternal(false, 2);
    EXPECT_EQ(remover.told, 1);
    EXPECT_TRUE(later.changes.empty());
    EXPECT_EQ(kept.changes.size(), 2u);
}

// A write of PORTB that changes RB0 tells only RB0's listeners, once per
// change; re-writing TRISB with the same value tells nobody; pull-ups follow
// RBPU on input pins only.
TEST(Pins, PortWriteTellsOnlyPinsThatChange) {
    // bsf STATUS,RP0; movlw 0xF0; movwf TRISB; bcf STATUS,RP0; movlw 1;
    // xorwf PORTB,f (x4); bsf STATUS,RP0; movlw 0xF0; movwf TRISB;
    // bcf OPTION_REG,RBPU; bcf STATUS,RP0; goto $
    auto pic = loadWords({0x1683, 0x30F0, 0x0086, 0x1283, 0x3001, 0x0686, 0x0686, 0x0686, 0x0686,
                          0x1683, 0x30F0, 0x0086, 0x1381, 0x1283, 0x280E});
    ASSERT_TRUE(pic);
    Recorder rb0, rb1, rb4;
    pic->pin("PORTB.0")->addListener(&rb0);
    pic->pin("PORTB.1")->addListener(&rb1);
    pic->pin("PORTB.4")->addListener(&rb4);
    pic->run(100);
    ASSERT_EQ(rb0.changes.size(), 4u);
    EXPECT_EQ(rb0.changes[0], std::make_pair(true, uint64_t{5}));
    EXPECT_EQ(rb0.changes[1], std::make_pair(false, uint64_t{6}));
    EXPECT_TRUE(rb1.changes.empty());
    ASSERT_EQ(rb4.changes.size(), 1u); // the pull-up of the input RB4
    EXPECT_TRUE(rb4.changes[0].first);
    EXPECT_FALSE(pic->pin("PORTB.0")->level());
    EXPECT_FALSE(pic->pin("PORTB.3")->level()); // an output: no pull-up
    EXPECT_TRUE(pic->pin("PORTB.7")->level());
    pic->pin("PORTB.0")->removeListener(&rb0);
    pic->pin("PORTB.1")->removeListener(&rb1);
    pic->pin("PORTB.4")->removeListener(&rb4);
}

} // namespace
} // namespace zorvel::test

namespace zorvel::test {
namespace {

// Every device file loads and gives a machine whose core registers are where
// the data sheets put them, with pins.
TEST(DeviceLayout, EveryDeviceBuildsAMachine) {
    int devices = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dataFolder() / "inc")) {
        if (entry.path().extension() != ".inf") continue;
        std::string device = entry.path().stem().string().substr(1);
        sim::Pic16 pic(deviceLayout(device));
        EXPECT_EQ(pic.status(), 0x18) << device;
        pic.poke(0x04, 0x5A);
        EXPECT_EQ(pic.peek(0x84), 0x5A) << device; // FSR in bank 1
        EXPECT_TRUE(pic.pin("RA0") || pic.pin("GP0")) << device;
        EXPECT_GE(pic.pins().size(), 6u) << device;
        pic.run(100);
        EXPECT_EQ(pic.cycles(), 100u) << device; // blank memory: one-cycle instructions
        ++devices;
    }
    EXPECT_GT(devices, 100);
}

} // namespace
} // namespace zorvel::test
