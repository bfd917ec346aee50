#include "ide/editor/basic_line_scanner.h"

#include "ide/editor/basic_keywords.h"
#include "ide/editor/basic_lexer.h"

#include <algorithm>
#include <cctype>

namespace zorvel::ide {
namespace {

using S = BasicLexer::Style;

bool isBlank(char ch) {
    return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n' || ch == '\f' || ch == '\v';
}
bool isDigit(char ch) {
    return ch >= '0' && ch <= '9';
}
bool isHexDigit(char ch) {
    return std::isxdigit(static_cast<unsigned char>(ch)) != 0;
}
bool isLetter(char ch) {
    return (ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z');
}
bool isWordStart(char ch) {
    return isLetter(ch) || ch == '_' || ch == '#';
}
bool isWordChar(char ch) {
    return isLetter(ch) || isDigit(ch) || ch == '_' || ch == '@';
}
bool isNonAscii(char ch) {
    return static_cast<unsigned char>(ch) >= 0x80;
}
// The radix letters of the assembler's quoted numbers: h'1F', b'0101', d'10'.
bool isRadixLetter(char ch) {
    return std::string_view("hHbBdDoOaA").find(ch) != std::string_view::npos;
}

std::string upper(std::string_view word) {
    std::string s(word);
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char ch) { return static_cast<char>(std::toupper(ch)); });
    return s;
}

S styleOf(WordClass cls) {
    switch (cls) {
    case WordClass::Statement: return S::ReservedWord;
    case WordClass::Function: return S::Function;
    case WordClass::DeclareSetting: return S::DeclareSetting;
    case WordClass::Mnemonic: return S::Mnemonic;
    case WordClass::Directive: return S::Directive;
    case WordClass::RuntimeName: return S::RuntimeName;
    case WordClass::MacroVariable: return S::MacroParameter;
    case WordClass::None: break;
    }
    return S::Identifier;
}

class LineScanner {
public:
    LineScanner(std::string_view text, ScanState start, const std::vector<std::string>& params)
        : text_(text), contentEnd_(contentEnd(text)), params_(params), inMacro_(start.inMacro) {
        result_.end = start;
        context_ = start.inAsm ? CodeContext::Assembler : CodeContext::Basic;
    }

    LineScan scan() {
        if (context_ == CodeContext::Assembler) scanAsmLineHead();
        while (pos_ < contentEnd_)
            context_ == CodeContext::Basic ? scanBasicToken() : scanAsmToken();
        addRun(text_.size() - pos_, S::Default);
        return std::move(result_);
    }

private:
    static std::size_t contentEnd(std::string_view text) {
        std::size_t end = text.size();
        while (end > 0 && (text[end - 1] == '\r' || text[end - 1] == '\n'))
            --end;
        return end;
    }

    char at(std::size_t i) const { return i < contentEnd_ ? text_[i] : '\0'; }

    void addRun(std::size_t length, S style) {
        if (length == 0) return;
        pos_ += length;
        auto& runs = result_.runs;
        if (!runs.empty() && runs.back().style == style)
            runs.back().length += static_cast<int>(length);
        else
            runs.push_back({static_cast<int>(length), style});
    }
    void addRunTo(std::size_t end, S style) { addRun(std::max(end, pos_) - pos_, style); }

    std::size_t skipWhile(std::size_t i, bool (*pred)(char)) const {
        while (i < contentEnd_ && pred(text_[i]))
            ++i;
        return i;
    }

    // Blanks, runs of non-ASCII bytes (kept whole so that no UTF-8 character
    // is split) and single operator characters.
    void addPlain() {
        char ch = text_[pos_];
        if (isBlank(ch)) return addRunTo(skipWhile(pos_, isBlank), S::Default);
        if (isNonAscii(ch)) return addRunTo(skipWhile(pos_, isNonAscii), S::Default);
        addRun(1, S::Operator);
    }

    void addQuoted(char quote, S style) {
        std::size_t close = text_.find(quote, pos_ + 1);
        addRunTo(close == std::string_view::npos || close >= contentEnd_ ? contentEnd_ : close + 1,
                 style);
    }

    void addNumber(std::size_t prefix) {
        addRunTo(skipWhile(pos_ + prefix, isWordChar), S::Number);
    }

    bool isMacroParam(const std::string& upperWord) const {
        return inMacro_ && std::find(params_.begin(), params_.end(), upperWord) != params_.end();
    }

    S wordStyle(std::string_view word) const {
        WordClass cls = classifyWord(word, context_);
        if (cls == WordClass::None && isMacroParam(upper(word))) return S::MacroParameter;
        return styleOf(cls);
    }

