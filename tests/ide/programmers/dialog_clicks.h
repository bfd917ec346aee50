// Clicking a dialog's real buttons by their text from a test.
#pragma once

#include <QDialog>
#include <QPushButton>
#include <QTest>

namespace zorvel::ide::test {

inline QPushButton* buttonNamed(QWidget& parent, const QString& text) {
    for (QPushButton* button : parent.findChildren<QPushButton*>())
        if (button->text() == text) return button;
    return nullptr;
}

// Clicks the button and returns the dialog's result, for a runDialog handler.
inline int click(QDialog& dialog, const QString& text) {
    QPushButton* button = buttonNamed(dialog, text);
    if (!button) {
        QTest::qFail(qPrintable("no button " + text), __FILE__, __LINE__);
        return QDialog::Rejected;
    }
    QTest::mouseClick(button, Qt::LeftButton);
    return dialog.result();
}

} // namespace zorvel::ide::test
