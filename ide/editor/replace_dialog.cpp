#include "ide/editor/replace_dialog.h"

#include "ide/common/prompts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <Qsci/qsciscintilla.h>
#include <functional>

namespace zorvel::ide {

namespace {

using Permission = std::function<bool(const QString& found)>;

int step(const QsciScintilla& editor, unsigned int message, int position) {
    return static_cast<int>(editor.SendScintilla(message, static_cast<unsigned long>(position)));
}

int length(TextSpan span) {
    return span.end - span.start;
}

// What is left to search going forward once `match` has become `result`
// (itself when it was not replaced). An empty match steps over one
// character so that the search always moves on.
TextSpan spanAfter(const QsciScintilla& editor, TextSpan span, TextSpan match, TextSpan result) {
    int start = result.end;
    if (length(match) == 0) start = step(editor, QsciScintillaBase::SCI_POSITIONAFTER, start);
    return {start, span.end + length(result) - length(match)};
}

TextSpan spanBefore(const QsciScintilla& editor, TextSpan span, TextSpan match) {
    int end = match.start;
    if (length(match) == 0) end = step(editor, QsciScintillaBase::SCI_POSITIONBEFORE, end);
    return {span.start, end};
}

// Replaces every occurrence the request covers, asking `allow` about each
// one, as one undo step. Returns how many occurrences were found.
int replaceEach(QsciScintilla& editor, const SearchRequest& request, const QString& replacement,
                const Permission& allow) {
    const bool backward = (request.flags & kFindBackward) != 0;
    TextSpan span = searchSpan(editor, request);
    TextSpan last = selectionSpan(editor);
    int found = 0;
    editor.beginUndoAction();
    while (span.start < span.end && findInSpan(editor, request, span)) {
        ++found;
        const TextSpan match = selectionSpan(editor);
        if (allow(editor.text(match.start, match.end))) editor.replace(replacement);
        last = selectionSpan(editor);
        span = backward ? spanBefore(editor, span, match) : spanAfter(editor, span, match, last);
    }
    editor.endUndoAction();
    selectSpan(editor, last);
    return found;
}

} // namespace

QString replacePromptText(const QString& found, const QString& replacement) {
    return QStringLiteral("Replace this instance of \"") + found + QStringLiteral("\" with \"") +
           replacement + QStringLiteral("\" ?");
}

ReplaceDialog::ReplaceDialog(QsciScintilla& editor, Prompts& prompts, FindState& state,
                             QWidget* parent)
    : QDialog(parent), editor_(editor), prompts_(prompts), state_(state) {
    setWindowTitle(QStringLiteral("Find and replace text..."));
    buildFields();
    buildButtons();
    buildLayout();
}

void ReplaceDialog::buildFields() {
    textBox_ = makeHistoryBox(this);
    replaceBox_ = makeHistoryBox(this);
    options_ = new FindOptionsPanel(this);
    promptBox_ = new QCheckBox(QStringLiteral("&Prompt on Replace"));
    options_->addOption(promptBox_);
    connect(textBox_, &QComboBox::editTextChanged, this, &ReplaceDialog::updateButtons);
}

void ReplaceDialog::buildButtons() {
    okButton_ = new QPushButton(QStringLiteral("OK"), this);
    replaceAllButton_ = new QPushButton(QStringLiteral("Replace All"), this);
    cancelButton_ = new QPushButton(QStringLiteral("Cancel"), this);
    okButton_->setDefault(true);
    connect(okButton_, &QPushButton::clicked, this, &ReplaceDialog::replaceNext);
    connect(replaceAllButton_, &QPushButton::clicked, this, &ReplaceDialog::replaceEvery);
    connect(cancelButton_, &QPushButton::clicked, this, &ReplaceDialog::reject);
}

void ReplaceDialog::buildLayout() {
    auto* findLabel = new QLabel(QStringLiteral("&Text to find"), this);
    auto* replaceLabel = new QLabel(QStringLiteral("Replace with"), this);
    findLabel->setBuddy(textBox_);
    replaceLabel->setBuddy(replaceBox_);
    auto* fields = new QGridLayout;
    fields->addWidget(findLabel, 0, 0);
    fields->addWidget(textBox_, 0, 1);
    fields->addWidget(replaceLabel, 1, 0);
    fields->addWidget(replaceBox_, 1, 1);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    for (QPushButton* button : {okButton_, replaceAllButton_, cancelButton_})
        buttonRow->addWidget(button);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(options_);
    layout->addLayout(buttonRow);
}

int ReplaceDialog::start() {
    scope_ = selectionSpan(editor_);
    showHistory(*textBox_, state_.history, seedText(editor_, state_.text));
    showHistory(*replaceBox_, state_.replaceHistory, state_.replacement);
    options_->load(state_);
    promptBox_->setChecked(state_.prompt);
    updateButtons();
    textBox_->setFocus();
    return prompts_.runDialog(*this);
}

void ReplaceDialog::updateButtons() {
    const bool hasText = !textBox_->currentText().isEmpty();
    okButton_->setEnabled(hasText);
    replaceAllButton_->setEnabled(hasText);
}

void ReplaceDialog::readBack() {
    state_.text = textBox_->currentText();
    state_.replacement = replaceBox_->currentText();
    rememberInHistory(state_.history, state_.text);
    rememberInHistory(state_.replaceHistory, state_.replacement);
    options_->store(state_);
    state_.prompt = promptBox_->isChecked();
}

bool ReplaceDialog::mayReplace(const QString& found) {
    if (!state_.prompt) return true;
    return prompts_.confirm(&editor_, replacePromptText(found, state_.replacement));
}

SearchRequest ReplaceDialog::request() const {
    SearchRequest request = searchRequest(state_, scope_);
    request.includeSelection = true;
    return request;
}

void ReplaceDialog::replaceNext() {
    if (textBox_->currentText().isEmpty()) return;
    readBack();
    accept();
    if (!findOccurrence(editor_, request())) {
        prompts_.inform(&editor_, notFoundMessage(state_.text));
        return;
    }
    const TextSpan match = selectionSpan(editor_);
    if (mayReplace(editor_.text(match.start, match.end))) editor_.replace(state_.replacement);
}

void ReplaceDialog::replaceEvery() {
    if (textBox_->currentText().isEmpty()) return;
    readBack();
    accept();
    const Permission allow = [this](const QString& found) { return mayReplace(found); };
    if (replaceEach(editor_, request(), state_.replacement, allow) == 0)
        prompts_.inform(&editor_, notFoundMessage(state_.text));
}

} // namespace zorvel::ide
