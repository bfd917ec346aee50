#include "ide/editor/editor_options_dialog.h"

#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_setup.h"
#include "ide/editor/style_store.h"
#include "ide/editor/tab_columns.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QFontComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace zorvel::ide {
namespace {

QColor systemColorChooser(const QColor& initial, QWidget* parent) {
    return QColorDialog::getColor(initial, parent);
}

QSpinBox* spinBox(const char* name, int low, int high) {
    auto* box = new QSpinBox;
    box->setObjectName(QLatin1String(name));
    box->setRange(low, high);
    return box;
}

QCheckBox* checkBox(const QString& text, const char* name) {
    auto* box = new QCheckBox(text);
    box->setObjectName(QLatin1String(name));
    return box;
}

} // namespace

EditorOptionsDialog::EditorOptionsDialog(QsciScintilla& editor, BasicLexer& lexer, QWidget* parent)
    : QDialog(parent), editor_(editor), lexer_(lexer), chooseColor_(systemColorChooser) {
    setWindowTitle(QStringLiteral("Editor Options"));
    pages_ = new QTabWidget;
    pages_->addTab(buildOptionsPage(), QStringLiteral("Options"));
    pages_->addTab(buildHighlightingPage(), QStringLiteral("Highlighting"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages_);
    layout->addLayout(buildButtons());
    showOptions(currentEditorOptions(editor_));
    loadStyleChoices();
}

QWidget* EditorOptionsDialog::buildOptionsPage() {
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    fontFamily_ = new QFontComboBox;
    fontFamily_->setObjectName(QStringLiteral("fontFamily"));
    fontPixels_ = spinBox("fontPixels", kMinFontPixels, kMaxFontPixels);
    tabColumns_ = new QLineEdit;
    tabColumns_->setObjectName(QStringLiteral("tabColumns"));
    tabColumns_->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9 ,]*")), this));
    tabWidth_ = spinBox("tabWidth", 1, kMaxTabWidth);
    indentWidth_ = spinBox("indentWidth", 1, kMaxTabWidth);
    rightMargin_ = spinBox("rightMargin", 1, kMaxRightMargin);
    form->addRow(QStringLiteral("&Font:"), fontFamily_);
    form->addRow(QStringLiteral("Font si&ze (pixels):"), fontPixels_);
    form->addRow(QStringLiteral("Tab &columns:"), tabColumns_);
    form->addRow(QStringLiteral("&Tab width:"), tabWidth_);
    form->addRow(QStringLiteral("&Indent width:"), indentWidth_);
    form->addRow(QStringLiteral("&Right margin column:"), rightMargin_);
    autoIndent_ = checkBox(QStringLiteral("&Auto-indent"), "autoIndent");
    lineNumbers_ = checkBox(QStringLiteral("Show line &numbers"), "lineNumbers");
    showWhitespace_ = checkBox(QStringLiteral("Show &whitespace"), "showWhitespace");
    form->addRow(autoIndent_);
    form->addRow(lineNumbers_);
    form->addRow(showWhitespace_);
    return page;
}

QWidget* EditorOptionsDialog::buildHighlightingPage() {
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);
    styleList_ = new QListWidget;
    styleList_->setObjectName(QStringLiteral("styles"));
    for (int style = 0; style < BasicLexer::StyleCount; ++style)
        styleList_->addItem(lexer_.description(style));
    layout->addWidget(styleList_);
    layout->addWidget(buildStyleEditor());
    connect(styleList_, &QListWidget::currentRowChanged, this, &EditorOptionsDialog::showStyle);
    return page;
}

QWidget* EditorOptionsDialog::buildStyleEditor() {
    auto* box = new QWidget;
    auto* form = new QFormLayout(box);
    colorEdit_ = colorEdit(QStringLiteral("foreground"));
    paperEdit_ = colorEdit(QStringLiteral("background"));
    form->addRow(QStringLiteral("&Foreground:"),
                 colorRow(colorEdit_, QStringLiteral("chooseForeground")));
    form->addRow(QStringLiteral("&Background:"),
                 colorRow(paperEdit_, QStringLiteral("chooseBackground")));
    bold_ = checkBox(QStringLiteral("B&old"), "bold");
    italic_ = checkBox(QStringLiteral("It&alic"), "italic");
    form->addRow(bold_);
    form->addRow(italic_);
    preview_ = new QLabel(QStringLiteral("Sample 123"));
    preview_->setObjectName(QStringLiteral("preview"));
    preview_->setAutoFillBackground(true);
    form->addRow(QStringLiteral("Sample:"), preview_);
    connectStyleFields();
    return box;
}

QLineEdit* EditorOptionsDialog::colorEdit(const QString& name) {
    auto* edit = new QLineEdit;
    edit->setObjectName(name);
    edit->setPlaceholderText(QStringLiteral("#rrggbb"));
    edit->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("#[0-9A-Fa-f]{6}")), edit));
    return edit;
}

QLayout* EditorOptionsDialog::colorRow(QLineEdit* edit, const QString& buttonName) {
    auto* row = new QHBoxLayout;
    auto* button = new QPushButton(QStringLiteral("..."));
    button->setObjectName(buttonName);
    row->addWidget(edit);
    row->addWidget(button);
    QColor StyleChoice::*field = edit == colorEdit_ ? &StyleChoice::color : &StyleChoice::paper;
    connect(button, &QPushButton::clicked, this, [this, edit, field] { pickColor(edit, field); });
    connect(edit, &QLineEdit::textEdited, this, [this, edit, field] { storeColor(edit, field); });
    return row;
}

