// The main window's commands: menu items with their shortcuts, the tool bar
// with its hints, and the editor's context menu.
#include "ide/editor/case_conversion.h"
#include "ide/editor/find_dialog.h"
#include "ide/editor/replace_dialog.h"
#include "ide/programmers/programmer_commands.h"
#include "ide/window/listing_window.h"
#include "ide/window/main_window.h"
#include "ide/window/splash_dialog.h"

#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>
#include <QToolBar>
#include <Qsci/qsciscintilla.h>

namespace zorvel::ide {

QAction* MainWindow::addAction(const QString& name, const QString& text, const QKeySequence& key) {
    auto* action = new QAction(text, this);
    action->setObjectName(name);
    if (!key.isEmpty()) action->setShortcut(key);
    return action;
}

void MainWindow::createActions() {
    createFileActions();
    createEditActions();
    createCompileActions();
    createOptionsActions();
}

void MainWindow::createFileActions() {
    act_.newFile = addAction("newAction", "&New", QKeySequence("Ctrl+N"));
    act_.open = addAction("openAction", "&Open", QKeySequence("Ctrl+O"));
    act_.save = addAction("saveAction", "&Save", QKeySequence("Ctrl+S"));
    act_.saveAs = addAction("saveAsAction", "Save &As...", QKeySequence("Ctrl+Shift+A"));
    act_.print = addAction("printAction", "&Print", QKeySequence("Ctrl+P"));
    act_.printSetup = addAction("printSetupAction", "Print Se&tup...", QKeySequence("Ctrl+T"));
    act_.editorOptions = addAction("editorOptionsAction", "&Editor Options", {});
    act_.exit = addAction("exitAction", "E&xit", {});
    act_.saveButton = addAction("saveButtonAction", "Save", {});
    connect(act_.newFile, &QAction::triggered, this, &MainWindow::newFile);
    connect(act_.open, &QAction::triggered, this, &MainWindow::openFile);
    connect(act_.save, &QAction::triggered, this, &MainWindow::save);
    connect(act_.saveButton, &QAction::triggered, this, &MainWindow::save);
    connect(act_.saveAs, &QAction::triggered, this, &MainWindow::saveAs);
    connect(act_.print, &QAction::triggered, this, &MainWindow::print);
    connect(act_.printSetup, &QAction::triggered, this, &MainWindow::printSetup);
    connect(act_.editorOptions, &QAction::triggered, this, &MainWindow::showEditorOptions);
    connect(act_.exit, &QAction::triggered, this, &MainWindow::exitIde);
}

void MainWindow::createEditActions() {
    act_.redo = addAction("redoAction", "&Redo", QKeySequence("Ctrl+Shift+Z"));
    act_.undo = addAction("undoAction", "&Undo", QKeySequence("Ctrl+Z"));
    act_.cut = addAction("cutAction", "Cu&t", QKeySequence("Ctrl+X"));
    act_.copy = addAction("copyAction", "&Copy", QKeySequence("Ctrl+C"));
    act_.paste = addAction("pasteAction", "&Paste", QKeySequence("Ctrl+V"));
    act_.selectAll = addAction("selectAllAction", "Select &All", QKeySequence("Ctrl+A"));
    act_.find = addAction("findAction", "&Find...", QKeySequence("Ctrl+F"));
    act_.replace = addAction("replaceAction", "R&eplace...", QKeySequence("Ctrl+R"));
    act_.upper = addAction("upperCaseAction", "To &UpperCase", QKeySequence("Ctrl+F5"));
    act_.lower = addAction("lowerCaseAction", "To &LowerCase", QKeySequence("Ctrl+Shift+F5"));
    connect(act_.redo, &QAction::triggered, editor_, &QsciScintilla::redo);
    connect(act_.undo, &QAction::triggered, editor_, &QsciScintilla::undo);
    connect(act_.cut, &QAction::triggered, editor_, &QsciScintilla::cut);
    connect(act_.copy, &QAction::triggered, editor_, &QsciScintilla::copy);
    connect(act_.paste, &QAction::triggered, editor_, &QsciScintilla::paste);
    connect(act_.selectAll, &QAction::triggered, editor_, [this] { editor_->selectAll(); });
    connect(act_.find, &QAction::triggered, findDialog_, &FindDialog::start);
    connect(act_.replace, &QAction::triggered, this, [this] {
        replaceDialog_->start();
        editor_->setFocus();
    });
    connect(act_.upper, &QAction::triggered, this, [this] { upperCaseSelection(*editor_); });
    connect(act_.lower, &QAction::triggered, this, [this] { lowerCaseSelection(*editor_); });
}

void MainWindow::createCompileActions() {
    act_.compile = addAction("compileAction", "&Compile Basic", QKeySequence("F9"));
    act_.program = addAction("programAction", "&Pic Programmer", QKeySequence("F10"));
    act_.compile->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    act_.program->setIcon(style()->standardIcon(QStyle::SP_DriveHDIcon));
    connect(act_.compile, &QAction::triggered, this, &MainWindow::compile);
    connect(act_.program, &QAction::triggered, this, &MainWindow::program);
}

void MainWindow::createOptionsActions() {
    act_.builtInProgrammer = addAction("builtInProgrammerAction", "Zorvel Programmer", {});
    act_.externalProgrammer = addAction("externalProgrammerAction", "External Programmer", {});
    act_.epicProgrammer = addAction("epicProgrammerAction", "Epic Programmer", {});
    act_.programmers = new QActionGroup(this);
    const std::pair<QAction*, const char*> items[] = {{act_.builtInProgrammer, "uni"},
                                                      {act_.externalProgrammer, "ext"},
                                                      {act_.epicProgrammer, "epic"}};
    for (auto [item, type] : items) {
        item->setCheckable(true);
        act_.programmers->addAction(item);
        const QString t = QString::fromLatin1(type);
        connect(item, &QAction::triggered, this, [this, t] { selectProgrammer(t); });
    }
    act_.epicDetails =
        addAction("epicDetailsAction", "Change &Epic Details", QKeySequence("Ctrl+E"));
    act_.externalDetails = addAction("externalDetailsAction", "Change E&xternal Programmer Details",
                                     QKeySequence("Ctrl+Q"));
    act_.assemblerPath = addAction("assemblerPathAction", "Assembler &Path...", {});
    act_.showAsm = addAction("showAsmAction", "Show &ASM Window", QKeySequence("Ctrl+W"));
    act_.showHex = addAction("showHexAction", "Show &HEX Window", QKeySequence("Ctrl+H"));
    act_.calculator = addAction("calculatorAction", "&Calculator", QKeySequence("F2"));
    act_.help = addAction("helpAction", "&Syntax", QKeySequence("F1"));
    act_.about = addAction("aboutAction", "&About...", {});
    act_.asmButton = addAction("asmButtonAction", "Assembler listing", {});
    act_.showAsm->setCheckable(true);
    act_.showHex->setCheckable(true);
    connect(act_.epicDetails, &QAction::triggered, this, [this] {
        programmers_->editEpicDetails();
        editor_->setFocus();
    });
    connect(act_.externalDetails, &QAction::triggered, this, [this] {
        programmers_->editExternalDetails();
        updateStatus();
        editor_->setFocus();
    });
    connect(act_.assemblerPath, &QAction::triggered, this, [this] {
        programmers_->editAssemblerPath();
        editor_->setFocus();
    });
    connect(act_.showAsm, &QAction::toggled, this,
            [this](bool on) { setListingVisible(asmWindow_, on); });
    connect(act_.showHex, &QAction::toggled, this,
            [this](bool on) { setListingVisible(hexWindow_, on); });
    connect(act_.asmButton, &QAction::triggered, act_.showAsm, &QAction::toggle);
    connect(asmWindow_, &ListingWindow::closed, this, [this] { act_.showAsm->setChecked(false); });
    connect(hexWindow_, &ListingWindow::closed, this, [this] { act_.showHex->setChecked(false); });
    connect(act_.calculator, &QAction::triggered, this, [this] { programmers_->runCalculator(); });
    connect(act_.help, &QAction::triggered, this,
            [this] { programmers_->openHelp(options_.homeFolder); });
    connect(act_.about, &QAction::triggered, this, [this] {
        SplashDialog splash(kVersionText, this);
        prompts_.runDialog(splash);
    });
}

void MainWindow::createMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->addActions({act_.newFile, act_.open, act_.save, act_.saveAs});
    file->addSeparator();
    file->addActions({act_.print, act_.printSetup, act_.editorOptions});
    file->addSeparator();
    file->addAction(act_.exit);
    QMenu* edit = menuBar()->addMenu("&Edit");
    edit->addActions({act_.redo, act_.undo});
    edit->addSeparator();
    edit->addActions({act_.cut, act_.copy, act_.paste, act_.selectAll});
    edit->addSeparator();
    edit->addActions({act_.find, act_.replace, act_.upper, act_.lower});
    QMenu* compile = menuBar()->addMenu("&Compile");
    compile->addActions({act_.compile, act_.program});
    QMenu* options = menuBar()->addMenu("&Options");
    QMenu* programmers = options->addMenu("&Programmer Options");
    programmers->addActions(act_.programmers->actions());
    options->addActions({act_.epicDetails, act_.externalDetails, act_.assemblerPath});
    options->addSeparator();
    options->addActions({act_.showAsm, act_.showHex});
    options->addSeparator();
    options->addAction(act_.calculator);
    QMenu* help = menuBar()->addMenu("&Help");
    help->addActions({act_.help, act_.about});
}

