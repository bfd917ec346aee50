// The library file, line by line: the complete file of a bare program and the
// sections that the device, the settings and the program change.
#include "compiler/driver/file_io.h"
#include "compiler/library/library_writer.h"
#include "support/test_support.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

// Lines written with the escapes "\t" and "\r\n" spelled out, one per text line.
Lines unescape(std::string_view text) {
    Lines out;
    std::string line;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') {
            out.push_back(line);
            line.clear();
        } else if (text.substr(i, 2) == "\\t") {
            line += '\t';
            ++i;
        } else if (text.substr(i, 4) == "\\r\\n") {
            line += "\r\n";
            i += 3;
        } else {
            line += text[i];
        }
    }
    if (!line.empty()) out.push_back(line);
    return out;
}

// The complete library file of "DEVICE 16F84" and nothing else.
constexpr std::string_view kBare16F84 = R"zvl(;*********************************************
;*           Code Produced by the            *
;* ZORVEL Compiler. Version 1.10 *
;*********************************************
\tLIST  P=16F84 , w=2, x=on, r=DEC
\t#include "P16F84.zvi"
XTAL = 4
RAM_BANKS = 1
BANK0_START = 12
BANK0_END = 79
p@b=0
c@s=2
s@b\tmacro v@r
\tif((v@r&384)==0)
\tif(p@b==1)
\tbcf 3,5
\tendif
\tif(p@b==2)
\tbcf 3,6
\tendif
\tif(p@b==3)
\tbcf 3,5
\tbcf 3,6
\tendif
p@b=0
\tendif
\tif((v@r&384)==128)
\tif(p@b==0)
\tbsf 3,5
\tendif
\tif(p@b==2)
\tbsf 3,5
\tbcf 3,6
\tendif
\tif(p@b==3)
\tbcf 3,6
\tendif
p@b=1
\tendif
\tif((v@r&384)==256)
\tif(p@b==0)
\tbsf 3,6
\tendif
\tif(p@b==1)
\tbcf 3,5
\tbsf 3,6
\tendif
\tif(p@b==3)
\tbcf 3,5
\tendif
p@b=2
\tendif
\tif((v@r&384)==384)
\tif(p@b==0)
\tbsf 3,5
\tbsf 3,6
\tendif
\tif(p@b==1)
\tbsf 3,6
\tendif
\tif(p@b==2)
\tbsf 3,5
\tendif
p@b=3
\tendif
\tendm
r@b\tmacro
\tif((p@b&1)!=0)
\tbcf 3,5
\tendif
\tif((p@b&2)!=0)
\tbcf 3,6
\tendif
p@b=0
\tendm
mov@fw\tmacro bytein\r\n\ts@b bytein\r\n\tmovf bytein,w\r\n\tendm
mov@ff\tmacro bytein\r\n\ts@b bytein\r\n\tmovf bytein,f\r\n\tendm
mov@wf\tmacro bytein\r\n\ts@b bytein\r\n\tmovwf bytein\r\n\tendm
mov@lf\tmacro numin,byteout\r\n\tmovlw numin\r\n\tmov@wf byteout\r\n\tendm
clr@f\tmacro bytein\r\n\ts@b bytein\r\n\tclrf bytein\r\n\tendm
addwf@f\tmacro bytein\r\n\ts@b bytein\r\n\taddwf bytein,f\r\n\tendm
addwf@w\tmacro bytein\r\n\ts@b bytein\r\n\taddwf bytein,w\r\n\tendm
subwf@f\tmacro bytein\r\n\ts@b bytein\r\n\tsubwf bytein,f\r\n\tendm
subwf@w\tmacro bytein\r\n\ts@b bytein\r\n\tsubwf bytein,w\r\n\tendm
incf@f\tmacro bytein\r\n\ts@b bytein\r\n\tincf bytein,f\r\n\tendm
incf@w\tmacro bytein\r\n\ts@b bytein\r\n\tincf bytein,w\r\n\tendm
decf@f\tmacro bytein\r\n\ts@b bytein\r\n\tdecf bytein,f\r\n\tendm
decf@w\tmacro bytein\r\n\ts@b bytein\r\n\tdecf bytein,w\r\n\tendm
andwf@f\tmacro bytein\r\n\ts@b bytein\r\n\tandwf bytein,f\r\n\tendm
andwf@w\tmacro bytein\r\n\ts@b bytein\r\n\tandwf bytein,w\r\n\tendm
comf@f\tmacro bytein\r\n\ts@b bytein\r\n\tcomf bytein,f\r\n\tendm
comf@w\tmacro bytein\r\n\ts@b bytein\r\n\tcomf bytein,w\r\n\tendm
xorwf@f\tmacro bytein\r\n\ts@b bytein\r\n\txorwf bytein,f\r\n\tendm
xorwf@w\tmacro bytein\r\n\ts@b bytein\r\n\txorwf bytein,w\r\n\tendm
iorwf@f\tmacro bytein\r\n\ts@b bytein\r\n\tiorwf bytein,f\r\n\tendm
iorwf@w\tmacro bytein\r\n\ts@b bytein\r\n\tiorwf bytein,w\r\n\tendm
swapf@f\tmacro bytein\r\n\ts@b bytein\r\n\tswapf bytein,f\r\n\tendm
swapf@w\tmacro bytein\r\n\ts@b bytein\r\n\tswapf bytein,w\r\n\tendm
rrf@f\tmacro bytein\r\n\ts@b bytein\r\n\trrf bytein,f\r\n\tendm
rrf@w\tmacro bytein\r\n\ts@b bytein\r\n\trrf bytein,w\r\n\tendm
rlf@f\tmacro bytein\r\n\ts@b bytein\r\n\trlf bytein,f\r\n\tendm
rlf@w\tmacro bytein\r\n\ts@b bytein\r\n\trlf bytein,w\r\n\tendm
set@bit\tmacro varin,bitin\r\n\ts@b varin\r\n\tbsf  varin,bitin\r\n\tendm
clr@bit\tmacro varin,bitin\r\n\ts@b varin\r\n\tbcf varin,bitin\r\n\tendm
btf@sc\tmacro varin,bitin\r\n\ts@b varin\r\n\tbtfsc varin,bitin\r\n\tendm
btf@ss\tmacro varin,bitin\r\n\ts@b varin\r\n\tbtfss varin,bitin\r\n\tendm
incfsz@w macro bytein\r\n\ts@b bytein\r\n\tincfsz bytein,w\r\n\tendm
incfsz@f macro bytein\r\n\ts@b bytein\r\n\tincfsz bytein,f\r\n\tendm
decfsz@w macro bytein\r\n\ts@b bytein\r\n\tdecfsz bytein,w\r\n\tendm
decfsz@f macro bytein\r\n\ts@b bytein\r\n\tdecfsz bytein,f\r\n\tendm
bc@f\tmacro varin,bitin\r\n\ts@b varin\r\n\tbcf varin,bitin\r\n\tendm
bs@f\tmacro varin,bitin\r\n\ts@b varin\r\n\tbsf varin,bitin\r\n\tendm
jump\tmacro dest\r\n\tgoto dest\r\n\tendm
wreg_byte macro byteout
\tmov@wf byteout
\tendm
wreg_bit macro varout,bitout
\ts@b varout
\tandlw 1
\tskpnz
\tbcf varout,bitout
\tskpz
\tbsf varout,bitout
\tendm
wreg_word macro wordout
\tmov@wf wordout
\tclr@f wordout+1
\tendm
byte_wreg macro bytein
\tmov@fw bytein
\tendm
num_wreg macro numin
\tmovlw low numin
\tendm
num_byte macro numin,byteout
\tif(low numin==0)
\tclr@f byteout
\telse
\tmovlw low numin
\tmov@wf byteout
\tendif
\tendm
num_bit macro numin,varout,bitout
\tif((numin&1)==1)
\tbs@f varout,bitout
\telse
\tbc@f varout,bitout
\tendif
\tendm
num_word macro numin,wordout
\tif(low numin==0)
\tclr@f wordout
\telse
\tmovlw low numin
\tmov@wf wordout
\tendif
\tif(high numin==0)
\tclr@f wordout+1
\telse
\tmovlw high numin
\tmov@wf wordout+1
\tendif
\tendm
bit_wreg macro varin,bitin
\tclrw
\tbtf@sc varin,bitin
\tmovlw 1
\tendm
bit_byte macro varin,bitin,byteout
\tclrw
\tbtf@sc varin,bitin
\tmovlw 1
\tmov@wf byteout
\tendm
bit_bit macro varin,bitin,varout,bitout
\tif((varin&65408)==(varout&65408))
\ts@b varout
\tbtf@sc varin,bitin
\tbsf varout,bitout
\tbtf@ss varin,bitin
\tbcf varout,bitout
\telse
\tclrdc
\tbtf@sc varin,bitin
\tsetdc
\ts@b varout
\tskpndc
\tbsf varout,bitout
\tskpdc
\tbcf varout,bitout
\tendif
\tendm
bit_word macro varin,bitin,wordout
\tclrw
\tbtf@sc varin,bitin
\tmovlw 1
\tmov@wf wordout
\tclr@f wordout+1
\tendm
word_wreg macro wordin
\tmov@fw wordin
\tendm
word_byte macro wordin,byteout
\tmov@fw wordin
\tmov@wf byteout
\tendm
word_bit macro wordin,varout,bitout
\tif((wordin&65408)==(varout&65408))
\tbtf@sc wordin,0
\tbsf varout,bitout
\tbtf@ss wordin,0
\tbcf varout,bitout
\telse
\trrf@w wordin
\ts@b varout
\tskpnc
\tbsf varout,bitout
\tskpc
\tbcf varout,bitout
\tendif
\tendm
word_word macro wordin,wordout
\tmov@fw wordin+1
\tmov@wf wordout+1
\tmov@fw wordin
\tmov@wf wordout
\tendm
byte_byte macro bytein,byteout
\tmov@fw bytein
\tmov@wf byteout
\tendm
byte_word macro bytein,wordout
\tmov@fw bytein
\tmov@wf wordout
\tclr@f wordout+1
\tendm
byte_bit macro bytein,varout,bitout
\tif((bytein&65408)==(varout&65408))
\tbtf@sc bytein,0
\tbsf varout,bitout
\tbtf@ss bytein,0
\tbcf varout,bitout
\telse
\trrf@w bytein
\ts@b varout
\tskpnc
\tbsf varout,bitout
\tskpc
\tbcf varout,bitout
\tendif
\tendm
f@c\tmacro dest
\tif((p@b&1)!=0)
\tbcf 3,5
\tendif
\tif((p@b&2)!=0)
\tbcf 3,6
\tendif
p@b=0
\tif(dest<1)
\tif(c@s>=4)
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\telse
\tif(dest>$)
\tif(c@s>=4)
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\telse
\tif(c@s>=4)
\tif((dest&6144)==0)
\tclrf 10
\telse
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\tendif
\tendif
\tendif
\tendif
\tcall dest
\tendm
f@g\tmacro dest
\tif($==dest)
\tclrwdt
\tendif
\tif((p@b&1)!=0)
\tbcf 3,5
\tendif
\tif((p@b&2)!=0)
\tbcf 3,6
\tendif
p@b=0
\tif(dest<1)
\tif(c@s>=4)
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\telse
\tif(dest>$)
\tif(c@s>=4)
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\telse
\tif(c@s>=4)
\tif((dest&6144)==0)
\tclrf 10
\telse
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\tendif
\tendif
\tendif
\tendif
\tgoto dest
\tendm
t@g\tmacro cst,v@r,bitin,dest
\tif(dest==$)
\tclrwdt
\tendif
\tif(c@s>=4)
\tif((dest&2048)==0)
\tbcf 10,3
\telse
\tbsf 10,3
\tendif
\tendif
\tif(c@s==8)
\tif((dest&4096)==0)
\tbcf 10,4
\telse
\tbsf 10,4
\tendif
\tendif
\tif((v@r&65408)!=0)
\ts@b v@r
\tclrdc
\tif(cst==0)
\tbtfss v@r,bitin
\telse
\tbtfsc v@r,bitin
\tendif
\tsetdc
\tif((p@b&1)!=0)
\tbcf 3,5
\tendif
\tif((p@b&2)!=0)
\tbcf 3,6
\tendif
p@b=0
\tskpndc
\telse
\tif((p@b&1)!=0)
\tbcf 3,5
\tendif
\tif((p@b&2)!=0)
\tbcf 3,6
\tendif
p@b=0
\tif(cst==0)
\tbtfss v@r,bitin
\telse
\tbtfsc v@r,bitin
\tendif
\tendif
\tgoto dest
\tendm
return_wreg macro
\tifdef return_var
\tif(return_type==0)
\twreg_byte return_var
\tendif
\tif(return_type==1)
\twreg_word return_var
\tendif
\tif(return_type==2)
\twreg_bit return_var,return_bitnum
\tendif
\tendif
\tendm
return_byte macro bytein
\tifdef return_var
\tif(return_type==0)
\tbyte_byte bytein,return_var
\tendif
\tif(return_type==1)
\tbyte_word bytein,return_var
\tendif
\tif(return_type==2)
\tbyte_bit bytein,return_var,return_bitnum
\tendif
\tendif
\tendm
return_word macro wordin
\tifdef return_var
\tif(return_type==0)
\tword_byte wordin,return_var
\tendif
\tif(return_type==1)
\tword_word wordin,return_var
\tendif
\tif(return_type==2)
\tword_bit wordin,return_var,return_bitnum
\tendif
\tendif
\tendm
return_bit macro varin,bitin
\tifdef return_var
\tif(return_type==0)
\tbit_byte varin,bitin,return_var
\tendif
\tif(return_type==1)
\tbit_word varin,bitin,return_var
\tendif
\tif(return_type==2)
\tbit_bit varin,bitin,return_var,return_bitnum
\tendif
\tendif
\tendm
GEN Equ 12
GENH Equ 13
GEN2 Equ 14
GEN2H Equ 15
GEN3 Equ 16
GEN3H Equ 17
GEN4 Equ 18
GEN4H Equ 19
PP0 Equ 20
PP0H Equ 21
PP1 Equ 22
PP1H Equ 23
PP2 Equ 24
PP2H Equ 25
PP3 Equ 26
PP3H Equ 27
PP4 Equ 28
PP4H Equ 29
PP5 Equ 30
PP5H Equ 31
PP6 Equ 32
PP6H Equ 33
PP7 Equ 34
PP7H Equ 35
GPR Equ 36
BPF Equ 37
BPFH Equ 38
\torg 0
\tclrwdt
\tclrf 37
\tclrf 10
\tgoto Start@
rsout@
\tif($>=800h)
\tERROR "Library has exceeded page 0."
\tendif
Start@
)zvl";

