// Every question, message box and file dialog the IDE shows goes through a
// Prompts object, so that tests can answer them without a person at the
// screen. QtPrompts is the real one.
#pragma once

#include <QString>

class QDialog;
class QWidget;

namespace zorvel::ide {

// A file dialog: title, default suffix (without the dot), the initial file
// name, Qt filter text ("BASIC files (*.bas *.BAS);;All Files (*)") and the
// folder it opens in.
struct FileDialogSpec {
    QString title;
    QString defaultSuffix;
    QString initialName;
    QString filter;
    QString folder;
};

class Prompts {
public:
    enum class Answer { Yes, No, Cancel };

    virtual ~Prompts() = default;

    // "The current file has changed, Save changes ?" captioned "Zorvel" with
    // the exclamation icon; Yes/No/Cancel or only Yes/No.
    virtual Answer askSaveChanges(QWidget* parent, bool allowCancel) = 0;
    // A plain message box captioned "Zorvel" with an OK button.
    virtual void inform(QWidget* parent, const QString& text) = 0;
    // A Yes/No question captioned "Zorvel"; true for Yes.
    virtual bool confirm(QWidget* parent, const QString& text) = 0;
    // The chosen path, or empty when the dialog was cancelled.
    virtual QString openFileName(QWidget* parent, const FileDialogSpec& spec) = 0;
    virtual QString saveFileName(QWidget* parent, const FileDialogSpec& spec) = 0;
    // Shows a modal dialog and returns its result (QDialog::Accepted or Rejected).
    virtual int runDialog(QDialog& dialog) = 0;
    // Ends the process at once with the exit code.
    virtual void endProcess(int code) = 0;
};

class QtPrompts : public Prompts {
public:
    Answer askSaveChanges(QWidget* parent, bool allowCancel) override;
    void inform(QWidget* parent, const QString& text) override;
    bool confirm(QWidget* parent, const QString& text) override;
    QString openFileName(QWidget* parent, const FileDialogSpec& spec) override;
    QString saveFileName(QWidget* parent, const FileDialogSpec& spec) override;
    int runDialog(QDialog& dialog) override;
    void endProcess(int code) override;
};

// Message box texts are written with "\r\n" line breaks; on screen a line
// break is "\n".
QString screenText(const QString& text);

} // namespace zorvel::ide
