// Printing the source: monochrome, long lines wrapped, and a heading on every
// page with the file name, the date and the page number.
#pragma once

#include <QDate>
#include <QString>
#include <Qsci/qsciprinter.h>

namespace zorvel::ide {

class SourcePrinter : public QsciPrinter {
public:
    SourcePrinter();

    void setFileName(const QString& name) { fileName_ = name; }
    // The heading of a page: "name<TAB>date<TAB>Page n".
    QString heading(int page) const;

    void formatPage(QPainter& painter, bool drawing, QRect& area, int page) override;

private:
    QString fileName_;
    QDate date_ = QDate::currentDate();
};

} // namespace zorvel::ide
