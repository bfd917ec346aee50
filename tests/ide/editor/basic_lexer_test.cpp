// The BASIC highlighter in a real editor: the style of words and marks in
// representative lines, ASM blocks and macro bodies, and restyling after edits
// inside a block. Also the word classes of the keyword lists.
#include "ide/editor/basic_keywords.h"
#include "ide/editor/basic_lexer.h"

#include <QTest>
#include <Qsci/qsciscintilla.h>

using namespace zorvel::ide;
using S = BasicLexer::Style;

namespace {

// Styles what is not styled yet, from where the last styling or edit left
// off, as painting does.
int styleAt(QsciScintilla& editor, int position) {
    const long styled = editor.SendScintilla(QsciScintillaBase::SCI_GETENDSTYLED);
    editor.SendScintilla(QsciScintillaBase::SCI_COLOURISE, styled, -1);
    return static_cast<int>(editor.SendScintilla(QsciScintillaBase::SCI_GETSTYLEAT, position));
}

// Every byte of the first occurrence of `needle` (at or after the first
// occurrence of `after`) has `style`; the message names the first byte that
// has not.
void checkStyle(QsciScintilla& editor, const QByteArray& needle, int style,
                const QByteArray& after = {}) {
    const QByteArray text = editor.text().toUtf8();
    const int at = static_cast<int>(text.indexOf(needle, std::max(0, int(text.indexOf(after)))));
    QVERIFY2(at >= 0, needle.constData());
    for (int i = at; i < at + needle.size(); ++i) {
        const int actual = styleAt(editor, i);
        QVERIFY2(actual == style, qPrintable(QStringLiteral("'%1' byte %2: style %3, wanted %4")
                                                 .arg(QString::fromUtf8(needle))
                                                 .arg(i - at)
                                                 .arg(actual)
                                                 .arg(style)));
    }
}

void replaceText(QsciScintilla& editor, const QString& from, const QString& to) {
    const int at = static_cast<int>(editor.text().toUtf8().indexOf(from.toUtf8()));
    QVERIFY(at >= 0);
    editor.SendScintilla(QsciScintillaBase::SCI_SETTARGETRANGE, at, at + from.toUtf8().size());
    const QByteArray bytes = to.toUtf8();
    editor.SendScintilla(QsciScintillaBase::SCI_REPLACETARGET, uintptr_t(bytes.size()),
                         bytes.constData());
}

const char* const kAsmProgram = "x = 1\n"
                                "ASM\n"
                                "here movlw 1\n"
                                "  call m@py ; multiply\n"
                                "  goto here\n"
                                "  GOSUB h'1F', 0x10\n"
                                "ENDASM\n"
                                "CALL Sub1\n"
                                "PRINT y\n";

const char* const kMacroProgram = "Add2 MACRO pA, pB\n"
                                  "  NUM_BYTE pA, pB\n"
                                  "  PRM_1 = 0\n"
                                  "  pB = pA + 1\n"
                                  "ENDM\n"
                                  "pA = 3\n";

} // namespace

class BasicLexerTest : public QObject {
    Q_OBJECT

private:
    QsciScintilla editor;
    BasicLexer* lexer = nullptr;

private slots:
    void initTestCase() {
        lexer = new BasicLexer(&editor);
        editor.setUtf8(true);
        editor.setLexer(lexer);
    }

    void namesItself() {
        QCOMPARE(QString(lexer->language()), QString("Zorvel BASIC"));
        for (int style = 0; style < BasicLexer::StyleCount; ++style) {
            QVERIFY(!lexer->description(style).isEmpty());
            QVERIFY(!BasicLexer::styleKey(style).isEmpty());
        }
        QVERIFY(lexer->description(BasicLexer::StyleCount).isEmpty());
    }

