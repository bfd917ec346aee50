// Compiles one statement after a fixed set of declarations and returns the
// lines it emitted, or the messages it raised.
#pragma once

#include "support/test_support.h"

#include <string>
#include <vector>

namespace zorvel::test {

// Bytes A, B, X; words W1, W2, W3; bits F, G (B@VR1 bits 0 and 1); the
// constant K = 300; the byte array ARR[4].
inline const std::vector<std::string>& statementDeclarations() {
    static const std::vector<std::string> decls = {
        "DIM A AS BYTE",  "DIM B AS BYTE", "DIM X AS BYTE", "DIM W1 AS WORD", "DIM W2 AS WORD",
        "DIM W3 AS WORD", "DIM F AS BIT",  "DIM G AS BIT",  "SYMBOL K = 300", "DIM ARR[4]"};
    return decls;
}

inline std::string statementProgram(const std::string& statement) {
    std::string source;
    for (const std::string& d : statementDeclarations())
        source += d + "\n";
    return source + "Here:\n" + statement + "\nEND";
}

// The line number of the statement in statementProgram.
inline int statementLine() {
    return static_cast<int>(statementDeclarations().size()) + 2;
}

// The lines between the label "Here" and the END loop.
inline std::vector<std::string> statementCode(const std::string& statement) {
    CompileResult r = compileSource(statementProgram(statement));
    std::vector<std::string> out = body(r);
    std::vector<std::string> code;
    bool on = false;
    for (const std::string& line : out) {
        if (line.rfind("Pb@lab", 0) == 0) break;
        if (on) code.push_back(line);
        if (line == "HERE\tR@B") on = true;
    }
    return code;
}

inline std::vector<std::string> statementMessages(const std::string& statement) {
    return compileSource(statementProgram(statement)).messages;
}

} // namespace zorvel::test
