// The TXML document library through its public interface: the documents the
// core writes, the events a GUI writes, the number table as documented, and
// what happens to text that is too long or bytes that are not a document.
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <memory>
#include <string>

#include "CTXMLEvent.h"
#include "CTXMLQws.h"
#include "CTXMLRoot.h"
#include "CTXMLUriLib.h"

namespace {
QString docsText()
{
    QFile f(QStringLiteral(TGUI_SOURCE_DIR "/docs/txml.md"));
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// Rows "| number | `text` | role |" of the table under a "### heading".
QList<QPair<int, QByteArray>> docsTable(const QString& docs, const QString& heading)
{
    QList<QPair<int, QByteArray>> rows;
    const int start = docs.indexOf(QStringLiteral("### ") + heading);
    const int end = docs.indexOf(QStringLiteral("\n### "), start + 4);
    static const QRegularExpression row(QStringLiteral("^\\| (\\d+) \\| `([^`]*)` \\|"),
                                        QRegularExpression::MultilineOption);
    auto it = row.globalMatch(docs.mid(start, end < 0 ? -1 : end - start));
    while (start >= 0 && it.hasNext()) {
        const auto m = it.next();
        rows.append(qMakePair(m.captured(1).toInt(), m.captured(2).toUtf8()));
    }
    return rows;
}

bool isValidUtf8(const char* text)
{
    const QByteArray bytes(text);
    return QString::fromUtf8(bytes).toUtf8() == bytes;
}

QByteArray repeated(const char* piece, int times)
{
    QByteArray out;
    for (int i = 0; i < times; ++i)
        out += piece;
    return out;
}

// The root is large; the tests keep one on the heap as the manager keeps one.
std::unique_ptr<CTXMLRoot> parsed(const QByteArray& doc)
{
    auto root = std::make_unique<CTXMLRoot>();
    root->parse(doc);
    return root;
}

QByteArray eventDoc(const QByteArray& uri, const QByteArray& data)
{
    return "<TXML><Event uri=\"" + uri + "\">" + data + "</Event></TXML>";
}
}  // namespace

class TestDocuments : public QObject
{
    Q_OBJECT
private slots:
    void numberTable()
    {
        const QString docs = docsText();
        QVERIFY2(!docs.isEmpty(), "docs/txml.md not readable");
        const auto uris = docsTable(docs, QStringLiteral("URI types"));
        const auto vars = docsTable(docs, QStringLiteral("Variables"));
        const auto qws = docsTable(docs, QStringLiteral("Simulator types"));
        QVERIFY(uris.size() >= 30 && vars.size() >= 30 && qws.size() == 3);
        for (const auto& row : uris) {
            QCOMPARE(CTXMLUriLib::uri(row.first), row.second.constData());
            QCOMPARE(int(CTXMLUriLib::type(row.second.constData())), row.first);
        }
        for (const auto& row : vars) {
            QCOMPARE(CTXMLUriLib::varname(row.first), row.second.constData());
            QCOMPARE(int(CTXMLUriLib::vartype(row.second.constData())), row.first);
        }
        for (const auto& row : qws) {
            QCOMPARE(CTXMLUriLib::qwsUri(TxmlQwsType_T(row.first)), row.second.constData());
            QCOMPARE(int(CTXMLUriLib::qwsType(row.second.constData())), row.first);
        }

        // Unknown numbers and texts.
        QVERIFY(!*CTXMLUriLib::uri(1) && !*CTXMLUriLib::uri(-5) && !*CTXMLUriLib::varname(100000));
        for (const char* text : {static_cast<const char*>(nullptr), "", "softkey:539-Hold",
                                 "Core:ConfigX", "core:config", "SoftKey:Backx"})
            QCOMPARE(int(CTXMLUriLib::type(text)), -1);
        QCOMPARE(int(CTXMLUriLib::type("Core:Config?source=web")), 30);
        QCOMPARE(int(CTXMLUriLib::vartype("language?")), -1);
        QCOMPARE(int(CTXMLUriLib::qwsType("Core:Config")), -1);
    }

