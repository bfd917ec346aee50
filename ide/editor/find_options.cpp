#include "ide/editor/find_options.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>
#include <Qsci/qsciscintilla.h>
#include <algorithm>

namespace zorvel::ide {

namespace {

bool has(int flags, int bit) {
    return (flags & bit) != 0;
}

int position(const QsciScintilla& editor, unsigned int message) {
    return static_cast<int>(editor.SendScintilla(message));
}

int textLength(const QsciScintilla& editor) {
    return position(editor, QsciScintillaBase::SCI_GETLENGTH);
}

TextSpan wholeText(const QsciScintilla& editor) {
    return {0, textLength(editor)};
}

// Regular expressions are the editor's own, with bare ( ) as groups.
constexpr bool kPosixGroups = true;

bool findFromPosition(QsciScintilla& editor, const SearchRequest& request, int from) {
    int line = 0;
    int index = 0;
    editor.lineIndexFromPosition(from, &line, &index);
    const int f = request.flags;
    return editor.findFirst(request.text, has(f, kFindRegExp), has(f, kFindCaseSensitive),
                            has(f, kFindWholeWords), false, !has(f, kFindBackward), line, index,
                            true, kPosixGroups);
}

bool findInsideSelection(QsciScintilla& editor, const SearchRequest& request, TextSpan span) {
    selectSpan(editor, span);
    const int f = request.flags;
    return editor.findFirstInSelection(request.text, has(f, kFindRegExp),
                                       has(f, kFindCaseSensitive), has(f, kFindWholeWords),
                                       !has(f, kFindBackward), true, kPosixGroups);
}

QRadioButton* addRadio(QVBoxLayout* layout, const QString& text) {
    auto* button = new QRadioButton(text);
    layout->addWidget(button);
    return button;
}

} // namespace

SearchRequest searchRequest(const FindState& state, TextSpan rememberedSelection) {
    return {state.text, state.flags, state.selectedScope, state.entireScope, rememberedSelection};
}

TextSpan selectionSpan(const QsciScintilla& editor) {
    return {position(editor, QsciScintillaBase::SCI_GETSELECTIONSTART),
            position(editor, QsciScintillaBase::SCI_GETSELECTIONEND)};
}

void selectSpan(QsciScintilla& editor, TextSpan span) {
    editor.SendScintilla(QsciScintillaBase::SCI_SETSEL, static_cast<unsigned long>(span.start),
                         static_cast<long>(span.end));
}

TextSpan searchSpan(const QsciScintilla& editor, const SearchRequest& request) {
    const int length = textLength(editor);
    TextSpan scope = request.selectedScope ? request.scope : wholeText(editor);
    scope.end = std::clamp(scope.end, 0, length);
    scope.start = std::clamp(scope.start, 0, scope.end);
    const TextSpan selection = selectionSpan(editor);
    if (request.entireScope || selection == scope) return scope;
    const bool backward = has(request.flags, kFindBackward);
    int cursor = backward ? selection.start : selection.end;
    if (request.includeSelection) cursor = backward ? selection.end : selection.start;
    const int origin = std::clamp(cursor, scope.start, scope.end);
    return backward ? TextSpan{scope.start, origin} : TextSpan{origin, scope.end};
}

bool findInSpan(QsciScintilla& editor, const SearchRequest& request, TextSpan span) {
    if (request.text.isEmpty()) return false;
    if (request.selectedScope) return findInsideSelection(editor, request, span);
    return findFromPosition(editor, request,
                            has(request.flags, kFindBackward) ? span.end : span.start);
}

bool findOccurrence(QsciScintilla& editor, const SearchRequest& request) {
    const TextSpan before = selectionSpan(editor);
    if (findInSpan(editor, request, searchSpan(editor, request))) return true;
    selectSpan(editor, before);
    return false;
}

QString seedText(const QsciScintilla& editor, const QString& previous) {
    const TextSpan selection = selectionSpan(editor);
    if (selection.start == selection.end) return previous;
    const QString selected = editor.text(selection.start, selection.end);
    if (selected.contains(QLatin1Char('\n')) || selected.contains(QLatin1Char('\r')))
        return previous;
    return selected;
}

QString notFoundMessage(const QString& text) {
    return QStringLiteral("\"") + text + QStringLiteral("\" not found");
}

void rememberInHistory(QStringList& history, const QString& text) {
    if (text.isEmpty()) return;
    history.removeAll(text);
    history.prepend(text);
}

QComboBox* makeHistoryBox(QWidget* parent) {
    auto* box = new QComboBox(parent);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setMinimumContentsLength(30);
    return box;
}

void showHistory(QComboBox& box, const QStringList& history, const QString& text) {
    box.clear();
    box.addItems(history);
    box.setEditText(text);
    box.lineEdit()->selectAll();
}

FindOptionsPanel::FindOptionsPanel(QWidget* parent) : QWidget(parent) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(buildOptions(), 0, 0);
    grid->addWidget(buildDirection(), 0, 1);
    grid->addWidget(buildScope(), 1, 0);
    grid->addWidget(buildOrigin(), 1, 1);
}

