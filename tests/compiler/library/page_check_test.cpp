// The library must end inside the first 2K-word page: the runtime routines
// are called with the page bits clear. A library that passes it stops the
// build with the page check's message.
#include "compiler/driver/assembler.h"
#include "compiler/driver/file_io.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

namespace zorvel::test {
namespace {

namespace fs = std::filesystem;

// Compiles to .asm and .zvl, grows the runtime part of the library by
// `padding` words (just in front of the page check), then assembles.
CompileResult buildWithPaddedLibrary(TempDir& dir, int padding) {
    fs::path source =
        dir.write("prog.bas", lines({"DEVICE 16F877", "DIM A AS WORD", "DIM B AS WORD", "A = A * B",
                                     "A = A / B", "A = A << B", "IF A > 1000 THEN B = 0",
                                     "DELAYMS 10", "END"}));
    CompileResult r = compileFile(source, dataFolder(), false);
    EXPECT_EQ(r.errors, 0);
    fs::path library = dir.path() / "prog.zvl";
    std::string text = readFile(library).value_or("");
    size_t check = text.find("\tif($>=800h)");
    EXPECT_NE(check, std::string::npos) << "no page check in the library";
    if (check == std::string::npos) return r;
    text.insert(check, "\tfill 0, " + std::to_string(padding) + "\r\n");
    EXPECT_TRUE(writeFileAtomic(library, text).empty());
    Compilation& c = *r.compilation;
    assembleAndReadBack(c);
    r.messages = c.messages;
    r.errors = c.ctx.errorCount;
    return r;
}

int libraryEnd(TempDir& dir) {
    // The address of Start@, the first word after the library, from the listing.
    std::string listing = readFile(dir.path() / "prog.lst").value_or("");
    size_t at = listing.find("\nStart@ ");
    if (at == std::string::npos) return -1;
    size_t value = listing.find_first_of("0123456789ABCDEF", at + 8);
    return std::stoi(listing.substr(value, 8), nullptr, 16);
}

TEST(LibraryPageCheck, ALibraryThatFitsPageZeroAssembles) {
    TempDir dir;
    CompileResult r = buildWithPaddedLibrary(dir, 0);
    EXPECT_EQ(r.errors, 0) << (r.messages.empty() ? "" : r.messages[0]);
    int end = libraryEnd(dir);
    ASSERT_GT(end, 0);
    EXPECT_LT(end, 0x800);
}

TEST(LibraryPageCheck, ALibraryPastPageZeroStopsTheBuild) {
    TempDir probe;
    buildWithPaddedLibrary(probe, 0);
    int end = libraryEnd(probe);
    ASSERT_GT(end, 0);
    // Start@ on the last word of page 0 still fits; one word further it would
    // be out of reach of the reset vector's goto.
    TempDir fits;
    CompileResult ok = buildWithPaddedLibrary(fits, 0x800 - end - 1);
    EXPECT_EQ(ok.errors, 0) << (ok.messages.empty() ? "" : ok.messages[0]);
    TempDir over;
    CompileResult r = buildWithPaddedLibrary(over, 0x800 - end);
    EXPECT_GT(r.errors, 0);
    bool reported = false;
    for (const std::string& m : r.messages)
        reported = reported || m.find("Library has exceeded page 0.") != std::string::npos;
    EXPECT_TRUE(reported) << (r.messages.empty() ? "no messages" : r.messages[0]);
    EXPECT_TRUE(r.compilation->hex.records.empty()) << "a HEX image was taken from a failed build";
}

} // namespace
} // namespace zorvel::test
