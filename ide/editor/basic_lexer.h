// The highlighter of the source editor for the BASIC dialect. Each line is
// styled from the state the previous line left behind (inside an ASM ...
// ENDASM block, inside a macro body), kept as the editor's line state, so
// that styling can resume at any line after an edit.
#pragma once

#include <Qsci/qscilexercustom.h>
#include <string>
#include <vector>

namespace zorvel::ide {

class BasicLexer : public QsciLexerCustom {
    Q_OBJECT

public:
    enum Style {
        Default = 0,
        Comment,
        ReservedWord,
        Operator,
        Identifier,
        Mnemonic,
        MacroParameter,
        Number,
        String,
        Label,
        Function,
        DeclareSetting,
        RuntimeName,
        Directive,
        StyleCount
    };

    explicit BasicLexer(QObject* parent = nullptr);

    const char* language() const override;
    // The name of a style as the user sees it; empty for a number that is no style.
    QString description(int style) const override;
    // The name under which a style's settings are kept; empty for no style.
    static QString styleKey(int style);

    using QsciLexer::defaultColor;
    using QsciLexer::defaultFont;
    using QsciLexer::defaultPaper;
    QColor defaultColor(int style) const override;
    QColor defaultPaper(int style) const override;
    // The lexer's default font, bold or italic as the style wants it.
    QFont defaultFont(int style) const override;

    bool caseSensitive() const override { return false; }
    const char* wordCharacters() const override;

    void styleText(int start, int end) override;

private:
    int lineCount() const;
    int lineStart(int line) const;
    int lineState(int line) const;
    QByteArray lineBytes(int line) const;
    std::vector<std::string> macroParamsBefore(int line) const;
};

} // namespace zorvel::ide
