// Shared pieces of the command output tests: a set of declarations and the
// lines a statement emits after them.
#pragma once

#include "support/statement_code.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace zorvel::test {

// Bytes A and B, words W and V (low byte _W, high byte _WH), bits F and G
// (bits 0 and 1 of B@VR1), BYTE I and WORD J for loops, WORD K.
inline const std::string kDeclarations = "DIM A AS BYTE\nDIM B AS BYTE\nDIM W AS WORD\n"
                                         "DIM V AS WORD\nDIM F AS BIT\nDIM G AS BIT\n"
                                         "DIM I AS BYTE\nDIM J AS WORD\nDIM K AS WORD\n";

// The lines that `statements` emit after `head` (device and declarations),
// without the END line. Fails the test when compiling reports an error.
inline Lines emittedAfter(const std::string& head, const std::string& statements) {
    CompileResult r = compileSource(head + statements);
    EXPECT_EQ(r.errors, 0) << statements << "\n" << (r.messages.empty() ? "" : r.messages[0]);
    return linesAfter(head, head + statements);
}

inline Lines emitted(const std::string& statements) {
    return emittedAfter(kDeclarations, statements);
}

// Compiles a program that must fail and returns its first message.
inline std::string firstError(const std::string& source) {
    CompileResult r = compileSource(source);
    EXPECT_GE(r.errors, 1) << source;
    return r.messages.empty() ? std::string() : r.messages[0];
}

} // namespace zorvel::test
