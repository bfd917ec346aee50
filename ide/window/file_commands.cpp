// Commands on the edited file: New, Open, Save, Save As, Exit, and the
// question about unsaved changes that comes before them.
#include "ide/window/listing_window.h"
#include "ide/window/main_window.h"

#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QMimeData>
#include <QSaveFile>
#include <QStringDecoder>
#include <QUrl>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

namespace {

const FileDialogSpec kOpenDialog{
    QStringLiteral("Open Zorvel File"),
    QStringLiteral("bas"),
    QStringLiteral("*.bas"),
    QStringLiteral("BASIC files (*.bas *.BAS);;INCLUDE Files (*.inc *.INC);;All Files (*)"),
    {}};

const FileDialogSpec kSaveAsDialog{QStringLiteral("Save As"),
                                   QStringLiteral("bas"),
                                   {},
                                   QStringLiteral("Zorvel (*.bas *.BAS);;Any File (*)"),
                                   {}};

// Sources are UTF-8; a file that is not is taken as Latin-1 so that no byte
// is lost.
QString decodeSource(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError()) return text;
    return QString::fromLatin1(bytes);
}

} // namespace

// True when the command may go on. A Yes whose save fails or whose Save As
// is cancelled stops the command too, so the text is never dropped unsaved.
bool MainWindow::maybeSaveChanges(bool allowCancel) {
    if (!editor_->isModified()) return true;
    switch (prompts_.askSaveChanges(this, allowCancel)) {
    case Prompts::Answer::Yes: return save();
    case Prompts::Answer::No: return true;
    case Prompts::Answer::Cancel: return false;
    }
    return false;
}

void MainWindow::clearOutputs() {
    messages_->clear();
    asmWindow_->clear();
}

void MainWindow::newFile() {
    if (!maybeSaveChanges(true)) return;
    if (editor_->length() > 0) {
        editor_->clear();
        clearOutputs();
    }
    editor_->setModified(false);
    sourcePath_.clear();
    updateTitle();
    for (QAction* a : {act_.compile, act_.program, act_.asmButton, act_.saveButton})
        a->setEnabled(false);
}

void MainWindow::openFile() {
    if (!maybeSaveChanges(true)) return;
    FileDialogSpec spec = kOpenDialog;
    spec.folder = settings_.workingFolder;
    const QString path = prompts_.openFileName(this, spec);
    if (path.isEmpty()) return;
    openPath(path);
}

// Loads a file without asking about the current text (the caller has).
bool MainWindow::openPath(const QString& path) {
    if (!loadIntoEditor(path)) return false;
    sourcePath_ = QFileInfo(path).absoluteFilePath();
    updateTitle();
    settings_.workingFolder = QFileInfo(path).absolutePath();
    if (!saveSettings()) return true;
    afterOpen();
    return true;
}

bool MainWindow::loadIntoEditor(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        prompts_.inform(this, "Unable to open " + path + "\r\n" + file.errorString());
        return false;
    }
    const QString text = decodeSource(file.readAll());
    clearOutputs();
    editor_->setText(text);
    editor_->setEolMode(text.contains("\r\n") ? QsciScintilla::EolWindows : QsciScintilla::EolUnix);
    editor_->setCursorPosition(0, 0);
    return true;
}

void MainWindow::afterOpen() {
    act_.compile->setEnabled(true);
    act_.asmButton->setEnabled(true);
    act_.program->setEnabled(false);
    act_.saveButton->setEnabled(false);
    editor_->setModified(false);
}

// Writes through a temporary file renamed over the old one, so a failed save
// leaves the old file whole. A read-only file is refused, not replaced.
bool MainWindow::writeSource(const QString& path) {
    // Without its owner's write permission a file counts as read-only, also
    // for root, who could write it anyway.
    QFileInfo info(path);
    if (info.exists() && (!info.isWritable() || !(info.permissions() & QFile::WriteOwner))) {
        prompts_.inform(this, "Unable to save " + path +
                                  "\r\nThe file is read-only. Use Save As to keep your changes "
                                  "under another name.");
        return false;
    }
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(editor_->text().toUtf8());
        if (file.commit()) return true;
    }
    prompts_.inform(this, "Unable to save " + path + "\r\n" + file.errorString());
    return false;
}

bool MainWindow::save() {
    if (sourcePath_.isEmpty()) return saveAs();
    if (!writeSource(sourcePath_)) return false;
    editor_->setModified(false);
    act_.saveButton->setEnabled(false);
    return true;
}

bool MainWindow::saveAs() {
    FileDialogSpec spec = kSaveAsDialog;
    spec.folder =
        sourcePath_.isEmpty() ? settings_.workingFolder : QFileInfo(sourcePath_).absolutePath();
    QString path = prompts_.saveFileName(this, spec);
    if (path.isEmpty()) return false;
    if (QFileInfo(path).suffix().isEmpty()) path += ".bas";
    if (!writeSource(path)) return false;
    sourcePath_ = QFileInfo(path).absoluteFilePath();
    updateTitle();
    editor_->setModified(false);
    act_.saveButton->setEnabled(false);
    return true;
}

void MainWindow::exitIde() {
    close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!maybeSaveChanges(false)) {
        event->ignore();
        return;
    }
    if (!saveSettings(false)) {
        event->accept();
        return;
    }
    asmWindow_->close();
    hexWindow_->close();
    event->accept();
    prompts_.endProcess(0);
}

void MainWindow::onTextChanged() {
    act_.compile->setEnabled(true);
    act_.saveButton->setEnabled(true);
}

void MainWindow::onEditorKey() {
    act_.compile->setEnabled(true);
    act_.asmButton->setEnabled(true);
    act_.saveButton->setEnabled(true);
}

// The first local file among the dropped ones, or empty.
static QString droppedFile(const QMimeData* data) {
    if (!data || !data->hasUrls()) return {};
    for (const QUrl& url : data->urls())
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile()) return url.toLocalFile();
    return {};
}

// A file dropped on the editor is opened as with Open; dropped text is
// inserted by the editor itself.
bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == editor_ && event->type() == QEvent::KeyPress) onEditorKey();
    if (watched != editor_->viewport()) return QMainWindow::eventFilter(watched, event);
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove) {
        auto* drag = static_cast<QDropEvent*>(event);
        if (droppedFile(drag->mimeData()).isEmpty()) return false;
        drag->acceptProposedAction();
        return true;
    }
    if (event->type() == QEvent::Drop) {
        const QString file = droppedFile(static_cast<QDropEvent*>(event)->mimeData());
        if (file.isEmpty()) return false;
        static_cast<QDropEvent*>(event)->acceptProposedAction();
        if (maybeSaveChanges(true)) openPath(file);
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace zorvel::ide
