// The library file with gpasm: a library built by the writer and a main file
// written the way the compiler writes it assemble without errors, and the
// decoded HEX file shows the page and bank bits set before every call, jump
// and access. Also the gpasm behaviour that the emitted text relies on.
#include "compiler/driver/file_io.h"
#include "compiler/library/library_writer.h"
#include "support/test_support.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <sys/wait.h>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

// gpasm on PATH, or an empty path.
fs::path findGpasm() {
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        fs::path candidate = fs::path(dirs.substr(start, end - start)) / "gpasm";
        if (!dirs.substr(start, end - start).empty() && fs::exists(candidate)) return candidate;
        start = end + 1;
    }
    return {};
}

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char ch : text)
        out += ch == '\'' ? std::string("'\\''") : std::string(1, ch);
    return out + "'";
}

struct Assembly {
    int status = -1;
    std::string output; // what gpasm printed
    std::string errors; // the .err file
};

// Runs gpasm in the file's folder as the build does. Without `quiet` the
// .err file holds the error lines; gpasm's -q leaves it empty.
Assembly assemble(const fs::path& file, bool quiet = false) {
    std::string command = "cd " + quoted(file.parent_path().string()) + " && " +
                          quoted(findGpasm().string()) + " -a inhx8m -k -w 2 -i " +
                          (quiet ? "-q " : "") + "-I " + quoted((dataFolder() / "inc").string()) +
                          " " + quoted(file.filename().string()) + " 2>&1";
    Assembly result;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return result;
    std::array<char, 4096> buffer{};
    size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        result.output.append(buffer.data(), count);
    int status = pclose(pipe);
    if (status != -1 && WIFEXITED(status)) result.status = WEXITSTATUS(status);
    fs::path err = file;
    result.errors = readFile(err.replace_extension(".err")).value_or("");
    return result;
}

#define REQUIRE_GPASM()                                                                            \
    if (findGpasm().empty()) GTEST_SKIP() << "gpasm is not on PATH"

// The main file as the compiler writes it: banner, include line, code, END.
std::string mainFileText(const Lines& code) {
    Lines all = {
        ";*********************************************",
        ";*           Code Produced by the            *", ";* ZORVEL Compiler. Version 1.10 *",
        ";*********************************************", "\r\n\t#include \"prog.zvl\" \r\n"};
    all.insert(all.end(), code.begin(), code.end());
    all.push_back("\tEND\r\n");
    std::string text;
    for (size_t i = 0; i < all.size(); ++i)
        text += (i ? "\r\n" : "") + all[i];
    return text;
}

std::string libraryFileText(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\r\n";
    return text;
}

// Writes prog.zvl and prog.asm into `dir`; returns the path of prog.asm.
fs::path writeProgram(const TempDir& dir, const Lines& library, const Lines& code) {
    dir.write("prog.zvl", libraryFileText(library));
    return dir.write("prog.asm", mainFileText(code));
}

// Program memory words by word address, read from an INHX8M file.
struct HexWords {
    std::map<int, int> words;
    std::string error;
};

int hexByte(const std::string& line, size_t at) {
    return std::stoi(line.substr(at, 2), nullptr, 16);
}

HexWords readHex(const fs::path& file) {
    HexWords hex;
    std::optional<std::string> text = readFile(file);
    if (!text) {
        hex.error = "no HEX file";
        return hex;
    }
    for (const std::string& line : splitLines(*text)) {
        if (line.empty()) continue;
        if (line[0] != ':' || line.size() < 11) {
            hex.error = "bad record " + line;
            return hex;
        }
        int count = hexByte(line, 1);
        int address = hexByte(line, 3) * 256 + hexByte(line, 5);
        int type = hexByte(line, 7);
        if (line.size() != static_cast<size_t>(11 + 2 * count)) {
            hex.error = "bad length " + line;
            return hex;
        }
        int sum = 0;
        for (int i = 0; i < count + 5; ++i)
            sum += hexByte(line, 1 + 2 * i);
        if (sum % 256 != 0) {
            hex.error = "bad checksum " + line;
            return hex;
        }
        if (type == 1) break;
        if (type != 0 || count % 2 != 0 || address % 2 != 0) {
            hex.error = "unexpected record " + line;
            return hex;
        }
        for (int i = 0; i < count; i += 2)
            hex.words[(address + i) / 2] =
                hexByte(line, 9 + 2 * i) + 256 * hexByte(line, 11 + 2 * i);
    }
    return hex;
}