// Compiles `source` and builds its library file.
struct Library {
    CompileResult result;
    Lines lines;
};

Library libraryOf(const std::string& source) {
    Library lib{compileSource(source), {}};
    lib.lines = libraryLines(*lib.result.compilation);
    return lib;
}

Compilation& compilationOf(Library& lib) {
    return *lib.result.compilation;
}

// The lines from the first line equal to `first` up to and including the
// first line equal to `last` after it; empty when either is missing.
Lines section(const Lines& lines, const std::string& first, const std::string& last) {
    auto begin = std::find(lines.begin(), lines.end(), first);
    if (begin == lines.end()) return {};
    auto end = std::find(begin, lines.end(), last);
    if (end == lines.end()) return {};
    return Lines(begin, end + 1);
}

// The lines from `first` to the end of the file.
Lines tail(const Lines& lines, const std::string& first) {
    auto begin = std::find(lines.begin(), lines.end(), first);
    return Lines(begin, lines.end());
}

bool contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(LibraryWriter, BareProgramComplete) {
    Library lib = libraryOf("DEVICE 16F84\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    Lines expected = unescape(kBare16F84);
    ASSERT_EQ(lib.lines.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(lib.lines[i], expected[i]) << "line " << i + 1;
}

// The equates must name the addresses the symbol table gave the system
// variables, since the prelude writes numbers and the program names.
void expectEquatesMatchSymbols(Compilation& c, const Lines& lines) {
    for (const std::string& line : lines) {
        size_t equ = line.find(" Equ ");
        if (equ == std::string::npos) continue;
        std::string name = line.substr(0, equ);
        const SymbolEntry* entry = c.symbols.find(name);
        ASSERT_NE(entry, nullptr) << name;
        EXPECT_EQ(line.substr(equ + 5), std::to_string(entry->address)) << name;
    }
}

TEST(LibraryWriter, EquatesAgreeWithSymbolTable) {
    for (const char* device : {"16F84", "16F628A", "16F877", "12F675"}) {
        Library plain = libraryOf(std::string("DEVICE ") + device + "\n");
        expectEquatesMatchSymbols(compilationOf(plain), plain.lines);
        Library handler = libraryOf(std::string("DEVICE ") + device + "\nON_INTERRUPT isr\nisr:\n");
        ASSERT_EQ(handler.result.errors, 0) << testing::PrintToString(handler.result.messages);
        expectEquatesMatchSymbols(compilationOf(handler), handler.lines);
    }
}

TEST(LibraryWriter, InterruptHandlerShiftsEquatesAndAddsVector) {
    Library lib = libraryOf("DEVICE 16F877\nON_INTERRUPT isr\nisr:\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    EXPECT_EQ(
        section(lib.lines, "WSAVE Equ 32", "GEN2 Equ 38"),
        (Lines{"WSAVE Equ 32", "SSAVE Equ 33", "PSAVE Equ 34", "FSRSAVE Equ 35", "WSAVE1 Equ 160",
               "WSAVE2 Equ 288", "WSAVE3 Equ 416", "GEN Equ 36", "GENH Equ 37", "GEN2 Equ 38"}));
    EXPECT_EQ(section(lib.lines, "BPFH Equ 62", "rsout@"),
              (Lines{"BPFH Equ 62", "\torg 0", "\tclrwdt", "\tclrf 61", "\tclrf 10",
                     "\tgoto Start@", "\torg 4", "\tgoto ISR", "rsout@"}));

    // A one-bank device has no WSAVE1..3; the system variables still move by four.
    Library small = libraryOf("DEVICE 16F84\nON_INTERRUPT isr\nisr:\n");
    EXPECT_EQ(section(small.lines, "WSAVE Equ 12", "GENH Equ 17"),
              (Lines{"WSAVE Equ 12", "SSAVE Equ 13", "PSAVE Equ 14", "FSRSAVE Equ 15", "GEN Equ 16",
                     "GENH Equ 17"}));
    EXPECT_TRUE(contains(small.lines, "BPFH Equ 42"));

    // Two banks (16F873A) give WSAVE1 only; three (16F628A) WSAVE1 and WSAVE2.
    Library two = libraryOf("DEVICE 16F873A\nON_INTERRUPT isr\nisr:\n");
    EXPECT_EQ(section(two.lines, "FSRSAVE Equ 35", "GEN Equ 36"),
              (Lines{"FSRSAVE Equ 35", "WSAVE1 Equ 160", "GEN Equ 36"}));
    Library three = libraryOf("DEVICE 16F628A\nON_INTERRUPT isr\nisr:\n");
    EXPECT_EQ(section(three.lines, "FSRSAVE Equ 35", "GEN Equ 36"),
              (Lines{"FSRSAVE Equ 35", "WSAVE1 Equ 160", "WSAVE2 Equ 288", "GEN Equ 36"}));
}

TEST(LibraryWriter, ContextMacrosFollowBankReset) {
    Library lib = libraryOf("DEVICE 16F84\nCONTEXT SAVE\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    Lines expected = {"r@b\tmacro",       "\tif((p@b&1)!=0)", "\tbcf 3,5",       "\tendif",
                      "\tif((p@b&2)!=0)", "\tbcf 3,6",        "\tendif",         "p@b=0",
                      "\tendm",           "consave \tmacro",  "\tmovwf wsave",   "\tmovfw 3",
                      "\tclrf 3",         "\tmovwf ssave",    "\tmovfw 10",      "\tmovwf psave",
                      "\tclrf 10",        "\tmovfw 4",        "\tmovwf fsrsave", "\tendm",
                      "conres \tmacro",   "\tmovfw fsrsave",  "\tmovwf 4",       "\tmovfw psave",
                      "\tmovwf 10",       "\tmovfw ssave",    "\tmovwf 3",       "\tswapf wsave,f",
                      "\tswapf wsave,w",  "\tretfie",         "\tendm"};
    auto first = std::find(lib.lines.begin(), lib.lines.end(), "r@b\tmacro");
    ASSERT_GT(lib.lines.end() - first, static_cast<long>(expected.size()));
    EXPECT_EQ(Lines(first, first + static_cast<long>(expected.size())), expected);
    EXPECT_TRUE(first[static_cast<long>(expected.size())].starts_with("mov@fw\tmacro bytein"));

    Library without = libraryOf("DEVICE 16F84\n");
    EXPECT_FALSE(contains(without.lines, "consave \tmacro"));
    EXPECT_FALSE(contains(without.lines, "conres \tmacro"));
}

TEST(LibraryWriter, JumpTableMacroFollowsJump) {
    Library lib = libraryOf("DEVICE 16F84\n");
    compilationOf(lib).runtime.jumpTableUsed = true;
    Lines lines = libraryLines(compilationOf(lib));
    EXPECT_EQ(
        section(lines, "jump\tmacro dest\r\n\tgoto dest\r\n\tendm", "wreg_byte macro byteout"),
        (Lines{"jump\tmacro dest\r\n\tgoto dest\r\n\tendm", "s@o\tmacro zsize", "\tlocal dest",
               "\tif($ >> 8) != (($ + zsize) >> 8)", "\tgoto dest", "\torg (($ + 255) & 65280)",
               "dest", "\tendif", "\taddwf PCL,F", "\tendm", "wreg_byte macro byteout"}));
    EXPECT_FALSE(contains(lib.lines, "s@o\tmacro zsize"));
}

TEST(LibraryWriter, ConfigLines) {
    Library lib = libraryOf("DEVICE 16F84\nCONFIG XT_OSC, WDT_OFF, PWRTE_ON\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    // CONFIG_REQ starts in column one: gpasm takes assignments only there.
    EXPECT_EQ(Lines(lib.lines.begin() + 3, lib.lines.begin() + 7),
              (Lines{";*********************************************", "CONFIG_REQ=1",
                     "\tLIST  P=16F84 , w=2, x=on, r=DEC", "\t#include \"P16F84.zvi\""}));
    EXPECT_EQ(section(lib.lines, "p@b=0", "s@b\tmacro v@r"),
              (Lines{"p@b=0", "c@s=2", "\t__CONFIG XT_OSC&WDT_OFF&PWRTE_ON ", "s@b\tmacro v@r"}));
}

TEST(LibraryWriter, WatchdogOffMakesEveryFillerNop) {
    Library lib = libraryOf("DEVICE 16F84\nCONFIG XT_OSC, WDT_OFF\n");
    Compilation& c = compilationOf(lib);
    c.runtime.need[73] = true;
    Lines lines = libraryLines(c);
    EXPECT_FALSE(contains(lines, "\tclrwdt"));
    EXPECT_EQ(section(lines, "f@g\tmacro dest", "\tendif"),
              (Lines{"f@g\tmacro dest", "\tif($==dest)", "\tnop", "\tendif"}));
    EXPECT_EQ(section(lines, "t@g\tmacro cst,v@r,bitin,dest", "\tendif"),
              (Lines{"t@g\tmacro cst,v@r,bitin,dest", "\tif(dest==$)", "\tnop", "\tendif"}));
    EXPECT_EQ(section(lines, "\torg 0", "\tgoto Start@"),
              (Lines{"\torg 0", "\tnop", "\tclrf 37", "\tclrf 10", "\tgoto Start@"}));
    EXPECT_EQ(section(lines, "i@nt\tbcf 3,7", "\treturn"),
              (Lines{"i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tnop", "\treturn"}));
    // With the watchdog on the same four places hold clrwdt.
    Library on = libraryOf("DEVICE 16F84\n");
    compilationOf(on).runtime.need[73] = true;
    Lines onLines = libraryLines(compilationOf(on));
    EXPECT_EQ(std::count(onLines.begin(), onLines.end(), "\tclrwdt"), 4);
    EXPECT_FALSE(contains(onLines, "\tnop"));
}

TEST(LibraryWriter, EepromDataAfterEquates) {
    Library lib = libraryOf("DEVICE 16F84\n");
    Compilation& c = compilationOf(lib);
    c.eeprom.present = true;
    c.eeprom.values = {1, -5, 300, -2147483647 - 1};
    EXPECT_EQ(section(libraryLines(c), "BPFH Equ 38", "\torg 0"),
              (Lines{"BPFH Equ 38", "\tOrg 8448", "\tDE 1", "\tDE -5", "\tDE 300",
                     "\tDE -2147483648", "\torg 0"}));
    // Values without the present flag write nothing.
    c.eeprom.present = false;
    EXPECT_EQ(section(libraryLines(c), "BPFH Equ 38", "\torg 0"),
              (Lines{"BPFH Equ 38", "\torg 0"}));
}

TEST(LibraryWriter, BootloaderOffLeavesPlainResetVector) {
    Library lib = libraryOf("DEVICE 16F84\nDECLARE BOOTLOADER OFF\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    EXPECT_EQ(section(lib.lines, "BPFH Equ 38", "rsout@"),
              (Lines{"BPFH Equ 38", "\torg 0", "\tgoto Start@", "rsout@"}));
}

std::string codeSizeLine(const Lines& lines) {
    for (const std::string& line : lines)
        if (line.starts_with("c@s=")) return line;
    return "(none)";
}

TEST(LibraryWriter, CodeSizeClasses) {
    EXPECT_EQ(codeSizeLine(libraryOf("DEVICE 16F84\n").lines), "c@s=2");
    EXPECT_EQ(codeSizeLine(libraryOf("DEVICE 16F873A\n").lines), "c@s=4");
    EXPECT_EQ(codeSizeLine(libraryOf("DEVICE 16F877\n").lines), "c@s=8");
    Library lib = libraryOf("DEVICE 16F84\n");
    DeviceInfo& info = compilationOf(lib).device.info;
    info.field[2] = 4;
    EXPECT_EQ(codeSizeLine(libraryLines(compilationOf(lib))), "c@s=8");
    for (int other : {0, 5, -1}) {
        info.field[2] = other;
        Lines lines = libraryLines(compilationOf(lib));
        EXPECT_EQ(codeSizeLine(lines), "(none)") << other;
        EXPECT_EQ(section(lines, "p@b=0", "s@b\tmacro v@r"), (Lines{"p@b=0", "s@b\tmacro v@r"}));
    }
}

TEST(LibraryWriter, BankConstantsOnlyForExistingBanks) {
    EXPECT_EQ(section(libraryOf("DEVICE 16F877\n").lines, "XTAL = 4", "p@b=0"),
              (Lines{"XTAL = 4", "RAM_BANKS = 4", "BANK0_START = 32", "BANK0_END = 127",
                     "BANK1_START = 160", "BANK1_END = 239", "BANK2_START = 272", "BANK2_END = 367",
                     "BANK3_START = 400", "BANK3_END = 495", "p@b=0"}));
    EXPECT_EQ(section(libraryOf("DEVICE 16F628A\n").lines, "XTAL = 4", "p@b=0"),
              (Lines{"XTAL = 4", "RAM_BANKS = 3", "BANK0_START = 32", "BANK0_END = 127",
                     "BANK1_START = 160", "BANK1_END = 239", "BANK2_START = 288", "BANK2_END = 335",
                     "p@b=0"}));
    // A bank is left out by its start address alone, whatever its end says.
    Library lib = libraryOf("DEVICE 16F877\n");
    DeviceInfo& info = compilationOf(lib).device.info;
    info.field[8 + 2 * 2] = 0; // bank 2 start
    Lines lines = libraryLines(compilationOf(lib));
    EXPECT_FALSE(contains(lines, "BANK2_START = 0"));
    EXPECT_FALSE(contains(lines, "BANK2_END = 367"));
    EXPECT_TRUE(contains(lines, "BANK3_START = 400"));
}

TEST(LibraryWriter, CrystalLine) {
    Library lib = libraryOf("DEVICE 16F84\nDECLARE XTAL 20\n");
    ASSERT_EQ(lib.result.errors, 0) << testing::PrintToString(lib.result.messages);
    EXPECT_TRUE(contains(lib.lines, "XTAL = 20"));
    EXPECT_FALSE(contains(lib.lines, "XTAL = 4"));
}

TEST(LibraryWriter, OscillatorCalibration) {
    Library small = libraryOf("DEVICE 12F675\nSET_OSCCAL\n");
    ASSERT_EQ(small.result.errors, 0) << testing::PrintToString(small.result.messages);
    EXPECT_EQ(tail(small.lines, "Start@"),
              (Lines{"Start@", "\tcall 03FFh", "\tbsf 3,5", "\tmovwf OSCCAL", "\tbcf 3,5"}));
    Library large = libraryOf("DEVICE 12C672\nSET_OSCCAL\n");
    ASSERT_EQ(large.result.errors, 0) << testing::PrintToString(large.result.messages);
    EXPECT_EQ(tail(large.lines, "Start@"),
              (Lines{"Start@", "\tcall 07FFh", "\tbsf 3,5", "\tmovwf OSCCAL", "\tbcf 3,5"}));
    Library none = libraryOf("DEVICE 12F675\n");
    EXPECT_EQ(tail(none.lines, "Start@"), (Lines{"Start@"}));
}

TEST(LibraryWriter, OscillatorCalibrationBetweenOneAndTwoKWordsWritesNothing) {
    // A home folder whose 12F675 definition claims 1536 words of program memory.
    TempDir home;
    std::string inf = *readFile(dataFolder() / "inc" / "P12F675.inf");
    size_t at = inf.find("CODE_WORDS = 1024");
    ASSERT_NE(at, std::string::npos);
    inf.replace(at, 17, "CODE_WORDS = 1536");
    home.write("inc/P12F675.inf", inf);
    TempDir work;
    CompileResult r =
        compileFile(work.write("prog.bas", "DEVICE 12F675\nSET_OSCCAL\n"), home.path());
    ASSERT_EQ(r.errors, 0) << testing::PrintToString(r.messages);
    ASSERT_EQ(r.compilation->device.info.codeWords(), 1536);
    EXPECT_EQ(tail(libraryLines(*r.compilation), "Start@"), (Lines{"Start@"}));
}

TEST(LibraryWriter, CommonExitOnlyWhenMarked) {
    Library lib = libraryOf("DEVICE 16F84\n");
    Compilation& c = compilationOf(lib);
    EXPECT_FALSE(contains(lib.lines, "i@nt\tbcf 3,7"));
    c.runtime.need[73] = true;
    EXPECT_EQ(section(libraryLines(c), "rsout@", "\tif($>=800h)"),
              (Lines{"rsout@", "i@nt\tbcf 3,7", "\tbcf 3,5", "\tbcf 3,6", "\tclrwdt", "\treturn",
                     "\tif($>=800h)"}));
    // Marks of groups without routines yet write nothing and pass nothing
    // on (BUSIN would call busout and i@nt, SHIN i@nt, the shift clock and
    // the bit reverser); rsout@ stays.
    c.runtime = RuntimeState{};
    for (int group : {22, 49})
        c.runtime.need[group] = true;
    EXPECT_EQ(section(libraryLines(c), "\tgoto Start@", "\tif($>=800h)"),
              (Lines{"\tgoto Start@", "rsout@", "\tif($>=800h)"}));
}

TEST(LibraryWriter, StartUpClearsFollowUsedMarks) {
    // No runtime group sets the used marks yet, so they are set here by hand.
    Library lib = libraryOf("DEVICE 12F675\nSET_OSCCAL\n");
    Compilation& c = compilationOf(lib);
    LibraryOutput out;
    out.bpfUsed = true;
    writeStartUp(c, out);
    EXPECT_EQ(out.lines, (Lines{"Start@", "\tclrf 57", "\tcall 03FFh", "\tbsf 3,5",
                                "\tmovwf OSCCAL", "\tbcf 3,5"}));
    LibraryOutput both;
    both.bpfUsed = both.bpfhUsed = true;
    writeStartUp(c, both);
    EXPECT_EQ(both.lines, (Lines{"Start@", "\tclrf 57", "\tclrf 58", "\tcall 03FFh", "\tbsf 3,5",
                                 "\tmovwf OSCCAL", "\tbcf 3,5"}));
    LibraryOutput high;
    high.bpfhUsed = true;
    writeStartUp(c, high);
    EXPECT_EQ(high.lines, (Lines{"Start@", "\tclrf 58", "\tcall 03FFh", "\tbsf 3,5",
                                 "\tmovwf OSCCAL", "\tbcf 3,5"}));
}

std::string libraryFileText(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

TEST(LibraryWriter, WritesFileBesideSource) {
    TempDir dir;
    CompileResult r = compileFile(dir.write("prog.bas", "DEVICE 16F84\n"), dataFolder());
    ASSERT_EQ(r.errors, 0) << testing::PrintToString(r.messages);
    Compilation& c = *r.compilation;
    writeLibraryFile(c);
    EXPECT_TRUE(c.alerts.empty());
    std::optional<std::string> text = readFile(dir.path() / "prog.zvl");
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, libraryFileText(libraryLines(c)));
    EXPECT_TRUE(text->starts_with(";*********************************************\r\n"));
    EXPECT_TRUE(text->ends_with("\r\nStart@\r\n"));
    EXPECT_NE(text->find("mov@fw\tmacro bytein\r\n\ts@b bytein\r\n\tmovf bytein,w\r\n\tendm\r\n"),
              std::string::npos);
}

TEST(LibraryWriter, UnwritableFileAlertsAndWritesNothing) {
    TempDir dir;
    CompileResult r = compileFile(dir.write("prog.bas", "DEVICE 16F84\n"), dataFolder());
    ASSERT_EQ(r.errors, 0) << testing::PrintToString(r.messages);
    Compilation& c = *r.compilation;
    // A folder of the library's name cannot be replaced by the file.
    std::filesystem::remove(dir.path() / "prog.zvl");
    ASSERT_TRUE(std::filesystem::create_directory(dir.path() / "prog.zvl"));
    writeLibraryFile(c);
    EXPECT_EQ(c.alerts, (Lines{"Unable to Create prog.zvl\r\nMake sure it's not Write Protected"}));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "prog.zvl"));
    EXPECT_TRUE(std::filesystem::is_empty(dir.path() / "prog.zvl"));
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        EXPECT_EQ(entry.path().filename().string().find(".tmp"), std::string::npos);

    c.alerts.clear();
    c.ctx.libraryName.clear();
    writeLibraryFile(c);
    EXPECT_EQ(c.alerts, (Lines{"Unable to Create \r\nMake sure it's not Write Protected"}));
}

} // namespace
} // namespace zorvel::test
