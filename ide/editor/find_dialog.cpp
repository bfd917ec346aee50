#include "ide/editor/find_dialog.h"

#include "ide/common/prompts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

FindDialog::FindDialog(QsciScintilla& editor, Prompts& prompts, FindState& state, QWidget* parent)
    : QDialog(parent), editor_(editor), prompts_(prompts), state_(state) {
    setWindowTitle(QStringLiteral("Find text..."));
    buildFields();
    buildButtons();
    buildLayout();
}

void FindDialog::buildFields() {
    textBox_ = makeHistoryBox(this);
    options_ = new FindOptionsPanel(this);
    connect(textBox_, &QComboBox::editTextChanged, this, &FindDialog::updateOkButton);
}

void FindDialog::buildButtons() {
    okButton_ = new QPushButton(QStringLiteral("OK"), this);
    cancelButton_ = new QPushButton(QStringLiteral("Cancel"), this);
    okButton_->setDefault(true);
    connect(okButton_, &QPushButton::clicked, this, &FindDialog::search);
    connect(cancelButton_, &QPushButton::clicked, this, &FindDialog::reject);
}

void FindDialog::buildLayout() {
    auto* label = new QLabel(QStringLiteral("&Text to find"), this);
    label->setBuddy(textBox_);
    auto* textRow = new QHBoxLayout;
    textRow->addWidget(label);
    textRow->addWidget(textBox_, 1);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    buttonRow->addWidget(okButton_);
    buttonRow->addWidget(cancelButton_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(textRow);
    layout->addWidget(options_);
    layout->addLayout(buttonRow);
}

void FindDialog::start() {
    scope_ = selectionSpan(editor_);
    showHistory(*textBox_, state_.history, seedText(editor_, state_.text));
    options_->load(state_);
    updateOkButton();
    show();
    raise();
    activateWindow();
    textBox_->setFocus();
}

void FindDialog::updateOkButton() {
    okButton_->setEnabled(!textBox_->currentText().isEmpty());
}

void FindDialog::search() {
    if (textBox_->currentText().isEmpty()) return;
    state_.text = textBox_->currentText();
    rememberInHistory(state_.history, state_.text);
    options_->store(state_);
    accept();
    if (!findOccurrence(editor_, searchRequest(state_, scope_))) {
        prompts_.inform(&editor_, notFoundMessage(state_.text));
        return;
    }
    editor_.setFocus();
}

} // namespace zorvel::ide
