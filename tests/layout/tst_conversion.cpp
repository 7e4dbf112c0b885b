// Conversions between documents and the toolkit's values, as tables of cases;
// the pair syntax of documents: entity encoding, pair lists, numbered
// settings; and the Qt event that carries a document event: its numbers, its
// document and the way back from a document.
#include <QSignalSpy>
#include <QtTest>

#include "CTXMLEvent.h"
#include "CTXMLIcon.h"
#include "CTXMLLineKeys.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoEvent.h"
#include "layout/CTavoSettings.h"
#include "layout/CTavoVarList.h"

Q_DECLARE_METATYPE(CTavoEvent::tavoEvent)

namespace {
CTXMLLineKey lineKey(int kind, const char* label, int icon)
{
    CTXMLLineKey key;
    key.kind = kind;
    txml::copyText(key.label, sizeof key.label, QByteArray(label).toBase64().constData());
    key.icon.set(icon);
    return key;
}
}  // namespace

class TestConversion : public QObject
{
    Q_OBJECT

private slots:
    void inputModes_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("mode");
        // First, last and one with a blank of the table.
        QTest::newRow("Abc") << QByteArray("Abc") << 0;
        QTest::newRow("XT9 PinYin") << QByteArray("XT9 PinYin") << 10;
        QTest::newRow("123*") << QByteArray("123*") << 12;
    }
    void inputModes()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, mode);
        QCOMPARE(int(CTXMLDataConverter::getInputModeFromXml(name.constData())), mode);
        QCOMPARE(CTXMLDataConverter::getStringFromInputMode(InputModeT(mode)), QString::fromLatin1(name));
    }

    void inputModesOutsideTheTable()
    {
        // Compared exactly; anything else is "abc".
        for (const char* name : {"abc ", "ABc", "", "xt9 pinyin"})
            QCOMPARE(CTXMLDataConverter::getInputModeFromXml(name), InputModeLower);
        QCOMPARE(CTXMLDataConverter::getInputModeFromXml(nullptr), InputModeLower);
        for (int mode : {13, 14, -1, 1000})
            QCOMPARE(CTXMLDataConverter::getStringFromInputMode(mode), QString());
    }

    void escapeSequences_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("decoded");
        QTest::newRow("all five") << "&lt;a&gt; &amp; &quot;b&quot; &apos;c&apos;" << "<a> & \"b\" 'c'";
        QTest::newRow("ampersand first, then the quote") << "&amp;quot;" << "\"";
        QTest::newRow("lt before amp") << "&amp;lt;" << "&lt;";
        QTest::newRow("unknown stays") << "&nbsp;&#60;" << "&nbsp;&#60;";
        QTest::newRow("empty") << "" << "";
    }
    void escapeSequences()
    {
        QFETCH(QString, text);
        QTEST(CTXMLDataConverter::decodeEscapeSequenceCharaters(text), "decoded");
    }

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

    void lineTypeOffsets_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("offset");
        QTest::newRow("below") << 2999 << 0;
        QTest::newRow("3000") << 3000 << 3000;
        QTest::newRow("7001") << 7001 << 7000;
        QTest::newRow("9000") << 9000 << 9000;
        QTest::newRow("far above") << 123456 << 9000;
    }
    void lineTypeOffsets()
    {
        QFETCH(int, id);
        QTEST(CTXMLDataConverter::getLineTypeOffset(id), "offset");
    }

    void lineLabels_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("label");
        QTest::addColumn<int>("offset");
        QTest::addColumn<int>("icon");
        // Keys: line (1), BLF (7), call park (2), shared line (5), unknown kind (3), speed dial (4).
        QTest::newRow("first of all") << 0 << "Line 1" << 0 << 210;
        QTest::newRow("BLF counts below 4000") << 1 << "Anna" << 0 << 211;
        QTest::newRow("call park does not") << 2 << "Shared" << 0 << 213;
        QTest::newRow("speed dial") << 3 << "Speed ü" << 0 << 215;
        QTest::newRow("beyond") << 4 << "" << 0 << 0;
        QTest::newRow("4000: lines only") << 4001 << "Shared" << 4000 << 213;
        QTest::newRow("7000: call park too") << 7002 << "Park" << 7000 << 212;
    }
    void lineLabels()
    {
        QFETCH(int, id);
        QFETCH(int, offset);
        CTXMLLineKeys keys;
        keys.add(lineKey(1, "Line 1", 210));
        keys.add(lineKey(7, "Anna", 211));
        keys.add(lineKey(2, "Park", 212));
        keys.add(lineKey(5, "Shared", 213));
        keys.add(lineKey(3, "Other", 214));
        keys.add(lineKey(4, "Speed ü", 215));
        int gotOffset = -1;
        CTXMLIcon gotIcon;
        QTEST(CTXMLDataConverter::getLineLabel(&keys, id, gotOffset, gotIcon), "label");
        QCOMPARE(gotOffset, offset);
        QTEST(int(gotIcon.id), "icon");
        // Without keys only the offset is told.
        gotOffset = -1;
        QCOMPARE(CTXMLDataConverter::getLineLabel(nullptr, id, gotOffset, gotIcon), QString());
        QCOMPARE(gotOffset, offset);
    }

    void presenceIcons_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("icon");
        // A few rows of the table, and the numbers outside it.
        const int table[][2] = {{-1, 214}, {0, 210}, {4, 212}, {8, 211}, {9, -1}, {-2, -1}};
        for (const auto& row : table)
            QTest::newRow(QByteArray::number(row[0]).constData()) << row[0] << row[1];
    }
    void presenceIcons()
    {
        QFETCH(int, status);
        QFETCH(int, icon);
        CTXMLIcon target;
        target.set(5);
        CTXMLIcon* result = CTXMLDataConverter::getIconFromPresenceStatus(&target, status);
        if (icon < 0) {
            QVERIFY(!result);
            QCOMPARE(int(target.id), 5);
        } else {
            QCOMPARE(result, &target);
            QCOMPARE(int(target.id), icon);
        }
        QVERIFY(!CTXMLDataConverter::getIconFromPresenceStatus(nullptr, status));
    }

    void currencies_data()
    {
        QTest::addColumn<int>("currency");
        QTest::addColumn<QString>("sign");
        QTest::newRow("rupee") << 1 << QString(QChar(0x20B9));
        QTest::newRow("pound") << 5 << QString(QChar(0x00A3));
        QTest::newRow("none") << 0 << "";
        QTest::newRow("unknown") << 6 << "";
    }
    void currencies()
    {
        QFETCH(int, currency);
        QTEST(CTXMLDataConverter::getCurrencyMapping(currency), "sign");
    }

    void dialStrings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("e164");
        QTest::addColumn<QString>("t9");
        QTest::addColumn<bool>("number");
        QTest::newRow("letters") << "A b!" << false << "2 2" << false;
        QTest::newRow("international") << "+49 89 1234" << true << "49 89 1234" << false;
        QTest::newRow("keypad letters") << "PQRS tuv WXYZ" << false << "7777 888 9999" << false;
        QTest::newRow("address") << "1234@host" << false << "12344678" << false;
        QTest::newRow("multi-line") << "1\nx" << true << "19" << false;
        QTest::newRow("non-ASCII letters dropped") << "é1ß" << false << "1" << false;
        QTest::newRow("256 digits") << QString(256, '7') << true << QString(256, '7') << true;
        QTest::newRow("257 digits") << QString(257, '7') << true << QString(257, '7') << false;
    }
    void dialStrings()
    {
        QFETCH(QString, text);
        QTEST(CTXMLDataConverter::isConvertibleToT9E164(text), "e164");
        QTEST(CTXMLDataConverter::setT9Data(text), "t9");
        QTEST(CTXMLDataConverter::isNumber(text), "number");
    }

    void eventNumbersAreRegisteredAndATakenOneIsReported()
    {
        // Someone else has 1003 already: reported, and the others are still ours.
        QCOMPARE(QEvent::registerEventType(1003), 1003);
        QTest::ignoreMessage(QtWarningMsg, "CTavoEvent failed to register event 1003");
        CTavoEvent::registerTavoEvents();
        for (int number = 1000; number < 1008; ++number)
            QVERIFY(QEvent::registerEventType(number) != number);
        CTavoEvent shown(CTavoEvent::ShownEvent);
        QCOMPARE(int(shown.type()), 1005);
        QCOMPARE(CTavoEvent().eventType(), CTavoEvent::NoEvent);
        QVERIFY(shown.url().isEmpty() && !shown.data().isValid());
    }

    void events_data()
    {
        QTest::addColumn<CTavoEvent::tavoEvent>("type");
        QTest::addColumn<QString>("url");
        QTest::addColumn<QVariant>("data");
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("back");
        QTest::newRow("key") << CTavoEvent::JSCustomSoftkeyEvent << "softkey:539-Hold" << QVariant("data=1")
                             << "<TXML><Event uri=\"softkey:539-Hold\" type=\"1003\" flags=\"1\">data=1</Event></TXML>"
                             << "1";
        QTest::newRow("plain data") << CTavoEvent::JSPushUriEvent << "http://x/?a=1&b=2" << QVariant(42)
                                    << "<TXML><Event uri=\"http://x/?a=1&amp;b=2\" type=\"1001\" flags=\"1\">42</Event></TXML>"
                                    << "42";
        QTest::newRow("pairs without data") << CTavoEvent::NoEvent << "Gui:Event" << QVariant("labels=A;keyIndex=2")
                                            << "<TXML><Event uri=\"Gui:Event\" type=\"1000\" flags=\"1\">labels=A;keyIndex=2</Event></TXML>"
                                            << "labels=A;keyIndex=2";
        // Latin-1 bytes are not UTF-8: the document carries them escaped.
        QTest::newRow("Latin-1") << CTavoEvent::NoEvent << "Home:Settings" << QVariant("data=été")
                                 << "<TXML><Event uri=\"Home:Settings\" type=\"1000\" flags=\"1\">data=%E9t%E9</Event></TXML>"
                                 << "été";
        QTest::newRow("markup") << CTavoEvent::HiddenEvent << "a<b" << QVariant("x=<i>")
                                << "<TXML><Event uri=\"a&lt;b\" type=\"1006\" flags=\"1\">x=&lt;i&gt;</Event></TXML>"
                                << "x=<i>";
    }
    void events()
    {
        QFETCH(CTavoEvent::tavoEvent, type);
        QFETCH(QString, url);
        QFETCH(QVariant, data);
        QFETCH(QString, document);
        QFETCH(QString, back);
        const CTavoEvent event(type, url, data);
        QCOMPARE(event.serialize(), document);
        const CTXMLEvent txml = event.toTXML();
        QCOMPARE(txml.type, int(type));
        QCOMPARE(txml.flags, 1);
        // The document read back: the URL, and the "data" pair or the whole text.
        CTXMLEvent parsed;
        const QByteArray bytes = document.toUtf8();
        QVERIFY(parsed.parse(bytes.constData(), std::size_t(bytes.size())));
        const CTavoEvent received(parsed, CTavoEvent::JSToolBarEvent);
        QCOMPARE(received.url(), url);
        QCOMPARE(received.data().toString(), back);
        QCOMPARE(received.eventType(), CTavoEvent::JSToolBarEvent);
        QCOMPARE(int(received.type()), 1004);
    }

    void oversizedEventsAreCutNotLost()
    {
        const QString url = QString(600, 'u');
        const CTavoEvent event(CTavoEvent::NoEvent, url, QString(20000, 'd'));
        const CTXMLEvent txml = event.toTXML();
        QCOMPARE(qstrlen(txml.uri), uint(sizeof txml.uri - 1));
        QCOMPARE(qstrlen(txml.data), uint(sizeof txml.data - 1));
    }
};

QTEST_GUILESS_MAIN(TestConversion)
#include "tst_conversion.moc"
