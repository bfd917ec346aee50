// The highlighter knows every word the compiler knows: each routed statement
// keyword, each built-in function and each DECLARE setting gets its colour.
#include "compiler/commands/commands.h"
#include "compiler/frontend/device.h"
#include "compiler/frontend/keywords.h"
#include "ide/editor/basic_keywords.h"

#include <QTest>
#include <algorithm>
#include <string>

using namespace zorvel;
using namespace zorvel::ide;

class KeywordCoverageTest : public QObject {
    Q_OBJECT

private slots:
    void everyStatementKeywordIsHighlighted() {
        const auto words = routedKeywords();
        QVERIFY(words.size() > 150);
        QStringList missing;
        for (std::string_view w : words)
            if (classifyWord(w, CodeContext::Basic) == WordClass::None)
                missing << QString::fromUtf8(w.data(), qsizetype(w.size()));
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(' ')));
    }

    // A function word of the command table that begins no statement is
    // coloured as a function (RSIN and BUSIN are statements too).
    void everyFunctionIsHighlightedAsOne() {
        QStringList wrong;
        for (const Command& cmd : commandTable())
            if (isFunctionKeyword(cmd.keyword) && !cmd.statement &&
                classifyWord(cmd.keyword, CodeContext::Basic) != WordClass::Function)
                wrong << QString::fromUtf8(cmd.keyword.data(), qsizetype(cmd.keyword.size()));
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(' ')));
    }

    void everyDeclareSettingIsHighlightedAsOne() {
        QStringList wrong;
        for (const SettingDef& s : settingTable())
            if (classifyWord(s.key, CodeContext::Basic) != WordClass::DeclareSetting)
                wrong << QString::fromStdString(std::string(s.key));
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(' ')));
    }
};

QTEST_GUILESS_MAIN(KeywordCoverageTest)
#include "keyword_coverage_test.moc"
