#include "ide/editor/tab_columns.h"

#include <QRegularExpression>
#include <QStringList>
#include <QVariant>
#include <Qsci/qsciscintilla.h>
#include <algorithm>
#include <cmath>

namespace zorvel::ide {
namespace {

// Scintilla keeps tab stops per line, in pixels from the start of the line.
// A child object of the editor holds the columns and puts them on new lines.
constexpr char kKeeperName[] = "zorvelTabColumns";
constexpr char kColumnsProperty[] = "columns";
constexpr int kLastColumn = 1000;

QObject* findKeeper(const QsciScintilla& editor) {
    return editor.findChild<QObject*>(kKeeperName, Qt::FindDirectChildrenOnly);
}

long send(QsciScintilla& editor, unsigned int message, unsigned long wParam = 0, long lParam = 0) {
    return editor.SendScintilla(message, wParam, lParam);
}

// The width of one column of the text font, which may be a fraction of a
// pixel: measured over a hundred characters.
double columnWidth(QsciScintilla& editor) {
    const QByteArray sample(100, ' ');
    long width =
        editor.SendScintilla(QsciScintillaBase::SCI_TEXTWIDTH, uintptr_t(0), sample.constData());
    return std::max(1.0, width / 100.0);
}

// Tab stops are whole pixels; rounding up keeps the text at or after its column.
void applyToLines(QsciScintilla& editor, const QList<int>& columns, int first, int last) {
    const double width = columnWidth(editor);
    for (int line = first; line <= last; ++line) {
        send(editor, QsciScintillaBase::SCI_CLEARTABSTOPS, line);
        for (int column : columns)
            send(editor, QsciScintillaBase::SCI_ADDTABSTOP, line,
                 static_cast<long>(std::ceil((column - 1) * width)));
    }
}

void applyToAllLines(QsciScintilla& editor, const QList<int>& columns) {
    applyToLines(editor, columns, 0,
                 static_cast<int>(send(editor, QsciScintillaBase::SCI_GETLINECOUNT)) - 1);
}

void applyToNewLines(QsciScintilla& editor, int position, int type, int linesAdded) {
    if (!(type & QsciScintillaBase::SC_MOD_INSERTTEXT) || linesAdded <= 0) return;
    int first = static_cast<int>(send(editor, QsciScintillaBase::SCI_LINEFROMPOSITION, position));
    applyToLines(editor, tabColumns(editor), first, first + linesAdded);
}

QObject* keeper(QsciScintilla& editor) {
    if (QObject* existing = findKeeper(editor)) return existing;
    auto* keeper = new QObject(&editor);
    keeper->setObjectName(kKeeperName);
    QObject::connect(&editor, &QsciScintillaBase::SCN_MODIFIED, keeper,
                     [&editor](int position, int type, const char*, int, int linesAdded, int, int,
                               int, int,
                               int) { applyToNewLines(editor, position, type, linesAdded); });
    QObject::connect(&editor, &QsciScintillaBase::SCN_ZOOM, keeper,
                     [&editor] { refreshTabColumns(editor); });
    return keeper;
}

} // namespace

QList<int> defaultTabColumns() {
    return {5, 9, 13, 17, 21, 25, 29, 33, 37, 41, 45, 49, 53, 57, 61};
}

void setTabColumns(QsciScintilla& editor, const QList<int>& columns) {
    keeper(editor)->setProperty(kColumnsProperty, QVariant::fromValue(columns));
    applyToAllLines(editor, columns);
}

QList<int> tabColumns(const QsciScintilla& editor) {
    const QObject* keeper = findKeeper(editor);
    return keeper ? keeper->property(kColumnsProperty).value<QList<int>>() : QList<int>{};
}

void refreshTabColumns(QsciScintilla& editor) {
    applyToAllLines(editor, tabColumns(editor));
}

QList<int> parseTabColumns(const QString& text) {
    QList<int> columns;
    for (const QString& part :
         text.split(QRegularExpression(QStringLiteral("[\\s,]+")), Qt::SkipEmptyParts)) {
        bool ok = false;
        int column = part.toInt(&ok);
        if (ok && column > 1 && column <= kLastColumn &&
            (columns.isEmpty() || column > columns.last()))
            columns.append(column);
    }
    return columns;
}

QString tabColumnsText(const QList<int>& columns) {
    QStringList parts;
    for (int column : columns)
        parts.append(QString::number(column));
    return parts.join(QLatin1Char(' '));
}

} // namespace zorvel::ide
