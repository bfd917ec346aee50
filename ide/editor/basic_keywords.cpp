#include "ide/editor/basic_keywords.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <unordered_set>

namespace zorvel::ide {
namespace {

// Statement keywords of the compiler's keyword table, the other words its
// statement dispatcher routes, and the words of statement syntax (AS BYTE,
// TO, STEP, the output items of PRINT and RSOUT, the switch values, ...).
constexpr std::string_view kStatements[] = {
    "ASM", "S_ASM", "BRANCH", "BRANCHL", "BUSIN", "BUSOUT", "CALL", "CDATA", "CLS", "CONFIG",
    "CURSOR", "CWRITE", "DATA", "DECLARE", "DEFINE", "DELAYMS", "DELAYUS", "DEVICE", "DIM", "EDATA",
    "END", "EWRITE", "FOR", "TO", "NEXT", "STEP", "GOSUB", "RETURN", "GOTO", "HIGH", "SET", "IF",
    "THEN", "ELSE", "ENDIF", "INCLUDE", "INPUT", "LET", "LCDWRITE", "CLEAR", "ON_INTERRUPT",
    "OUTPUT", "ORG", "PLOT", "POKE", "PRINT", "PULSOUT", "PWM", "READ", "REM", "RESTORE", "RSIN",
    "RSOUT", "SERVO", "SET_OSCCAL", "SERIN", "SEROUT", "SHIN", "SHOUT", "SNOOZE", "SLEEP", "SOUND",
    "STOP", "SWAP", "SYMBOL", "UNPLOT", "WHILE", "WEND", "INC", "DEC", "REPEAT", "UNTIL", "ENDM",
    "EXITM", "CONTEXT", "PAUSE", "PAUSEUS", "LOCAL", "MACRO_PARAMS", "REMARKS", "TOGGLE", "OWRITE",
    "DTMFOUT", "FREQOUT", "STR", "LOW", "DECREMENT", "INCREMENT", "HPWM", "ENDASM", "MACRO",
    // type-pair statements of macro bodies
    "NUM_WREG", "NUM_BYTE", "NUM_WORD", "NUM_BIT", "BYTE_WREG", "BYTE_BYTE", "BYTE_WORD",
    "BYTE_BIT", "WORD_WREG", "WORD_BYTE", "WORD_WORD", "WORD_BIT", "BIT_WREG", "BIT_BYTE",
    "BIT_WORD", "BIT_BIT", "WREG_BYTE", "WREG_WORD", "WREG_BIT", "RETURN_WREG", "RETURN_BYTE",
    "RETURN_WORD", "RETURN_BIT",
    // words of statement syntax
    "AS", "BYTE", "WORD", "BIT", "AND", "OR", "XOR", "NOT", "ON", "OFF", "TRUE", "FALSE", "SAVE",
    "INVERTED", "LOWBYTE", "HIGHBYTE", "BYTE0", "BYTE1", "WREG", "AT", "REP", "HEX", "BIN", "VSTR",
    "WAIT", "INVERSE", "FONT", "WDT_OFF"};

// Functions that yield a value on the right of an assignment.
constexpr std::string_view kFunctions[] = {"OREAD",   "COUNTER",  "CREAD",  "EREAD",     "INKEY",
                                           "LCDREAD", "LOOKDOWN", "LOOKUP", "LOOKDOWNL", "LOOKUPL",
                                           "PEEK",    "PIXEL",    "PULSIN", "POT",       "SIN",
                                           "COS",     "RANDOM",   "RCIN",   "DIG",       "ADIN"};

// Keys of DECLARE.
constexpr std::string_view kDeclareSettings[] = {
    "BOOTLOADER", "XTAL",           "RSOUT_PIN",       "RSIN_PIN",   "SERIAL_BAUD", "RSOUT_MODE",
    "RSIN_MODE",  "RSOUT_PACE",     "RSIN_TIMEOUT",    "SDA_PIN",    "SCL_PIN",     "BUS_DELAYMS",
    "SLOW_BUS",   "INTERNAL_BUS",   "LCD_DTPIN",       "LCD_RSPIN",  "LCD_ENPIN",   "LCD_INTERFACE",
    "LCD_LINES",  "KEYPAD_PORT",    "SHIFT_DELAYUS",   "ADIN_TAD",   "ADIN_STIME",  "ADIN_RES",
    "LCD_DTPORT", "LCD_RWPIN",      "LCD_CS1PIN",      "LCD_CS2PIN", "LCD_TYPE",    "INTERNAL_FONT",
    "FONT_ADDR",  "GLCD_CS_INVERT", "GLCD_FAST_STROBE"};

// The 35 PIC16 instructions, the compiler's own forms (MOVFW, RET, OPTION,
// TRIS) and its pseudo-instructions: all of them are BASIC statements too.
constexpr std::string_view kMnemonics[] = {
    "ADDWF", "ANDWF",  "CLRF",  "CLRW",  "COMF",  "DECF",   "DECFSZ", "INCF",   "INCFSZ", "IORWF",
    "MOVF",  "MOVWF",  "NOP",   "RLF",   "RRF",   "SUBWF",  "SWAPF",  "XORWF",  "BCF",    "BSF",
    "BTFSC", "BTFSS",  "ADDLW", "ANDLW", "CALL",  "CLRWDT", "GOTO",   "IORLW",  "MOVLW",  "RETFIE",
    "RETLW", "RETURN", "SLEEP", "SUBLW", "XORLW", "MOVFW",  "RET",    "OPTION", "TRIS",   "BC",
    "BNC",   "BZ",     "BNZ",   "BDC",   "BNDC",  "CLRC",   "CLRDC",  "CLRZ",   "SETC",   "SETDC",
    "SETZ",  "SKIP",   "SKPC",  "SKPDC", "SKPZ",  "SKPNC",  "SKPNDC", "SKPNZ",  "JUMP",   "LGOTO",
    "LJUMP", "TGOTO",  "BRSET", "BRCLR"};

// Pseudo-instructions that only the assembler knows (B is a BASIC variable name).
constexpr std::string_view kAssemblerMnemonics[] = {"ADDCF", "ADDDCF", "B",      "LCALL",
                                                    "NEGF",  "SUBCF",  "SUBDCF", "TSTF"};

// Assembler directives, and the "#" directives of the BASIC source.
constexpr std::string_view kDirectives[] = {
    "#INCLUDE",  "#IF",      "#ELSE",    "#ENDIF",     "#DEFINE",  "#UNDEFINE", "#IFDEF",
    "#IFNDEF",   "#WHILE",   "#ENDW",    "#LOCAL",     "#ERROR",   "#ENABLE",   "__CONFIG",
    "__IDLOCS",  "__MAXRAM", "__BADRAM", "BADRAM",     "BANKISEL", "BANKSEL",   "CBLOCK",
    "CONSTANT",  "DA",       "DB",       "DE",         "DT",       "DW",        "ENDC",
    "ENDW",      "EQU",      "ERROR",    "ERRORLEVEL", "EXPAND",   "FILL",      "IFDEF",
    "IFNDEF",    "LIST",     "MESSG",    "NOEXPAND",   "NOLIST",   "PAGE",      "PAGESEL",
    "PROCESSOR", "RADIX",    "RES",      "SPACE",      "SUBTITLE", "TITLE",     "UNDEFINE",
    "VARIABLE",  "MACRO",    "ENDM",     "EXITM",      "LOCAL",    "IF",        "ELSE",
    "ENDIF",     "WHILE",    "ORG",      "END",        "SET",      "HIGH",      "LOW",
    "UPPER"};

// Labels, macros and variables of the runtime library and of the code the
// compiler generates. A trailing number (f@ad3, Pb@lab12) is ignored.
constexpr std::string_view kRuntimeNames[] = {
    "Start@", "r@b", "s@b", "s@o", "f@c", "f@g", "t@g", "v@r", "c@s", "p@b", "jump", "consave",
    "conres", "mov@ff", "mov@fw", "mov@lf", "mov@wf", "clr@f", "clr@bit", "set@bit", "bc@f", "bs@f",
    "btf@sc", "btf@ss", "addwf@f", "addwf@w", "andwf@f", "andwf@w", "comf@f", "comf@w", "decf@f",
    "decf@w", "decfsz@f", "decfsz@w", "incf@f", "incf@w", "incfsz@f", "incfsz@w", "iorwf@f",
    "iorwf@w", "rlf@f", "rlf@w", "rrf@f", "rrf@w", "subwf@f", "subwf@w", "swapf@f", "swapf@w",
    "xorwf@f", "xorwf@w", "return_wreg", "return_byte", "return_word", "return_bit", "m@py", "d@vd",
    "d@vd2", "l@sh", "r@sh", "n@gt", "i@nt", "i@pp0", "dl@ms", "dl@us", "dlus@w", "dly@w", "dl@s",
    "dl@sw", "find@address", "get@array", "put@array", "f@ad", "f@adx", "send@it", "d@snd",
    "ch@snd", "s@dig", "t@st", "t@e", "t@eb", "t@ew", "t@ge", "t@geb", "t@gew", "t@gl", "t@gt",
    "t@gtb", "t@gtw", "t@le", "t@leb", "t@lew", "t@lt", "t@ltb", "t@ltw", "t@ne", "t@neb", "t@new",
    "rsout@", "rsout", "rsin", "rsin2", "rsin@st", "rso@bit", "serin", "serout", "sro@b", "sro@f",
    "sro@gf", "sro@t", "sro@x", "srin@b", "srin@d", "srin@f", "srin@ft", "srin@s", "srin@sd",
    "srin@t", "sr@dly", "print", "prt@1", "prt@c", "prt@s", "pr@ex", "pr@lp", "lcd_cls", "lcd_crs",
    "lcd_cur", "cls", "curs", "cursor", "inkey", "Scan@row", "out_bin", "out_bin2", "out_binb",
    "out_hex", "out_hex1", "out_hex2", "out_hex3", "out_hex4", "o@dec", "o@dec2", "o@dec2b",
    "o@decb", "o@bi", "i@bi", "out@t", "hdig", "rep", "c@strout", "c@stroutlp", "mb@strout",
    "mb@stroutlp", "sb@strout", "sb@stroutlp", "c@read", "c@write", "c@tbl", "c@bt", "c@pin",
    "crin", "count", "ee_rd", "ee_wr", "busin", "busin2", "busout", "busout2", "bus@del", "buschr",
    "bstart", "b@ch", "b@ckh", "b@ckl", "b@cl", "b@dh", "b@dl", "b@gb", "b@hi", "b@lo", "b@pl",
    "b@sht", "b@stop", "sh@in", "sh@in8", "sh@ot", "sh@ot8", "h@pwm", "hpw@2l", "hpw@2s", "pwm",
    "p@in", "p@lp", "p@out", "pot", "rd@ad", "noise", "rndm", "sin", "cos", "si@g", "dig", "d@b",
    "fl@st", "fr@lp", "fr@out", "fr@out1", "fr@outc", "dtf@rtb", "dtf@tbl", "dtmf@l", "dtmf@o",
    "dtmf@r", "sn@ze", "so@fin", "n@lp", "n@lp1", "r@bs", "Pb@lab", "Els@Lb", "I@Lb", "N@Lab",
    "N@VAR", "P@LB", "CP@LB", "B@VR", "Rpt@Lb", "Whl@Lb", "Wnd@Lb", "fr@lab", "nx@lab", "JE@Lab",
    "JP@Lab", "LE@Lab", "LDE@Lab", "lk@Lab", "l@lab", "lk@Loop", "l@kl", "b@lab",
    // system variables of the runtime library
    "GEN", "GENH", "GEN2", "GEN2H", "GEN3", "GEN3H", "GEN4", "GEN4H", "PP0", "PP0H", "PP1", "PP1H",
    "PP2", "PP2H", "PP3", "PP3H", "PP4", "PP4H", "PP5", "PP5H", "PP6", "PP6H", "PP7", "PP7H", "GPR",
    "BPF", "BPFH", "WSAVE", "WSAVE1", "WSAVE2", "WSAVE3", "SSAVE", "PSAVE", "FSRSAVE"};

// The assembler variables a macro call sets, and the kind names of the
// "Local" line at the head of every macro. PRM_ followed by a number is
// recognised by its form.
constexpr std::string_view kMacroVariables[] = {
    "PRM_C", "RETURN_TYPE", "RETURN_VAR", "RETURN_BITNUM", "LABEL", "OPERAND", "NUM8", "NUM16"};

constexpr std::string_view kNeverLabels[] = {
    "#ENDIF", "#ELSE", "ENDM",  "EXITM",  "CLS",   "NOP",    "ENDIF",  "END",
    "ELSE",   "NEXT",  "WEND",  "REPEAT", "SLEEP", "CLRWDT", "RETURN", "RESTORE",
    "STOP",   "SKPZ",  "SKPNZ", "SKPC",   "SKPNC", "SKPDC",  "SKPNDC", "SKIP"};

// Longer words are never keywords; the compiler's word buffer holds 32.
constexpr std::size_t kLongestWord = 32;

std::string upper(std::string_view word) {
    std::string s(word);
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char ch) { return static_cast<char>(std::toupper(ch)); });
    return s;
}

