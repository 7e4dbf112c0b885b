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
    void entitiesRoundTrip_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("all") << "a=b;c&d'e\"f>g<h%i" << "a%3Db%3Bc%26d%27e%22f%3Eg%3Ch%25i";
        // The percent goes first, so an encoded-looking text survives.
        QTest::newRow("percent") << "100%3D" << "100%253D";
        QTest::newRow("empty") << "" << "";
    }
    void entitiesRoundTrip()
    {
        QFETCH(QString, text);
        QFETCH(QString, encoded);
        QCOMPARE(CTXMLDataConverter::encodeEntities(text), encoded);
        QCOMPARE(CTXMLDataConverter::decodeEntities(encoded), text);
    }

    void varListReadsAndWritesPairs()
    {
        CTavoVarList list(" mode = 123 ;;flag; url=a%3Db ;name=x=y");
        QCOMPARE(list["mode"], QString("123"));
        QCOMPARE(list["url"], QString("a=b"));
        QCOMPARE(list["name"], QString("x=y"));
        QVERIFY(!list.pairs().contains("flag"));
        QCOMPARE(list["missing"], QString());
        list.addPair("count", 7);
        QCOMPARE(list.serialize(), QString("count=7;mode=123;name=x%3Dy;url=a%3Db"));
        list.set("b=2");
        QCOMPARE(list.serialize(), QString("b=2"));

        // Another separator splits the text; the written form stays the document's.
        CTavoVarList args(QString(), ",");
        args.set("property=opacity,duration=200");
        QCOMPARE(args["duration"], QString("200"));
        QCOMPARE(args.serialize(), QString("duration=200;property=opacity"));
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
