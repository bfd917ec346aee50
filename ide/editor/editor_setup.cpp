#include "ide/editor/editor_setup.h"

#include "ide/editor/basic_lexer.h"
#include "ide/editor/tab_columns.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>
#include <Qsci/qsciscintilla.h>
#include <cmath>

namespace zorvel::ide {
namespace {

constexpr int kEditorFontPixels = 13;
constexpr int kGutterFontPixels = 11;
constexpr unsigned kSelectionBackgroundValue = 6824960; // RGB(0, 36, 104)
constexpr int kRightMargin = 80;
constexpr int kIndentWidth = 8;
constexpr int kTabWidth = 8;
const QColor kEdgeColor(0xc0, 0xc0, 0xc0);
const QColor kCurrentLineColor(0xe8, 0xf0, 0xff);
const QString kLineNumberWidth = QStringLiteral("00000");

qreal screenDpi() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    qreal dpi = screen ? screen->logicalDotsPerInchY() : 0.0;
    return dpi > 0 ? dpi : 96.0;
}

// Whether every character of the family is as wide as every other.
bool isMonospace(const QString& family) {
    QFontMetricsF metrics{QFont(family)};
    const qreal width = metrics.horizontalAdvance(QLatin1Char('m'));
    return width > 0 && metrics.horizontalAdvance(QLatin1Char('i')) == width &&
           metrics.horizontalAdvance(QLatin1Char(' ')) == width;
}

// "Courier New", else a family drawn like it (Liberation Mono has its
// metrics, Nimbus Mono PS is a Courier), else the system's fixed font.
QString editorFamily() {
    for (const char* family : {"Courier New", "Liberation Mono", "Nimbus Mono PS", "Cousine"}) {
        const QString name = QString::fromLatin1(family);
        if (QFontDatabase::hasFamily(name) && isMonospace(name)) return name;
    }
    const QString fixed = QFontInfo(QFontDatabase::systemFont(QFontDatabase::FixedFont)).family();
    return isMonospace(fixed) ? fixed : QStringLiteral("monospace");
}

QFont gutterFont() {
    const QString wanted = QStringLiteral("MS Sans Serif");
    QString family = QFontDatabase::hasFamily(wanted)
                         ? wanted
                         : QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    return fontOfPixelHeight(family, kGutterFontPixels);
}

void setMonospaceFont(QsciScintilla& editor, BasicLexer* lexer) {
    editor.setUtf8(true);
    if (!lexer) {
        editor.setFont(editorFont());
        return;
    }
    editor.setLexer(lexer); // the lexer's styles carry the editor font
}

void showLineNumbers(QsciScintilla& editor) {
    editor.setMarginType(0, QsciScintilla::NumberMargin);
    editor.setMarginLineNumbers(0, true);
    editor.setMarginsFont(gutterFont());
    editor.setMarginWidth(0, kLineNumberWidth);
}

void hideMargins(QsciScintilla& editor) {
    for (int margin = 0; margin < editor.margins(); ++margin)
        editor.setMarginWidth(margin, 0);
}

// The horizontal scroll bar follows the longest line shown instead of a
// fixed width of 2000 pixels.
void trackScrollWidth(QsciScintilla& editor) {
    editor.SendScintilla(QsciScintillaBase::SCI_SETSCROLLWIDTH, 1);
    editor.SendScintilla(QsciScintillaBase::SCI_SETSCROLLWIDTHTRACKING, 1);
}

void setSelectionColors(QsciScintilla& editor) {
    editor.setSelectionForegroundColor(selectionForeground());
    editor.setSelectionBackgroundColor(selectionBackground());
}

// Real tab characters, 8 columns of indentation, the right margin at 80.
// Tabs stop at the fixed columns 5, 9, ..., 61 (set per line as tab stops),
// and every 8 columns past them.
void setLayout(QsciScintilla& editor) {
    editor.setIndentationsUseTabs(true);
    editor.setIndentationWidth(kIndentWidth);
    editor.setTabWidth(kTabWidth);
    editor.setTabIndents(true);
    setTabColumns(editor, defaultTabColumns());
    editor.setEdgeMode(QsciScintilla::EdgeLine);
    editor.setEdgeColumn(kRightMargin);
    editor.setEdgeColor(kEdgeColor);
}

void setEditingBehaviour(QsciScintilla& editor) {
    editor.setAutoIndent(true);
    editor.setBraceMatching(QsciScintilla::SloppyBraceMatch);
    editor.setWrapMode(QsciScintilla::WrapNone);
    editor.setWrapVisualFlags(QsciScintilla::WrapFlagByBorder);
}

} // namespace

QFont fontOfPixelHeight(const QString& family, int pixels) {
    QFont font(family);
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSizeF(pixels * 72.0 / screenDpi());
    return font;
}

int pixelHeightOf(const QFont& font) {
    if (font.pixelSize() > 0) return font.pixelSize();
    return static_cast<int>(std::lround(font.pointSizeF() * screenDpi() / 72.0));
}

QFont editorFont() {
    return fontOfPixelHeight(editorFamily(), kEditorFontPixels);
}

QColor colorFromWindowsValue(unsigned value) {
    return QColor(value & 0xff, (value >> 8) & 0xff, (value >> 16) & 0xff);
}

QColor selectionForeground() {
    return QColor(Qt::white);
}

QColor selectionBackground() {
    return colorFromWindowsValue(kSelectionBackgroundValue);
}

void configureSourceEditor(QsciScintilla& editor, BasicLexer* lexer) {
    setMonospaceFont(editor, lexer);
    showLineNumbers(editor);
    setLayout(editor);
    setSelectionColors(editor);
    setEditingBehaviour(editor);
    trackScrollWidth(editor);
}

void configureMessagePane(QsciScintilla& pane) {
    setMonospaceFont(pane, nullptr);
    hideMargins(pane);
    setSelectionColors(pane);
    pane.SendScintilla(QsciScintillaBase::SCI_SETSELEOLFILLED, 1);
    pane.setCaretLineVisible(true);
    pane.setCaretLineBackgroundColor(kCurrentLineColor);
    pane.setReadOnly(true);
    trackScrollWidth(pane);
}

void configureListingView(QsciScintilla& view) {
    setMonospaceFont(view, nullptr);
    showLineNumbers(view);
    setSelectionColors(view);
    view.setTabWidth(kTabWidth);
    view.setReadOnly(true);
    trackScrollWidth(view);
}

} // namespace zorvel::ide