class WordSet {
public:
    template <std::size_t N>
    explicit WordSet(const std::string_view (&words)[N]) {
        for (std::string_view w : words)
            words_.insert(upper(w));
    }
    bool contains(const std::string& upperWord) const { return words_.count(upperWord) != 0; }

private:
    std::unordered_set<std::string> words_;
};

// The sets are built once and never written afterwards.
const WordSet& statements() {
    static const WordSet set(kStatements);
    return set;
}
const WordSet& functions() {
    static const WordSet set(kFunctions);
    return set;
}
const WordSet& declareSettings() {
    static const WordSet set(kDeclareSettings);
    return set;
}
const WordSet& mnemonics() {
    static const WordSet set(kMnemonics);
    return set;
}
const WordSet& assemblerMnemonics() {
    static const WordSet set(kAssemblerMnemonics);
    return set;
}
const WordSet& directives() {
    static const WordSet set(kDirectives);
    return set;
}
const WordSet& runtimeNames() {
    static const WordSet set(kRuntimeNames);
    return set;
}
const WordSet& macroVariables() {
    static const WordSet set(kMacroVariables);
    return set;
}

bool allDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(),
                                        [](unsigned char ch) { return std::isdigit(ch) != 0; });
}

bool isRuntimeName(const std::string& word) {
    if (word.find('@') == std::string::npos) return runtimeNames().contains(word);
    std::size_t end = word.size();
    while (end > 0 && std::isdigit(static_cast<unsigned char>(word[end - 1])))
        --end;
    return runtimeNames().contains(word) || runtimeNames().contains(word.substr(0, end));
}

