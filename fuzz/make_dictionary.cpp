// Prints a libFuzzer dictionary of the language: every keyword, the routed
// statement words, the DECLARE settings and a few operators and device names.
#include "compiler/commands/commands.h"
#include "compiler/frontend/device.h"
#include "compiler/frontend/keywords.h"

#include <iostream>
#include <set>
#include <string>

int main() {
    std::set<std::string> words;
    for (const zorvel::Keyword& k : zorvel::keywordTable())
        words.emplace(k.text);
    for (std::string_view w : zorvel::routedKeywords())
        words.emplace(w);
    for (const zorvel::SettingDef& s : zorvel::settingTable())
        words.emplace(s.key);
    for (const char* extra :
         {"AS BYTE",  "AS WORD", "AS BIT", "THEN",   "ELSE",   "ENDIF", "TO",      "STEP",
          "MACRO",    "ENDM",    "16F84",  "16F877", "16F628", "WREG",  "PORTB.0", ".HIGHBYTE",
          ".LOWBYTE", "**",      "*/",     "//",     "<<",     ">>",    "<>",      ">=",
          "<=",       "$",       "%",      ":",      "'",      "\"",    "[",       "]"})
        words.emplace(extra);
    for (const std::string& w : words) {
        std::cout << '"';
        for (char ch : w)
            std::cout << (ch == '"' || ch == '\\' ? "\\" : "") << ch;
        std::cout << "\"\n";
    }
}
