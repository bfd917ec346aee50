// Fixed tab columns for an editor: a tab character moves the text to the next
// of the given columns (counted from 1), and past the last one to the next
// multiple of the editor's tab width. The columns are kept on every line,
// including lines added later, and follow font and zoom changes.
#pragma once

#include <QList>
#include <QString>

class QsciScintilla;

namespace zorvel::ide {

// The source editor's columns: "5 9 13 17 21 25 29 33 37 41 45 49 53 57 61".
QList<int> defaultTabColumns();

// Sets the columns (an empty list leaves only the tab width) and applies them
// to every line.
void setTabColumns(QsciScintilla& editor, const QList<int>& columns);
QList<int> tabColumns(const QsciScintilla& editor);
// Applies the columns again after the width of the text font changed.
void refreshTabColumns(QsciScintilla& editor);

// "5 9 13" to {5, 9, 13}: numbers above 1 in increasing order; others are dropped.
QList<int> parseTabColumns(const QString& text);
QString tabColumnsText(const QList<int>& columns);

} // namespace zorvel::ide
