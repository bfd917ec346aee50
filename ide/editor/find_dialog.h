// The find dialog ("Find text..."): the text to find with its history and
// the option groups. It is shown without blocking the main window; "OK"
// searches the editor and closes it.
#pragma once

#include "ide/editor/find_options.h"

#include <QDialog>

class QComboBox;
class QPushButton;
class QsciScintilla;

namespace zorvel::ide {

class Prompts;

class FindDialog : public QDialog {
    Q_OBJECT

public:
    FindDialog(QsciScintilla& editor, Prompts& prompts, FindState& state, QWidget* parent);

    // Seeds the text box with the editor's selected text (or the last text),
    // sets the options from the state, remembers the selection as the scope
    // for "Selected text" and shows the dialog.
    void start();

private:
    void buildFields();
    void buildButtons();
    void buildLayout();
    void updateOkButton();
    void search();

    QsciScintilla& editor_;
    Prompts& prompts_;
    FindState& state_;
    TextSpan scope_;
    QComboBox* textBox_ = nullptr;
    FindOptionsPanel* options_ = nullptr;
    QPushButton* okButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace zorvel::ide
