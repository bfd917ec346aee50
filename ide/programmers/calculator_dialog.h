// The built-in number-base calculator, shown when no calculator program is
// configured or installed: type a value or an expression, read it in
// decimal, hex and binary as a 16-bit or 32-bit register.
#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QRadioButton;

namespace zorvel::ide {

class CalculatorDialog : public QDialog {
    Q_OBJECT

public:
    explicit CalculatorDialog(QWidget* parent = nullptr);

private:
    void buildWidgets();
    void buildLayout();
    void connectInputs();
    void showResult();
    void showValue(qint64 value);
    void clearValue();

    QLineEdit* expression_ = nullptr;
    QRadioButton* bits16_ = nullptr;
    QRadioButton* bits32_ = nullptr;
    QLabel* decimal_ = nullptr;
    QLabel* hex_ = nullptr;
    QLabel* binary_ = nullptr;
    QLabel* message_ = nullptr;
};

} // namespace zorvel::ide