// 14-bit opcodes.
bool isCall(int w) {
    return (w >> 11) == 4;
}
bool isGoto(int w) {
    return (w >> 11) == 5;
}
bool isBitSetOrClear(int w) {
    return (w >> 12) == 1 && ((w >> 10) & 3) < 2; // bcf 01 00.., bsf 01 01..
}
bool isBitSet(int w) {
    return (w >> 10) == 5;
}
int bitNumber(int w) {
    return (w >> 7) & 7;
}

// The register a byte- or bit-oriented instruction names, or -1.
int fileOperand(int w) {
    if ((w >> 12) == 1) return w & 0x7F;
    if ((w >> 12) != 0) return -1;
    int sub = (w >> 8) & 0xF;
    if (sub == 0) return (w & 0x80) ? w & 0x7F : -1; // movwf; nop, return and the like
    if (sub == 1 && !(w & 0x80)) return -1;          // clrw
    return w & 0x7F;
}

constexpr int kStatus = 3, kPclath = 10;
constexpr int kClrfPclath = 0x018A, kClrwdt = 0x0064, kNop = 0, kAddwfPcl = 0x0782;

struct Transfer {
    std::string text; // "call 0x340", "goto 0x800"
    bool operator==(const Transfer&) const = default;
};

std::string transferText(bool call, int target) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%s 0x%X", call ? "call" : "goto", target);
    return buffer;
}

void PrintTo(const Transfer& t, std::ostream* os) {
    *os << t.text;
}

// A variable of the main file whose bank is checked at every access.
struct Variable {
    std::string name;
    int address;
};

// Runs through the code from `start` in address order, region by region (a
// gap in the addresses starts a region, entered with bank 0 selected and the
// page bits of its own page), and resolves every call and goto with the page
// bits that bcf/bsf 10,3 / 10,4 and clrf 10 set before it. Every access to a
// checked variable must find its bank selected by bcf/bsf 3,5 / 3,6.
std::vector<Transfer> traceCode(const std::map<int, int>& words, int start,
                                const std::vector<Variable>& variables, bool pagedDevice) {
    std::vector<Transfer> transfers;
    int previous = -2, bank = 0, page = 0;
    for (auto it = words.lower_bound(start); it != words.end() && it->first < 0x2000; ++it) {
        auto [address, w] = *it;
        if (address != previous + 1) {
            bank = 0;
            page = address >> 11;
        }
        previous = address;
        int f = fileOperand(w);
        if (isBitSetOrClear(w) && f == kStatus && (bitNumber(w) == 5 || bitNumber(w) == 6)) {
            int mask = bitNumber(w) == 5 ? 1 : 2;
            bank = isBitSet(w) ? bank | mask : bank & ~mask;
        } else if (isBitSetOrClear(w) && f == kPclath && (bitNumber(w) == 3 || bitNumber(w) == 4)) {
            EXPECT_TRUE(pagedDevice) << "page bit written on a one-page device at " << address;
            int mask = bitNumber(w) == 3 ? 1 : 2;
            page = isBitSet(w) ? page | mask : page & ~mask;
        } else if (w == kClrfPclath) {
            page = 0;
        } else if (isCall(w) || isGoto(w)) {
            transfers.push_back({transferText(isCall(w), (page << 11) | (w & 0x7FF))});
        } else if (f >= 0) {
            for (const Variable& v : variables) {
                if (f != (v.address & 0x7F)) continue;
                EXPECT_EQ(bank, v.address >> 7)
                    << v.name << " accessed at " << address << " with bank " << bank;
            }
        }
    }
    return transfers;
}