    void singleLines_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("needle");
        QTest::addColumn<int>("style");
        auto row = [](const char* name, const char* text, const char* needle, S style) {
            QTest::newRow(name) << QString::fromUtf8(text) << QByteArray(needle) << int(style);
        };
        row("keyword", "PRINT \"Hello\"", "PRINT", S::ReservedWord);
        row("keyword lower case", "print x", "print", S::ReservedWord);
        row("string", "PRINT \"it's\"", "\"it's\"", S::String);
        row("quote comment", "x = 1 ' set x", "' set x", S::Comment);
        row("variable before comment", "xx = 1 ' set", "xx", S::Identifier);
        row("semicolon comment", "; whole line", "; whole line", S::Comment);
        row("REM comment", "REM says PRINT", "REM says PRINT", S::Comment);
        row("REM after separator", "x = 1 : rem note", "rem note", S::Comment);
        row("UTF-8 comment", "' grüße", "' grüße", S::Comment);
        row("hex number", "x = $FF", "$FF", S::Number);
        row("binary number", "x = %1010", "%1010", S::Number);
        row("decimal number", "x = 255", "255", S::Number);
        row("operator", "x = a + b", "+", S::Operator);
        row("label", "Start: GOTO Again", "Start", S::Label);
        row("jump target", "Start: GOTO Again", "Again", S::Identifier);
        row("label before statement", "L2: PRINT 1", "PRINT", S::ReservedWord);
        row("ELSE: is no label", "ELSE: x = 1", "ELSE", S::ReservedWord);
        row("function", "x = RANDOM", "RANDOM", S::Function);
        row("declare setting", "DECLARE XTAL 20", "XTAL", S::DeclareSetting);
        row("keyword prefix only", "PRINTER = 1", "PRINTER", S::Identifier);
        row("inline mnemonic statement", "MOVLW 5", "MOVLW", S::Mnemonic);
        row("CALL is a statement", "CALL Sub1", "CALL", S::ReservedWord);
        row("one-line asm", "@ movlw 5 ; five", "movlw", S::Mnemonic);
        row("one-line asm comment", "@ movlw 5 ; five", "; five", S::Comment);
        row("directive", "#IFDEF DEBUG", "#IFDEF", S::Directive);
        row("macro variable", "PRM_12 = 1", "PRM_12", S::MacroParameter);
        row("system variable", "PP0 = 1", "PP0", S::RuntimeName);
    }
    void singleLines() {
        QFETCH(QString, text);
        QFETCH(QByteArray, needle);
        QFETCH(int, style);
        editor.setText(text);
        checkStyle(editor, needle, style);
    }

    void asmBlock_data() {
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QByteArray>("needle");
        QTest::addColumn<int>("style");
        auto row = [](const char* name, const char* after, const char* needle, S style) {
            QTest::newRow(name) << QByteArray(after) << QByteArray(needle) << int(style);
        };
        row("ASM", "", "ASM", S::ReservedWord);
        row("label in column 1", "", "here", S::Label);
        row("mnemonic", "", "movlw", S::Mnemonic);
        row("call is a mnemonic", "", "call", S::Mnemonic);
        row("runtime name", "", "m@py", S::RuntimeName);
        row("asm comment", "", "; multiply", S::Comment);
        row("goto is a mnemonic", "", "goto", S::Mnemonic);
        row("jump target", "goto", "here", S::Identifier);
        row("BASIC keyword means nothing", "", "GOSUB", S::Identifier);
        row("quoted hex", "", "h'1F'", S::Number);
        row("0x hex", "", "0x10", S::Number);
        row("ENDASM", "", "ENDASM", S::ReservedWord);
        row("CALL after the block", "", "CALL", S::ReservedWord);
        row("PRINT after the block", "PRINT y", "PRINT", S::ReservedWord);
    }
    void asmBlock() {
        QFETCH(QByteArray, after);
        QFETCH(QByteArray, needle);
        QFETCH(int, style);
        editor.setText(QString::fromLatin1(kAsmProgram));
        checkStyle(editor, needle, style, after);
    }

    void macroBody_data() {
        QTest::addColumn<QByteArray>("after");
        QTest::addColumn<QByteArray>("needle");
        QTest::addColumn<int>("style");
        auto row = [](const char* name, const char* after, const char* needle, S style) {
            QTest::newRow(name) << QByteArray(after) << QByteArray(needle) << int(style);
        };
        row("macro name", "", "Add2", S::Label);
        row("MACRO", "", "MACRO", S::ReservedWord);
        row("parameter in header", "", "pB", S::MacroParameter);
        row("type-pair statement", "", "NUM_BYTE", S::ReservedWord);
        row("parameter in body", "NUM_BYTE", "pB", S::MacroParameter);
        row("PRM_1", "", "PRM_1", S::MacroParameter);
        row("name after ENDM", "ENDM", "pA", S::Identifier);
    }
    void macroBody() {
        QFETCH(QByteArray, after);
        QFETCH(QByteArray, needle);
        QFETCH(int, style);
        editor.setText(QString::fromLatin1(kMacroProgram));
        checkStyle(editor, needle, style, after);
    }

    // Edits that open, close or change a block restyle the lines after them.
    void editsInsideBlocksRestyle() {
        editor.setText(QString::fromLatin1(kAsmProgram));
        checkStyle(editor, "PRINT", S::ReservedWord, "PRINT y");
        replaceText(editor, "ENDASM", "NOTEND");
        checkStyle(editor, "PRINT", S::Label, "PRINT y"); // assembler text, first column
        checkStyle(editor, "CALL", S::Mnemonic);
        replaceText(editor, "NOTEND", "endasm");
        checkStyle(editor, "CALL", S::ReservedWord);
        replaceText(editor, "  call m@py", "ENDASM\n  call m@py");
        checkStyle(editor, "call", S::ReservedWord);
        checkStyle(editor, "goto", S::ReservedWord);
        replaceText(editor, "x = 1\nASM\n", "x = 1\n");
        checkStyle(editor, "movlw", S::Mnemonic); // a statement of BASIC now
        checkStyle(editor, "here", S::Identifier, "goto");
    }

    void editInsideMacroKeepsParameters() {
        editor.setText(QString::fromLatin1(kMacroProgram));
        styleAt(editor, 0);
        replaceText(editor, "pB = pA + 1", "pB = pA + 2");
        checkStyle(editor, "pA", S::MacroParameter, "pB =");
        replaceText(editor, "ENDM\n", "");
        checkStyle(editor, "pA", S::MacroParameter, "pA = 3");
    }

    void wordClasses_data() {
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("inAssembler");
        QTest::addColumn<int>("wordClass");
        auto row = [](const char* word, bool inAsm, WordClass cls) {
            QTest::newRow(qPrintable(QStringLiteral("%1 %2").arg(word, inAsm ? "asm" : "basic")))
                << QString(word) << inAsm << int(cls);
        };
        row("gosub", false, WordClass::Statement);
        row("CALL", false, WordClass::Statement);
        row("CALL", true, WordClass::Mnemonic);
        row("GOSUB", true, WordClass::None);
        row("print", true, WordClass::RuntimeName);
        row("B", false, WordClass::None);
        row("B", true, WordClass::Mnemonic);
        row("skpnz", false, WordClass::Mnemonic);
        row("ADIN", false, WordClass::Function);
        row("Lcd_Lines", false, WordClass::DeclareSetting);
        row("cblock", true, WordClass::Directive);
        row("#undefine", false, WordClass::Directive);
        row("D@VD", true, WordClass::RuntimeName);
        row("f@ad12", true, WordClass::RuntimeName);
        row("GEN4H", false, WordClass::RuntimeName);
        row("RETURN_BITNUM", false, WordClass::MacroVariable);
        row("PRM_", false, WordClass::None);
        row("GOTOX", false, WordClass::None);
    }
    void wordClasses() {
        QFETCH(QString, word);
        QFETCH(bool, inAssembler);
        QFETCH(int, wordClass);
        const std::string w = word.toStdString();
        auto context = inAssembler ? CodeContext::Assembler : CodeContext::Basic;
        QCOMPARE(int(classifyWord(w, context)), wordClass);
    }

    void longWordIsNoKeyword() {
        QCOMPARE(classifyWord(std::string(40, 'A'), CodeContext::Basic), WordClass::None);
        QVERIFY(isNeverLabel("skip"));
        QVERIFY(!isNeverLabel("LOOP1"));
    }
};

QTEST_MAIN(BasicLexerTest)
#include "basic_lexer_test.moc"
