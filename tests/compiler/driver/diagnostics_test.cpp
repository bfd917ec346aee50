// Tests of the error and warning reporters: the line each code produces, the
// silence of pass 1, the cursor move and the error limit.
#include "compiler/driver/compilation.h"
#include "compiler/driver/diagnostics.h"
#include "support/test_support.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace zorvel {
namespace {

using test::setLine;

// Pass 2, on the 10th line of TEST.INC, whose working line is GOTO NOWHERE
// (the case-preserving copy is lower case, so the frame shows which is used).
struct Fixture {
    Compilation c{{"/tmp/x.bas", "/tmp"}};
    Fixture() {
        c.ctx.pass = 2;
        c.ctx.currentFile = "TEST.INC";
        c.ctx.currentSourceLine = 9;
        c.ctx.lineIndex = 17;
        c.ctx.lineLimit = 40;
        setLine(c, "goto nowhere", 5);
    }
};

const std::string kFrame = "Error at Line [10]\tIn file [TEST.INC]\tGOTO NOWHERE";

struct ErrorCase {
    int code;
    std::string text;
    std::string expected;
};

TEST(DiagnosticReporters, ErrorLineForEveryCode) {
    const ErrorCase cases[] = {
        {0, "Too Many Variables", "\t\t*** Too Many Variables ***"},
        {1, "Label 'NOWHERE' not found", kFrame + "\t*** Label 'NOWHERE' not found! ***"},
        {1, "", kFrame + "\t*** ! ***"},
        {2, "ignored", kFrame + "\t*** Syntax Error! ***"},
        {3, "ignored", kFrame + "\t*** Comma missing! ***"},
        {4, "ignored", kFrame + "\t*** '[' missing! ***"},
        {5, "ignored", kFrame + "\t*** ']' missing! ***"},
        {6, "ignored", kFrame + "\t*** '{' missing! ***"},
        {7, "ignored", kFrame + "\t*** '}' missing! ***"},
        {8, "12] IF without ENDIF", "Error at Line [12] IF without ENDIF\tIn file [TEST.INC]! ***"},
        {9, "FOR", kFrame + "\t*** This BIT type expression not supported in FOR! ***"},
        {10, "PULSOUT", kFrame + "\t*** ARRAY variables not supported in PULSOUT! ***"},
        {11, "ignored", kFrame + "! ***"},
        {99, "ignored", kFrame + "! ***"},
        {-1, "ignored", kFrame + "! ***"},
    };
    for (const ErrorCase& k : cases) {
        SCOPED_TRACE("error code " + std::to_string(k.code) + " text [" + k.text + "]");
        Fixture f;
        reportError(f.c, k.code, k.text);
        const std::vector<std::string> expected = {k.expected};
        EXPECT_EQ(f.c.messages, expected);
        EXPECT_EQ(f.c.ctx.errorCount, 1);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
        EXPECT_EQ(f.c.ctx.lineIndex, 17);
        EXPECT_FALSE(f.c.ctx.warningRaised);
    }
}

TEST(DiagnosticReporters, FrameUsesLineNumberAndFile) {
    struct Case {
        int sourceLine;
        std::string file, line, expected;
    };
    const Case cases[] = {
        {0, "prog.bas", "x = 1", "Error at Line [1]\tIn file [prog.bas]\tX = 1\t*** Oops! ***"},
        {122, "A.BAS", "PRINT", "Error at Line [123]\tIn file [A.BAS]\tPRINT\t*** Oops! ***"},
        {4, "", "", "Error at Line [5]\tIn file []\t\t*** Oops! ***"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE("line " + std::to_string(k.sourceLine) + " of [" + k.file + "]");
        Fixture f;
        f.c.ctx.currentSourceLine = k.sourceLine;
        f.c.ctx.currentFile = k.file;
        setLine(f.c, k.line);
        reportError(f.c, kErrText, "Oops");
        const std::vector<std::string> expected = {k.expected};
        EXPECT_EQ(f.c.messages, expected);
    }
}

TEST(DiagnosticReporters, ErrorsAccumulate) {
    Fixture f;
    reportError(f.c, kErrSyntax);
    reportError(f.c, kErrComma);
    const std::vector<std::string> expected = {kFrame + "\t*** Syntax Error! ***",
                                               kFrame + "\t*** Comma missing! ***"};
    EXPECT_EQ(f.c.messages, expected);
    EXPECT_EQ(f.c.ctx.errorCount, 2);
}

// Pass 1 reports nothing, yet the rest of the line is still skipped.
TEST(DiagnosticReporters, PassOneIsSilent) {
    const int codes[] = {0, 1, 2, 5, 8, 9, 10, 42};
    for (int code : codes) {
        SCOPED_TRACE("error code " + std::to_string(code));
        Fixture f;
        f.c.ctx.pass = 1;
        reportError(f.c, code, "text");
        EXPECT_TRUE(f.c.messages.empty());
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
        EXPECT_EQ(f.c.ctx.lineIndex, 17);
    }
}

// With more than three errors counted the reporter ends the line loop and
// appends nothing; at three it still reports.
TEST(DiagnosticReporters, ErrorLimit) {
    struct Case {
        int pass;
        int errorsBefore;
        bool appended;
        int errorsAfter;
        int lineIndexAfter;
    };
    const Case cases[] = {
        {2, 0, true, 1, 17},  {2, 2, true, 3, 17},  {2, 3, true, 4, 17},
        {2, 4, false, 4, 40}, {2, 9, false, 9, 40}, {1, 4, false, 4, 40},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE("pass " + std::to_string(k.pass) + " with " + std::to_string(k.errorsBefore) +
                     " errors");
        Fixture f;
        f.c.ctx.pass = k.pass;
        f.c.ctx.errorCount = k.errorsBefore;
        reportError(f.c, kErrText, "Label 'NOWHERE' not found");
        if (k.appended) {
            const std::vector<std::string> expected = {kFrame +
                                                       "\t*** Label 'NOWHERE' not found! ***"};
            EXPECT_EQ(f.c.messages, expected);
        } else {
            EXPECT_TRUE(f.c.messages.empty());
        }
        EXPECT_EQ(f.c.ctx.errorCount, k.errorsAfter);
        EXPECT_EQ(f.c.ctx.lineIndex, k.lineIndexAfter);
        EXPECT_EQ(f.c.line.pos, f.c.line.length());
    }
}

struct WarningCase {
    int pass;
    int code;
    std::string text;
    std::vector<std::string> expected;
};

TEST(DiagnosticReporters, WarningLines) {
    const std::string crossing = "WORD Variable 'A' Crossing Bank boundary 0-1";
    const WarningCase cases[] = {
        {2, 0, "Check the fuses", {"\tWarning!\t*** Check the fuses ***"}},
        {2,
         1,
         crossing,
         {"Warning Line [10]\tIn file [TEST.INC]\tGOTO NOWHERE\t*** " + crossing + "! ***"}},
        {2, 2, "dropped", {}},
        {2, 7, "dropped", {}},
        {2, -1, "dropped", {}},
        {1, 0, "silent", {}},
        {1, 1, "silent", {}},
    };
    for (const WarningCase& k : cases) {
        SCOPED_TRACE("pass " + std::to_string(k.pass) + " warning code " + std::to_string(k.code));
        Fixture f;
        f.c.ctx.pass = k.pass;
        reportWarning(f.c, k.code, k.text);
        EXPECT_EQ(f.c.messages, k.expected);
        EXPECT_TRUE(f.c.ctx.warningRaised);
        EXPECT_EQ(f.c.ctx.errorCount, 0);
        EXPECT_EQ(f.c.line.pos, 5u);
        EXPECT_EQ(f.c.ctx.lineIndex, 17);
    }
}

} // namespace
} // namespace zorvel