// The main file's code and the calls and jumps it should assemble to.
struct MainCode {
    Lines lines;
    std::vector<Transfer> transfers;

    void add(const std::string& line) { lines.push_back(line); }
    void transfer(const std::string& line, bool call, int target) {
        lines.push_back(line);
        transfers.push_back({transferText(call, target)});
    }
    void org(int address) { lines.push_back("\tOrg " + std::to_string(address)); }
};

// Every macro of the prelude once, on the variables VB1..VB3 and GEN.
void addEveryMacro(MainCode& code) {
    for (const char* line : {"\tMov@fw VB1",          "\tMov@ff VB2",
                             "\tMov@wf VB3",          "\tMov@lf 7,GEN",
                             "\tClr@f VB1",           "\tAddwf@f VB1",
                             "\tAddwf@w VB2",         "\tSubwf@f VB3",
                             "\tSubwf@w GEN",         "\tIncf@f VB1",
                             "\tIncf@w VB2",          "\tDecf@f VB3",
                             "\tDecf@w GEN",          "\tAndwf@f VB1",
                             "\tAndwf@w VB2",         "\tComf@f VB3",
                             "\tComf@w GEN",          "\tXorwf@f VB1",
                             "\tXorwf@w VB2",         "\tIorwf@f VB3",
                             "\tIorwf@w GEN",         "\tSwapf@f VB1",
                             "\tSwapf@w VB2",         "\tRrf@f VB3",
                             "\tRrf@w GEN",           "\tRlf@f VB1",
                             "\tRlf@w VB2",           "\tSet@bit VB3,1",
                             "\tClr@bit GEN,2",       "\tBtf@sc VB1,3",
                             "\tBtf@ss VB2,4",        "\tIncfsz@w VB3",
                             "\tIncfsz@f GEN",        "\tDecfsz@w VB1",
                             "\tDecfsz@f VB2",        "\tBc@f VB3,5",
                             "\tBs@f GEN,6",          "\tR@b",
                             "\tWreg_byte VB1",       "\tWreg_bit VB2,1",
                             "\tWreg_word VB3",       "\tByte_wreg GEN",
                             "\tNum_wreg 300",        "\tNum_byte 0,VB1",
                             "\tNum_byte 5,VB1",      "\tNum_bit 1,VB2,3",
                             "\tNum_bit 0,VB2,3",     "\tNum_word 256,VB3",
                             "\tNum_word 1,VB3",      "\tBit_wreg VB1,1",
                             "\tBit_byte VB1,1,VB2",  "\tBit_bit VB1,1,VB1,2",
                             "\tBit_bit VB1,1,VB2,2", "\tBit_word GEN,3,VB3",
                             "\tWord_wreg VB1",       "\tWord_byte VB1,VB2",
                             "\tWord_bit VB1,VB1,4",  "\tWord_bit VB1,VB3,4",
                             "\tWord_word VB2,VB3",   "\tByte_byte VB2,GEN",
                             "\tByte_word GEN,VB1",   "\tByte_bit VB2,VB2,0",
                             "\tByte_bit VB2,GEN,0",  "return_var = VB1",
                             "return_type = 2",       "return_bitnum = 3",
                             "\tReturn_wreg",         "\tReturn_byte GEN",
                             "\tReturn_word PP0",     "\tReturn_bit GEN,1",
                             "\tMov@lf 1,VB1",        "\tMov@wf PP7H"})
        code.add(line);
}

constexpr int kTable = 0x2FE, kBack = 0x340, kForward = 0x370, kHandler = 0x3A0, kLast = 0x3E0;

// A jump table that crosses a 256-word boundary: s@o jumps over the gap.
void addTable(MainCode& code) {
    code.org(kTable);
    code.add("\tmovlw 1");
    code.transfer("\tS@o 4", false, 0x300);
    for (int i = 1; i <= 4; ++i)
        code.add("\tretlw " + std::to_string(i));
}

