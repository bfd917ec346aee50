// The replace dialog ("Find and replace text..."): the find dialog's fields
// plus the replacement with its own history and "&Prompt on Replace". It runs
// modally; "OK" replaces the next occurrence, "Replace All" every occurrence
// in the scope as one undo step.
#pragma once

#include "ide/editor/find_options.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QPushButton;
class QsciScintilla;

namespace zorvel::ide {

class Prompts;

// "Replace this instance of \"found\" with \"replacement\" ?"
QString replacePromptText(const QString& found, const QString& replacement);

class ReplaceDialog : public QDialog {
    Q_OBJECT

public:
    ReplaceDialog(QsciScintilla& editor, Prompts& prompts, FindState& state, QWidget* parent);

    // Seeds the dialog as the find dialog does and runs it through
    // Prompts::runDialog; QDialog::Accepted after "OK" or "Replace All".
    int start();

private:
    void buildFields();
    void buildButtons();
    void buildLayout();
    void updateButtons();
    void readBack();
    void replaceNext();
    void replaceEvery();
    bool mayReplace(const QString& found);
    SearchRequest request() const;

    QsciScintilla& editor_;
    Prompts& prompts_;
    FindState& state_;
    TextSpan scope_;
    QComboBox* textBox_ = nullptr;
    QComboBox* replaceBox_ = nullptr;
    QCheckBox* promptBox_ = nullptr;
    FindOptionsPanel* options_ = nullptr;
    QPushButton* okButton_ = nullptr;
    QPushButton* replaceAllButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace zorvel::ide
