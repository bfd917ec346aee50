#include "ide/window/listing_window.h"

#include "ide/editor/editor_setup.h"

#include <QCloseEvent>
#include <QFile>
#include <QVBoxLayout>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

ListingWindow::ListingWindow(const QString& title, WindowBox& box, QWidget* parent)
    : QWidget(parent, Qt::Window), box_(box), view_(new QsciScintilla(this)) {
    setWindowTitle(title);
    configureListingView(*view_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view_);
    applyBox();
}

void ListingWindow::applyBox() {
    const WindowBox saved = box_;
    if (saved.width > 0 && saved.height > 0) resize(saved.width, saved.height);
    move(saved.x, saved.y);
    box_ = saved; // the resize above reports the same size back
}

void ListingWindow::loadFile(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        clear();
        return;
    }
    view_->setText(QString::fromUtf8(file.readAll()));
}

void ListingWindow::clear() {
    view_->clear();
}

void ListingWindow::selectLine(int line) {
    const int index = line - 1;
    if (index < 0 || index >= view_->lines()) return;
    view_->setSelection(index, 0, index, view_->text(index).length());
    view_->ensureLineVisible(index);
}

void ListingWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    box_.width = width();
    box_.height = height();
}

// The position is taken when the window loses the focus, and when it closes.
void ListingWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow() && isVisible()) {
        box_.x = x();
        box_.y = y();
    }
}

void ListingWindow::closeEvent(QCloseEvent* event) {
    box_.x = x();
    box_.y = y();
    event->accept();
    emit closed();
}

} // namespace zorvel::ide
