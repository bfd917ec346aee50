// zorvel-ide: finds the home folder, makes the settings file on first start
// and shows the main window.
#include "compiler/driver/home_folder.h"
#include "ide/common/prompts.h"
#include "ide/common/settings.h"
#include "ide/window/main_window.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <cstdio>
#include <optional>

using namespace zorvel::ide;

namespace {

struct StartOptions {
    std::optional<std::filesystem::path> home;
    QString settingsPath;
    QString file;
    bool printHome = false;
};

StartOptions parseArguments(const QApplication& app) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Zorvel: BASIC for PIC16 microcontrollers");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption({"home", "Folder whose inc/ holds the device files.", "dir"});
    parser.addOption({"settings", "The settings file to use.", "file"});
    parser.addOption({"print-home", "Print the home folder in use and exit."});
    parser.addPositionalArgument("file", "A BASIC source file to open.", "[file]");
    parser.process(app);
    StartOptions o;
    if (parser.isSet("home")) o.home = parser.value("home").toStdString();
    o.settingsPath = parser.isSet("settings") ? parser.value("settings") : defaultSettingsPath();
    o.printHome = parser.isSet("print-home");
    if (!parser.positionalArguments().isEmpty()) o.file = parser.positionalArguments().first();
    return o;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Zorvel");
    QApplication::setApplicationVersion(kVersionText);
    const StartOptions start = parseArguments(app);
    const auto home =
        zorvel::findHomeFolder(start.home, QCoreApplication::applicationFilePath().toStdString());
    if (!home.folder) {
        QMessageBox::critical(nullptr, "Zorvel", QString::fromStdString(home.error));
        return 2;
    }
    if (start.printHome) {
        std::printf("%s\n", home.folder->string().c_str());
        return 0;
    }
    IdeOptions options;
    options.homeFolder = QString::fromStdString(home.folder->string());
    options.settingsPath = start.settingsPath;
    // A settings file that cannot be made is reported when it is first saved.
    createSettingsFileIfMissing(options.settingsPath, options.homeFolder + "/inc/Zorvel.ini");
    QtPrompts prompts;
    MainWindow window(options, prompts);
    window.show();
    if (!start.file.isEmpty()) window.openPath(QFileInfo(start.file).absoluteFilePath());
    return app.exec();
}
