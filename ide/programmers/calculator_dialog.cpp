#include "ide/programmers/calculator_dialog.h"

#include "ide/programmers/calculator_expression.h"

#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zorvel::ide {

namespace {

QLabel* resultLabel(QWidget* parent, const QString& name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

CalculatorDialog::CalculatorDialog(QWidget* parent) : QDialog(parent) {
    buildWidgets();
    buildLayout();
    connectInputs();
    showResult();
}

void CalculatorDialog::buildWidgets() {
    setWindowTitle(QStringLiteral("Calculator"));
    expression_ = new QLineEdit(this);
    expression_->setPlaceholderText(QStringLiteral("200, $C8, %11001000 or ($F0 | 3) << 2"));
    bits16_ = new QRadioButton(QStringLiteral("16-bit"), this);
    bits32_ = new QRadioButton(QStringLiteral("32-bit"), this);
    bits16_->setChecked(true);
    decimal_ = resultLabel(this, QStringLiteral("decimal"));
    hex_ = resultLabel(this, QStringLiteral("hex"));
    binary_ = resultLabel(this, QStringLiteral("binary"));
    message_ = new QLabel(this);
    message_->setObjectName(QStringLiteral("message"));
    message_->setWordWrap(true);
}

void CalculatorDialog::buildLayout() {
    auto* bits = new QHBoxLayout;
    bits->addWidget(bits16_);
    bits->addWidget(bits32_);
    bits->addStretch();
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Value"), expression_);
    form->addRow(QStringLiteral("View"), bits);
    form->addRow(QStringLiteral("Decimal"), decimal_);
    form->addRow(QStringLiteral("Hex"), hex_);
    form->addRow(QStringLiteral("Binary"), binary_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(message_);
}

void CalculatorDialog::connectInputs() {
    connect(expression_, &QLineEdit::textChanged, this, &CalculatorDialog::showResult);
    connect(bits16_, &QRadioButton::toggled, this, &CalculatorDialog::showResult);
}

void CalculatorDialog::showResult() {
    if (expression_->text().trimmed().isEmpty()) {
        clearValue();
        message_->clear();
        return;
    }
    const CalcResult result = evaluateExpression(expression_->text());
    if (!result.ok) {
        clearValue();
        message_->setText(result.error);
        return;
    }
    showValue(result.value);
}

void CalculatorDialog::showValue(qint64 value) {
    const int bits = bits16_->isChecked() ? 16 : 32;
    const CalcView view = formatValue(value, bits);
    decimal_->setText(view.decimal);
    hex_->setText(view.hex);
    binary_->setText(view.binary);
    message_->setText(view.fits
                          ? QString()
                          : QStringLiteral("%1 does not fit in %2 bits; the low %2 bits are shown")
                                .arg(value)
                                .arg(bits));
}

void CalculatorDialog::clearValue() {
    decimal_->clear();
    hex_->clear();
    binary_->clear();
}

} // namespace zorvel::ide
