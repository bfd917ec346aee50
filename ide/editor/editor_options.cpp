#include "ide/editor/editor_options.h"

#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_setup.h"
#include "ide/editor/style_store.h"
#include "ide/editor/tab_columns.h"

#include <QFontDatabase>
#include <Qsci/qsciscintilla.h>
#include <algorithm>

namespace zorvel::ide {
namespace {

const QString kGroup = QStringLiteral("Editor");
const QString kFontFamily = QStringLiteral("FontFamily");
const QString kFontPixels = QStringLiteral("FontPixels");
const QString kTabColumns = QStringLiteral("TabColumns");
const QString kTabWidth = QStringLiteral("TabWidth");
const QString kIndentWidth = QStringLiteral("IndentWidth");
const QString kAutoIndent = QStringLiteral("AutoIndent");
const QString kRightMargin = QStringLiteral("RightMargin");
const QString kLineNumbers = QStringLiteral("LineNumbers");
const QString kShowWhitespace = QStringLiteral("ShowWhitespace");
const QString kLineNumberWidth = QStringLiteral("00000");

BasicLexer* basicLexer(const QsciScintilla& editor) {
    return qobject_cast<BasicLexer*>(editor.lexer());
}

QFont currentFont(const QsciScintilla& editor) {
    if (const BasicLexer* lexer = basicLexer(editor)) return lexer->font(BasicLexer::Default);
    return editor.font();
}

void applyFont(QsciScintilla& editor, const EditorOptions& options) {
    QFont font = fontOfPixelHeight(options.fontFamily, options.fontPixels);
    if (BasicLexer* lexer = basicLexer(editor))
        setLexerFont(*lexer, font);
    else
        editor.setFont(font);
    refreshTabColumns(editor);
}

void applyLineNumbers(QsciScintilla& editor, bool shown) {
    editor.setMarginLineNumbers(0, shown);
    if (shown)
        editor.setMarginWidth(0, kLineNumberWidth);
    else
        editor.setMarginWidth(0, 0);
}

// An integer entry within [low, high], else `fallback`.
int readInt(const QSettings& settings, const QString& key, int low, int high, int fallback) {
    bool ok = false;
    int value = settings.value(key).toInt(&ok);
    return ok && value >= low && value <= high ? value : fallback;
}

bool readBool(const QSettings& settings, const QString& key, bool fallback) {
    return settings.contains(key) ? settings.value(key).toBool() : fallback;
}

QString readFamily(const QSettings& settings, const QString& fallback) {
    QString family = settings.value(kFontFamily).toString();
    return QFontDatabase::hasFamily(family) ? family : fallback;
}

EditorOptions readOptions(const QSettings& settings, EditorOptions o) {
    o.fontFamily = readFamily(settings, o.fontFamily);
    o.fontPixels = readInt(settings, kFontPixels, kMinFontPixels, kMaxFontPixels, o.fontPixels);
    if (settings.contains(kTabColumns))
        o.tabColumns = parseTabColumns(settings.value(kTabColumns).toString());
    o.tabWidth = readInt(settings, kTabWidth, 1, kMaxTabWidth, o.tabWidth);
    o.indentWidth = readInt(settings, kIndentWidth, 1, kMaxTabWidth, o.indentWidth);
    o.autoIndent = readBool(settings, kAutoIndent, o.autoIndent);
    o.rightMargin = readInt(settings, kRightMargin, 1, kMaxRightMargin, o.rightMargin);
    o.lineNumbers = readBool(settings, kLineNumbers, o.lineNumbers);
    o.showWhitespace = readBool(settings, kShowWhitespace, o.showWhitespace);
    return o;
}

} // namespace

EditorOptions currentEditorOptions(const QsciScintilla& editor) {
    EditorOptions o;
    QFont font = currentFont(editor);
    o.fontFamily = font.family();
    o.fontPixels = pixelHeightOf(font);
    o.tabColumns = tabColumns(editor);
    o.tabWidth = editor.tabWidth();
    o.indentWidth = editor.indentationWidth();
    o.autoIndent = editor.autoIndent();
    o.rightMargin = editor.edgeColumn();
    o.lineNumbers = editor.marginLineNumbers(0) && editor.marginWidth(0) > 0;
    o.showWhitespace = editor.whitespaceVisibility() != QsciScintilla::WsInvisible;
    return o;
}

void applyEditorOptions(QsciScintilla& editor, const EditorOptions& o) {
    applyFont(editor, o);
    setTabColumns(editor, o.tabColumns);
    editor.setTabWidth(std::clamp(o.tabWidth, 1, kMaxTabWidth));
    editor.setIndentationWidth(std::clamp(o.indentWidth, 1, kMaxTabWidth));
    editor.setAutoIndent(o.autoIndent);
    editor.setEdgeColumn(std::clamp(o.rightMargin, 1, kMaxRightMargin));
    applyLineNumbers(editor, o.lineNumbers);
    editor.setWhitespaceVisibility(o.showWhitespace ? QsciScintilla::WsVisible
                                                    : QsciScintilla::WsInvisible);
}

void saveEditorOptions(const EditorOptions& o) {
    auto settings = openEditorSettings();
    settings->beginGroup(kGroup);
    settings->setValue(kFontFamily, o.fontFamily);
    settings->setValue(kFontPixels, o.fontPixels);
    settings->setValue(kTabColumns, tabColumnsText(o.tabColumns));
    settings->setValue(kTabWidth, o.tabWidth);
    settings->setValue(kIndentWidth, o.indentWidth);
    settings->setValue(kAutoIndent, o.autoIndent);
    settings->setValue(kRightMargin, o.rightMargin);
    settings->setValue(kLineNumbers, o.lineNumbers);
    settings->setValue(kShowWhitespace, o.showWhitespace);
    settings->endGroup();
    settings->sync();
}

void loadEditorOptions(QsciScintilla& editor) {
    auto settings = openEditorSettings();
    settings->beginGroup(kGroup);
    if (settings->childKeys().isEmpty()) return; // nothing kept yet: the set-up stands
    applyEditorOptions(editor, readOptions(*settings, currentEditorOptions(editor)));
}

void setLexerFont(BasicLexer& lexer, const QFont& font) {
    lexer.setDefaultFont(font);
    for (int style = 0; style < BasicLexer::StyleCount; ++style) {
        QFont styleFont = lexer.font(style);
        styleFont.setFamily(font.family());
        styleFont.setPointSizeF(font.pointSizeF());
        lexer.setFont(styleFont, style);
    }
}

} // namespace zorvel::ide
