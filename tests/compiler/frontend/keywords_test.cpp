// The keyword table and the table limits of labels and macro names.
#include "compiler/commands/commands.h"
#include "compiler/frontend/keywords.h"
#include "support/test_support.h"

#include <gtest/gtest.h>
#include <map>
#include <set>

namespace zorvel::test {
namespace {

TEST(KeywordTable, SizeAndClasses) {
    std::map<int, int> perClass;
    std::set<std::string_view> words;
    for (const Keyword& k : keywordTable()) {
        ++perClass[k.keywordClass];
        EXPECT_TRUE(words.insert(k.text).second) << "duplicate " << k.text;
    }
    EXPECT_EQ(keywordTable().size(), 128u);
    EXPECT_EQ(perClass[kClassStatement], 86);
    EXPECT_EQ(perClass[kClassFunction], 19);
    EXPECT_EQ(perClass[kClassTypePair], 23);
}

TEST(KeywordTable, Lookups) {
    struct Case {
        const char* word;
        int number;
        int keywordClass;
    } cases[] = {
        {"ASM", 1, kClassStatement},
        {"DEFINE", 97, kClassStatement},
        {"STR", 105, kClassStatement},
        {"REPEAT", 85, kClassStatement},
        {"SIN", 85, kClassFunction},
        {"UNTIL", 86, kClassStatement},
        {"COS", 86, kClassFunction},
        {"LOW", 49, kClassFunction},
        {"OREAD", 101, kClassFunction},
        {"NUM_WREG", 200, kClassTypePair},
        {"RETURN_BIT", 222, kClassTypePair},
        {"WORD_WORD", 210, kClassTypePair},
        {"PRINTER", -1, kClassNone},
        {"print", -1, kClassNone},
        {"", -1, kClassNone},
        {"HPWM", -1, kClassNone},
    };
    for (const Case& k : cases) {
        KeywordLookup r = lookupKeyword(k.word);
        EXPECT_EQ(r.number, k.number) << k.word;
        EXPECT_EQ(r.keywordClass, k.keywordClass) << k.word;
    }
}

TEST(Routing, EveryKeywordIsInTheCommandTable) {
    // Words that only appear inside another statement.
    const std::set<std::string_view> parts = {"TO", "STEP", "THEN", "LOCAL"};
    std::set<std::string_view> commands;
    for (const Command& cmd : commandTable())
        EXPECT_TRUE(commands.insert(cmd.keyword).second) << "twice: " << cmd.keyword;
    for (const Keyword& k : keywordTable())
        if (k.keywordClass != kClassTypePair && !parts.count(k.text)) {
            EXPECT_TRUE(commands.count(k.text)) << k.text;
        }
    for (const Command& cmd : commandTable()) {
        // A word without a statement generator is a function word.
        bool function = cmd.function || !cmd.statement;
        EXPECT_TRUE(!function || isFunctionKeyword(cmd.keyword)) << cmd.keyword;
        EXPECT_TRUE(!cmd.statement || findRoute(cmd.keyword) == cmd.statement) << cmd.keyword;
    }
    EXPECT_EQ(findRoute("NUM_BYTE"), findRoute("RETURN_BIT"));
    EXPECT_NE(findRoute("MOVLW"), nullptr);
    EXPECT_EQ(findRoute("GOTOX"), nullptr);
}

TEST(TableLimits, LabelsBeyondAThousandAreRefused) {
    std::string source;
    for (int i = 0; i < 1001; ++i)
        source += "L" + std::to_string(i) + ":\n";
    CompileResult r = compileSource(source);
    ASSERT_EQ(r.messages.size(), 1u);
    EXPECT_EQ(r.messages[0],
              "Error at Line [1001]\tIn file [prog.bas]\tL1000:\t*** Too many labels. A "
              "program has at most 1000! ***");
    EXPECT_EQ(r.compilation->labels.size(), 1000u);
}

TEST(TableLimits, AThousandLabelsAreFine) {
    std::string source;
    for (int i = 0; i < 1000; ++i)
        source += "L" + std::to_string(i) + ":\n";
    EXPECT_EQ(compileSource(source).errors, 0);
}

TEST(TableLimits, MacroNamesBeyondTwoHundredAreRefused) {
    std::string source;
    for (int i = 0; i < 201; ++i)
        source += "M" + std::to_string(i) + " MACRO\nENDM\n";
    CompileResult r = compileSource(source);
    ASSERT_FALSE(r.messages.empty());
    EXPECT_EQ(r.messages[0], "Error at Line [401]\tIn file [prog.bas]\tM200 MACRO\t*** Too many "
                             "macros. A program has at most 200! ***");
    EXPECT_EQ(r.compilation->macroNames.size(), 200u);
}

TEST(TableLimits, SymbolTableHoldsTwoThousand) {
    SymbolTable table;
    for (int i = 0; i < 2000; ++i)
        ASSERT_TRUE(table.add({"S" + std::to_string(i), "", 0, i, -1}));
    EXPECT_FALSE(table.add({"ONE_MORE", "", 0, 0, -1}));
    EXPECT_EQ(table.find("S1999")->address, 1999);
    EXPECT_EQ(table.find("ONE_MORE"), nullptr);
}

TEST(TableLimits, FirstEntryOfANameWins) {
    SymbolTable table;
    table.add({"A", "", 0, 1, -1});
    table.add({"A", "", 0, 2, -1});
    EXPECT_EQ(table.find("A")->address, 1);
}

} // namespace
} // namespace zorvel::test
