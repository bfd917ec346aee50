#include "ide/common/prompts.h"

#include <QDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <cstdio>
#include <cstdlib>

namespace zorvel::ide {

namespace {

const QString kCaption = QStringLiteral("Zorvel");

QString runFileDialog(QWidget* parent, const FileDialogSpec& spec, QFileDialog::AcceptMode mode) {
    QFileDialog dialog(parent, spec.title, spec.folder, spec.filter);
    dialog.setAcceptMode(mode);
    dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile
                                                       : QFileDialog::AnyFile);
    dialog.setDefaultSuffix(spec.defaultSuffix);
    if (!spec.initialName.isEmpty() && !spec.initialName.contains('*'))
        dialog.selectFile(spec.initialName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return dialog.selectedFiles().first();
}

} // namespace

QString screenText(const QString& text) {
    QString s = text;
    s.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    return s;
}

Prompts::Answer QtPrompts::askSaveChanges(QWidget* parent, bool allowCancel) {
    QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
    if (allowCancel) buttons |= QMessageBox::Cancel;
    QMessageBox box(QMessageBox::Warning, kCaption,
                    QStringLiteral("The current file has changed, Save changes ?"), buttons,
                    parent);
    switch (box.exec()) {
    case QMessageBox::Yes: return Answer::Yes;
    case QMessageBox::No: return Answer::No;
    default: return allowCancel ? Answer::Cancel : Answer::No;
    }
}

void QtPrompts::inform(QWidget* parent, const QString& text) {
    QMessageBox::information(parent, kCaption, screenText(text));
}

bool QtPrompts::confirm(QWidget* parent, const QString& text) {
    return QMessageBox::question(parent, kCaption, screenText(text)) == QMessageBox::Yes;
}

QString QtPrompts::openFileName(QWidget* parent, const FileDialogSpec& spec) {
    return runFileDialog(parent, spec, QFileDialog::AcceptOpen);
}

QString QtPrompts::saveFileName(QWidget* parent, const FileDialogSpec& spec) {
    return runFileDialog(parent, spec, QFileDialog::AcceptSave);
}

int QtPrompts::runDialog(QDialog& dialog) {
    return dialog.exec();
}

void QtPrompts::endProcess(int code) {
    std::fflush(nullptr);
    std::_Exit(code);
}

} // namespace zorvel::ide
