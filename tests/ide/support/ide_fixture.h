// A main window for a test: its own settings file in a temporary folder, the
// source tree's data folder as home, scripted prompts, no splash.
#pragma once

#include "ide/support/scripted_prompts.h"
#include "ide/window/main_window.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

namespace zorvel::ide::test {

inline QString readText(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(f.readAll());
}

inline bool writeText(const QString& path, const QString& text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    f.write(text.toUtf8());
    return true;
}

struct IdeFixture {
    QTemporaryDir dir;
    ScriptedPrompts prompts;
    std::unique_ptr<MainWindow> window;

    QString settingsPath() const { return dir.filePath("config/Zorvel.ini"); }
    QString path(const QString& name) const { return dir.filePath(name); }

    // Settings text written before the window starts ("" gives an empty file).
    explicit IdeFixture(const QString& settingsText = {}, bool withSettingsFile = true) {
        if (withSettingsFile) writeText(settingsPath(), settingsText);
    }

    MainWindow& start() {
        IdeOptions options;
        options.homeFolder = QStringLiteral(ZORVEL_SOURCE_DATA);
        options.settingsPath = settingsPath();
        options.splashOnFirstActivation = false;
        window = std::make_unique<MainWindow>(options, prompts);
        return *window;
    }

    QAction* action(const char* name) const { return window->findChild<QAction*>(name); }
};

} // namespace zorvel::ide::test
