#include "ide/common/settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace zorvel::ide {

namespace {

void readBox(const QSettings& ini, const QString& section, WindowBox& box) {
    box.width = ini.value(section + "/Width", box.width).toInt();
    box.height = ini.value(section + "/Height", box.height).toInt();
    box.x = ini.value(section + "/Xpos", box.x).toInt();
    box.y = ini.value(section + "/Ypos", box.y).toInt();
}

void writeBox(QSettings& ini, const QString& section, const WindowBox& box) {
    ini.setValue(section + "/Width", box.width);
    ini.setValue(section + "/Height", box.height);
    ini.setValue(section + "/Xpos", box.x);
    ini.setValue(section + "/Ypos", box.y);
}

} // namespace

bool SettingsFile::exists() const {
    return QFileInfo(path_).isFile();
}

void SettingsFile::load(IdeSettings& s) const {
    if (!exists()) {
        s.programmerType.clear();
        return;
    }
    QSettings ini(path_, QSettings::IniFormat);
    s.programmerType = ini.value("Programmer/Type").toString();
    s.epicPath = ini.value("Epic/Pathname").toString();
    s.externalName = ini.value("EXT_PROG/Name").toString();
    if (s.externalName.isEmpty()) s.externalName = kDefaultExternalName;
    s.externalPath = ini.value("EXT_PROG/Ext_Path", s.externalPath).toString();
    s.externalCommandLine = ini.value("EXT_PROG/Cmd_Line", s.externalCommandLine).toString();
    // The template leaves the folder empty: the home folder stays the default.
    const QString folder = ini.value("WorkingDirectory/Pathname").toString();
    if (!folder.isEmpty()) s.workingFolder = folder;
    readBox(ini, "AsmBox", s.asmBox);
    readBox(ini, "HexBox", s.hexBox);
    s.assemblerPath = ini.value("Assembler/Path", s.assemblerPath).toString();
    if (s.assemblerPath.isEmpty()) s.assemblerPath = QStringLiteral("gpasm");
    s.calculator = ini.value("Calculator/Command", s.calculator).toString();
}

bool SettingsFile::save(const IdeSettings& s) const {
    if (!exists()) return false;
    QSettings ini(path_, QSettings::IniFormat);
    ini.setValue("Programmer/Type", s.programmerType);
    ini.setValue("Epic/Pathname", s.epicPath);
    ini.setValue("EXT_PROG/Name", s.externalName);
    ini.setValue("EXT_PROG/Ext_Path", s.externalPath);
    ini.setValue("EXT_PROG/Cmd_Line", s.externalCommandLine);
    ini.setValue("WorkingDirectory/Pathname", s.workingFolder);
    writeBox(ini, "AsmBox", s.asmBox);
    writeBox(ini, "HexBox", s.hexBox);
    ini.setValue("Assembler/Path", s.assemblerPath);
    ini.setValue("Calculator/Command", s.calculator);
    ini.sync();
    return ini.status() == QSettings::NoError;
}

bool SettingsFile::writeValue(const QString& section, const QString& key,
                              const QString& value) const {
    if (!exists()) return false;
    QSettings ini(path_, QSettings::IniFormat);
    ini.setValue(section + "/" + key, value);
    ini.sync();
    return ini.status() == QSettings::NoError;
}

QString defaultSettingsPath() {
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (config.isEmpty()) config = QDir::homePath() + "/.config";
    return config + "/zorvel/Zorvel.ini";
}

bool createSettingsFileIfMissing(const QString& path, const QString& templatePath) {
    if (QFileInfo(path).isFile()) return true;
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) return false;
    if (QFileInfo(templatePath).isFile()) {
        // An installed template is read-only; the user's copy must not be.
        if (!QFile::copy(templatePath, path)) return false;
        return QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                               QFile::ReadOther);
    }
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

} // namespace zorvel::ide
