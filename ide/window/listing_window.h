// A read-only listing window (the assembly file or the HEX file) that keeps
// its size and position in a WindowBox of the settings.
#pragma once

#include "ide/common/settings.h"

#include <QWidget>

class QsciScintilla;

namespace zorvel::ide {

class ListingWindow : public QWidget {
    Q_OBJECT

public:
    ListingWindow(const QString& title, WindowBox& box, QWidget* parent = nullptr);

    QsciScintilla* view() const { return view_; }
    // Replaces the text by the file's; empty when it cannot be read.
    void loadFile(const QString& path);
    void clear();
    // Selects a 1-based line and scrolls to it.
    void selectLine(int line);

signals:
    void closed();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void applyBox();

    WindowBox& box_;
    QsciScintilla* view_;
};

} // namespace zorvel::ide
