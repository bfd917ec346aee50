// The editor options dialog (File menu, Editor Options): an "Options" page
// for the font, tabs, indentation, right margin, line numbers and white
// space, and a "Highlighting" page for the colours and fonts of the styles.
// OK applies both to the editor and its highlighter and keeps them in the
// editor settings; Cancel changes nothing.
#pragma once

#include "ide/editor/editor_options.h"

#include <QColor>
#include <QDialog>
#include <functional>
#include <vector>

class QCheckBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QTabWidget;
class QsciScintilla;

namespace zorvel::ide {

class BasicLexer;

class EditorOptionsDialog : public QDialog {
    Q_OBJECT

public:
    // Asks for a colour, starting from `initial`; an invalid colour means
    // cancelled. The default shows the system's colour dialog.
    using ColorChooser = std::function<QColor(const QColor& initial, QWidget* parent)>;

    EditorOptionsDialog(QsciScintilla& editor, BasicLexer& lexer, QWidget* parent = nullptr);

    void setColorChooser(ColorChooser chooser) { chooseColor_ = std::move(chooser); }

private:
    struct StyleChoice {
        QColor color;
        QColor paper;
        bool bold = false;
        bool italic = false;
    };

    QWidget* buildOptionsPage();
    QWidget* buildHighlightingPage();
    QWidget* buildStyleEditor();
    QLayout* buildButtons();
    QLineEdit* colorEdit(const QString& name);
    QLayout* colorRow(QLineEdit* edit, const QString& buttonName);
    void connectStyleFields();
    void loadStyleChoices();
    void showOptions(const EditorOptions& options);

    EditorOptions optionsFromFields() const;
    void showStyle(int style);
    void storeColor(QLineEdit* edit, QColor StyleChoice::*field);
    void storeFontFlags();
    void pickColor(QLineEdit* edit, QColor StyleChoice::*field);
    void updatePreview();
    void updateOkButton();
    void applyAndSave();

    QsciScintilla& editor_;
    BasicLexer& lexer_;
    ColorChooser chooseColor_;
    std::vector<StyleChoice> styles_;
    int currentStyle_ = 0;
    bool showingStyle_ = false;

    QTabWidget* pages_ = nullptr;
    QFontComboBox* fontFamily_ = nullptr;
    QSpinBox* fontPixels_ = nullptr;
    QLineEdit* tabColumns_ = nullptr;
    QSpinBox* tabWidth_ = nullptr;
    QSpinBox* indentWidth_ = nullptr;
    QSpinBox* rightMargin_ = nullptr;
    QCheckBox* autoIndent_ = nullptr;
    QCheckBox* lineNumbers_ = nullptr;
    QCheckBox* showWhitespace_ = nullptr;
    QListWidget* styleList_ = nullptr;
    QLineEdit* colorEdit_ = nullptr;
    QLineEdit* paperEdit_ = nullptr;
    QCheckBox* bold_ = nullptr;
    QCheckBox* italic_ = nullptr;
    QLabel* preview_ = nullptr;
    QPushButton* okButton_ = nullptr;
};

} // namespace zorvel::ide
