#include "ide/programmers/external_programmer_dialog.h"

#include "ide/common/prompts.h"
#include "ide/common/settings.h"
#include "ide/programmers/program_file_dialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace zorvel::ide {

namespace {

const QString kSection = QStringLiteral("EXT_PROG");

} // namespace

ExternalProgrammerDialog::ExternalProgrammerDialog(IdeSettings& settings, const SettingsFile& file,
                                                   Prompts& prompts, QWidget* parent)
    : QDialog(parent), settings_(settings), file_(file), prompts_(prompts) {
    buildWidgets();
    buildLayout();
    connectInputs();
}

void ExternalProgrammerDialog::buildWidgets() {
    setWindowTitle(QStringLiteral("Programmer Options"));
    name_ = new QLineEdit(settings_.externalName, this);
    path_ = new QLineEdit(settings_.externalPath, this);
    commandLine_ = new QLineEdit(settings_.externalCommandLine, this);
    path_->setMinimumWidth(360);
    ok_ = new QPushButton(QStringLiteral("OK"), this);
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    browse_ = new QPushButton(QStringLiteral("Browse"), this);
    ok_->setDefault(true);
}

void ExternalProgrammerDialog::buildLayout() {
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Programmer's Name"), this), 0, 0, 1, 2);
    layout->addWidget(name_, 1, 0, 1, 2);
    layout->addWidget(new QLabel(QStringLiteral("Programmer's Directory Path"), this), 2, 0, 1, 2);
    layout->addWidget(path_, 3, 0);
    layout->addWidget(browse_, 3, 1);
    layout->addWidget(new QLabel(QStringLiteral("Optional Command line Parameters"), this), 4, 0, 1,
                      2);
    layout->addWidget(commandLine_, 5, 0, 1, 2);
    layout->addLayout(buttons, 6, 0, 1, 2);
}

void ExternalProgrammerDialog::connectInputs() {
    connect(name_, &QLineEdit::textChanged, this, &ExternalProgrammerDialog::writeName);
    connect(ok_, &QPushButton::clicked, this, &ExternalProgrammerDialog::takeBoxes);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(browse_, &QPushButton::clicked, this, &ExternalProgrammerDialog::browse);
}

// A vanished settings file is reported by the save that follows the dialog,
// so the immediate writes below do not report it themselves.
void ExternalProgrammerDialog::writeName(const QString& name) {
    file_.writeValue(kSection, QStringLiteral("Name"), name);
}

void ExternalProgrammerDialog::browse() {
    const QString chosen =
        prompts_.openFileName(this, programFileDialog(QStringLiteral("Find Programmer Directory")));
    if (chosen.isEmpty()) return;
    path_->setText(chosen);
    file_.writeValue(kSection, QStringLiteral("Ext_Path"), chosen);
}

void ExternalProgrammerDialog::takeBoxes() {
    settings_.externalName = name_->text();
    settings_.externalPath = path_->text();
    settings_.externalCommandLine = commandLine_->text();
    accept();
}

void ExternalProgrammerDialog::done(int result) {
    if (settings_.externalName.isEmpty()) settings_.externalName = kDefaultExternalName;
    QDialog::done(result);
}

} // namespace zorvel::ide
