// Starting the programs around a build: the external programmer and the EPIC
// programmer software with the HEX file, the help file and a calculator, and
// the two dialogs that say where the programmers are. Programs are started
// detached: the IDE does not wait for them. Every failure is a message box.
#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

namespace zorvel::ide {

struct IdeSettings;
class SettingsFile;
class Prompts;
class CalculatorDialog;

class ProgrammerCommands {
public:
    // `saveSettings` is the window's save-settings operation; it runs after
    // either path dialog closes.
    ProgrammerCommands(IdeSettings& settings, const SettingsFile& file, Prompts& prompts,
                       QWidget* window, std::function<void()> saveSettings);
    ~ProgrammerCommands();
    ProgrammerCommands(const ProgrammerCommands&) = delete;
    ProgrammerCommands& operator=(const ProgrammerCommands&) = delete;

    // The external programmer with its command line and then the HEX path.
    void runExternal(const QString& hexPath);
    // The EPIC program with "-dPIC" + device (for example -dPIC16F84) and the HEX path.
    void runEpic(const QString& hexPath, const QString& deviceName);
    void editEpicDetails();
    void editExternalDetails();
    // Which gpasm the builds use.
    void editAssemblerPath();
    // homeFolder/inc/ZORVEL.HTM in the desktop's HTML viewer.
    void openHelp(const QString& homeFolder);
    // The configured calculator command, else the first common calculator
    // on PATH, else the built-in calculator dialog.
    void runCalculator();

private:
    void launch(const QString& program, const QStringList& arguments, const QString& folder,
                const QString& name);
    void runConfiguredCalculator(const QStringList& command);
    void showBuiltInCalculator();
    void bringWindowForward();
    void restoreWindow();

    IdeSettings& settings_;
    const SettingsFile& file_;
    Prompts& prompts_;
    QWidget* window_;
    std::function<void()> saveSettings_;
    QPointer<CalculatorDialog> calculator_;
};

} // namespace zorvel::ide
