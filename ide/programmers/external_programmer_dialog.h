// "Programmer Options": name, program path and command line of the external
// programmer. The name is written to the settings file as it is typed and a
// browsed path at once; OK takes all three boxes. Whichever way the dialog
// closes, an empty name becomes "External Programmer".
#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace zorvel::ide {

struct IdeSettings;
class SettingsFile;
class Prompts;

class ExternalProgrammerDialog : public QDialog {
    Q_OBJECT

public:
    ExternalProgrammerDialog(IdeSettings& settings, const SettingsFile& file, Prompts& prompts,
                             QWidget* parent = nullptr);

    void done(int result) override;

private:
    void buildWidgets();
    void buildLayout();
    void connectInputs();
    void writeName(const QString& name);
    void browse();
    void takeBoxes();

    IdeSettings& settings_;
    const SettingsFile& file_;
    Prompts& prompts_;
    QLineEdit* name_ = nullptr;
    QLineEdit* path_ = nullptr;
    QLineEdit* commandLine_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* browse_ = nullptr;
};

} // namespace zorvel::ide
