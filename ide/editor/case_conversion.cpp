#include "ide/editor/case_conversion.h"

#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {
namespace {

using Sci = QsciScintillaBase;

long send(QsciScintilla& editor, unsigned int message, unsigned long wParam = 0, long lParam = 0) {
    return editor.SendScintilla(message, wParam, lParam);
}

// Replaces the text of selection `n` (one of several in a multiple or
// rectangular selection) and selects the new text, keeping the direction.
void convertSelection(QsciScintilla& editor, int n, QString (QString::*convert)() const&) {
    long anchor = send(editor, Sci::SCI_GETSELECTIONNANCHOR, n);
    long caret = send(editor, Sci::SCI_GETSELECTIONNCARET, n);
    long start = std::min(anchor, caret);
    long end = std::max(anchor, caret);
    if (start == end) return;
    QByteArray bytes = editor.bytes(static_cast<int>(start), static_cast<int>(end));
    bytes.truncate(end - start); // drop the terminating NUL the editor adds
    QByteArray converted = (QString::fromUtf8(bytes).*convert)().toUtf8();
    if (converted == bytes) return;
    send(editor, Sci::SCI_SETTARGETRANGE, start, end);
    editor.SendScintilla(Sci::SCI_REPLACETARGET, converted.size(), converted.constData());
    long newEnd = start + converted.size();
    send(editor, Sci::SCI_SETSELECTIONNANCHOR, n, anchor <= caret ? start : newEnd);
    send(editor, Sci::SCI_SETSELECTIONNCARET, n, anchor <= caret ? newEnd : start);
}

void convertSelections(QsciScintilla& editor, QString (QString::*convert)() const&) {
    if (editor.isReadOnly() || send(editor, Sci::SCI_GETSELECTIONEMPTY)) return;
    int count = static_cast<int>(send(editor, Sci::SCI_GETSELECTIONS));
    editor.beginUndoAction();
    for (int n = 0; n < count; ++n)
        convertSelection(editor, n, convert);
    editor.endUndoAction();
}

} // namespace

void upperCaseSelection(QsciScintilla& editor) {
    convertSelections(editor, &QString::toUpper);
}

void lowerCaseSelection(QsciScintilla& editor) {
    convertSelections(editor, &QString::toLower);
}

} // namespace zorvel::ide
