#include "ide/programmers/programmer_commands.h"

#include "ide/common/prompts.h"
#include "ide/common/settings.h"
#include "ide/programmers/calculator_dialog.h"
#include "ide/programmers/external_programmer_dialog.h"
#include "ide/programmers/program_path_dialog.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>
#include <QWidget>

namespace zorvel::ide {

namespace {

const QString kEpicName = QStringLiteral("Epic");

// Calculators tried in this order when none is configured.
const QStringList kKnownCalculators = {"galculator", "gnome-calculator", "kcalc", "qalculate-gtk",
                                       "xcalc"};

// The program file to start: a path names a file, a bare name is looked up
// on PATH. Empty when there is no such file.
QString findProgram(const QString& program) {
    if (!program.contains('/')) return QStandardPaths::findExecutable(program);
    const QFileInfo info(program);
    return info.isFile() ? info.absoluteFilePath() : QString();
}

bool startDetached(const QString& program, const QStringList& arguments, const QString& folder) {
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    if (QFileInfo(folder).isDir()) process.setWorkingDirectory(folder);
    return process.startDetached();
}

QString firstKnownCalculator() {
    for (const QString& name : kKnownCalculators) {
        const QString found = QStandardPaths::findExecutable(name);
        if (!found.isEmpty()) return found;
    }
    return {};
}

} // namespace

ProgrammerCommands::ProgrammerCommands(IdeSettings& settings, const SettingsFile& file,
                                       Prompts& prompts, QWidget* window,
                                       std::function<void()> saveSettings)
    : settings_(settings), file_(file), prompts_(prompts), window_(window),
      saveSettings_(std::move(saveSettings)) {}

ProgrammerCommands::~ProgrammerCommands() {
    delete calculator_.data();
}

void ProgrammerCommands::runExternal(const QString& hexPath) {
    if (settings_.externalPath.isEmpty()) editExternalDetails();
    if (settings_.externalPath.isEmpty()) {
        prompts_.inform(window_, "Unable to Run " + settings_.externalName);
        restoreWindow();
        return;
    }
    bringWindowForward();
    QStringList arguments = QProcess::splitCommand(settings_.externalCommandLine);
    arguments.append(hexPath);
    launch(settings_.externalPath, arguments, QFileInfo(hexPath).absolutePath(),
           settings_.externalName);
}

void ProgrammerCommands::runEpic(const QString& hexPath, const QString& deviceName) {
    if (settings_.epicPath.isEmpty()) editEpicDetails();
    if (settings_.epicPath.isEmpty()) {
        prompts_.inform(window_, "Unable to Run " + kEpicName);
        restoreWindow();
        return;
    }
    bringWindowForward();
    const QStringList arguments = {"-dPIC" + deviceName, hexPath};
    launch(settings_.epicPath, arguments, QFileInfo(hexPath).absolutePath(), kEpicName);
}

// Programmers run in the HEX file's folder, so a programmer that writes
// files beside its input finds them there.
void ProgrammerCommands::launch(const QString& program, const QStringList& arguments,
                                const QString& folder, const QString& name) {
    const QString found = findProgram(program);
    if (found.isEmpty()) {
        prompts_.inform(window_, "Unable to Find " + name);
        return;
    }
    if (!startDetached(found, arguments, folder)) prompts_.inform(window_, "Unable to Run " + name);
}

void ProgrammerCommands::editEpicDetails() {
    ProgramPathDialog dialog(kEpicPath, settings_, file_, prompts_, window_);
    prompts_.runDialog(dialog);
    saveSettings_();
}

void ProgrammerCommands::editAssemblerPath() {
    ProgramPathDialog dialog(kAssemblerPath, settings_, file_, prompts_, window_);
    prompts_.runDialog(dialog);
    saveSettings_();
}

void ProgrammerCommands::editExternalDetails() {
    ExternalProgrammerDialog dialog(settings_, file_, prompts_, window_);
    prompts_.runDialog(dialog);
    saveSettings_();
}

void ProgrammerCommands::openHelp(const QString& homeFolder) {
    const QString path = homeFolder + QStringLiteral("/inc/ZORVEL.HTM");
    if (!QFileInfo(path).isFile())
        prompts_.inform(window_, QStringLiteral("Unable to Find ZORVEL.HTM\r\nMake sure it's in "
                                                "the INC directory"));
    else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(path)))
        prompts_.inform(window_, QStringLiteral("Unable to Run ZORVEL.HTM\r\nMake sure it's in "
                                                "the INC directory"));
    restoreWindow();
}

void ProgrammerCommands::runCalculator() {
    const QStringList command = QProcess::splitCommand(settings_.calculator);
    const QString known = command.isEmpty() ? firstKnownCalculator() : QString();
    if (!command.isEmpty())
        runConfiguredCalculator(command);
    else if (!known.isEmpty())
        launch(known, {}, QString(), QFileInfo(known).fileName());
    else
        showBuiltInCalculator();
    restoreWindow();
}

void ProgrammerCommands::runConfiguredCalculator(const QStringList& command) {
    launch(command.first(), command.mid(1), QString(), command.first());
}

void ProgrammerCommands::showBuiltInCalculator() {
    if (!calculator_) calculator_ = new CalculatorDialog(window_);
    calculator_->show();
    calculator_->raise();
    calculator_->activateWindow();
}

void ProgrammerCommands::bringWindowForward() {
    if (!window_) return;
    restoreWindow();
    window_->raise();
    window_->activateWindow();
}

// Brings a minimised main window back after a program has been started or
// a failure reported.
void ProgrammerCommands::restoreWindow() {
    if (window_ && window_->isMinimized()) window_->showNormal();
}

} // namespace zorvel::ide
