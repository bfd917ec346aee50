// HEX files, device files, the scheduler and pins.
#include "sim/core/sim_harness.h"
#include "sim/scheduler.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

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
                       record(4, 0, {0x00, 0x01}) + record(0, 0x0000, {0xAA, 0x00}) +
                       record(1, 0, {});
    std::string error;
    auto hex = sim::parseHex(text, error);
    ASSERT_TRUE(hex) << error;
    EXPECT_EQ(hex->program.at(8), 0x2801);
    EXPECT_EQ(hex->program.at(0x8000), 0x00AA); // byte 0x10000
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
