#include "compiler/library/macro_prelude.h"

#include "compiler/driver/compilation.h"

#include <initializer_list>

namespace zorvel {
namespace {

void addAll(LibraryOutput& out, std::initializer_list<const char*> lines) {
    for (const char* line : lines)
        out.add(line);
}

// Bank selection. p@b tracks the bank the code assumes at this point; s@b
// flips only the RP0 (bit 5) and RP1 (bit 6) bits that differ from it.
void bankSwitchLines(LibraryOutput& out, int from, int to) {
    out.add("\tif(p@b==" + std::to_string(from) + ")");
    if ((from ^ to) & 1) out.add((to & 1) ? "\tbsf 3,5" : "\tbcf 3,5");
    if ((from ^ to) & 2) out.add((to & 2) ? "\tbsf 3,6" : "\tbcf 3,6");
    out.add("\tendif");
}

void writeBankSelect(LibraryOutput& out) {
    out.add("s@b\tmacro v@r");
    for (int bank = 0; bank < 4; ++bank) {
        out.add("\tif((v@r&384)==" + std::to_string(128 * bank) + ")");
        for (int from = 0; from < 4; ++from)
            if (from != bank) bankSwitchLines(out, from, bank);
        out.add("p@b=" + std::to_string(bank));
        out.add("\tendif");
    }
    out.add("\tendm");
}

// The body of r@b, also written inline by the far call and jump macros.
void bankResetLines(LibraryOutput& out) {
    addAll(out, {"\tif((p@b&1)!=0)", "\tbcf 3,5", "\tendif", "\tif((p@b&2)!=0)", "\tbcf 3,6",
                 "\tendif", "p@b=0"});
}

void writeBankReset(LibraryOutput& out) {
    out.add("r@b\tmacro");
    bankResetLines(out);
    out.add("\tendm");
}

// Interrupt context save and restore around a handler.
void writeContextMacros(const Compilation& c, LibraryOutput& out) {
    std::string status = regAddress(c, "STATUS");
    std::string pclath = regAddress(c, "PCLATH");
    std::string fsr = regAddress(c, "FSR");
    out.add("consave \tmacro");
    out.add("\tmovwf wsave");
    out.add("\tmovfw " + status);
    out.add("\tclrf " + status);
    out.add("\tmovwf ssave");
    out.add("\tmovfw " + pclath);
    out.add("\tmovwf psave");
    out.add("\tclrf " + pclath);
    out.add("\tmovfw " + fsr);
    out.add("\tmovwf fsrsave");
    out.add("\tendm");
    out.add("conres \tmacro");
    out.add("\tmovfw fsrsave");
    out.add("\tmovwf " + fsr);
    out.add("\tmovfw psave");
    out.add("\tmovwf " + pclath);
    out.add("\tmovfw ssave");
    out.add("\tmovwf " + status);
    out.add("\tswapf wsave,f");
    out.add("\tswapf wsave,w");
    out.add("\tretfie");
    out.add("\tendm");
}

// A macro that selects the bank of its first parameter and then runs one
// instruction on it, written as one line with embedded line ends.
struct BankedMacro {
    const char* name;
    const char* gap; // between name and "macro": a tab, or a blank
    const char* params;
    const char* first; // the parameter whose bank is selected
    const char* instruction;
};

constexpr BankedMacro kBankedMacros[] = {
    {"mov@fw", "\t", "bytein", "bytein", "movf bytein,w"},
    {"mov@ff", "\t", "bytein", "bytein", "movf bytein,f"},
    {"mov@wf", "\t", "bytein", "bytein", "movwf bytein"},
    {"clr@f", "\t", "bytein", "bytein", "clrf bytein"},
    {"addwf@f", "\t", "bytein", "bytein", "addwf bytein,f"},
    {"addwf@w", "\t", "bytein", "bytein", "addwf bytein,w"},
    {"subwf@f", "\t", "bytein", "bytein", "subwf bytein,f"},
    {"subwf@w", "\t", "bytein", "bytein", "subwf bytein,w"},
    {"incf@f", "\t", "bytein", "bytein", "incf bytein,f"},
    {"incf@w", "\t", "bytein", "bytein", "incf bytein,w"},
    {"decf@f", "\t", "bytein", "bytein", "decf bytein,f"},
    {"decf@w", "\t", "bytein", "bytein", "decf bytein,w"},
    {"andwf@f", "\t", "bytein", "bytein", "andwf bytein,f"},
    {"andwf@w", "\t", "bytein", "bytein", "andwf bytein,w"},
    {"comf@f", "\t", "bytein", "bytein", "comf bytein,f"},
    {"comf@w", "\t", "bytein", "bytein", "comf bytein,w"},
    {"xorwf@f", "\t", "bytein", "bytein", "xorwf bytein,f"},
    {"xorwf@w", "\t", "bytein", "bytein", "xorwf bytein,w"},
    {"iorwf@f", "\t", "bytein", "bytein", "iorwf bytein,f"},
    {"iorwf@w", "\t", "bytein", "bytein", "iorwf bytein,w"},
    {"swapf@f", "\t", "bytein", "bytein", "swapf bytein,f"},
    {"swapf@w", "\t", "bytein", "bytein", "swapf bytein,w"},
    {"rrf@f", "\t", "bytein", "bytein", "rrf bytein,f"},
    {"rrf@w", "\t", "bytein", "bytein", "rrf bytein,w"},
    {"rlf@f", "\t", "bytein", "bytein", "rlf bytein,f"},
    {"rlf@w", "\t", "bytein", "bytein", "rlf bytein,w"},
    {"set@bit", "\t", "varin,bitin", "varin", "bsf  varin,bitin"},
    {"clr@bit", "\t", "varin,bitin", "varin", "bcf varin,bitin"},
    {"btf@sc", "\t", "varin,bitin", "varin", "btfsc varin,bitin"},
    {"btf@ss", "\t", "varin,bitin", "varin", "btfss varin,bitin"},
    {"incfsz@w", " ", "bytein", "bytein", "incfsz bytein,w"},
    {"incfsz@f", " ", "bytein", "bytein", "incfsz bytein,f"},
    {"decfsz@w", " ", "bytein", "bytein", "decfsz bytein,w"},
    {"decfsz@f", " ", "bytein", "bytein", "decfsz bytein,f"},
    {"bc@f", "\t", "varin,bitin", "varin", "bcf varin,bitin"},
    {"bs@f", "\t", "varin,bitin", "varin", "bsf varin,bitin"},
};

std::string bankedMacro(const BankedMacro& m) {
    return std::string(m.name) + m.gap + "macro " + m.params + "\r\n\ts@b " + m.first + "\r\n\t" +
           m.instruction + "\r\n\tendm";
}

void writeBankedMacros(LibraryOutput& out) {
    for (const BankedMacro& m : kBankedMacros) {
        out.add(bankedMacro(m));
        if (std::string_view(m.name) == "mov@wf")
            out.add("mov@lf\tmacro numin,byteout\r\n\tmovlw numin\r\n\tmov@wf byteout\r\n\tendm");
    }
    out.add("jump\tmacro dest\r\n\tgoto dest\r\n\tendm");
}

// A computed jump over zsize table entries that would cross a 256-word
// boundary moves to the next boundary, jumping over the gap.
void writeTableOffset(LibraryOutput& out) {
    addAll(out,
           {"s@o\tmacro zsize", "\tlocal dest", "\tif($ >> 8) != (($ + zsize) >> 8)", "\tgoto dest",
            "\torg (($ + 255) & 65280)", "dest", "\tendif", "\taddwf PCL,F", "\tendm"});
}

// Transfers between the operand kinds WREG, NUM, BYTE, WORD and BIT.
struct TransferMacro {
    const char* name;
    const char* params;
    std::initializer_list<const char*> body;
};

// Reading a word or byte into a bit goes through its bit 0; registers in
// different 128-byte banks carry the bit across the bank switch in a flag.
const TransferMacro kTransferMacros[] = {
    {"wreg_byte", "byteout", {"\tmov@wf byteout"}},
    {"wreg_bit",
     "varout,bitout",
     {"\ts@b varout", "\tandlw 1", "\tskpnz", "\tbcf varout,bitout", "\tskpz",
      "\tbsf varout,bitout"}},
    {"wreg_word", "wordout", {"\tmov@wf wordout", "\tclr@f wordout+1"}},
    {"byte_wreg", "bytein", {"\tmov@fw bytein"}},
    {"num_wreg", "numin", {"\tmovlw low numin"}},
    {"num_byte",
     "numin,byteout",
     {"\tif(low numin==0)", "\tclr@f byteout", "\telse", "\tmovlw low numin", "\tmov@wf byteout",
      "\tendif"}},
    {"num_bit",
     "numin,varout,bitout",
     {"\tif((numin&1)==1)", "\tbs@f varout,bitout", "\telse", "\tbc@f varout,bitout", "\tendif"}},
    {"num_word",
     "numin,wordout",
     {"\tif(low numin==0)", "\tclr@f wordout", "\telse", "\tmovlw low numin", "\tmov@wf wordout",
      "\tendif", "\tif(high numin==0)", "\tclr@f wordout+1", "\telse", "\tmovlw high numin",
      "\tmov@wf wordout+1", "\tendif"}},
    {"bit_wreg", "varin,bitin", {"\tclrw", "\tbtf@sc varin,bitin", "\tmovlw 1"}},
    {"bit_byte",
     "varin,bitin,byteout",
     {"\tclrw", "\tbtf@sc varin,bitin", "\tmovlw 1", "\tmov@wf byteout"}},
    {"bit_bit",
     "varin,bitin,varout,bitout",
     {"\tif((varin&65408)==(varout&65408))", "\ts@b varout", "\tbtf@sc varin,bitin",
      "\tbsf varout,bitout", "\tbtf@ss varin,bitin", "\tbcf varout,bitout", "\telse", "\tclrdc",
      "\tbtf@sc varin,bitin", "\tsetdc", "\ts@b varout", "\tskpndc", "\tbsf varout,bitout",
      "\tskpdc", "\tbcf varout,bitout", "\tendif"}},
    {"bit_word",
     "varin,bitin,wordout",
     {"\tclrw", "\tbtf@sc varin,bitin", "\tmovlw 1", "\tmov@wf wordout", "\tclr@f wordout+1"}},
    {"word_wreg", "wordin", {"\tmov@fw wordin"}},
    {"word_byte", "wordin,byteout", {"\tmov@fw wordin", "\tmov@wf byteout"}},
    {"word_bit",
     "wordin,varout,bitout",
     {"\tif((wordin&65408)==(varout&65408))", "\tbtf@sc wordin,0", "\tbsf varout,bitout",
      "\tbtf@ss wordin,0", "\tbcf varout,bitout", "\telse", "\trrf@w wordin", "\ts@b varout",
      "\tskpnc", "\tbsf varout,bitout", "\tskpc", "\tbcf varout,bitout", "\tendif"}},
    {"word_word",
     "wordin,wordout",
     {"\tmov@fw wordin+1", "\tmov@wf wordout+1", "\tmov@fw wordin", "\tmov@wf wordout"}},
    {"byte_byte", "bytein,byteout", {"\tmov@fw bytein", "\tmov@wf byteout"}},
    {"byte_word", "bytein,wordout", {"\tmov@fw bytein", "\tmov@wf wordout", "\tclr@f wordout+1"}},
    {"byte_bit",
     "bytein,varout,bitout",
     {"\tif((bytein&65408)==(varout&65408))", "\tbtf@sc bytein,0", "\tbsf varout,bitout",
      "\tbtf@ss bytein,0", "\tbcf varout,bitout", "\telse", "\trrf@w bytein", "\ts@b varout",
      "\tskpnc", "\tbsf varout,bitout", "\tskpc", "\tbcf varout,bitout", "\tendif"}},
};

void writeTransferMacros(LibraryOutput& out) {
    for (const TransferMacro& m : kTransferMacros) {
        out.add(std::string(m.name) + " macro " + m.params);
        addAll(out, m.body);
        out.add("\tendm");
    }
}

// Page selection before a call or jump to `dest`: PCLATH bit 3 on devices of
// 4K words or more, bit 4 on devices of 8K words, each set from the same bit
// of the destination. Either branch of each test is one instruction, so the
// block has the same size whether `dest` is known yet or not.
void pageSelectLines(LibraryOutput& out) {
    addAll(out, {"\tif(c@s>=4)", "\tif((dest&2048)==0)", "\tbcf 10,3", "\telse", "\tbsf 10,3",
                 "\tendif", "\tendif", "\tif(c@s==8)", "\tif((dest&4096)==0)", "\tbcf 10,4",
                 "\telse", "\tbsf 10,4", "\tendif", "\tendif"});
}

// The bank reset and page selection in front of f@c's call and f@g's goto.
// A destination not yet defined (below 1) or ahead gets both page bits set
// one by one; one behind, in page 0, clears all of PCLATH with "clrf 10".
// (gpasm's first pass takes an "if" on an undefined label as false and so
// lands in the backward case, whose bit instructions have the same size.)
void farTransferLines(LibraryOutput& out) {
    bankResetLines(out);
    out.add("\tif(dest<1)");
    pageSelectLines(out);
    out.add("\telse");
    out.add("\tif(dest>$)");
    pageSelectLines(out);
    out.add("\telse");
    addAll(out, {"\tif(c@s>=4)", "\tif((dest&6144)==0)", "\tclrf 10", "\telse",
                 "\tif((dest&2048)==0)", "\tbcf 10,3", "\telse", "\tbsf 10,3", "\tendif",
                 "\tif(c@s==8)", "\tif((dest&4096)==0)", "\tbcf 10,4", "\telse", "\tbsf 10,4"});
    for (int open = 0; open < 6; ++open)
        out.add("\tendif");
}

void writeFarCall(LibraryOutput& out) {
    out.add("f@c\tmacro dest");
    farTransferLines(out);
    out.add("\tcall dest");
    out.add("\tendm");
}

// A jump to itself gets a filler first: a two-instruction loop.
void writeFarJump(const Compilation& c, LibraryOutput& out) {
    out.add("f@g\tmacro dest");
    out.add("\tif($==dest)");
    out.add(filler(c));
    out.add("\tendif");
    farTransferLines(out);
    out.add("\tgoto dest");
    out.add("\tendm");
}

// Jumps to dest when bit `bitin` of register `v@r` equals `cst`. A register
// outside bank 0 is tested before the bank reset, carrying the outcome in DC.
void writeBitJump(const Compilation& c, LibraryOutput& out) {
    out.add("t@g\tmacro cst,v@r,bitin,dest");
    out.add("\tif(dest==$)");
    out.add(filler(c));
    out.add("\tendif");
    pageSelectLines(out);
    addAll(out, {"\tif((v@r&65408)!=0)", "\ts@b v@r", "\tclrdc", "\tif(cst==0)",
                 "\tbtfss v@r,bitin", "\telse", "\tbtfsc v@r,bitin", "\tendif", "\tsetdc"});
    bankResetLines(out);
    out.add("\tskpndc");
    out.add("\telse");
    bankResetLines(out);
    addAll(out, {"\tif(cst==0)", "\tbtfss v@r,bitin", "\telse", "\tbtfsc v@r,bitin", "\tendif",
                 "\tendif", "\tgoto dest", "\tendm"});
}

// Function results: copy a value into the symbol return_var that a user
// macro defines, by its return_type (0 byte, 1 word, 2 bit).
struct ReturnMacro {
    const char* header;
    const char* byteLine;
    const char* wordLine;
    const char* bitLine;
};

constexpr ReturnMacro kReturnMacros[] = {
    {"return_wreg macro", "\twreg_byte return_var", "\twreg_word return_var",
     "\twreg_bit return_var,return_bitnum"},
    {"return_byte macro bytein", "\tbyte_byte bytein,return_var", "\tbyte_word bytein,return_var",
     "\tbyte_bit bytein,return_var,return_bitnum"},
    {"return_word macro wordin", "\tword_byte wordin,return_var", "\tword_word wordin,return_var",
     "\tword_bit wordin,return_var,return_bitnum"},
    {"return_bit macro varin,bitin", "\tbit_byte varin,bitin,return_var",
     "\tbit_word varin,bitin,return_var", "\tbit_bit varin,bitin,return_var,return_bitnum"},
};

void writeReturnMacros(LibraryOutput& out) {
    for (const ReturnMacro& m : kReturnMacros) {
        out.add(m.header);
        out.add("\tifdef return_var");
        const char* byType[] = {m.byteLine, m.wordLine, m.bitLine};
        for (int type = 0; type < 3; ++type) {
            out.add("\tif(return_type==" + std::to_string(type) + ")");
            out.add(byType[type]);
            out.add("\tendif");
        }
        out.add("\tendif");
        out.add("\tendm");
    }
}

} // namespace

void writeMacroPrelude(Compilation& c, LibraryOutput& out) {
    writeBankSelect(out);
    writeBankReset(out);
    if (c.device.contextUsed) writeContextMacros(c, out);
    writeBankedMacros(out);
    if (c.runtime.jumpTableUsed) writeTableOffset(out);
    writeTransferMacros(out);
    writeFarCall(out);
    writeFarJump(c, out);
    writeBitJump(c, out);
    writeReturnMacros(out);
}

} // namespace zorvel
