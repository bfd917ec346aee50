// What the find and replace dialogs share: the search state kept between
// openings, the search itself over a QsciScintilla editor, and the panel of
// option groups both dialogs show.
#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QRadioButton;
class QVBoxLayout;
class QsciScintilla;

namespace zorvel::ide {

// The search options travel as one flag word.
inline constexpr int kFindCaseSensitive = 16;
inline constexpr int kFindRegExp = 32;
inline constexpr int kFindWholeWords = 64;
inline constexpr int kFindBackward = 128;
inline constexpr int kFindOptionBits =
    kFindCaseSensitive | kFindRegExp | kFindWholeWords | kFindBackward;

// Kept by the main window from one opening of the dialogs to the next.
struct FindState {
    QString text;
    QStringList history; // most recent first, no duplicates
    QString replacement;
    QStringList replaceHistory;
    int flags = 0;
    bool selectedScope = false; // false: the whole text
    bool entireScope = false;   // false: from the cursor
    bool prompt = false;        // ask before each replacement
};

// A stretch of the editor's text, in editor positions (start <= end).
struct TextSpan {
    int start = 0;
    int end = 0;
    bool operator==(const TextSpan&) const = default;
};

// One search: the text, the flag word, where it looks and where it begins.
struct SearchRequest {
    QString text;
    int flags = 0;
    bool selectedScope = false;
    bool entireScope = false;
    TextSpan scope; // the remembered selection, used when selectedScope
    // From the cursor: whether the selected text is searched too (replacing
    // starts with a selected occurrence; finding moves past it).
    bool includeSelection = false;
};

SearchRequest searchRequest(const FindState& state, TextSpan rememberedSelection);

TextSpan selectionSpan(const QsciScintilla& editor);
void selectSpan(QsciScintilla& editor, TextSpan span);

// The part of the scope a search covers. From the cursor it starts after the
// current selection going forward and ends before it going back, so the
// occurrence already selected is not found again (unless includeSelection);
// while the selection is the scope itself the whole scope is searched.
TextSpan searchSpan(const QsciScintilla& editor, const SearchRequest& request);

// Looks for the text inside `span` only (forward from its start or back from
// its end) and selects the occurrence. The editor's find stays open, so
// QsciScintilla::replace() replaces what was found.
bool findInSpan(QsciScintilla& editor, const SearchRequest& request, TextSpan span);

// Selects the next occurrence the request asks for; when there is none the
// selection is left as it was. True when found.
bool findOccurrence(QsciScintilla& editor, const SearchRequest& request);

// The text a dialog opens with: the selected text when it is one line,
// otherwise `previous`.
QString seedText(const QsciScintilla& editor, const QString& previous);

// "\"text\" not found"
QString notFoundMessage(const QString& text);

// Puts the text first in the list, dropping an earlier copy; empty text is not kept.
void rememberInHistory(QStringList& history, const QString& text);

// An editable drop-down box showing a history list; its edit text is `text`.
QComboBox* makeHistoryBox(QWidget* parent);
void showHistory(QComboBox& box, const QStringList& history, const QString& text);

// The groups "Options", "Direction", "Scope" and "Origin".
class FindOptionsPanel : public QWidget {
public:
    explicit FindOptionsPanel(QWidget* parent);

    // Adds one more check box under "Options".
    void addOption(QCheckBox* box);

    void setFlags(int flags);
    int flags() const;
    void load(const FindState& state);
    void store(FindState& state) const;

private:
    QGroupBox* buildOptions();
    QGroupBox* buildDirection();
    QGroupBox* buildScope();
    QGroupBox* buildOrigin();

    QVBoxLayout* optionsLayout_ = nullptr;
    QCheckBox* caseBox_ = nullptr;
    QCheckBox* wordsBox_ = nullptr;
    QCheckBox* regExpBox_ = nullptr;
    QRadioButton* forwardButton_ = nullptr;
    QRadioButton* backButton_ = nullptr;
    QRadioButton* globalButton_ = nullptr;
    QRadioButton* selectedButton_ = nullptr;
    QRadioButton* cursorButton_ = nullptr;
    QRadioButton* entireButton_ = nullptr;
};

} // namespace zorvel::ide