void addHandler(MainCode& code) {
    code.org(kHandler);
    code.add("ISR\tConsave");
    code.add("\tConres");
}

// Calls and jumps inside one 2K page: forward and backward, to a label, to
// itself, through T@G on bank-0 and banked registers.
MainCode onePageProgram(bool handler) {
    MainCode code;
    addEveryMacro(code);
    code.transfer("\tT@G 1,VB2,1,fwd", false, kForward);
    code.transfer("\tT@G 0,STATUS,2,fwd", false, kForward);
    code.transfer("\tF@C fwd", true, kForward);
    code.transfer("\tF@G back0", false, kBack);
    addTable(code);
    code.org(kBack);
    code.add("back0\tMov@wf VB1");
    code.transfer("\tF@C back0", true, kBack);
    code.transfer("\tJump back0", false, kBack);
    code.transfer("\tF@G fwd", false, kForward);
    code.org(kForward);
    code.add("fwd\tMov@fw VB3");
    code.transfer("\tF@C back0", true, kBack);
    code.transfer("\tT@G 0,VB2,0,back0", false, kBack);
    code.transfer("\tT@G 1,VB1,7,fwd", false, kForward);
    code.transfer("\tF@G last", false, kLast);
    if (handler) addHandler(code);
    code.org(kLast);
    code.transfer("last\tF@G last", false, kLast);
    return code;
}

// The same across `pages` 2K pages: labels p1.. at the start of pages 1..,
// reached forward and backward from every page.
MainCode pagedProgram(int pages, bool handler) {
    int last = (pages - 1) * 0x800 + 0x400;
    auto page = [](int i) { return "p" + std::to_string(i); };
    MainCode code;
    addEveryMacro(code);
    code.transfer("\tT@G 1,VB2,1," + page(pages - 1), false, (pages - 1) * 0x800);
    code.transfer("\tT@G 0,STATUS,2,p1", false, 0x800);
    code.transfer("\tF@C p1", true, 0x800);
    code.transfer("\tF@G back0", false, kBack);
    addTable(code);
    code.org(kBack);
    code.add("back0\tMov@wf VB1");
    code.transfer("\tF@C back0", true, kBack);
    code.transfer("\tJump back0", false, kBack);
    code.transfer("\tF@G p1", false, 0x800);
    if (handler) addHandler(code);
    for (int i = 1; i < pages; ++i) {
        code.org(i * 0x800);
        code.add(page(i) + "\tMov@fw VB3");
        code.transfer("\tF@C back0", true, kBack);
        code.transfer("\tF@C " + page(i), true, i * 0x800);
        if (i + 1 < pages) code.transfer("\tT@G 1,VB1,3," + page(i + 1), false, (i + 1) * 0x800);
        if (i > 1) code.transfer("\tT@G 0,VB3,0," + page(i - 1), false, (i - 1) * 0x800);
        if (i > 1) code.transfer("\tF@C " + page(i - 1), true, (i - 1) * 0x800);
        code.add("\tMov@wf VB2");
        code.transfer("\tF@G last", false, last);
    }
    code.org(last);
    code.transfer("last\tF@G last", false, last);
    code.transfer("\tF@C p1", true, 0x800);
    return code;
}

struct DeviceCase {
    std::string source;              // the BASIC program whose library is used
    std::vector<Variable> variables; // VB1, VB2, VB3 (GEN and PP7H are added)
    bool watchdog;                   // the filler is clrwdt
    int configWord;                  // expected at 0x2007, or -1
    std::vector<int> eeprom;         // values put into the library, expected at 0x2100
};

struct Built {
    Assembly assembly;
    HexWords hex;
    std::unique_ptr<Compilation> compilation;
};