    std::string_view wordAt(std::size_t i) const {
        if (!isWordStart(at(i))) return {};
        return text_.substr(i, skipWhile(i + 1, isWordChar) - i);
    }

    // --- BASIC statements -------------------------------------------------

    void scanBasicToken() {
        char ch = text_[pos_];
        bool wasStatementStart = statementStart_;
        if (!isBlank(ch)) statementStart_ = false;
        if (ch == '\'' || ch == ';') return addRunTo(contentEnd_, S::Comment);
        if (ch == '"') return addQuoted('"', S::String);
        if (ch == ':') {
            statementStart_ = true;
            return addRun(1, S::Operator);
        }
        if (ch == '@' && wasStatementStart) {
            context_ = CodeContext::Assembler; // the rest of the line is assembler text
            return addRun(1, S::Operator);
        }
        if ((ch == '$' && isHexDigit(at(pos_ + 1))) || (ch == '%' && isDigit(at(pos_ + 1))))
            return addNumber(1);
        if (isDigit(ch)) return addNumber(0);
        if (isWordStart(ch)) return scanBasicWord(wasStatementStart);
        addPlain();
    }

    void scanBasicWord(bool atStatementStart) {
        std::string_view word = wordAt(pos_);
        std::string key = upper(word);
        if (key == "REM") return addRunTo(contentEnd_, S::Comment);
        if (inMacroHeader_) return addMacroParam(word, key);
        if (atStatementStart) return scanStatementHead(word, key);
        addRun(word.size(), wordStyle(word));
    }

    void scanStatementHead(std::string_view word, const std::string& key) {
        std::size_t after = pos_ + word.size();
        if (at(after) == ':' && !isNeverLabel(word)) return addRun(word.size(), S::Label);
        if (upper(wordAt(skipWhile(after, isBlank))) == "MACRO") return openMacro(word);
        if (key == "ASM") result_.end.inAsm = true;
        if (key == "ENDM") result_.end.inMacro = false;
        addRun(word.size(), wordStyle(word));
    }

    void openMacro(std::string_view name) {
        addRun(name.size(), S::Label);
        addRunTo(skipWhile(pos_, isBlank), S::Default);
        addRun(5, S::ReservedWord);
        inMacroHeader_ = true;
        result_.opensMacro = true;
        result_.end.inMacro = true;
    }

    void addMacroParam(std::string_view word, std::string key) {
        result_.macroParams.push_back(std::move(key));
        addRun(word.size(), S::MacroParameter);
    }

    // --- assembler text -----------------------------------------------------

    // The first word of a line inside an ASM block: ENDASM ends the block.
    void scanAsmLineHead() {
        addRunTo(skipWhile(pos_, isBlank), S::Default);
        std::string key = upper(wordAt(pos_));
        if (key != "ASM" && key != "ENDASM") return;
        if (key == "ENDASM") result_.end.inAsm = false;
        addRun(key.size(), S::ReservedWord);
    }

    void scanAsmToken() {
        char ch = text_[pos_];
        if (ch == ';') return addRunTo(contentEnd_, S::Comment);
        if (ch == '"' || ch == '\'') return addQuoted(ch, S::String);
        if (isRadixLetter(ch) && at(pos_ + 1) == '\'') {
            addRun(1, S::Number);
            return addQuoted('\'', S::Number);
        }
        if ((ch == '.' && isDigit(at(pos_ + 1))) || isDigit(ch)) return addNumber(1);
        if (isWordStart(ch)) return scanAsmWord();
        addPlain();
    }

    // A word in the first column, or the first word of the line followed by
    // ":", is a label unless it is an instruction or a directive.
    void scanAsmWord() {
        std::string_view word = wordAt(pos_);
        S style = wordStyle(word);
        bool firstWord = text_.find_first_not_of(" \t") == pos_;
        bool labelPlace = pos_ == 0 || (firstWord && at(pos_ + word.size()) == ':');
        if (labelPlace && style != S::Mnemonic && style != S::Directive) style = S::Label;
        addRun(word.size(), style);
    }

    std::string_view text_;
    std::size_t contentEnd_;
    const std::vector<std::string>& params_;
    const bool inMacro_; // the parameters apply: the line is in a macro body
    std::size_t pos_ = 0;
    CodeContext context_;
    bool statementStart_ = true;
    bool inMacroHeader_ = false;
    LineScan result_;
};

} // namespace

LineScan scanLine(std::string_view text, ScanState start,
                  const std::vector<std::string>& macroParams) {
    return LineScanner(text, start, macroParams).scan();
}

} // namespace zorvel::ide