QGroupBox* FindOptionsPanel::buildOptions() {
    auto* group = new QGroupBox(QStringLiteral("Options"), this);
    optionsLayout_ = new QVBoxLayout(group);
    caseBox_ = new QCheckBox(QStringLiteral("&Case sensitive"));
    wordsBox_ = new QCheckBox(QStringLiteral("&Whole words"));
    regExpBox_ = new QCheckBox(QStringLiteral("&Regular expressions"));
    for (QCheckBox* box : {caseBox_, wordsBox_, regExpBox_})
        optionsLayout_->addWidget(box);
    return group;
}

QGroupBox* FindOptionsPanel::buildDirection() {
    auto* group = new QGroupBox(QStringLiteral("Direction"), this);
    auto* layout = new QVBoxLayout(group);
    forwardButton_ = addRadio(layout, QStringLiteral("Forwar&d"));
    backButton_ = addRadio(layout, QStringLiteral("&Back"));
    layout->addStretch();
    forwardButton_->setChecked(true);
    return group;
}

QGroupBox* FindOptionsPanel::buildScope() {
    auto* group = new QGroupBox(QStringLiteral("Scope"), this);
    auto* layout = new QVBoxLayout(group);
    globalButton_ = addRadio(layout, QStringLiteral("Global"));
    selectedButton_ = addRadio(layout, QStringLiteral("Selected text"));
    globalButton_->setChecked(true);
    return group;
}

QGroupBox* FindOptionsPanel::buildOrigin() {
    auto* group = new QGroupBox(QStringLiteral("Origin"), this);
    auto* layout = new QVBoxLayout(group);
    cursorButton_ = addRadio(layout, QStringLiteral("From cursor"));
    entireButton_ = addRadio(layout, QStringLiteral("Entire scope"));
    cursorButton_->setChecked(true);
    return group;
}

void FindOptionsPanel::addOption(QCheckBox* box) {
    optionsLayout_->addWidget(box);
}

void FindOptionsPanel::setFlags(int flags) {
    caseBox_->setChecked(has(flags, kFindCaseSensitive));
    wordsBox_->setChecked(has(flags, kFindWholeWords));
    regExpBox_->setChecked(has(flags, kFindRegExp));
    (has(flags, kFindBackward) ? backButton_ : forwardButton_)->setChecked(true);
}

int FindOptionsPanel::flags() const {
    int flags = 0;
    if (caseBox_->isChecked()) flags |= kFindCaseSensitive;
    if (wordsBox_->isChecked()) flags |= kFindWholeWords;
    if (regExpBox_->isChecked()) flags |= kFindRegExp;
    if (backButton_->isChecked()) flags |= kFindBackward;
    return flags;
}

void FindOptionsPanel::load(const FindState& state) {
    setFlags(state.flags);
    (state.selectedScope ? selectedButton_ : globalButton_)->setChecked(true);
    (state.entireScope ? entireButton_ : cursorButton_)->setChecked(true);
}

void FindOptionsPanel::store(FindState& state) const {
    state.flags = (state.flags & ~kFindOptionBits) | flags();
    state.selectedScope = selectedButton_->isChecked();
    state.entireScope = entireButton_->isChecked();
}

} // namespace zorvel::ide
