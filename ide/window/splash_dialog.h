// The About window: product name, version and picture, closed by its button.
#pragma once

#include <QDialog>

namespace zorvel::ide {

class SplashDialog : public QDialog {
    Q_OBJECT

public:
    SplashDialog(const QString& versionText, QWidget* parent = nullptr);
};

} // namespace zorvel::ide