void EditorOptionsDialog::connectStyleFields() {
    connect(bold_, &QCheckBox::toggled, this, &EditorOptionsDialog::storeFontFlags);
    connect(italic_, &QCheckBox::toggled, this, &EditorOptionsDialog::storeFontFlags);
}

QLayout* EditorOptionsDialog::buildButtons() {
    auto* row = new QHBoxLayout;
    okButton_ = new QPushButton(QStringLiteral("OK"));
    okButton_->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    row->addStretch();
    row->addWidget(okButton_);
    row->addWidget(cancel);
    connect(okButton_, &QPushButton::clicked, this, &EditorOptionsDialog::applyAndSave);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    return row;
}

void EditorOptionsDialog::showOptions(const EditorOptions& o) {
    fontFamily_->setCurrentFont(QFont(o.fontFamily));
    fontPixels_->setValue(o.fontPixels);
    tabColumns_->setText(tabColumnsText(o.tabColumns));
    tabWidth_->setValue(o.tabWidth);
    indentWidth_->setValue(o.indentWidth);
    rightMargin_->setValue(o.rightMargin);
    autoIndent_->setChecked(o.autoIndent);
    lineNumbers_->setChecked(o.lineNumbers);
    showWhitespace_->setChecked(o.showWhitespace);
}

void EditorOptionsDialog::loadStyleChoices() {
    styles_.resize(BasicLexer::StyleCount);
    for (int style = 0; style < BasicLexer::StyleCount; ++style) {
        QFont font = lexer_.font(style);
        styles_[style] = {lexer_.color(style), lexer_.paper(style), font.bold(), font.italic()};
    }
    styleList_->setCurrentRow(0);
    showStyle(0);
}

EditorOptions EditorOptionsDialog::optionsFromFields() const {
    EditorOptions o;
    o.fontFamily = fontFamily_->currentFont().family();
    o.fontPixels = fontPixels_->value();
    o.tabColumns = parseTabColumns(tabColumns_->text());
    o.tabWidth = tabWidth_->value();
    o.indentWidth = indentWidth_->value();
    o.rightMargin = rightMargin_->value();
    o.autoIndent = autoIndent_->isChecked();
    o.lineNumbers = lineNumbers_->isChecked();
    o.showWhitespace = showWhitespace_->isChecked();
    return o;
}

void EditorOptionsDialog::showStyle(int style) {
    if (style < 0 || style >= static_cast<int>(styles_.size())) return;
    currentStyle_ = style;
    const StyleChoice& choice = styles_[style];
    showingStyle_ = true;
    colorEdit_->setText(choice.color.name());
    paperEdit_->setText(choice.paper.name());
    bold_->setChecked(choice.bold);
    italic_->setChecked(choice.italic);
    showingStyle_ = false;
    updatePreview();
    updateOkButton();
}

void EditorOptionsDialog::storeColor(QLineEdit* edit, QColor StyleChoice::*field) {
    if (!showingStyle_ && edit->hasAcceptableInput())
        styles_[currentStyle_].*field = QColor(edit->text());
    updatePreview();
    updateOkButton();
}

void EditorOptionsDialog::storeFontFlags() {
    if (showingStyle_) return;
    styles_[currentStyle_].bold = bold_->isChecked();
    styles_[currentStyle_].italic = italic_->isChecked();
    updatePreview();
}

void EditorOptionsDialog::pickColor(QLineEdit* edit, QColor StyleChoice::*field) {
    QColor chosen = chooseColor_ ? chooseColor_(styles_[currentStyle_].*field, this) : QColor();
    if (!chosen.isValid()) return;
    edit->setText(chosen.name());
    storeColor(edit, field);
}

void EditorOptionsDialog::updatePreview() {
    const StyleChoice& choice = styles_[currentStyle_];
    QFont font = fontOfPixelHeight(fontFamily_->currentFont().family(), fontPixels_->value());
    font.setBold(choice.bold);
    font.setItalic(choice.italic);
    QPalette palette = preview_->palette();
    palette.setColor(QPalette::WindowText, choice.color);
    palette.setColor(QPalette::Window, choice.paper);
    preview_->setFont(font);
    preview_->setPalette(palette);
}

// A colour field holding an unfinished value keeps OK disabled.
void EditorOptionsDialog::updateOkButton() {
    okButton_->setEnabled(colorEdit_->hasAcceptableInput() && paperEdit_->hasAcceptableInput());
}

void EditorOptionsDialog::applyAndSave() {
    EditorOptions options = optionsFromFields();
    applyEditorOptions(editor_, options);
    for (int style = 0; style < BasicLexer::StyleCount; ++style) {
        const StyleChoice& choice = styles_[style];
        QFont font = lexer_.font(style);
        font.setBold(choice.bold);
        font.setItalic(choice.italic);
        lexer_.setColor(choice.color, style);
        lexer_.setPaper(choice.paper, style);
        lexer_.setFont(font, style);
    }
    refreshTabColumns(editor_);
    saveStyles(lexer_);
    saveEditorOptions(options);
    accept();
}

} // namespace zorvel::ide
