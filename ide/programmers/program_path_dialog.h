// A dialog that says where one program lives: the EPIC programmer software
// ("Find Epic Directory") or the assembler. Browse writes the chosen path to
// the settings file at once; OK takes the edit box, Cancel leaves the path
// as it was.
#pragma once

#include "ide/common/settings.h"

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace zorvel::ide {

class Prompts;

struct ProgramPathSpec {
    QString title;       // the dialog's title
    QString label;       // above the edit box
    QString browseTitle; // the title of Browse's file dialog
    QString section;     // where Browse writes the path at once
    QString key;
    QString IdeSettings::*path; // the setting OK writes
    QString emptyMeans;         // what an empty box stands for, if anything
};

extern const ProgramPathSpec kEpicPath;
extern const ProgramPathSpec kAssemblerPath;

class ProgramPathDialog : public QDialog {
    Q_OBJECT

public:
    ProgramPathDialog(const ProgramPathSpec& spec, IdeSettings& settings, const SettingsFile& file,
                      Prompts& prompts, QWidget* parent = nullptr);

private:
    void buildWidgets();
    void buildLayout();
    void connectButtons();
    void browse();
    void takePath();

    const ProgramPathSpec& spec_;
    IdeSettings& settings_;
    const SettingsFile& file_;
    Prompts& prompts_;
    QLineEdit* path_ = nullptr;
    QPushButton* ok_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QPushButton* browse_ = nullptr;
};

} // namespace zorvel::ide
