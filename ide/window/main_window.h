// The IDE's main window: the source editor above the message pane, menus,
// tool bar, status bar, and the commands on the edited file, the build and
// the programmers. The constructor only wires the pieces together; each
// family of commands lives in its own file.
#pragma once

#include "ide/common/prompts.h"
#include "ide/common/settings.h"
#include "ide/editor/find_options.h"
#include "ide/window/build_runner.h"

#include <QMainWindow>
#include <memory>

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QSplitter;
class QsciScintilla;

namespace zorvel::ide {

class BasicLexer;
class FindDialog;
class ListingWindow;
class ProgrammerCommands;
class ReplaceDialog;
class SourcePrinter;

inline const QString kVersionText = QStringLiteral("V1.10");

struct IdeOptions {
    QString homeFolder;   // holds inc/ with the device files, help and settings template
    QString settingsPath; // the user's settings file
    bool splashOnFirstActivation = true;
};

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(IdeOptions options, Prompts& prompts, QWidget* parent = nullptr);
    ~MainWindow() override;

    QsciScintilla* editor() const { return editor_; }
    QsciScintilla* messagePane() const { return messages_; }
    ListingWindow* asmWindow() const { return asmWindow_; }
    ListingWindow* hexWindow() const { return hexWindow_; }
    const QString& sourcePath() const { return sourcePath_; }
    const IdeSettings& settings() const { return settings_; }
    const BuildResult& lastBuild() const { return lastBuild_; }
    // The title as the window shows it for the current source file.
    QString titleText() const;

public slots:
    void newFile();
    void openFile();
    bool openPath(const QString& path);
    bool save();
    bool saveAs();
    void exitIde();
    void compile();
    void program();
    void selectProgrammer(const QString& type);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // main_window.cpp
    void createEditors();
    void createListingWindows();
    void createStatusBar();
    void applyStartState();
    bool saveSettings(bool offerToSaveText = true);
    void updateTitle();
    void updateStatus();
    void onFirstActivation();

    // main_window_actions.cpp
    void createActions();
    void createFileActions();
    void createEditActions();
    void createCompileActions();
    void createOptionsActions();
    void createMenus();
    void createToolBar();
    void createContextMenu();
    QAction* addAction(const QString& name, const QString& text, const QKeySequence& key);

    // file_commands.cpp
    bool maybeSaveChanges(bool allowCancel);
    bool loadIntoEditor(const QString& path);
    bool writeSource(const QString& path);
    void clearOutputs();
    void afterOpen();
    void onTextChanged();
    void onEditorKey();

    // build_commands.cpp
    void showBuildResult(const BuildResult& result);
    void onMessageDoubleClick(int line);
    void goToLocation(const QString& file, int line, bool assembler);
    void selectEditorLine(int line);
    void setListingVisible(ListingWindow* window, bool visible);
    void showEditorOptions();
    void print();
    void printSetup();

    IdeOptions options_;
    Prompts& prompts_;
    IdeSettings settings_;
    SettingsFile settingsFile_;
    QString sourcePath_;
    BuildResult lastBuild_;
    bool activatedOnce_ = false;

    QSplitter* splitter_ = nullptr;
    QsciScintilla* editor_ = nullptr;
    QsciScintilla* messages_ = nullptr;
    BasicLexer* lexer_ = nullptr;
    ListingWindow* asmWindow_ = nullptr;
    ListingWindow* hexWindow_ = nullptr;
    QLabel* positionLabel_ = nullptr;
    QLabel* programmerLabel_ = nullptr;
    QMenu* contextMenu_ = nullptr;
    FindState findState_;
    FindDialog* findDialog_ = nullptr;
    ReplaceDialog* replaceDialog_ = nullptr;
    std::unique_ptr<ProgrammerCommands> programmers_;
    std::unique_ptr<SourcePrinter> printer_;

    struct Actions {
        QAction *newFile, *open, *save, *saveAs, *print, *printSetup, *editorOptions, *exit;
        QAction *redo, *undo, *cut, *copy, *paste, *selectAll, *find, *replace, *upper, *lower;
        QAction *compile, *program;
        QAction *builtInProgrammer, *externalProgrammer, *epicProgrammer;
        QAction *epicDetails, *externalDetails, *assemblerPath, *showAsm, *showHex, *calculator;
        QAction *help, *about;
        // Tool bar buttons whose state differs from their menu item's.
        QAction *saveButton, *asmButton;
        QActionGroup* programmers;
    } act_{};
};

} // namespace zorvel::ide
