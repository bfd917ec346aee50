#include "compiler/frontend/reserved_names.h"

#include "compiler/driver/compilation.h"

#include <string>
#include <unordered_set>

namespace zorvel {
namespace {

// Assembler directives, PIC14 mnemonics and the assembler's own pseudo-instructions.
constexpr std::string_view kAssemblerWords[] = {
    "ACCESS_OVR", "BADRAM", "BANKISEL", "BANKSEL", "CBLOCK", "CODE", "CODE_PACK", "CONFIG",
    "CONSTANT", "DA", "DATA", "DB", "DE", "DT", "DTM", "DW", "ELSE", "END", "ENDC", "ENDIF", "ENDM",
    "ENDW", "EQU", "ERROR", "ERRORLEVEL", "EXITM", "EXPAND", "EXTERN", "FILL", "GLOBAL", "HIGH",
    "IDATA", "IDATA_ACS", "IDLOCS", "IF", "IFDEF", "IFNDEF", "LIST", "LOCAL", "LOW", "MACRO",
    "MAXRAM", "MESSG", "NOEXPAND", "NOLIST", "ORG", "PAGE", "PAGESEL", "PAGESELW", "PROCESSOR",
    "RADIX", "RES", "SET", "SPACE", "SUBTITLE", "TITLE", "UDATA", "UDATA_ACS", "UDATA_OVR",
    "UDATA_SHR", "UNDEFINE", "UPPER", "VARIABLE", "WHILE",
    // mnemonics
    "ADDWF", "ANDWF", "CLRF", "CLRW", "COMF", "DECF", "DECFSZ", "INCF", "INCFSZ", "IORWF", "MOVF",
    "MOVWF", "NOP", "RLF", "RRF", "SUBWF", "SWAPF", "XORWF", "BCF", "BSF", "BTFSC", "BTFSS",
    "ADDLW", "ANDLW", "CALL", "CLRWDT", "GOTO", "IORLW", "MOVLW", "RETFIE", "RETLW", "RETURN",
    "SLEEP", "SUBLW", "XORLW", "OPTION", "TRIS",
    // pseudo-instructions
    "ADDCF", "ADDDCF", "B", "BC", "BDC", "BNC", "BNDC", "BNZ", "BZ", "CLRC", "CLRDC", "CLRZ",
    "LCALL", "LGOTO", "MOVFW", "NEGF", "SETC", "SETDC", "SETZ", "SKPC", "SKPDC", "SKPNC", "SKPNDC",
    "SKPNZ", "SKPZ", "SUBCF", "SUBDCF", "TSTF",
    // the destination designators of the register file
    "W", "F"};

} // namespace

const char* assemblerNameClash(const Compilation& c, std::string_view name) {
    static const std::unordered_set<std::string_view> words(std::begin(kAssemblerWords),
                                                            std::end(kAssemblerWords));
    if (words.count(name)) return "is an assembler word and cannot be used as a name";
    if (c.device.assemblerNames.count(std::string(name)))
        return "is a name of the device's register file and cannot be used as a name";
    return nullptr;
}

} // namespace zorvel
