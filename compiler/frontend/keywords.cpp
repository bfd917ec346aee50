#include "compiler/frontend/keywords.h"

#include <array>
#include <string>
#include <unordered_map>

namespace zorvel {
namespace {

constexpr std::array<Keyword, 128> kKeywords = {{
    {"ASM", 1, kClassStatement},           {"BRANCH", 3, kClassStatement},
    {"BRANCHL", 4, kClassStatement},       {"BUSIN", 5, kClassStatement},
    {"BUSOUT", 6, kClassStatement},        {"CALL", 7, kClassStatement},
    {"CDATA", 8, kClassStatement},         {"CLS", 9, kClassStatement},
    {"CONFIG", 10, kClassStatement},       {"CURSOR", 13, kClassStatement},
    {"CWRITE", 14, kClassStatement},       {"DATA", 15, kClassStatement},
    {"DECLARE", 16, kClassStatement},      {"DEFINE", 97, kClassStatement},
    {"DELAYMS", 17, kClassStatement},      {"DELAYUS", 18, kClassStatement},
    {"DEVICE", 19, kClassStatement},       {"DIG", 20, kClassStatement},
    {"DIM", 21, kClassStatement},          {"EDATA", 22, kClassStatement},
    {"END", 23, kClassStatement},          {"EWRITE", 25, kClassStatement},
    {"FOR", 26, kClassStatement},          {"TO", 27, kClassStatement},
    {"NEXT", 28, kClassStatement},         {"STEP", 29, kClassStatement},
    {"GOSUB", 30, kClassStatement},        {"RETURN", 31, kClassStatement},
    {"GOTO", 32, kClassStatement},         {"HIGH", 33, kClassStatement},
    {"SET", 34, kClassStatement},          {"IF", 35, kClassStatement},
    {"THEN", 36, kClassStatement},         {"ELSE", 37, kClassStatement},
    {"ENDIF", 38, kClassStatement},        {"INCLUDE", 39, kClassStatement},
    {"INPUT", 41, kClassStatement},        {"LET", 42, kClassStatement},
    {"LCDWRITE", 44, kClassStatement},     {"CLEAR", 50, kClassStatement},
    {"ON_INTERRUPT", 51, kClassStatement}, {"OUTPUT", 52, kClassStatement},
    {"ORG", 53, kClassStatement},          {"PLOT", 56, kClassStatement},
    {"POKE", 57, kClassStatement},         {"PRINT", 59, kClassStatement},
    {"PULSOUT", 61, kClassStatement},      {"PWM", 62, kClassStatement},
    {"READ", 65, kClassStatement},         {"REM", 66, kClassStatement},
    {"RESTORE", 67, kClassStatement},      {"RSIN", 68, kClassStatement},
    {"RSOUT", 69, kClassStatement},        {"SERVO", 70, kClassStatement},
    {"SET_OSCCAL", 71, kClassStatement},   {"S_ASM", 95, kClassStatement},
    {"SERIN", 98, kClassStatement},        {"SEROUT", 99, kClassStatement},
    {"SHIN", 72, kClassStatement},         {"SHOUT", 73, kClassStatement},
    {"SNOOZE", 74, kClassStatement},       {"SLEEP", 75, kClassStatement},
    {"SOUND", 76, kClassStatement},        {"STOP", 77, kClassStatement},
    {"SWAP", 78, kClassStatement},         {"SYMBOL", 79, kClassStatement},
    {"UNPLOT", 80, kClassStatement},       {"WHILE", 81, kClassStatement},
    {"WEND", 82, kClassStatement},         {"INC", 83, kClassStatement},
    {"DEC", 84, kClassStatement},          {"REPEAT", 85, kClassStatement},
    {"UNTIL", 86, kClassStatement},        {"ENDM", 87, kClassStatement},
    {"EXITM", 88, kClassStatement},        {"CONTEXT", 89, kClassStatement},
    {"PAUSE", 90, kClassStatement},        {"PAUSEUS", 91, kClassStatement},
    {"LOCAL", 92, kClassStatement},        {"MACRO_PARAMS", 93, kClassStatement},
    {"REMARKS", 94, kClassStatement},      {"TOGGLE", 96, kClassStatement},
    {"OWRITE", 102, kClassStatement},      {"DTMFOUT", 103, kClassStatement},
    {"FREQOUT", 104, kClassStatement},     {"STR", 105, kClassStatement},
    {"OREAD", 101, kClassFunction},        {"COUNTER", 11, kClassFunction},
    {"CREAD", 12, kClassFunction},         {"EREAD", 24, kClassFunction},
    {"INKEY", 40, kClassFunction},         {"LCDREAD", 43, kClassFunction},
    {"LOOKDOWN", 45, kClassFunction},      {"LOOKUP", 46, kClassFunction},
    {"LOOKDOWNL", 47, kClassFunction},     {"LOOKUPL", 48, kClassFunction},
    {"LOW", 49, kClassFunction},           {"PEEK", 54, kClassFunction},
    {"PIXEL", 55, kClassFunction},         {"PULSIN", 60, kClassFunction},
    {"POT", 58, kClassFunction},           {"SIN", 85, kClassFunction},
    {"COS", 86, kClassFunction},           {"RANDOM", 63, kClassFunction},
    {"RCIN", 64, kClassFunction},          {"NUM_WREG", 200, kClassTypePair},
    {"NUM_BYTE", 201, kClassTypePair},     {"NUM_WORD", 202, kClassTypePair},
    {"NUM_BIT", 203, kClassTypePair},      {"BYTE_WREG", 204, kClassTypePair},
    {"BYTE_BYTE", 205, kClassTypePair},    {"BYTE_WORD", 206, kClassTypePair},
    {"BYTE_BIT", 207, kClassTypePair},     {"WORD_WREG", 208, kClassTypePair},
    {"WORD_BYTE", 209, kClassTypePair},    {"WORD_WORD", 210, kClassTypePair},
    {"WORD_BIT", 211, kClassTypePair},     {"BIT_WREG", 212, kClassTypePair},
    {"BIT_BYTE", 213, kClassTypePair},     {"BIT_WORD", 214, kClassTypePair},
    {"BIT_BIT", 215, kClassTypePair},      {"WREG_BYTE", 216, kClassTypePair},
    {"WREG_WORD", 217, kClassTypePair},    {"WREG_BIT", 218, kClassTypePair},
    {"RETURN_WREG", 219, kClassTypePair},  {"RETURN_BYTE", 220, kClassTypePair},
    {"RETURN_WORD", 221, kClassTypePair},  {"RETURN_BIT", 222, kClassTypePair},
}};

} // namespace

std::span<const Keyword> keywordTable() {
    return kKeywords;
}

KeywordLookup lookupKeyword(std::string_view word) {
    // Built once; the table is constant, so the map is never written afterwards.
    static const std::unordered_map<std::string_view, KeywordLookup> index = [] {
        std::unordered_map<std::string_view, KeywordLookup> m;
        for (const Keyword& k : kKeywords)
            m.try_emplace(k.text, KeywordLookup{k.number, k.keywordClass});
        return m;
    }();
    auto it = index.find(word);
    return it == index.end() ? KeywordLookup{} : it->second;
}

bool isFunctionKeyword(std::string_view word) {
    static constexpr std::string_view kFunctions[] = {
        "ADIN",   "PEEK",  "RSIN",    "RANDOM",  "SIN",      "COS",       "DIG",
        "CREAD",  "EREAD", "LOOKUP",  "LOOKUPL", "LOOKDOWN", "LOOKDOWNL", "BUSIN",
        "PULSIN", "POT",   "COUNTER", "RCIN",    "INKEY",    "LCDREAD",   "PIXEL"};
    for (std::string_view f : kFunctions)
        if (f == word) return true;
    return false;
}

} // namespace zorvel