    void docsExamplesParse()
    {
        static const QRegularExpression block(QStringLiteral("```xml\\n(.*?)```"),
                                              QRegularExpression::DotMatchesEverythingOption);
        int blocks = 0;
        auto it = block.globalMatch(docsText());
        auto root = std::make_unique<CTXMLRoot>();
        for (; it.hasNext(); ++blocks) {
            const QByteArray doc = it.next().captured(1).toUtf8();
            QVERIFY2(root->parse(doc), root->error);
            QVERIFY2(root->flags != 0, doc.constData());
        }
        QVERIFY(blocks >= 10);
    }

    void configurationPairs()
    {
        auto root = parsed(eventDoc("Core:Config", "language = fr-fr ;hours24=1;;xt9=0;"
                                                "database=a%3Db%3Bc%25d;configDigit=7"));
        QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT));
        QCOMPARE(int(CTXMLUriLib::type(root->uri)), int(TxmlUriConfig));
        QVERIFY(root->pairCount() == 5 && root->remaining() == 0);
        QCOMPARE(int(CTXMLUriLib::vartype(root->pairName(0))), 86);
        QCOMPARE(root->pairValue(0), "fr-fr");
        QCOMPARE(root->value(TxmlVarDatabase), "a=b;c%d");  // reserved characters decoded
        QCOMPARE(root->value(172), "7");
        QVERIFY(!*root->value("missing") && !*root->pairName(5));
        // The raw data text stays as written, for readers that want it whole.
        QVERIFY(QByteArray(root->data).startsWith("language = fr-fr ;"));
        QCOMPARE(int(root->marker), 1);

