#include "ide/window/build_runner.h"

// Qt's `emit` keyword macro would rewrite the compiler's Compilation::emit.
#undef emit
#include "compiler/driver/assembler.h"
#include "compiler/driver/compilation.h"
#include "compiler/driver/compile_run.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>

namespace zorvel::ide {

namespace {

std::filesystem::path toPath(const QString& s) {
    return std::filesystem::path(s.toStdString());
}
QString toQString(const std::filesystem::path& p) {
    return QString::fromStdString(p.string());
}

// Include paths are as the reader found them: absolute, or relative to the
// including file's folder.
std::vector<BuildSource> sourcesOf(const Compilation& c, const QString& mainPath) {
    std::vector<BuildSource> sources;
    const QDir mainFolder = QFileInfo(mainPath).absoluteDir();
    for (const SourceFile& f : c.sourceFiles) {
        QString path = f.path.empty() ? mainPath : QString::fromStdString(f.path);
        if (QFileInfo(path).isRelative()) path = mainFolder.absoluteFilePath(path);
        sources.push_back({QString::fromStdString(f.name), path});
    }
    return sources;
}

} // namespace

BuildResult runBuild(const QString& sourcePath, const QString& homeFolder,
                     const QString& assembler) {
    CompileOptions options;
    options.sourceName = toPath(QFileInfo(sourcePath).absoluteFilePath());
    options.homeFolder = toPath(homeFolder);
    options.assembler = assembler.toStdString();
    Compilation c(options);
    runCompile(c);

    BuildResult r;
    r.succeeded = c.ctx.errorCount == 0;
    for (const std::string& line : c.messages)
        r.messages.append(QString::fromStdString(line));
    for (const std::string& alert : c.alerts)
        r.alerts.append(QString::fromStdString(alert));
    const QString asmPath = toQString(outputPath(c, ".asm"));
    if (QFileInfo(asmPath).isFile()) r.asmPath = asmPath;
    if (r.succeeded) r.hexPath = toQString(outputPath(c, ".hex"));
    r.deviceName = QString::fromStdString(c.device.name);
    r.wordsUsed = c.ctx.wordsUsed;
    r.sources = sourcesOf(c, QString::fromStdString(options.sourceName.string()));
    return r;
}

} // namespace zorvel::ide
