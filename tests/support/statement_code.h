// Compiles one statement after a fixed set of declarations and returns the
// lines it emitted, or the messages it raised.
#pragma once

#include "support/test_support.h"

#include <cctype>
#include <gtest/gtest.h>
#include <ostream>
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

// The lines of `source` past those its leading `head` emits alone, without
// the END line.
inline Lines linesAfter(const std::string& head, const std::string& source) {
    Lines before = statementLines(head);
    Lines all = statementLines(source);
    EXPECT_GE(all.size(), before.size()) << source;
    if (all.size() < before.size()) return all;
    return Lines(all.begin() + static_cast<long>(before.size()), all.end());
}

// The message a statement raises, in the frame of its line (upper-cased as
// the compiler echoes it).
inline std::string statementError(const std::string& statement, const std::string& what) {
    std::string upper = statement;
    for (char& ch : upper)
        ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    return frame(statementLine(), upper, what);
}

// A statement and the exact lines it must emit.
struct CodeCase {
    const char* name;
    const char* statement;
    Lines expected;
};

inline void PrintTo(const CodeCase& c, std::ostream* os) {
    *os << c.statement;
}

// Names a parameterised case by its `name` field.
inline constexpr auto caseName = [](const auto& info) { return std::string(info.param.name); };

// The base of the exact-code tables: the lines must match and the statement
// must raise no message.
class StatementCodeTest : public testing::TestWithParam<CodeCase> {
protected:
    static void expectExactCode(const CodeCase& tc) {
        EXPECT_EQ(statementCode(tc.statement), tc.expected) << tc.statement;
        EXPECT_TRUE(statementMessages(tc.statement).empty()) << tc.statement;
    }
};

// A statement and the one message it must raise.
struct MessageCase {
    const char* name;
    const char* statement;
    const char* message;
};

inline void PrintTo(const MessageCase& m, std::ostream* os) {
    *os << m.statement;
}

class StatementMessageTest : public testing::TestWithParam<MessageCase> {
protected:
    static void expectMessage(const MessageCase& m) {
        EXPECT_EQ(statementMessages(m.statement), Lines{statementError(m.statement, m.message)});
    }
};

} // namespace zorvel::test