        // At most 64 pairs; what follows is counted, and exactly 64 leave nothing.
        QByteArray data;
        for (int i = 0; i < 65; ++i)
            data += "p" + QByteArray::number(i) + "=" + QByteArray::number(i) + ";";
        root = parsed(eventDoc("Core:Config", data));
        QCOMPARE(root->pairCount(), 64);
        QCOMPARE(root->pairName(63), "p63");
        QCOMPARE(root->remaining(), int(qstrlen("p64=64;")));
        data.chop(qstrlen("p64=64;"));
        root = parsed(eventDoc("Core:Config", data + ";;"));
        QCOMPARE(root->pairCount(), 64);
        QCOMPARE(root->remaining(), 0);
    }

    void appStatusMask_data()
    {
        QTest::addColumn<QByteArray>("mask");
        QTest::addColumn<uint>("expected");
        QTest::newRow("hex") << QByteArray("0x109") << 0x109u;
        QTest::newRow("all 32 bits kept") << QByteArray("4294967295") << 0xFFFFFFFFu;
        QTest::newRow("negative") << QByteArray("-3") << 0u;
        QTest::newRow("not a number") << QByteArray("lots") << 0u;
    }
    void appStatusMask()
    {
        QFETCH(QByteArray, mask);
        auto root = parsed("<TXML><Event uri=\"Core:AppStatus\"/><AppStatus mask=\"" + mask + "\"/></TXML>");
        QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT | TXML_FLAG_APPSTATUS));
        QCOMPARE(int(CTXMLUriLib::type(root->uri)), 62);
        QTEST(root->appStatus, "expected");
    }

    void translations()
    {
        const QByteArray longKey = repeated("\xc3\xa9", 200);  // 400 bytes of "é"
        auto root = parsed("<TXML><Translations><T key=\"Cancel\" value=\"Annuler\"/>"
                           "<T key=\"a%3Db\" value=\"x &amp; y\"/><T value=\"no key\"/>"
                           "<T key=\"" + longKey + "\" value=\"v\"/><Other/></Translations></TXML>");
        QCOMPARE(root->flags, unsigned(TXML_FLAG_TRANSLATIONS));
        QCOMPARE(int(root->translations.size()), 3);
        // Decoding the key is the reader's step.
        QCOMPARE((QByteArrayList{root->translations[0].key, root->translations[0].value, root->translations[1].key,
                                 root->translations[1].value}),
                 (QByteArrayList{"Cancel", "Annuler", "a%3Db", "x & y"}));
        QCOMPARE(int(qstrlen(root->translations[2].key)), 254);  // 255 would split a character
        QVERIFY(isValidUtf8(root->translations[2].key));

        // The next document replaces the records.
        root->parse(QByteArray("<TXML><Event uri=\"Core:UiReport\"/></TXML>"));
        QVERIFY(root->translations.empty());
        QVERIFY(!(root->flags & TXML_FLAG_TRANSLATIONS));
    }

    void softkeysWithFlyouts()
    {
        QByteArray doc = "<TXML><Softkeys type=\"2\" set=\"7\">"
                         "<Softkey url=\"softkey:539-Hold\" label=\"Hold\" position=\"0\" icon=\"12\" "
                         "iconName=\"hold.png\" url2=\"softkey:539-HoldLong\" id=\"77\" extent=\"1280\"/>"
                         "<Softkey url=\"SoftKey:ToggleEditMode\" label=\"abc;ABC\" values=\"abc;ABC\" "
                         "default=\"1\" type=\"2\" group=\"Mode\" priority=\"3\" layout=\"2\">"
                         "<Item label=\"abc\" url=\"SoftKey:ToggleEditMode\" value=\"abc\"/>"
                         "<Item label=\"GROUPDIV\" url=\"GROUPDIV\" badge=\"GROUPDIV\"/>"
                         "<Item label=\"ABC\" url=\"u\" badge=\"3\" abbr=\"A\" selected=\"yes\" "
                         "enabled=\"0\" quick=\"false\" icon=\"162\" iconFlags=\"2\" iconList=\"1,2\"/>"
                         "<Unknown><Item label=\"nested\" url=\"x\"/></Unknown>"
                         "</Softkey>";
        for (int i = 2; i < 22; ++i)
            doc += "<Softkey url=\"softkey:" + QByteArray::number(i) + "-K\"/>";
        doc += "</Softkeys><Flyout><Item label=\"Home\" url=\"softkey:1-Home\"/></Flyout></TXML>";

        auto root = parsed(doc);
        QCOMPARE(root->flags, unsigned(TXML_FLAG_SOFTKEYS | TXML_FLAG_FLYOUT));
        const CTXMLSoftkeys& keys = root->softkeys;
        // The 21st and 22nd are dropped; the id is the index when none is given.
        QCOMPARE((QVariantList{keys.count, int(keys.elementType), keys.setId, keys[19].url, keys[19].id}),
                 (QVariantList{TXML_MAX_SOFTKEYS, 2, 7, "softkey:19-K", 19}));

        // Priority 1 is the default.
        const CTXMLSoftkey& hold = keys[0];
        QCOMPARE((QVariantList{int(hold.icon), hold.iconName, hold.url2, hold.id, hold.extent, int(hold.priority),
                               hold.hasFlyout()}),
                 (QVariantList{12, "hold.png", "softkey:539-HoldLong", 77, 1280, 1, false}));

        // Position -1 is the default; the nested item of an unknown element is no flyout item.
        const CTXMLSoftkey& mode = keys[1];
        QCOMPARE((QVariantList{mode.position, int(mode.type), mode.valueList, mode.defaultIndex, mode.groupLabel,
                               int(mode.layoutType), mode.flyout.count()}),
                 (QVariantList{-1, int(CTXMLSoftkey::SoftkeyContextSensitive), "abc;ABC", 1, "Mode", 2, 3}));
        QVERIFY(!mode.flyout[0].isGroupDiv());
        QVERIFY(mode.flyout[1].isGroupDiv());
        const CTXMLFlyoutItem& item = mode.flyout[2];
        QCOMPARE(item.abbreviation, "A");
        QVERIFY(item.selected && !item.enabled && !item.hasQuickAccess);
        QCOMPARE(int(item.icon.id), 162);
        QCOMPARE(item.icon.iconList, "1,2");
        QVERIFY(mode.flyout[0].enabled && mode.flyout[0].hasQuickAccess);  // defaults
        QCOMPARE(mode.flyout[3].url, "");  // out of range: a blank item
        QCOMPARE(root->flyout.count(), 1);
        QCOMPARE(root->flyout[0].label, "Home");

        // The first key with the prefix: "softkey:1" is key 10.
        QCOMPARE((QList<int>{keys.findItemByUrl("softkey:539-"), keys.findItemByUrl("softkey:1"),
                             keys.findItemByUrl("softkey:540-"), keys.findItemByUrl(""), keys.findItemByUrl(nullptr)}),
                 (QList<int>{0, 10, -1, -1, -1}));

        // The same document compares equal; a changed item does not.
        auto again = parsed(doc);
        QVERIFY(again->softkeys == root->softkeys);
        again->softkeys[1].flyout[2].selected = false;
        QVERIFY(again->softkeys != root->softkeys);
        // Entries past the last used one do not count; a 65th flyout item is refused.
        again = parsed(doc);
        again->softkeys.reset();
        root->softkeys.reset();
        again->softkeys.keys[5].position = 3;
        QVERIFY(again->softkeys == root->softkeys);
        for (int i = 1; i < TXML_MAX_FLYOUT_ITEMS; ++i)
            QCOMPARE(root->flyout.add("l", "u", nullptr, nullptr), i);
        QCOMPARE(root->flyout.add("l", "u", nullptr, nullptr), -1);
    }

    void textLimitsCountUtf8Bytes()
    {
        const QByteArray ascii64 = repeated("a", 64);
        const QByteArray euro = repeated("\xe2\x82\xac", 30);     // 90 bytes, 3 each
        const QByteArray face = repeated("\xf0\x9f\x98\x80", 20);  // 80 bytes, 4 each
        auto root = parsed("<TXML><Softkeys>"
                           "<Softkey url=\"a\" label=\"" + ascii64 + "\"/>"
                           "<Softkey url=\"b\" label=\"" + ascii64 + "b\"/>"
                           "<Softkey url=\"c\" label=\"" + euro + "\"/>"
                           "<Softkey url=\"d\" group=\"x" + face + "\"/>"
                           "<Softkey url=\"" + repeated("u", 600) + "\"/>"
                           "</Softkeys></TXML>");
        const CTXMLSoftkeys& keys = root->softkeys;
        QCOMPARE(QByteArray(keys[0].label), ascii64);
        QCOMPARE(QByteArray(keys[1].label), ascii64);
        QCOMPARE(int(qstrlen(keys[2].label)), 63);  // 21 whole characters
        QCOMPARE(int(qstrlen(keys[3].groupLabel)), 61);  // "x" and 15 faces
        QVERIFY(isValidUtf8(keys[2].label) && isValidUtf8(keys[3].groupLabel));
        QCOMPARE(int(qstrlen(keys[4].url)), 512);

        // Pair values hold 1024 bytes, names 64; a cut never splits a character,
        // not even one that an escape decodes to.
        root = parsed(eventDoc("Core:Config", repeated("n", 100) + "=v" + repeated("\xc3\xa9", 600)));
        QCOMPARE(int(qstrlen(root->pairName(0))), 64);
        QCOMPARE(int(qstrlen(root->pairValue(0))), 1023);
        QVERIFY(isValidUtf8(root->pairValue(0)));
        root = parsed(eventDoc("Core:Config", "x=" + repeated("a", 1023) + "%C3%A9"));
        QCOMPARE(int(qstrlen(root->pairValue(0))), 1023);
    }

    void eventRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("uri");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("flags");
        QTest::addColumn<QByteArray>("data");
        QTest::newRow("plain") << QByteArray("softkey:539-Hold") << 1003 << 1 << QByteArray("data=1");
        QTest::newRow("empty data") << QByteArray("Core:UiReport") << 0 << 0 << QByteArray();
        QTest::newRow("markup") << QByteArray("Gui:Event?a=<b>&c=\"d\"") << 0 << 0
                                << QByteArray("t=<&>\"'</Event>]]>");
        QTest::newRow("encoded") << QByteArray("Gui:Popup") << -7 << 2
                                 << QByteArray("text1=a%3Db%3Bc%25;text2=");
        QTest::newRow("utf8") << QByteArray("Gui:Event") << 0 << 0
                              << QByteArray("labels=\xc3\xa9t\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80");
        QTest::newRow("white space") << QByteArray("Gui:Event\t x") << 0 << 0
                                     << QByteArray(" a = b \r\n\tc=d\r");
    }
    void eventRoundTrip()
    {
        QFETCH(QByteArray, uri);
        QFETCH(int, type);
        QFETCH(int, flags);
        QFETCH(QByteArray, data);
        CTXMLEvent ev;
        QVERIFY(ev.set(uri.constData(), type, flags));
        QVERIFY(ev.setData(data.constData()));
        const std::string text = ev.serialize();

        auto root = parsed(QByteArray::fromStdString(text));
        QVERIFY2(root->error[0] == 0, root->error);
        QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT));
        QCOMPARE(QByteArray(root->uri), uri);
        QCOMPARE(root->eventType, type);
        QCOMPARE(root->eventFlags, flags);
        QCOMPARE(QByteArray(root->data), data);
        CTXMLEvent back;
        QVERIFY(back.parse(text.data(), text.size()));
        QCOMPARE(back.serialize(), text);
    }

    void eventDataText()
    {
        CTXMLEvent ev;
        ev.set(TxmlUriTranslate);
        QVERIFY(ev.addPair(CTXMLUriLib::varname(33), CTXMLUriLib::percentEncode("12,40,7").c_str()));
        QVERIFY(ev.addPair("b", ""));
        QCOMPARE(ev.value("data"), std::string("12,40,7"));
        QVERIFY(ev.hasPair("b") && !ev.hasPair("c"));
        QCOMPARE(ev.serialize(), std::string("<TXML><Event uri=\"Gui:Translate\">"
                                             "data=12%2C40%2C7;b=</Event></TXML>"));
        ev.set("x", 1, 1);  // starts afresh
        QCOMPARE(ev.data, "");

        // Bytes XML cannot carry travel as escapes that the pair syntax decodes.
        ev.setData("k=a\x01" "b\xff");
        auto root = parsed(QByteArray::fromStdString(ev.serialize()));
        QCOMPARE(root->data, "k=a%01b%FF");
        QCOMPARE(root->value("k"), "a\x01" "b\xff");

        // A full data text takes no half pair, and a long text is cut at a character.
        QVERIFY(!ev.setData(repeated("\xc3\xa9", 9000).constData()));
        QCOMPARE(int(qstrlen(ev.data)), 16382);
        QVERIFY(isValidUtf8(ev.data));
        const QByteArray before(ev.data);
        QVERIFY(!ev.addPair("n", "v"));
        QCOMPARE(QByteArray(ev.data), before);
        QVERIFY(!ev.set(repeated("u", 600).constData()));  // cut and reported
        QCOMPARE(int(qstrlen(ev.uri)), 512);

        // No document, no event.
        QVERIFY(!ev.parse("<TXML/>", 7));
        QVERIFY(!ev.parse("<TXML><Event/></TXML>", 21));
        QVERIFY(!ev.parse(nullptr, 0));
    }

    void malformedDocumentsLeaveRootEmpty_data()
    {
        QTest::addColumn<QByteArray>("doc");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("not xml") << QByteArray("language=fr-fr");
        QTest::newRow("unclosed") << QByteArray("<TXML><Event uri=\"Core:Config\">a=1");
        QTest::newRow("mismatched") << QByteArray("<TXML><Event uri=\"x\"></TXML></Event>");
        QTest::newRow("two roots") << QByteArray("<TXML/><TXML/>");
        QTest::newRow("bad utf8") << QByteArray("<TXML><Event uri=\"\xff\xfe\"/></TXML>");
        static const char withNul[] = "<TXML><Event uri=\"a\0b\"/></TXML>";
        QTest::newRow("nul inside") << QByteArray(withNul, int(sizeof withNul) - 1);
        QTest::newRow("undefined entity") << QByteArray("<TXML><Event uri=\"&nope;\"/></TXML>");
        QTest::newRow("entity expansion")
            << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE TXML [<!ENTITY a \"aaaaaaaaaa\">"
                          "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">"
                          "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">]>"
                          "<TXML><Event uri=\"&c;\"/></TXML>");
        QTest::newRow("doctype") << QByteArray("<!DOCTYPE TXML><TXML><Event uri=\"x\"/></TXML>");
    }
    void malformedDocumentsLeaveRootEmpty()
    {
        QFETCH(QByteArray, doc);
        auto root = parsed("<TXML><Event uri=\"Core:Config\">a=1</Event><AppStatus mask=\"3\"/>"
                           "<Softkeys><Softkey url=\"k\"/></Softkeys>"
                           "<Translations><T key=\"a\" value=\"b\"/></Translations></TXML>");
        QVERIFY(root->flags != 0);
        QVERIFY(!root->parse(doc));
        QCOMPARE(root->flags, 0u);
        QCOMPARE(root->uri, "");
        QCOMPARE(root->pairCount(), 0);
        QCOMPARE(root->appStatus, 0u);
        QCOMPARE(root->softkeys.count, 0);
        QVERIFY(root->translations.empty());
        QVERIFY(root->error[0] != 0);
        // Wrong root element: well formed but nothing in it counts.
        QVERIFY(root->parse(QByteArray("<Other><Event uri=\"Core:Config\"/></Other>")));
        QCOMPARE(root->flags, 0u);
    }

    void pairSyntaxAndPercentEncoding()
    {
        CTXMLUriParser<4> parser;
        QCOMPARE(parser.parseData(" a = 1 ; ;b=;c;d=x=y;e=5"), 4);
        QCOMPARE(parser.name(0), "a");
        QCOMPARE(parser.value(0), "1");
        QCOMPARE(parser.indexOf("c"), 2);  // a name without "=" is a pair with an empty value
        QCOMPARE(parser.value("d"), "x=y");  // only the first "=" splits
        QCOMPARE(parser.indexOf("e"), -1);
        QCOMPARE(parser.remaining(), 3);  // "e=5"
        QCOMPARE(parser.parseData("k%3D=v%3B%25%2;%zz=%4"), 2);
        QCOMPARE(parser.name(0), "k=");
        QCOMPARE(parser.value(0), "v;%%2");
        QCOMPARE(parser.name(1), "%zz");
        QCOMPARE(parser.value(1), "%4");
        QCOMPARE(parser.parseData("a=x%00y"), 1);
        QCOMPARE(parser.value(0), "x");  // an escaped NUL ends the text
        QCOMPARE(parser.parseData(nullptr), 0);
        QCOMPARE(parser.parseData("a=1;b=2", 3), 1);  // only the given bytes

        // The instance form of the URI library reads by number.
        CTXMLUriLib lib;
        lib.parse("mask=000.000;encoding=Latin;min=3");
        QCOMPARE(lib.value(TxmlVarMask), "000.000");
        QCOMPARE(lib.value(37), "Latin");
        QVERIFY(lib.contains(TxmlVarMin) && !lib.contains(TxmlVarMax));

        QCOMPARE(CTXMLUriLib::percentEncode("a-z_A.Z~09,"), std::string("a-z_A.Z~09%2C"));
        QCOMPARE(CTXMLUriLib::percentEncode(nullptr), std::string());
        char out[6];
        QCOMPARE(int(CTXMLUriLib::percentEncode("a,b", out, 5)), 4);  // "b" finds no room
        QCOMPARE(out, "a%2C");
        QCOMPARE(int(CTXMLUriLib::percentEncode("ab,", out, 5)), 2);  // no half escape
        QCOMPARE(out, "ab");
        // What percentEncode writes, the pair syntax reads back.
        const char* nasty = "a=b;c%d&e<f>\"g' h\xc3\xa9";
        parser.parseData(("v=" + CTXMLUriLib::percentEncode(nasty)).c_str());
        QCOMPARE(parser.value("v"), nasty);
    }

    void simulatorDocuments()
    {
        CTXMLQws qws;
        QVERIFY(qws.parse(QByteArray("<TXML><Event uri=\"Qws:Key\">state=6;key=65;data=0;ASCII=a"
                                     "</Event><Softkeys><Softkey url=\"x\"/></Softkeys></TXML>")));
        QCOMPARE(qws.flags, unsigned(TXML_FLAG_EVENT));  // the rest is not for the simulator link
        QCOMPARE(int(CTXMLUriLib::qwsType(qws.uri)), int(TxmlQwsKey));
        QCOMPARE(qws.pairCount(), 4);
        QCOMPARE(qws.value(TxmlVarAscii), "a");
        QVERIFY(!qws.parse("<TXML>"));
        QVERIFY(!qws.hasEvent());
        QCOMPARE(qws.pairCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestDocuments)
#include "tst_documents.moc"
