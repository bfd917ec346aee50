// The highlighting styles the user chose (colour, background and font of each
// style) kept in the user's settings under organisation "Zorvel",
// application "ZORVEL", one group per style.
#pragma once

#include <QSettings>
#include <memory>

namespace zorvel::ide {

class BasicLexer;

// The settings object the editor's styles and options are kept in.
std::unique_ptr<QSettings> openEditorSettings();

// Reads every style found; a missing or unreadable entry keeps the lexer's value.
void loadStyles(BasicLexer& lexer);
void saveStyles(const BasicLexer& lexer);

} // namespace zorvel::ide
