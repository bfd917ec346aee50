// The editor options dialog driven through its widgets: OK changes the editor
// and its highlighter and keeps both in the settings, which the next start-up
// applies; Cancel changes nothing; unfinished colours keep OK disabled.
#include "ide/editor/basic_lexer.h"
#include "ide/editor/editor_options_dialog.h"
#include "ide/editor/editor_setup.h"
#include "ide/editor/style_store.h"
#include "ide/editor/tab_columns.h"
#include "ide/support/scripted_prompts.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTest>
#include <Qsci/qsciscintilla.h>
#include <memory>

using namespace zorvel::ide;
using zorvel::ide::test::ScriptedPrompts;

namespace {

struct SourceEditor {
    QsciScintilla editor;
    BasicLexer* lexer = new BasicLexer(&editor);
    SourceEditor() { configureSourceEditor(editor, lexer); }
};

template <typename T>
T* child(QWidget& parent, const char* name) {
    T* found = parent.findChild<T*>(QLatin1String(name));
    if (!found) qFatal("no widget named %s", name);
    return found;
}

QPushButton* button(QWidget& parent, const QString& text) {
    for (QPushButton* b : parent.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    qFatal("no button %s", qPrintable(text));
}

void click(QWidget* widget) {
    QTest::mouseClick(widget, Qt::LeftButton, {}, widget->rect().center());
}

void toggle(QCheckBox* box) {
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
}

void retype(QWidget* field, const QString& text) {
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}

void openPage(QDialog& dialog, int index) {
    QTabBar* bar = dialog.findChild<QTabBar*>();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
}

void pickStyle(QDialog& dialog, int style) {
    auto* list = child<QListWidget>(dialog, "styles");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(style)).center());
}

// The editor options a second start-up applies.
EditorOptions reloadedOptions() {
    SourceEditor next;
    loadStyles(*next.lexer);
    loadEditorOptions(next.editor);
    return currentEditorOptions(next.editor);
}

} // namespace

class EditorOptionsDialogTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir configDir;
    std::unique_ptr<SourceEditor> source;

