#include "ide/window/main_window.h"

#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_options_dialog.h"
#include "ide/editor/editor_setup.h"
#include "ide/editor/find_dialog.h"
#include "ide/editor/replace_dialog.h"
#include "ide/editor/style_store.h"
#include "ide/programmers/programmer_commands.h"
#include "ide/window/ide_resources.h"
#include "ide/window/listing_window.h"
#include "ide/window/source_printer.h"
#include "ide/window/splash_dialog.h"

#include <QActionGroup>
#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QLabel>
#include <QSplitter>
#include <QStatusBar>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

MainWindow::MainWindow(IdeOptions options, Prompts& prompts, QWidget* parent)
    : QMainWindow(parent), options_(std::move(options)), prompts_(prompts),
      settingsFile_(options_.settingsPath) {
    registerResources();
    setWindowIcon(QIcon(QStringLiteral(":/zorvel/icon.svg")));
    QApplication::setApplicationName(QStringLiteral("ZORVEL ") + kVersionText);
    settings_.workingFolder = options_.homeFolder;
    settingsFile_.load(settings_);
    createEditors();
    createListingWindows();
    programmers_ = std::make_unique<ProgrammerCommands>(settings_, settingsFile_, prompts_, this,
                                                        [this] { saveSettings(); });
    findDialog_ = new FindDialog(*editor_, prompts_, findState_, this);
    replaceDialog_ = new ReplaceDialog(*editor_, prompts_, findState_, this);
    createActions();
    createMenus();
    createToolBar();
    createContextMenu();
    createStatusBar();
    applyStartState();
    newFile();
    loadStyles(*lexer_);
    loadEditorOptions(*editor_);
    resize(900, 700);
}

MainWindow::~MainWindow() = default;

void MainWindow::createEditors() {
    splitter_ = new QSplitter(Qt::Vertical, this);
    editor_ = new QsciScintilla(splitter_);
    editor_->setObjectName(QStringLiteral("sourceEditor"));
    lexer_ = new BasicLexer(editor_);
    configureSourceEditor(*editor_, lexer_);
    editor_->installEventFilter(this);
    editor_->viewport()->installEventFilter(this);
    messages_ = new QsciScintilla(splitter_);
    messages_->setObjectName(QStringLiteral("messagePane"));
    configureMessagePane(*messages_);
    splitter_->addWidget(editor_);
    splitter_->addWidget(messages_);
    splitter_->setStretchFactor(0, 4);
    splitter_->setStretchFactor(1, 1);
    setCentralWidget(splitter_);
    connect(editor_, &QsciScintilla::textChanged, this, &MainWindow::onTextChanged);
    connect(editor_, &QsciScintilla::cursorPositionChanged, this, [this] { updateStatus(); });
    connect(messages_, &QsciScintilla::SCN_DOUBLECLICK, this,
            [this](int, int line, int) { onMessageDoubleClick(line); });
}

void MainWindow::createListingWindows() {
    asmWindow_ = new ListingWindow(QStringLiteral("Assembler Listing"), settings_.asmBox, this);
    hexWindow_ = new ListingWindow(QStringLiteral("Hex File Listing"), settings_.hexBox, this);
    asmWindow_->setObjectName(QStringLiteral("asmWindow"));
    hexWindow_->setObjectName(QStringLiteral("hexWindow"));
}

void MainWindow::createStatusBar() {
    positionLabel_ = new QLabel(this);
    programmerLabel_ = new QLabel(this);
    statusBar()->addPermanentWidget(programmerLabel_);
    statusBar()->addPermanentWidget(positionLabel_);
    updateStatus();
}

// The settings were read before the windows were made (the listing windows
// take their geometry from them); the programmer item is selected now.
void MainWindow::applyStartState() {
    act_.compile->setEnabled(false);
    act_.program->setEnabled(false);
    act_.showAsm->setChecked(false);
    act_.showHex->setChecked(false);
    const QString type = settings_.programmerType;
    if (type == "uni" || type == "ext" || type == "epic") selectProgrammer(type);
}

// A vanished settings file ends the IDE; the edited text is offered for
// saving first so that nothing is lost.
bool MainWindow::saveSettings(bool offerToSaveText) {
    if (!settingsFile_.exists()) {
        prompts_.inform(this, kSettingsFileMissing);
        if (offerToSaveText && editor_->isModified() &&
            prompts_.askSaveChanges(this, false) == Prompts::Answer::Yes)
            save();
        prompts_.endProcess(0);
        return false;
    }
    if (!settingsFile_.save(settings_)) {
        prompts_.inform(this, "Unable to write the settings file " + settingsFile_.path());
        return false;
    }
    return true;
}

QString MainWindow::titleText() const {
    return QStringLiteral("   - ZORVEL ") + kVersionText + QStringLiteral(" -    ") + sourcePath_;
}

void MainWindow::updateTitle() {
    setWindowTitle(titleText());
}

void MainWindow::updateStatus() {
    int line = 0;
    int column = 0;
    editor_->getCursorPosition(&line, &column);
    positionLabel_->setText(QStringLiteral("Line %1, Col %2").arg(line + 1).arg(column + 1));
    const QString& type = settings_.programmerType;
    QString programmer = QStringLiteral("No programmer selected");
    if (type == "uni") programmer = QStringLiteral("Built-in programmer");
    if (type == "ext") programmer = settings_.externalName;
    if (type == "epic") programmer = QStringLiteral("EPIC programmer");
    programmerLabel_->setText(programmer);
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isActiveWindow()) return;
    updateTitle();
    if (!activatedOnce_) onFirstActivation();
}

void MainWindow::onFirstActivation() {
    activatedOnce_ = true;
    if (!options_.splashOnFirstActivation) return;
    SplashDialog splash(kVersionText, this);
    prompts_.runDialog(splash);
}

void MainWindow::selectProgrammer(const QString& type) {
    QAction* item = type == "uni"   ? act_.builtInProgrammer
                    : type == "ext" ? act_.externalProgrammer
                                    : act_.epicProgrammer;
    item->setChecked(true);
    settings_.programmerType = type;
    updateStatus();
    saveSettings();
}

void MainWindow::showEditorOptions() {
    EditorOptionsDialog dialog(*editor_, *lexer_, this);
    prompts_.runDialog(dialog);
    saveStyles(*lexer_);
}

} // namespace zorvel::ide
