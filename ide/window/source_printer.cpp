#include "ide/window/source_printer.h"

#include <QFontMetrics>
#include <QPainter>

namespace zorvel::ide {

SourcePrinter::SourcePrinter() {
    setColorMode(QPrinter::GrayScale);
    setWrapMode(QsciScintilla::WrapWord);
}

QString SourcePrinter::heading(int page) const {
    return fileName_ + '\t' + date_.toString(Qt::ISODate) + '\t' +
           QStringLiteral("Page %1").arg(page);
}

// The heading takes one line above the text, with a rule under it.
void SourcePrinter::formatPage(QPainter& painter, bool drawing, QRect& area, int page) {
    const QStringList parts = heading(page).split('\t');
    const int height = QFontMetrics(painter.font()).height();
    if (drawing) {
        const QRect line(area.left(), area.top(), area.width(), height);
        painter.drawText(line, Qt::AlignLeft, parts[0]);
        painter.drawText(line, Qt::AlignHCenter, parts[1]);
        painter.drawText(line, Qt::AlignRight, parts[2]);
        painter.drawLine(area.left(), area.top() + height + 2, area.right(),
                         area.top() + height + 2);
    }
    area.setTop(area.top() + height + height / 2);
}

} // namespace zorvel::ide