private slots:
    void initTestCase() {
        QVERIFY(configDir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, configDir.path());
    }
    void init() {
        openEditorSettings()->clear();
        source = std::make_unique<SourceEditor>();
    }

    void showsTheEditorsSettings() {
        EditorOptionsDialog dialog(source->editor, *source->lexer, nullptr);
        QCOMPARE(child<QSpinBox>(dialog, "tabWidth")->value(), 8);
        QCOMPARE(child<QSpinBox>(dialog, "rightMargin")->value(), 80);
        QCOMPARE(child<QSpinBox>(dialog, "fontPixels")->value(), 13);
        QCOMPARE(child<QLineEdit>(dialog, "tabColumns")->text(),
                 QString("5 9 13 17 21 25 29 33 37 41 45 49 53 57 61"));
        QVERIFY(child<QCheckBox>(dialog, "autoIndent")->isChecked());
        QCOMPARE(child<QListWidget>(dialog, "styles")->count(), int(BasicLexer::StyleCount));
    }

    void optionsPageChangesAndPersists() {
        EditorOptionsDialog dialog(source->editor, *source->lexer, nullptr);
        ScriptedPrompts prompts;
        prompts.dialogs.push_back([](QDialog& d) {
            retype(child<QSpinBox>(d, "tabWidth"), "4");
            retype(child<QSpinBox>(d, "indentWidth"), "2");
            retype(child<QSpinBox>(d, "rightMargin"), "100");
            retype(child<QSpinBox>(d, "fontPixels"), "16");
            retype(child<QLineEdit>(d, "tabColumns"), "3 7 11");
            toggle(child<QCheckBox>(d, "autoIndent"));
            toggle(child<QCheckBox>(d, "lineNumbers"));
            toggle(child<QCheckBox>(d, "showWhitespace"));
            click(button(d, "OK"));
            return d.result();
        });
        QCOMPARE(prompts.runDialog(dialog), int(QDialog::Accepted));

        QsciScintilla& editor = source->editor;
        QCOMPARE(editor.tabWidth(), 4);
        QCOMPARE(editor.indentationWidth(), 2);
        QCOMPARE(editor.edgeColumn(), 100);
        QVERIFY(!editor.autoIndent());
        QCOMPARE(editor.marginWidth(0), 0);
        QCOMPARE(editor.whitespaceVisibility(), QsciScintilla::WsVisible);
        QCOMPARE(tabColumns(editor), (QList<int>{3, 7, 11}));
        QCOMPARE(pixelHeightOf(source->lexer->font(BasicLexer::Comment)), 16);
        QVERIFY(source->lexer->font(BasicLexer::Comment).italic()); // the style's own look stays

        QCOMPARE(reloadedOptions(), currentEditorOptions(editor));
    }

    void highlightingPageChangesAndPersists() {
        EditorOptionsDialog dialog(source->editor, *source->lexer, nullptr);
        QColor offered;
        dialog.setColorChooser([&offered](const QColor& initial, QWidget*) {
            offered = initial;
            return QColor("#abcdef");
        });
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        openPage(dialog, 1);
        pickStyle(dialog, BasicLexer::Mnemonic);
        retype(child<QLineEdit>(dialog, "foreground"), "#123456");
        click(child<QPushButton>(dialog, "chooseBackground"));
        toggle(child<QCheckBox>(dialog, "italic"));
        click(button(dialog, "OK"));

        QCOMPARE(offered, QColor(Qt::white));
        BasicLexer& lexer = *source->lexer;
        QCOMPARE(lexer.color(BasicLexer::Mnemonic), QColor("#123456"));
        QCOMPARE(lexer.paper(BasicLexer::Mnemonic), QColor("#abcdef"));
        QVERIFY(lexer.font(BasicLexer::Mnemonic).italic());
        QVERIFY(lexer.font(BasicLexer::Mnemonic).bold());
        QCOMPARE(lexer.color(BasicLexer::Number), lexer.defaultColor(BasicLexer::Number));

        BasicLexer reloaded;
        loadStyles(reloaded);
        QCOMPARE(reloaded.color(BasicLexer::Mnemonic), QColor("#123456"));
        QCOMPARE(reloaded.paper(BasicLexer::Mnemonic), QColor("#abcdef"));
        QVERIFY(reloaded.font(BasicLexer::Mnemonic).italic());
    }

    void unfinishedColourDisablesOk() {
        EditorOptionsDialog dialog(source->editor, *source->lexer, nullptr);
        dialog.show();
        openPage(dialog, 1);
        QLineEdit* field = child<QLineEdit>(dialog, "foreground");
        retype(field, "#12");
        QVERIFY(!button(dialog, "OK")->isEnabled());
        QTest::keyClicks(field, "3456");
        QVERIFY(button(dialog, "OK")->isEnabled());
    }

    void cancelChangesNothing() {
        EditorOptionsDialog dialog(source->editor, *source->lexer, nullptr);
        dialog.show();
        retype(child<QSpinBox>(dialog, "tabWidth"), "3");
        openPage(dialog, 1);
        pickStyle(dialog, BasicLexer::Comment);
        retype(child<QLineEdit>(dialog, "foreground"), "#ff0000");
        click(button(dialog, "Cancel"));
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QCOMPARE(source->editor.tabWidth(), 8);
        QCOMPARE(source->lexer->color(BasicLexer::Comment),
                 source->lexer->defaultColor(BasicLexer::Comment));
        QVERIFY(openEditorSettings()->allKeys().isEmpty());
    }

    void unusableSettingsKeepTheSetUp() {
        {
            auto settings = openEditorSettings();
            settings->setValue("Editor/TabWidth", "wide");
            settings->setValue("Editor/RightMargin", 9999);
            settings->setValue("Editor/FontFamily", "No Such Font Family");
            settings->setValue("Editor/IndentWidth", 4);
        }
        loadEditorOptions(source->editor);
        QCOMPARE(source->editor.tabWidth(), 8);
        QCOMPARE(source->editor.edgeColumn(), 80);
        QCOMPARE(source->editor.indentationWidth(), 4);
        QCOMPARE(source->lexer->font(BasicLexer::Default).family(), editorFont().family());
    }
};

QTEST_MAIN(EditorOptionsDialogTest)
#include "editor_options_dialog_test.moc"
