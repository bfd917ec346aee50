#include "ide/programmers/program_path_dialog.h"

#include "ide/common/prompts.h"
#include "ide/programmers/program_file_dialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace zorvel::ide {

const ProgramPathSpec kEpicPath{QStringLiteral("Find Epic Directory"),
                                QStringLiteral("Epic Directory Path"),
                                QStringLiteral("Find EPIC Directory"),
                                QStringLiteral("Epic"),
                                QStringLiteral("Pathname"),
                                &IdeSettings::epicPath,
                                {}};

const ProgramPathSpec kAssemblerPath{QStringLiteral("Assembler"),
                                     QStringLiteral("gpasm program (a path, or a name on PATH)"),
                                     QStringLiteral("Find the Assembler"),
                                     QStringLiteral("Assembler"),
                                     QStringLiteral("Path"),
                                     &IdeSettings::assemblerPath,
                                     QStringLiteral("gpasm")};

ProgramPathDialog::ProgramPathDialog(const ProgramPathSpec& spec, IdeSettings& settings,
                                     const SettingsFile& file, Prompts& prompts, QWidget* parent)
    : QDialog(parent), spec_(spec), settings_(settings), file_(file), prompts_(prompts) {
    buildWidgets();
    buildLayout();
    connectButtons();
}

void ProgramPathDialog::buildWidgets() {
    setWindowTitle(spec_.title);
    path_ = new QLineEdit(settings_.*spec_.path, this);
    path_->setMinimumWidth(360);
    ok_ = new QPushButton(QStringLiteral("OK"), this);
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    browse_ = new QPushButton(QStringLiteral("Browse"), this);
    ok_->setDefault(true);
}

void ProgramPathDialog::buildLayout() {
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(spec_.label, this), 0, 0, 1, 2);
    layout->addWidget(path_, 1, 0);
    layout->addWidget(browse_, 1, 1);
    layout->addLayout(buttons, 2, 0, 1, 2);
}

void ProgramPathDialog::connectButtons() {
    connect(ok_, &QPushButton::clicked, this, &ProgramPathDialog::takePath);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(browse_, &QPushButton::clicked, this, &ProgramPathDialog::browse);
}

void ProgramPathDialog::browse() {
    const QString chosen = prompts_.openFileName(this, programFileDialog(spec_.browseTitle));
    if (chosen.isEmpty()) return;
    path_->setText(chosen);
    // A vanished settings file is reported by the save that follows the dialog.
    file_.writeValue(spec_.section, spec_.key, chosen);
}

void ProgramPathDialog::takePath() {
    const QString text = path_->text().trimmed();
    settings_.*spec_.path = text.isEmpty() ? spec_.emptyMeans : text;
    accept();
}

} // namespace zorvel::ide
