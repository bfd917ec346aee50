#include "ide/window/splash_dialog.h"

#include "ide/window/ide_resources.h"

#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace zorvel::ide {

SplashDialog::SplashDialog(const QString& versionText, QWidget* parent)
    : QDialog(parent, Qt::Tool | Qt::WindowStaysOnTopHint) {
    registerResources();
    setWindowTitle(QStringLiteral("About Zorvel"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    auto* picture = new QLabel(this);
    picture->setPixmap(QIcon(QStringLiteral(":/zorvel/icon.svg")).pixmap(96, 96));
    picture->setAlignment(Qt::AlignCenter);
    layout->addWidget(picture);
    auto* name = new QLabel(QStringLiteral("<h2>ZORVEL %1</h2>").arg(versionText), this);
    name->setAlignment(Qt::AlignCenter);
    layout->addWidget(name);
    auto* text = new QLabel(QStringLiteral("BASIC compiler for PIC16 microcontrollers\n"
                                           "with editor, simulator and programmer support"),
                            this);
    text->setAlignment(Qt::AlignCenter);
    layout->addWidget(text);
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    layout->addWidget(ok, 0, Qt::AlignCenter);
}

} // namespace zorvel::ide
