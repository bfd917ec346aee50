// The IDE's settings file: an INI file with the sections Programmer, Epic,
// EXT_PROG, WorkingDirectory, AsmBox and HexBox, plus Assembler and
// Calculator for the Linux programs. All keys are read together and
// written together.
#pragma once

#include <QString>

namespace zorvel::ide {

// Size and position of a listing window.
struct WindowBox {
    int width = 0;
    int height = 0;
    int x = 0;
    int y = 0;
    bool operator==(const WindowBox&) const = default;
};

inline const QString kDefaultExternalName = QStringLiteral("External Programmer");

struct IdeSettings {
    QString programmerType; // "uni", "ext", "epic" or empty (none selected)
    QString epicPath;
    QString externalName = kDefaultExternalName;
    QString externalPath;
    QString externalCommandLine;
    QString workingFolder;
    WindowBox asmBox;
    WindowBox hexBox;
    QString assemblerPath = QStringLiteral("gpasm"); // a path, or a name on PATH
    QString calculator; // a command; empty: the first known calculator on PATH
    bool operator==(const IdeSettings&) const = default;
};

class SettingsFile {
public:
    explicit SettingsFile(QString path) : path_(std::move(path)) {}

    const QString& path() const { return path_; }
    bool exists() const;

    // Reads every key into `settings`. A missing file or key keeps the value
    // `settings` already has, except that an empty or missing external
    // programmer name reads as "External Programmer".
    void load(IdeSettings& settings) const;

    // Writes every key. False, and nothing written, when the file does not
    // exist (it has been deleted since start-up).
    bool save(const IdeSettings& settings) const;

    // Writes one key at once (the path dialogs do this); false when the
    // file does not exist.
    bool writeValue(const QString& section, const QString& key, const QString& value) const;

private:
    QString path_;
};

// $XDG_CONFIG_HOME/zorvel/Zorvel.ini, or ~/.config/zorvel/Zorvel.ini.
QString defaultSettingsPath();

// On first start the settings file is made from the template in the home
// folder's inc/ (or empty when there is none). False when it could not be made.
bool createSettingsFileIfMissing(const QString& path, const QString& templatePath);

// The text of the fatal message shown when the settings file has vanished.
inline const QString kSettingsFileMissing = QStringLiteral(
    "Fatal Error!\r\nUnable to find ZORVEL.INI file.\r\nThe Compiler will now close.");

} // namespace zorvel::ide