// Every button shares its menu item's command; Save and the listing button
// have their own state.
void MainWindow::createToolBar() {
    QToolBar* bar = addToolBar("Main");
    bar->setObjectName(QStringLiteral("mainToolBar"));
    const std::pair<QAction*, QStyle::StandardPixmap> buttons[] = {
        {act_.newFile, QStyle::SP_FileIcon},
        {act_.open, QStyle::SP_DialogOpenButton},
        {act_.saveButton, QStyle::SP_DialogSaveButton},
        {act_.print, QStyle::SP_FileDialogDetailedView},
        {act_.cut, QStyle::SP_DialogDiscardButton},
        {act_.copy, QStyle::SP_FileLinkIcon},
        {act_.paste, QStyle::SP_DialogApplyButton},
        {act_.find, QStyle::SP_FileDialogContentsView},
        {act_.compile, QStyle::SP_MediaPlay},
        {act_.program, QStyle::SP_DriveHDIcon},
        {act_.asmButton, QStyle::SP_FileDialogListView}};
    const char* hints[] = {"New File",
                           "Open File",
                           "Save File",
                           "Print",
                           "Cut",
                           "Copy",
                           "Paste",
                           "Find",
                           "Compile Basic",
                           "Send code to Programmer",
                           "Show/Hide the Assembler listing"};
    int i = 0;
    for (auto [action, icon] : buttons) {
        QAction* button = action;
        if (action != act_.saveButton && action != act_.asmButton && action != act_.compile &&
            action != act_.program) {
            // A separate action keeps the menu item's text and the button's hint apart.
            button = new QAction(this);
            connect(button, &QAction::triggered, action, &QAction::trigger);
        }
        button->setIcon(style()->standardIcon(icon));
        button->setToolTip(QString::fromLatin1(hints[i++]));
        bar->addAction(button);
        bar->widgetForAction(button)->setObjectName(QStringLiteral("button:") + button->toolTip());
    }
}

void MainWindow::createContextMenu() {
    contextMenu_ = new QMenu(this);
    contextMenu_->addActions({act_.cut, act_.copy, act_.paste});
    contextMenu_->addSeparator();
    contextMenu_->addActions({act_.find, act_.replace});
    contextMenu_->addSeparator();
    QAction* compile = contextMenu_->addAction("Compile");
    QAction* program = contextMenu_->addAction("Program");
    connect(compile, &QAction::triggered, act_.compile, &QAction::trigger);
    connect(program, &QAction::triggered, act_.program, &QAction::trigger);
    connect(contextMenu_, &QMenu::aboutToShow, this, [this, compile, program] {
        compile->setEnabled(act_.compile->isEnabled());
        program->setEnabled(act_.program->isEnabled());
    });
    editor_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(editor_, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { contextMenu_->popup(editor_->mapToGlobal(at)); });
}

} // namespace zorvel::ide
