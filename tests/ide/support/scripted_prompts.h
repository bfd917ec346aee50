// Prompts answered by the test: queued answers and file names, handlers for
// modal dialogs, and a record of every message shown. A question or dialog
// with nothing queued fails the test rather than blocking it.
#pragma once

#include "ide/common/prompts.h"

#include <QDialog>
#include <QStringList>
#include <QTest>
#include <deque>
#include <functional>

namespace zorvel::ide::test {

class ScriptedPrompts : public Prompts {
public:
    struct EndedProcess {
        int code;
    };

    std::deque<Answer> answers;                       // for askSaveChanges
    std::deque<bool> confirmations;                   // for confirm
    std::deque<QString> fileNames;                    // for open and save dialogs; "" cancels
    std::deque<std::function<int(QDialog&)>> dialogs; // for runDialog

    QStringList messages;            // every inform() text, as given
    QStringList confirmTexts;        // every confirm() text
    QList<bool> questionsWithCancel; // one entry per askSaveChanges
    QList<FileDialogSpec> fileDialogs;
    int endedWith = -1; // the endProcess code, or -1

    Answer askSaveChanges(QWidget*, bool allowCancel) override {
        questionsWithCancel.append(allowCancel);
        if (answers.empty()) {
            QTest::qFail("unexpected unsaved-changes question", __FILE__, __LINE__);
            return allowCancel ? Answer::Cancel : Answer::No;
        }
        Answer a = answers.front();
        answers.pop_front();
        return a;
    }
    void inform(QWidget*, const QString& text) override { messages.append(text); }
    bool confirm(QWidget*, const QString& text) override {
        confirmTexts.append(text);
        if (confirmations.empty()) return false;
        bool yes = confirmations.front();
        confirmations.pop_front();
        return yes;
    }
    QString openFileName(QWidget*, const FileDialogSpec& spec) override { return nextFile(spec); }
    QString saveFileName(QWidget*, const FileDialogSpec& spec) override { return nextFile(spec); }
    int runDialog(QDialog& dialog) override {
        if (dialogs.empty()) {
            QTest::qFail("unexpected modal dialog", __FILE__, __LINE__);
            return QDialog::Rejected;
        }
        auto handler = std::move(dialogs.front());
        dialogs.pop_front();
        dialog.show();
        int result = handler(dialog);
        dialog.done(result);
        return result;
    }
    // Records the code; the caller goes on, so code after a fatal end must
    // not rely on the process having ended.
    void endProcess(int code) override { endedWith = code; }

private:
    QString nextFile(const FileDialogSpec& spec) {
        fileDialogs.append(spec);
        if (fileNames.empty()) return {};
        QString name = fileNames.front();
        fileNames.pop_front();
        return name;
    }
};

} // namespace zorvel::ide::test
