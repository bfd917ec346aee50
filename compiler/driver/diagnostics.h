// The error and warning reporters: every problem in the user's program becomes
// one line of the message list in a fixed frame that names the line and file.
#pragma once

#include <string_view>

namespace zorvel {

class Compilation;

// Error codes with a fixed text; codes 1, 8, 9 and 10 use the caller's text.
enum ErrorCode {
    kErrWhole = 0,
    kErrText = 1,
    kErrSyntax = 2,
    kErrComma = 3,
    kErrOpenBracket = 4,
    kErrCloseBracket = 5,
    kErrOpenBrace = 6,
    kErrCloseBrace = 7,
    kErrPreformatted = 8,
    kErrBitNotSupported = 9,
    kErrArrayNotSupported = 10,
};

enum WarningCode { kWarnWhole = 0, kWarnText = 1 };

// Reports an error: stops the current line, counts it (pass 2 only) and ends
// the run when too many errors have accumulated.
void reportError(Compilation& c, int code, std::string_view text = {});

// Reports an error at another working line than the current one.
void reportErrorAtLine(Compilation& c, int lineIndex, int code, std::string_view text);

// Reports a warning; compilation of the statement goes on.
void reportWarning(Compilation& c, int code, std::string_view text);

} // namespace zorvel
