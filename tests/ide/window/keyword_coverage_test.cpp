// The highlighter knows every word the compiler knows: each routed statement
// keyword, each built-in function and each DECLARE setting gets its colour.
#include "compiler/frontend/device.h"
#include "compiler/frontend/keywords.h"
#include "compiler/commands/commands.h"
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

    // A word that is also a statement (LOW) is coloured as the statement.
    void everyFunctionIsHighlightedAsOne() {
        const auto statements = routedKeywords();
        QStringList wrong;
        for (const Keyword& k : keywordTable())
            if (k.keywordClass == kClassFunction &&
                std::find(statements.begin(), statements.end(), k.text) == statements.end() &&
                classifyWord(k.text, CodeContext::Basic) != WordClass::Function)
                wrong << QString::fromStdString(std::string(k.text));
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
