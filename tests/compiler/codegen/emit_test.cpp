// The emission layer: the exact line each emitter and transfer helper writes.
#include "compiler/codegen/emit.h"
#include "support/test_support.h"

#include <functional>
#include <gtest/gtest.h>

namespace zorvel {
namespace {

using Lines = std::vector<std::string>;

struct Fixture : test::PassTwo {
    Fixture() {
        c.symbols.add({"COUNT", "COUNT", kKindByte, 32, -1});
        c.symbols.add({"ALIAS", "COUNT", kKindByte, 32, -1});
        c.symbols.add({"OTHER", "OTHER", kKindByte, 33, -1});
        c.symbols.add({"TOTAL", "TOTAL", kKindWord, 40, -1});
        c.symbols.add({"TOTALH", "TOTALH", kKindByte, 41, -1});
        c.symbols.add({"SUM", "SUM", kKindWord, 42, -1});
        c.symbols.add({"SUMH", "SUMH", kKindByte, 43, -1});
        c.symbols.add({"SAME", "TOTAL", kKindWord, 40, -1});
    }
};

struct EmitCase {
    const char* name;
    std::function<void(Compilation&)> emit;
    Lines expected;
};

TEST(Emitters, WriteExactLines) {
    const EmitCase cases[] = {
        {"op0",
         [](Compilation& c) {
             emitOp(c, Op0::Option);
             emitOp(c, Op0::Skpndc);
         },
         {"\tOption", "\tSkpndc"}},
        {"bank reset and return",
         [](Compilation& c) {
             emitOp(c, Op0::BankReset);
             emitReturn(c);
         },
         {"\tR@B", "\tR@B", "\tReturn"}},
        {"op1",
         [](Compilation& c) {
             emitOp(c, Op1::Movlw, "5");
             emitOp(c, Op1::IncfszF, "COUNT");
             emitOp(c, Op1::MovFF, "COUNT");
             emitOp(c, Op1::FarCall, "dl@ms");
             emitOp(c, Op1::Tris, "6");
         },
         {"\tMovlw 5", "\tIncfsz@F COUNT", "\tMov@ff COUNT", "\tF@C dl@ms", "\tTris 6"}},
        {"bits",
         [](Compilation& c) {
             emitBit(c, BitOp::Btfsc, "STATUS", 2);
             emitBit(c, BitOp::BsfBanked, "COUNT", 7);
             emitBit(c, BitOp::BtfssBanked, "COUNT", 0);
         },
         {"\tBtfsc STATUS,2", "\tBs@f COUNT,7", "\tBtf@ss COUNT,0"}},
        {"several operands",
         [](Compilation& c) {
             emitMovLF(c, "10", "COUNT");
             emitWregBit(c, "COUNT", 3);
             emitBitBit(c, "COUNT", 1, "OTHER", 2);
             emitByteBit(c, "TOTAL", "OTHER", 5);
             emitTestAndJump(c, 1, "STATUS", 2, "LOOP");
         },
         {"\tMov@LF 10,COUNT", "\tWreg_Bit COUNT,3", "\tBit_Bit COUNT,1,OTHER,2",
          "\tByte_Bit TOTAL,OTHER,5", "\tT@G 1,STATUS,2,LOOP"}},
        {"label", [](Compilation& c) { emitLabel(c, "I@Lb3"); }, {"I@Lb3 R@B"}},
        {"const to W",
         [](Compilation& c) {
             constToW(c, {"0", 0});
             constToW(c, {"$10", 16});
         },
         {"\tClrw", "\tMovlw $10"}},
        {"const to byte",
         [](Compilation& c) {
             constToByte(c, {"0", 0}, "COUNT");
             constToByte(c, {"7", 7}, "COUNT");
         },
         {"\tClr@F COUNT", "\tMovlw 7", "\tMov@wf COUNT"}},
        {"const to bit",
         [](Compilation& c) {
             constToBit(c, {"3", 3}, "COUNT", 1);
             constToBit(c, {"2", 2}, "COUNT", 1);
         },
         {"\tBs@f COUNT,1", "\tBc@f COUNT,1"}},
        {"const to word",
         [](Compilation& c) { constToWord(c, 300, "TOTAL"); },
         {"\tMovlw 44", "\tMov@wf TOTAL", "\tMovlw 1", "\tMov@wf TOTALH"}},
        {"const zero to word",
         [](Compilation& c) { constToWord(c, 0, "TOTAL"); },
         {"\tClr@F TOTAL", "\tClr@F TOTALH"}},
        {"const 256 to word",
         [](Compilation& c) { constToWord(c, 256, "TOTAL"); },
         {"\tClr@F TOTAL", "\tMovlw 1", "\tMov@wf TOTALH"}},
        {"W to byte and word",
         [](Compilation& c) {
             wToByte(c, "COUNT");
             wToWord(c, "TOTAL");
         },
         {"\tMov@wf COUNT", "\tMov@wf TOTAL", "\tClr@F TOTALH"}},
        {"bit to W, byte, word",
         [](Compilation& c) {
             bitToW(c, "COUNT", 4);
             bitToByte(c, "COUNT", 4, "OTHER");
             bitToWord(c, "COUNT", 4, "TOTAL");
         },
         {"\tClrw", "\tBtf@sc COUNT,4", "\tMovlw 1", "\tClrw", "\tBtf@sc COUNT,4", "\tMovlw 1",
          "\tMov@wf OTHER", "\tClrw", "\tBtf@sc COUNT,4", "\tMovlw 1", "\tMov@wf TOTAL",
          "\tClr@F TOTALH"}},
        {"byte to byte",
         [](Compilation& c) { byteToByte(c, "COUNT", "OTHER"); },
         {"\tMov@fw COUNT", "\tMov@wf OTHER"}},
        {"byte onto itself",
         [](Compilation& c) { byteToByte(c, "COUNT", "COUNT"); },
         {"\tMov@ff COUNT"}},
        {"byte onto its alias",
         [](Compilation& c) { byteToByte(c, "ALIAS", "COUNT"); },
         {"\tMov@ff ALIAS"}},
        {"byte to word",
         [](Compilation& c) { byteToWord(c, "COUNT", "TOTAL"); },
         {"\tMov@fw COUNT", "\tMov@wf TOTAL", "\tClr@F TOTALH"}},
        {"word to byte",
         [](Compilation& c) { wordToByte(c, "TOTAL", "COUNT"); },
         {"\tMov@fw TOTAL", "\tMov@wf COUNT"}},
        {"word to bit",
         [](Compilation& c) { wordToBit(c, "TOTAL", "COUNT", 6); },
         {"\tByte_Bit TOTAL,COUNT,6"}},
        {"word to word",
         [](Compilation& c) { wordToWord(c, "TOTAL", "SUM"); },
         {"\tMov@fw TOTAL", "\tMov@wf SUM", "\tMov@fw TOTALH", "\tMov@wf SUMH"}},
        {"word onto its alias", [](Compilation& c) { wordToWord(c, "SAME", "TOTAL"); }, {}},
        {"W and word to word",
         [](Compilation& c) { wAndWordToWord(c, "TOTAL", "SUM"); },
         {"\tMov@wf SUM", "\tMov@fw TOTALH", "\tMov@wf SUMH"}},
        {"word to word, low byte in W",
         [](Compilation& c) { wordToWordLowInW(c, "TOTAL", "SUM"); },
         {"\tMov@fw TOTALH", "\tMov@wf SUMH", "\tMov@fw TOTAL"}},
    };
    for (const EmitCase& k : cases) {
        Fixture f;
        k.emit(f.c);
        EXPECT_EQ(f.c.asmlist, k.expected) << k.name;
    }
}

TEST(Emitters, ClrwdtFollowsTheWatchdog) {
    Fixture on;
    emitClrwdt(on.c);
    EXPECT_EQ(on.c.asmlist, (Lines{"\tClrwdt"}));
    Fixture off;
    off.c.device.watchdog = false;
    emitClrwdt(off.c);
    EXPECT_TRUE(off.c.asmlist.empty());
}

TEST(Emitters, NothingIsWrittenInPassOne) {
    Fixture f;
    f.c.ctx.pass = 1;
    emitOp(f.c, Op1::Movlw, "1");
    constToWord(f.c, 300, "TOTAL");
    emitLabel(f.c, "X");
    EXPECT_TRUE(f.c.asmlist.empty());
}

TEST(Emitters, LabelCountersIncrementBeforeUse) {
    Fixture f;
    EXPECT_EQ(newLabel(f.c, "I@Lb", LabelCounter::Block), "I@Lb2");
    EXPECT_EQ(newLabel(f.c, "Els@Lb", LabelCounter::Block), "Els@Lb3");
    EXPECT_EQ(newLabel(f.c, "CP@LB", LabelCounter::Compare), "CP@LB2");
    EXPECT_EQ(newLabel(f.c, "N@Lab", LabelCounter::Step), "N@Lab2");
    EXPECT_EQ(newLabel(f.c, "N@Lab", LabelCounter::Step), "N@Lab3");
}

} // namespace
} // namespace zorvel
