// The source editor's options that the user can change in the editor options
// dialog, kept in the editor settings (group "Editor") and applied again at
// start-up.
#pragma once

#include <QFont>
#include <QList>
#include <QString>

class QsciScintilla;

namespace zorvel::ide {

class BasicLexer;

struct EditorOptions {
    QString fontFamily;
    int fontPixels = 13;
    QList<int> tabColumns; // counted from 1; empty: only the tab width
    int tabWidth = 8;
    int indentWidth = 8;
    bool autoIndent = true;
    int rightMargin = 80;
    bool lineNumbers = true;
    bool showWhitespace = false;
    bool operator==(const EditorOptions&) const = default;
};

// The limits the dialog and the settings reader keep values in.
inline constexpr int kMinFontPixels = 6;
inline constexpr int kMaxFontPixels = 72;
inline constexpr int kMaxTabWidth = 32;
inline constexpr int kMaxRightMargin = 500;

EditorOptions currentEditorOptions(const QsciScintilla& editor);
void applyEditorOptions(QsciScintilla& editor, const EditorOptions& options);
void saveEditorOptions(const EditorOptions& options);
// Applies the options kept in the settings; missing or unusable entries keep
// the editor's current value.
void loadEditorOptions(QsciScintilla& editor);

// Gives every style of the lexer the family and size of `font`, keeping each
// style's bold and italic.
void setLexerFont(BasicLexer& lexer, const QFont& font);

} // namespace zorvel::ide