// Builds the library of `dc.source` (with the common exit and the jump table
// macro marked, and the EEPROM values), writes it with `code`, assembles.
Built build(const DeviceCase& dc, const MainCode& code, const TempDir& dir) {
    Built built;
    CompileResult r = compileSource(dc.source);
    EXPECT_EQ(r.errors, 0) << testing::PrintToString(r.messages);
    built.compilation = std::move(r.compilation);
    Compilation& c = *built.compilation;
    c.runtime.need[73] = true;
    c.runtime.jumpTableUsed = true;
    if (!dc.eeprom.empty()) {
        c.eeprom.present = true;
        c.eeprom.values.assign(dc.eeprom.begin(), dc.eeprom.end());
    }
    Lines main;
    for (const Variable& v : dc.variables)
        main.push_back(v.name + " Equ " + std::to_string(v.address));
    main.insert(main.end(), code.lines.begin(), code.lines.end());
    fs::path asmFile = writeProgram(dir, libraryLines(c), main);
    built.assembly = assemble(asmFile);
    built.hex = readHex(dir.path() / "prog.hex");
    return built;
}

int addressOf(const Compilation& c, const std::string& name) {
    const SymbolEntry* entry = c.symbols.find(name);
    return entry ? entry->address : -1;
}

void checkDevice(const DeviceCase& dc, bool paged, int pages) {
    bool handler = dc.source.find("ON_INTERRUPT") != std::string::npos;
    MainCode code = paged ? pagedProgram(pages, handler) : onePageProgram(handler);
    TempDir dir;
    Built built = build(dc, code, dir);
    ASSERT_EQ(built.assembly.status, 0) << built.assembly.output << built.assembly.errors;
    EXPECT_EQ(built.assembly.errors.find("Error"), std::string::npos) << built.assembly.errors;
    ASSERT_EQ(built.hex.error, "");
    const std::map<int, int>& words = built.hex.words;
    const Compilation& c = *built.compilation;

    // The reset vector jumps to Start@; the interrupt vector to the handler.
    auto first = std::find_if(words.begin(), words.end(),
                              [](const auto& entry) { return isGoto(entry.second); });
    ASSERT_NE(first, words.end());
    int start = first->second & 0x7FF;
    if (handler) {
        ASSERT_TRUE(words.contains(4));
        EXPECT_EQ(words.at(4), 0x2800 | kHandler);
    }

    std::vector<Variable> variables = dc.variables;
    variables.push_back({"GEN", addressOf(c, "GEN")});
    variables.push_back({"PP7H", addressOf(c, "PP7H")});
    std::vector<Transfer> expected;
    if (c.device.oscCalSmall) expected.push_back({transferText(true, 0x3FF)});
    expected.insert(expected.end(), code.transfers.begin(), code.transfers.end());
    EXPECT_EQ(traceCode(words, start, variables, paged), expected);

    // The table jumps over the boundary to its addwf; the decimal radix makes
    // "Num_wreg 300" a movlw 44; a jump to itself is preceded by the filler.
    EXPECT_EQ(words.at(0x300), kAddwfPcl);
    bool literal300 = std::any_of(words.begin(), words.end(),
                                  [](const auto& entry) { return entry.second == 0x3000 + 44; });
    EXPECT_TRUE(literal300);
    int last = paged ? (pages - 1) * 0x800 + 0x400 : kLast;
    EXPECT_EQ(words.at(last), dc.watchdog ? kClrwdt : kNop);

    if (dc.configWord >= 0) {
        ASSERT_TRUE(words.contains(0x2007));
        EXPECT_EQ(words.at(0x2007), dc.configWord);
    }
    for (size_t i = 0; i < dc.eeprom.size(); ++i) {
        ASSERT_TRUE(words.contains(0x2100 + static_cast<int>(i)));
        EXPECT_EQ(words.at(0x2100 + static_cast<int>(i)), dc.eeprom[i] & 0xFF) << i;
    }
}

