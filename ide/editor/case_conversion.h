// To UpperCase and To LowerCase: the selected text is replaced by its upper-
// or lower-case form as one undo step and stays selected. Without a selection
// nothing happens.
#pragma once

class QsciScintilla;

namespace zorvel::ide {

void upperCaseSelection(QsciScintilla& editor);
void lowerCaseSelection(QsciScintilla& editor);

} // namespace zorvel::ide
