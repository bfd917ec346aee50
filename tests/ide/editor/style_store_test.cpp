// The highlighting styles kept in the user's settings: written and read back,
// missing or unusable entries leave the lexer's values alone.
#include "ide/editor/basic_lexer.h"
#include "ide/editor/style_store.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zorvel::ide;

class StyleStoreTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir configDir;

private slots:
    void initTestCase() {
        QVERIFY(configDir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, configDir.path());
    }
    void init() { openEditorSettings()->clear(); }

    void keptUnderZorvelApplication() {
        auto settings = openEditorSettings();
        QCOMPARE(settings->organizationName(), QString("Zorvel"));
        QCOMPARE(settings->applicationName(), QString("ZORVEL"));
        QVERIFY(settings->fileName().startsWith(configDir.path()));
    }

    void savedStylesReadBack() {
        BasicLexer written;
        QFont font = written.font(BasicLexer::Comment);
        font.setBold(true);
        font.setItalic(false);
        font.setPointSizeF(14);
        written.setColor(QColor("#123456"), BasicLexer::Comment);
        written.setPaper(QColor("#fedcba"), BasicLexer::Comment);
        written.setFont(font, BasicLexer::Comment);
        written.setColor(QColor("#00ff00"), BasicLexer::Mnemonic);
        saveStyles(written);

        BasicLexer read;
        loadStyles(read);
        QCOMPARE(read.color(BasicLexer::Comment), QColor("#123456"));
        QCOMPARE(read.paper(BasicLexer::Comment), QColor("#fedcba"));
        QVERIFY(read.font(BasicLexer::Comment).bold());
        QVERIFY(!read.font(BasicLexer::Comment).italic());
        QCOMPARE(read.font(BasicLexer::Comment).pointSizeF(), 14.0);
        QCOMPARE(read.color(BasicLexer::Mnemonic), QColor("#00ff00"));
        QCOMPARE(read.color(BasicLexer::Number), written.color(BasicLexer::Number));
    }

    void groupPerStyle() {
        saveStyles(BasicLexer());
        auto settings = openEditorSettings();
        for (int style = 0; style < BasicLexer::StyleCount; ++style) {
            const QString key = BasicLexer::styleKey(style);
            QVERIFY2(settings->childGroups().contains(key), qPrintable(key));
        }
        QCOMPARE(settings->value("Number/Color").toString(), QString("#0000ff"));
    }

    void missingEntriesKeepDefaults() {
        BasicLexer lexer;
        const QColor before = lexer.color(BasicLexer::ReservedWord);
        loadStyles(lexer);
        QCOMPARE(lexer.color(BasicLexer::ReservedWord), before);
        QCOMPARE(lexer.font(BasicLexer::ReservedWord), lexer.defaultFont(BasicLexer::ReservedWord));
    }

    void unusableEntriesAreSkipped() {
        {
            auto settings = openEditorSettings();
            settings->setValue("Comment/Color", "not a colour");
            settings->setValue("Comment/Paper", "#112233");
            settings->setValue("Comment/Font", "");
            settings->setValue("String/Font", "Sans Serif,-1,20,5,400,0,0,0,0,0");
        }
        BasicLexer lexer;
        const QColor color = lexer.color(BasicLexer::Comment);
        const QFont font = lexer.font(BasicLexer::Comment);
        loadStyles(lexer);
        QCOMPARE(lexer.color(BasicLexer::Comment), color);
        QCOMPARE(lexer.paper(BasicLexer::Comment), QColor("#112233"));
        QCOMPARE(lexer.font(BasicLexer::Comment), font);
        // A font kept with a pixel size arrives in points.
        QVERIFY(lexer.font(BasicLexer::String).pointSizeF() > 0);
    }
};

QTEST_MAIN(StyleStoreTest)
#include "style_store_test.moc"