TEST(LibraryAssembly, Pic16F84) {
    REQUIRE_GPASM();
    // Config: _XT_OSC 3FFD & _WDT_OFF 3FFB & _PWRTE_ON 3FF7 = 3FF1.
    DeviceCase dc{"DEVICE 16F84\nCONFIG XT_OSC, WDT_OFF, PWRTE_ON\nON_INTERRUPT isr\n"
                  "CONTEXT SAVE\nisr:\n",
                  {{"VB1", 0x86}, {"VB2", 0x85}, {"VB3", 0x40}},
                  false,
                  0x3FF1,
                  {1, -5, 200}};
    checkDevice(dc, false, 1);
}

TEST(LibraryAssembly, Pic16F628A) {
    REQUIRE_GPASM();
    DeviceCase dc{"DEVICE 16F628A\n", {{"VB1", 0xE0}, {"VB2", 0x130}, {"VB3", 0xC8}}, true, -1, {}};
    checkDevice(dc, false, 1);
}

TEST(LibraryAssembly, Pic12F675) {
    REQUIRE_GPASM();
    // Config: _INTRC_OSC_NOCLKOUT 3FFC & _WDT_ON 3FFF & _MCLRE_OFF 3FDF = 3FDC.
    DeviceCase dc{"DEVICE 12F675\nCONFIG INTRC_OSC_NOCLKOUT, WDT_ON, MCLRE_OFF\nSET_OSCCAL\n"
                  "DECLARE BOOTLOADER OFF\n",
                  {{"VB1", 0x85}, {"VB2", 0x9A}, {"VB3", 0x50}},
                  true,
                  0x3FDC,
                  {}};
    checkDevice(dc, false, 1);
}

TEST(LibraryAssembly, Pic16F877PagedCallsAndJumps) {
    REQUIRE_GPASM();
    // Config: _XT_OSC 3FFD & _WDT_OFF 3FFB & _LVP_OFF 3F7F = 3F79.
    DeviceCase dc{"DEVICE 16F877\nCONFIG XT_OSC, WDT_OFF, LVP_OFF\nON_INTERRUPT isr\n"
                  "CONTEXT SAVE\nisr:\n",
                  {{"VB1", 0xC0}, {"VB2", 0x150}, {"VB3", 0x1E0}},
                  false,
                  0x3F79,
                  {}};
    checkDevice(dc, true, 4);
}

TEST(LibraryAssembly, FarCallsToForwardLabelsInEveryCodeSize) {
    REQUIRE_GPASM();
    // c@s=4: two pages, only PCLATH bit 3 is written.
    checkDevice({"DEVICE 16F873A\n", {{"VB1", 0xC0}, {"VB2", 0xB0}, {"VB3", 0x60}}, true, -1, {}},
                true, 2);
    // c@s=8 and c@s=2 without a handler or configuration.
    checkDevice({"DEVICE 16F877\n", {{"VB1", 0xC0}, {"VB2", 0x150}, {"VB3", 0x1E0}}, true, -1, {}},
                true, 4);
    checkDevice({"DEVICE 16F84\n", {{"VB1", 0x86}, {"VB2", 0x85}, {"VB3", 0x40}}, true, -1, {}},
                false, 1);
}

// The 16F877 library of a bare program with the runtime slot padded so that
// the next free address is `end`.
fs::path paddedLibrary(const TempDir& dir, int end) {
    CompileResult r = compileSource("DEVICE 16F877\n");
    EXPECT_EQ(r.errors, 0) << testing::PrintToString(r.messages);
    Lines library = libraryLines(*r.compilation);
    auto check = std::find(library.begin(), library.end(), "\tif($>=800h)");
    EXPECT_NE(check, library.end());
    library.insert(check, {"\torg " + std::to_string(end - 1), "\tnop"});
    return writeProgram(dir, library, {});
}