bool isMacroVariable(const std::string& word) {
    if (word.starts_with("PRM_") && allDigits(std::string_view(word).substr(4))) return true;
    return macroVariables().contains(word);
}

WordClass basicClass(const std::string& word) {
    if (statements().contains(word)) return WordClass::Statement;
    if (functions().contains(word)) return WordClass::Function;
    if (declareSettings().contains(word)) return WordClass::DeclareSetting;
    if (mnemonics().contains(word)) return WordClass::Mnemonic;
    if (word.starts_with('#') && directives().contains(word)) return WordClass::Directive;
    if (isMacroVariable(word)) return WordClass::MacroVariable;
    if (isRuntimeName(word)) return WordClass::RuntimeName;
    return WordClass::None;
}

WordClass assemblerClass(const std::string& word) {
    if (mnemonics().contains(word) || assemblerMnemonics().contains(word))
        return WordClass::Mnemonic;
    if (directives().contains(word)) return WordClass::Directive;
    if (isMacroVariable(word)) return WordClass::MacroVariable;
    if (isRuntimeName(word)) return WordClass::RuntimeName;
    return WordClass::None;
}

} // namespace

WordClass classifyWord(std::string_view word, CodeContext context) {
    if (word.empty() || word.size() > kLongestWord) return WordClass::None;
    const std::string key = upper(word);
    return context == CodeContext::Basic ? basicClass(key) : assemblerClass(key);
}

bool isNeverLabel(std::string_view word) {
    const std::string key = upper(word);
    return std::find(std::begin(kNeverLabels), std::end(kNeverLabels), key) !=
           std::end(kNeverLabels);
}

} // namespace zorvel::ide
