// One build as the IDE runs it: the compiler library's compile run on a saved
// source file, with gpasm, and what the windows show of it afterwards.
#pragma once

#include <QString>
#include <QStringList>
#include <vector>

namespace zorvel::ide {

struct BuildSource {
    QString name; // as the messages name it: the file name without its folder
    QString path; // where it is
};

struct BuildResult {
    bool succeeded = false;
    QStringList messages; // the message list, line by line
    QStringList alerts;   // texts for message boxes (a missing assembler, ...)
    QString asmPath;      // the .asm file; empty when none was written
    QString hexPath;      // the .hex file of a clean build
    QString deviceName;   // the DEVICE of the build, e.g. "16F877"
    int wordsUsed = 0;
    std::vector<BuildSource> sources; // the main file first, then its includes
};

BuildResult runBuild(const QString& sourcePath, const QString& homeFolder,
                     const QString& assembler);

} // namespace zorvel::ide
