// "Find Epic Directory": where the EPIC programmer program lives. Browse
// writes the chosen path to the settings file at once; OK takes the edit
// box as the EPIC path, Cancel leaves the path as it was.
#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace zorvel::ide {

struct IdeSettings;
class SettingsFile;
class Prompts;

class EpicPathDialog : public QDialog {
    Q_OBJECT

public:
    EpicPathDialog(IdeSettings& settings, const SettingsFile& file, Prompts& prompts,
                   QWidget* parent = nullptr);

private:
    void buildWidgets();
    void buildLayout();
    void connectButtons();
    void browse();
    void takePath();

    IdeSettings& settings_;
    const SettingsFile& file_;
    Prompts& prompts_;
    QLineEdit* path_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* browse_ = nullptr;
};

} // namespace zorvel::ide
