// Driving dialogs from tests by the texts on their real widgets.
#pragma once

#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide::test {

inline QAbstractButton* buttonNamed(QWidget& root, const QString& text) {
    for (QAbstractButton* button : root.findChildren<QAbstractButton*>())
        if (button->text() == text) return button;
    QTest::qFail(qPrintable("no button " + text), __FILE__, __LINE__);
    return nullptr;
}

// Clicks a push button in its middle, a check box or radio button on its mark.
inline void click(QWidget& root, const QString& text) {
    QAbstractButton* button = buttonNamed(root, text);
    if (!button) return;
    const bool push = qobject_cast<QPushButton*>(button) != nullptr;
    const QPoint at = push ? button->rect().center() : QPoint(6, button->height() / 2);
    QTest::mouseClick(button, Qt::LeftButton, {}, at);
}

// The same for a runDialog handler: returns the dialog's result afterwards.
inline int click(QDialog& dialog, const QString& text) {
    click(static_cast<QWidget&>(dialog), text);
    return dialog.result();
}

inline void clickAll(QWidget& root, const QStringList& texts) {
    for (const QString& text : texts)
        click(root, text);
}

inline bool isChecked(QWidget& root, const QString& text) {
    QAbstractButton* button = buttonNamed(root, text);
    return button && button->isChecked();
}

inline bool isEnabled(QWidget& root, const QString& text) {
    QAbstractButton* button = buttonNamed(root, text);
    return button && button->isEnabled();
}

// The drop-down box a label names.
inline QComboBox* boxLabelled(QWidget& root, const QString& label) {
    for (QLabel* candidate : root.findChildren<QLabel*>())
        if (candidate->text() == label) return qobject_cast<QComboBox*>(candidate->buddy());
    QTest::qFail(qPrintable("no label " + label), __FILE__, __LINE__);
    return nullptr;
}

// Replaces the box's text by typing.
inline void typeInto(QWidget& root, const QString& label, const QString& text) {
    QComboBox* box = boxLabelled(root, label);
    if (!box) return;
    box->lineEdit()->selectAll();
    if (text.isEmpty())
        QTest::keyClick(box->lineEdit(), Qt::Key_Backspace);
    else
        QTest::keyClicks(box->lineEdit(), text);
}

inline void select(QsciScintilla& editor, int start, int end) {
    editor.SendScintilla(QsciScintillaBase::SCI_SETSEL, static_cast<unsigned long>(start),
                         static_cast<long>(end));
}

inline QPair<int, int> selection(const QsciScintilla& editor) {
    return {static_cast<int>(editor.SendScintilla(QsciScintillaBase::SCI_GETSELECTIONSTART)),
            static_cast<int>(editor.SendScintilla(QsciScintillaBase::SCI_GETSELECTIONEND))};
}

} // namespace zorvel::ide::test
