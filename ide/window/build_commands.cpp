// The build (F9), the programmer command (F10), the message pane's
// double-click, the listing windows and printing.
#include "ide/programmers/programmer_commands.h"
#include "ide/window/listing_window.h"
#include "ide/window/main_window.h"
#include "ide/window/message_location.h"
#include "ide/window/source_printer.h"

#include <QApplication>
#include <QFileInfo>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QStatusBar>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

namespace {

// Sources of ten characters or fewer hold no program worth building.
constexpr int kShortestBuildableText = 11;

const QString kBuiltInProgrammerMissing =
    QStringLiteral("The Zorvel programmer is not available in this version.\r\n"
                   "Choose the External or the Epic programmer under Options, Programmer Options.");
const QString kNoProgrammerSelected =
    QStringLiteral("No programmer is selected.\r\nChoose one under Options, Programmer Options.");

} // namespace

void MainWindow::compile() {
    if (editor_->text().length() < kShortestBuildableText) return;
    if (!save()) return;
    messages_->clear();
    asmWindow_->clear();
    hexWindow_->clear();
    act_.program->setEnabled(false);
    statusBar()->showMessage(QStringLiteral("Compiling ") + sourcePath_);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    BuildResult result = runBuild(sourcePath_, options_.homeFolder, settings_.assemblerPath);
    QApplication::restoreOverrideCursor();
    showBuildResult(result);
    lastBuild_ = std::move(result);
}

void MainWindow::showBuildResult(const BuildResult& result) {
    for (const QString& alert : result.alerts)
        prompts_.inform(this, alert);
    messages_->setText(result.messages.join('\n'));
    if (!result.asmPath.isEmpty()) asmWindow_->loadFile(result.asmPath);
    if (result.succeeded) hexWindow_->loadFile(result.hexPath);
    act_.program->setEnabled(result.succeeded);
    statusBar()->showMessage(result.succeeded ? QStringLiteral("Built %1: %2 words")
                                                    .arg(QFileInfo(result.hexPath).fileName())
                                                    .arg(result.wordsUsed)
                                              : QStringLiteral("Build failed"));
}

void MainWindow::program() {
    if (!lastBuild_.succeeded) return;
    const QString& type = settings_.programmerType;
    if (type == "uni") {
        prompts_.inform(this, kBuiltInProgrammerMissing);
    } else if (type == "ext") {
        programmers_->runExternal(lastBuild_.hexPath);
    } else if (type == "epic") {
        programmers_->runEpic(lastBuild_.hexPath, lastBuild_.deviceName);
    } else {
        prompts_.inform(this, kNoProgrammerSelected);
    }
    editor_->setFocus();
}

void MainWindow::onMessageDoubleClick(int line) {
    std::optional<MessageLocation> at = locateMessage(messages_->text(line).trimmed());
    if (!at) return;
    goToLocation(at->file, at->line, at->assembler);
}

// The compiler names a file by its name alone: the main file or one of its
// includes. The assembler's lines that name the .asm file select the line in
// the assembler listing; its other files (the library file) are generated
// and not opened for editing.
void MainWindow::goToLocation(const QString& file, int line, bool assembler) {
    if (assembler) {
        if (QFileInfo(file).fileName() != QFileInfo(lastBuild_.asmPath).fileName()) return;
        act_.showAsm->setChecked(true);
        asmWindow_->selectLine(line);
        asmWindow_->raise();
        return;
    }
    QString path;
    for (const BuildSource& s : lastBuild_.sources)
        if (s.name == file) path = s.path;
    if (path.isEmpty() || !QFileInfo(path).isFile()) return;
    if (QFileInfo(path) != QFileInfo(sourcePath_)) {
        if (!maybeSaveChanges(true) || !openPath(path)) return;
    }
    selectEditorLine(line);
}

void MainWindow::selectEditorLine(int line) {
    const int index = line - 1;
    if (index < 0 || index >= editor_->lines()) return;
    QString text = editor_->text(index);
    while (text.endsWith('\n') || text.endsWith('\r'))
        text.chop(1);
    editor_->setSelection(index, 0, index, text.length());
    editor_->ensureLineVisible(index);
    editor_->setFocus();
}

void MainWindow::setListingVisible(ListingWindow* window, bool visible) {
    if (visible) {
        window->show();
        window->raise();
    } else {
        window->hide();
    }
}

void MainWindow::print() {
    if (!printer_) printer_ = std::make_unique<SourcePrinter>();
    printer_->setFileName(sourcePath_.isEmpty() ? QStringLiteral("Untitled")
                                                : QFileInfo(sourcePath_).fileName());
    printer_->setDocName(printer_->heading(1).section('\t', 0, 0));
    QPrintDialog dialog(printer_.get(), this);
    if (prompts_.runDialog(dialog) != QDialog::Accepted) return;
    if (!printer_->printRange(editor_))
        prompts_.inform(this, QStringLiteral("Unable to print ") + printer_->docName());
}

void MainWindow::printSetup() {
    if (!printer_) printer_ = std::make_unique<SourcePrinter>();
    QPageSetupDialog dialog(printer_.get(), this);
    prompts_.runDialog(dialog);
}

} // namespace zorvel::ide
