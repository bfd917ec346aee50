// How the environment sets up its three editor controls: the source editor
// with the BASIC highlighter, the read-only message pane and the read-only
// assembler listing view.
#pragma once

#include <QColor>
#include <QFont>

class QsciScintilla;

namespace zorvel::ide {

class BasicLexer;

// The editor font: "Courier New" 13 pixels high where the system has it,
// else a family drawn like it or the system's fixed-pitch font, at that height.
// The size is given in points, as the editor control wants it.
QFont editorFont();
// A family at a height in pixels, converted to points for the editor control.
QFont fontOfPixelHeight(const QString& family, int pixels);
// The pixel height of a font given in points, on this screen.
int pixelHeightOf(const QFont& font);

// A colour value as Windows writes it (0x00BBGGRR) as a QColor.
QColor colorFromWindowsValue(unsigned value);
// White text on blue: the selection colours of the source editor.
QColor selectionForeground();
QColor selectionBackground();

void configureSourceEditor(QsciScintilla& editor, BasicLexer* lexer);
// Read-only, monospace, no highlighter, no margins; the selected line stays
// visible when the pane has no focus.
void configureMessagePane(QsciScintilla& pane);
// Read-only, monospace, with line numbers.
void configureListingView(QsciScintilla& view);

} // namespace zorvel::ide
