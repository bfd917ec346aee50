#include "ide/programmers/epic_path_dialog.h"

#include "ide/common/prompts.h"
#include "ide/common/settings.h"
#include "ide/programmers/program_file_dialog.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace zorvel::ide {

EpicPathDialog::EpicPathDialog(IdeSettings& settings, const SettingsFile& file, Prompts& prompts,
                               QWidget* parent)
    : QDialog(parent), settings_(settings), file_(file), prompts_(prompts) {
    buildWidgets();
    buildLayout();
    connectButtons();
}

void EpicPathDialog::buildWidgets() {
    setWindowTitle(QStringLiteral("Find Epic Directory"));
    path_ = new QLineEdit(settings_.epicPath, this);
    path_->setMinimumWidth(360);
    ok_ = new QPushButton(QStringLiteral("OK"), this);
    cancel_ = new QPushButton(QStringLiteral("Cancel"), this);
    browse_ = new QPushButton(QStringLiteral("Browse"), this);
    ok_->setDefault(true);
}

void EpicPathDialog::buildLayout() {
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Epic Directory Path"), this), 0, 0, 1, 2);
    layout->addWidget(path_, 1, 0);
    layout->addWidget(browse_, 1, 1);
    layout->addLayout(buttons, 2, 0, 1, 2);
}

void EpicPathDialog::connectButtons() {
    connect(ok_, &QPushButton::clicked, this, &EpicPathDialog::takePath);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(browse_, &QPushButton::clicked, this, &EpicPathDialog::browse);
}

void EpicPathDialog::browse() {
    const QString chosen =
        prompts_.openFileName(this, programFileDialog(QStringLiteral("Find EPIC Directory")));
    if (chosen.isEmpty()) return;
    path_->setText(chosen);
    // A vanished settings file is reported by the save that follows the dialog.
    file_.writeValue(QStringLiteral("Epic"), QStringLiteral("Pathname"), chosen);
}

void EpicPathDialog::takePath() {
    settings_.epicPath = path_->text();
    accept();
}

} // namespace zorvel::ide
