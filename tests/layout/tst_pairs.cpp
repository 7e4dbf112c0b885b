// The pair syntax of documents: entity encoding, pair lists, numbered settings.
#include <QSignalSpy>
#include <QtTest>

#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoSettings.h"
#include "layout/CTavoVarList.h"

class TestPairs : public QObject
{
    Q_OBJECT
private slots:
    void encodingEscapesEveryReservedCharacter()
    {
        QCOMPARE(CTXMLDataConverter::encodeEntities("a=b;c&d'e\"f>g<h%i"),
                 QString("a%3Db%3Bc%26d%27e%22f%3Eg%3Ch%25i"));
    }

    void encodedTextDecodesBackWhole_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << "Hello";
        QTest::newRow("percent first") << "100%3D";  // must not decode to "100="
        QTest::newRow("all") << "%=;&'\"><%25";
        QTest::newRow("empty") << "";
    }
    void encodedTextDecodesBackWhole()
    {
        QFETCH(QString, text);
        QCOMPARE(CTXMLDataConverter::decodeEntities(CTXMLDataConverter::encodeEntities(text)), text);
    }

    void varListReadsPairsTrimmedAndDecoded()
    {
        CTavoVarList list(" mode = 123 ;;flag; url=a%3Db ;name=x=y");
        QCOMPARE(list["mode"], QString("123"));
        QCOMPARE(list["url"], QString("a=b"));
        QCOMPARE(list["name"], QString("x=y"));
        QCOMPARE(list["flag"], QString());
        QVERIFY(!list.pairs().contains("flag"));
        QCOMPARE(list["missing"], QString());
    }

    void varListSerializesInKeyOrderEncoded()
    {
        CTavoVarList list("b=2;a=x%3Dy");
        list.addPair("c", 7);
        QCOMPARE(list.serialize(), QString("a=x%3Dy;b=2;c=7"));
        CTavoVarList again(list.serialize());
        QCOMPARE(again.pairs(), list.pairs());
    }

    void varListTakesOtherSeparators()
    {
        CTavoVarList args(QString(), ",");
        args.set("property=opacity,start=0,end=1,duration=200");
        QCOMPARE(args["duration"], QString("200"));
        QCOMPARE(args["property"], QString("opacity"));
    }

    void settingsGiveNumbersTextAndSignals()
    {
        CTavoSettings settings;
        QSignalSpy changed(&settings, &CTavoSettings::varChanged);
        settings.setVar(12, "42");
        settings.setVar(13, "abc");
        settings.setVar(14, nullptr);
        settings.setVar(15, "Gr\xc3\xbc\xc3\x9f");
        QCOMPARE(settings.getInt(12), 42);
        QCOMPARE(settings.getInt(13), -1);
        QCOMPARE(settings.getInt(14), -1);
        QCOMPARE(settings.getString(14), QString());
        QCOMPARE(settings.getString(15), QString::fromUtf8("Gr\xc3\xbc\xc3\x9f"));
        QCOMPARE(changed.count(), 3);
        QCOMPARE(changed.at(0).at(0).toInt(), 12);
    }
};

QTEST_GUILESS_MAIN(TestPairs)
#include "tst_pairs.moc"