TEST(LibraryAssembly, PageCheckStopsOversizedLibrary) {
    REQUIRE_GPASM();
    TempDir fits;
    Assembly full = assemble(paddedLibrary(fits, 0x800 - 1));
    EXPECT_EQ(full.status, 0) << full.output << full.errors;
    EXPECT_EQ(full.errors.find("Library has exceeded page 0."), std::string::npos);

    TempDir over;
    fs::path asmFile = paddedLibrary(over, 0x800);
    Assembly result = assemble(asmFile);
    EXPECT_NE(result.status, 0);
    EXPECT_NE(result.errors.find("ERROR: (Library has exceeded page 0.)"), std::string::npos)
        << result.errors;
    // gpasm's -q leaves the .err file empty; only the exit status tells.
    Assembly quiet = assemble(asmFile, true);
    EXPECT_NE(quiet.status, 0);
    EXPECT_EQ(quiet.errors, "");
}

// A minimal library-style file around `lines`, assembled for the 16F877.
Assembly assembleLines(const Lines& lines) {
    TempDir dir;
    Lines all = {"\tLIST  P=16F877 , w=2, x=on, r=DEC", "\t#include \"P16F877.zvi\""};
    all.insert(all.end(), lines.begin(), lines.end());
    all.push_back("\tEND");
    return assemble(dir.write("probe.asm", libraryFileText(all)));
}

TEST(GpasmDialect, AssignmentNeedsColumnOne) {
    REQUIRE_GPASM();
    Assembly tabbed = assembleLines({"\tCONFIG_REQ=1", "\torg 0", "\tnop"});
    EXPECT_NE(tabbed.status, 0);
    EXPECT_NE(tabbed.errors.find("syntax error"), std::string::npos) << tabbed.errors;
    Assembly columnOne = assembleLines({"CONFIG_REQ=1", "\torg 0", "\tnop"});
    EXPECT_EQ(columnOne.status, 0) << columnOne.errors;
}

TEST(GpasmDialect, LabelNeedsColumnOne) {
    REQUIRE_GPASM();
    Assembly tabbed = assembleLines({"\torg 0", "\tclrc", "\tl@sh\taddlw 255", "\tgoto l@sh"});
    EXPECT_NE(tabbed.status, 0);
    EXPECT_NE(tabbed.errors.find("syntax error"), std::string::npos) << tabbed.errors;
    Assembly columnOne = assembleLines({"\torg 0", "\tclrc", "l@sh\taddlw 255", "\tgoto l@sh"});
    EXPECT_EQ(columnOne.status, 0) << columnOne.errors;
}

// A two-word branch (bc, bnc, bz, bnz) takes "$" as the address of its
// second word, the goto: "bc $+8" at address 0 jumps to 9, not 8.
TEST(GpasmDialect, DollarInTwoWordBranchIsTheGoto) {
    REQUIRE_GPASM();
    TempDir dir;
    Lines all = {"\tLIST  P=16F877 , w=2, x=on, r=DEC", "\t#include \"P16F877.zvi\"", "\torg 0",
                 "\tbc $+8", "\tEND"};
    fs::path file = dir.write("probe.asm", libraryFileText(all));
    Assembly result = assemble(file);
    ASSERT_EQ(result.status, 0) << result.errors;
    std::string listing = readFile(dir.path() / "probe.lst").value_or("");
    // btfsc 3,0 (1803), then goto 9 (2809).
    EXPECT_NE(listing.find("1803 2809"), std::string::npos) << listing;
}

TEST(GpasmDialect, UndefinedLabelMakesFirstPassConditionFalse) {
    REQUIRE_GPASM();
    // True in the second pass, false in the first: the label moves.
    Assembly differs =
        assembleLines({"\torg 0", "\tif(fwd!=0)", "\tnop", "\tendif", "mid\tnop", "fwd\tnop"});
    EXPECT_NE(differs.status, 0);
    EXPECT_NE(differs.errors.find("different in second pass"), std::string::npos) << differs.errors;
    // False in both passes, although MPASM's first pass would take fwd as 0.
    Assembly same =
        assembleLines({"\torg 0", "\tif(fwd==0)", "\tnop", "\tendif", "mid\tnop", "fwd\tnop"});
    EXPECT_EQ(same.status, 0) << same.errors;
}

} // namespace
} // namespace zorvel::test
