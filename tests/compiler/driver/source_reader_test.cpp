// INCLUDE expansion: where files are found, in what order lines are compiled,
// and how diagnostics name the file and line that hold an error.
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

// A home folder with the default device's files.
struct Home {
    TempDir dir;
    Home() {
        fs::create_directories(dir.path() / "inc");
        fs::copy_file(dataFolder() / "inc" / "P16F84.inf", dir.path() / "inc" / "P16F84.inf");
    }
};

TEST(Include, HomeFolderCopyWinsOverIncFolder) {
    Home home;
    home.dir.write("TEST.INC", "DEFINE FROM_HOME 1\n");
    home.dir.write("inc/TEST.INC", "DEFINE FROM_INC 1\n");
    TempDir src;
    CompileResult r = compileFile(src.write("p.bas", "INCLUDE \"test.inc\"\n"), home.dir.path());
    ASSERT_EQ(r.errors, 0);
    EXPECT_EQ(r.compilation->workfile.size(), 2u);
    EXPECT_EQ(r.compilation->workfile[1].text, "DEFINE FROM_HOME 1");
}

TEST(Include, IncFolderThenTheIncludingFilesFolder) {
    Home home;
    home.dir.write("inc/ONE.INC", "DEFINE ONE 1\n");
    TempDir src;
    src.write("sub/Two.Inc", "DEFINE TWO 2\n");
    src.write("sub/Three.inc", "DEFINE THREE 3\n");
    src.write("sub/Both.inc", "INCLUDE \"three.INC\"\nDEFINE BOTH 4\n");
    fs::path main =
        src.write("sub/p.bas", "INCLUDE \"one.inc\"\nINCLUDE \"two.inc\"\nINCLUDE \"BOTH.INC\"\n");
    CompileResult r = compileFile(main, home.dir.path());
    ASSERT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(body(r), (Lines{"\t#DEFINE ONE 1", "\t#DEFINE TWO 2", "\t#DEFINE THREE 3",
                              "\t#DEFINE BOTH 4", "\tEND", ""}));
}

TEST(Include, ErrorsNameTheIncludedFileAndItsLine) {
    Home home;
    std::string inc;
    for (int i = 1; i < 10; ++i)
        inc += "' line " + std::to_string(i) + "\n";
    inc += "  Remarks  \n";
    home.dir.write("inc/TEST.INC", inc);
    TempDir src;
    CompileResult r = compileFile(src.write("main.bas", "' first\nINCLUDE \"TEST.INC\"\nREMARKS\n"),
                                  home.dir.path());
    EXPECT_EQ(r.messages,
              (Lines{"Error at Line [10]\tIn file [TEST.INC]\tREMARKS\t*** Syntax Error! ***",
                     "Error at Line [3]\tIn file [main.bas]\tREMARKS\t*** Syntax Error! ***",
                     "\tToo many COMPILER ERRORS."}));
}

TEST(Include, ErrorDirectiveCountsWorkingLines) {
    Home home;
    home.dir.write("inc/A.INC", "' a1\n' a2\n");
    TempDir src;
    CompileResult r =
        compileFile(src.write("p.bas", "INCLUDE \"A.INC\"\n#ERROR \"Here\"\n"), home.dir.path());
    EXPECT_EQ(body(r), (Lines{"\tError \"Line[4] Here\"", "\tEND", ""}));
}

TEST(Include, SingleQuoteEndsTheName) {
    Home home;
    home.dir.write("inc/ODD'", "DEFINE ODD 1\n");
    TempDir src;
    CompileResult r = compileFile(src.write("p.bas", "INCLUDE \"odd'.inc\"\n"), home.dir.path());
    EXPECT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
    EXPECT_EQ(body(r), (Lines{"\t#DEFINE ODD 1", "\tEND", ""}));
}

TEST(Include, FailuresEndTheRunBeforeThePasses) {
    struct Case {
        const char* source;
        const char* message;
    } cases[] = {
        {"INCLUDE NOQUOTE.INC\n", "\tQuotes missing in INCLUDE directive!"},
        {"include \"absent.inc\"\n", "\tInclude file ABSENT.INC Cannot be found!"},
        {"INCLUDE \"p.bas\"\n", "\tInclude file P.BAS includes itself!"},
    };
    for (const Case& k : cases) {
        Home home;
        TempDir src;
        CompileResult r = compileFile(src.write("p.bas", k.source), home.dir.path());
        EXPECT_EQ(r.messages, (Lines{k.message})) << k.source;
        EXPECT_EQ(r.errors, 1);
        EXPECT_FALSE(fs::exists(src.path() / "p.asm"));
    }
}

TEST(Include, SixteenLevelsAreAllowedSeventeenAreNot) {
    for (int levels : {16, 17}) {
        Home home;
        TempDir src;
        for (int i = 1; i <= levels; ++i) {
            std::string next = i < levels ? "INCLUDE \"L" + std::to_string(i + 1) + ".INC\"\n"
                                          : "DEFINE DEEPEST 1\n";
            src.write("L" + std::to_string(i) + ".INC", next);
        }
        CompileResult r = compileFile(src.write("p.bas", "INCLUDE \"L1.INC\"\n"), home.dir.path());
        if (levels == 16) {
            EXPECT_EQ(r.errors, 0) << r.messages[0];
        } else {
            EXPECT_EQ(r.messages,
                      (Lines{"\tInclude file L17.INC is nested more than 16 levels deep!"}));
        }
    }
}

TEST(Include, EmptyFileCompilesToAnEmptyProgram) {
    Home home;
    TempDir src;
    CompileResult r = compileFile(src.write("p.bas", ""), home.dir.path());
    EXPECT_EQ(r.errors, 0);
    EXPECT_EQ(body(r), (Lines{"\tEND", ""}));
}

TEST(Include, LineEndingsOfEveryKind) {
    Home home;
    TempDir src;
    CompileResult r =
        compileFile(src.write("p.bas", "DEFINE AA 1\r\nDEFINE BB 2\rDEFINE CC 3\nDEFINE DD 4"),
                    home.dir.path());
    EXPECT_EQ(body(r), (Lines{"\t#DEFINE AA 1", "\t#DEFINE BB 2", "\t#DEFINE CC 3",
                              "\t#DEFINE DD 4", "\tEND", ""}));
}

} // namespace
} // namespace zorvel::test
