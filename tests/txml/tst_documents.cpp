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
    if (!f.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(f.readAll());
}

// Rows "| number | `text` | role |" of the table under a "### heading".
QList<QPair<int, QString>> docsTable(const QString& docs, const QString& heading)
{
    QList<QPair<int, QString>> rows;
    const int start = docs.indexOf(QStringLiteral("### ") + heading);
    if (start < 0)
        return rows;
    int end = docs.indexOf(QStringLiteral("\n### "), start + 4);
    if (end < 0)
        end = docs.size();
    static const QRegularExpression row(QStringLiteral("^\\| (\\d+) \\| `([^`]*)` \\|"),
                                        QRegularExpression::MultilineOption);
    auto it = row.globalMatch(docs.mid(start, end - start));
    while (it.hasNext()) {
        const auto m = it.next();
        rows.append(qMakePair(m.captured(1).toInt(), m.captured(2)));
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

}  // namespace

class TestDocuments : public QObject
{
    Q_OBJECT

private slots:
    void numberTableMatchesDocs();
    void unknownNumbersAndTexts();
    void docsExamplesParse();
    void configurationPairs();
    void pairsBeyondSixtyFour();
    void appStatusMask();
    void translations();
    void softkeysWithFlyouts();
    void softkeysStructure();
    void textLimitsCountUtf8Bytes();
    void eventRoundTrip_data();
    void eventRoundTrip();
    void eventDataText();
    void malformedDocumentsLeaveRootEmpty_data();
    void malformedDocumentsLeaveRootEmpty();
    void pairSyntax();
    void percentEncoding();
    void simulatorDocuments();
};

void TestDocuments::numberTableMatchesDocs()
{
    const QString docs = docsText();
    QVERIFY2(!docs.isEmpty(), "docs/txml.md not readable");

    const auto uris = docsTable(docs, QStringLiteral("URI types"));
    QVERIFY(uris.size() >= 30);
    for (const auto& row : uris) {
        const QByteArray text = row.second.toUtf8();
        QCOMPARE(QString::fromUtf8(CTXMLUriLib::uri(row.first)), row.second);
        QCOMPARE(int(CTXMLUriLib::type(text.constData())), row.first);
    }
    const auto vars = docsTable(docs, QStringLiteral("Variables"));
    QVERIFY(vars.size() >= 30);
    for (const auto& row : vars) {
        const QByteArray text = row.second.toUtf8();
        QCOMPARE(QString::fromUtf8(CTXMLUriLib::varname(row.first)), row.second);
        QCOMPARE(int(CTXMLUriLib::vartype(text.constData())), row.first);
    }
    const auto qws = docsTable(docs, QStringLiteral("Simulator types"));
    QCOMPARE(qws.size(), 3);
    for (const auto& row : qws) {
        const QByteArray text = row.second.toUtf8();
        QCOMPARE(QString::fromUtf8(CTXMLUriLib::qwsUri(static_cast<TxmlQwsType_T>(row.first))),
                 row.second);
        QCOMPARE(int(CTXMLUriLib::qwsType(text.constData())), row.first);
    }

    // The encoding names are fixed by the text entry: variables 38 to 42.
    const char* names[] = {"ASCII", "Latin", "Cyrillic", "Katakana", "Unicode"};
    for (int i = 0; i < 5; ++i)
        QCOMPARE(CTXMLUriLib::varname(38 + i), names[i]);
    // And the two keys the text entry names itself.
    QCOMPARE(CTXMLUriLib::uri(13), "SoftKey:ToggleEditMode");
    QCOMPARE(CTXMLUriLib::uri(4), "SoftKey:Encoding");
}

void TestDocuments::unknownNumbersAndTexts()
{
    QCOMPARE(CTXMLUriLib::uri(1), "");
    QCOMPARE(CTXMLUriLib::uri(-5), "");
    QCOMPARE(CTXMLUriLib::varname(2), "");
    QCOMPARE(CTXMLUriLib::varname(100000), "");
    QCOMPARE(int(CTXMLUriLib::type(nullptr)), -1);
    QCOMPARE(int(CTXMLUriLib::type("")), -1);
    QCOMPARE(int(CTXMLUriLib::type("softkey:539-Hold")), -1);
    QCOMPARE(int(CTXMLUriLib::type("Core:ConfigX")), -1);
    QCOMPARE(int(CTXMLUriLib::type("core:config")), -1);  // case matters
    QCOMPARE(int(CTXMLUriLib::type("Core:Config?source=web")), 30);
    QCOMPARE(int(CTXMLUriLib::vartype("language?")), -1);
    QCOMPARE(int(CTXMLUriLib::vartype(nullptr)), -1);
    QCOMPARE(int(CTXMLUriLib::qwsType("Core:Config")), -1);
    // A URI number never takes 0 by accident: 0 is a local event.
    QVERIFY(CTXMLUriLib::type("SoftKey:Backx") != TxmlUriBack);
}

void TestDocuments::docsExamplesParse()
{
    const QString docs = docsText();
    static const QRegularExpression block(QStringLiteral("```xml\\n(.*?)```"),
                                          QRegularExpression::DotMatchesEverythingOption);
    int blocks = 0;
    auto it = block.globalMatch(docs);
    auto root = std::make_unique<CTXMLRoot>();
    while (it.hasNext()) {
        const QByteArray doc = it.next().captured(1).toUtf8();
        ++blocks;
        QVERIFY2(root->parse(doc), root->error);
        QVERIFY2(root->flags != 0, doc.constData());
        QCOMPARE(root->error, "");
    }
    QVERIFY(blocks >= 10);
}

void TestDocuments::configurationPairs()
{
    auto root = parsed(
        "<TXML><Event uri=\"Core:Config\">language = fr-fr ;hours24=1;;xt9=0;"
        "database=a%3Db%3Bc%25d;configDigit=7</Event></TXML>");
    QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT));
    QCOMPARE(int(CTXMLUriLib::type(root->uri)), int(TxmlUriConfig));
    QCOMPARE(root->pairCount(), 5);
    QCOMPARE(root->remaining(), 0);
    QCOMPARE(int(CTXMLUriLib::vartype(root->pairName(0))), 86);
    QCOMPARE(root->pairValue(0), "fr-fr");
    QCOMPARE(root->value(TxmlVarDatabase), "a=b;c%d");  // reserved characters decoded
    QCOMPARE(root->value(172), "7");
    QCOMPARE(root->value("missing"), "");
    QCOMPARE(root->pairName(5), "");
    QCOMPARE(root->pairValue(-1), "");
    // The raw data text stays as written, for readers that want it whole.
    QVERIFY(QByteArray(root->data).startsWith("language = fr-fr ;"));
    QCOMPARE(int(root->marker), 1);
}

void TestDocuments::pairsBeyondSixtyFour()
{
    QByteArray data;
    for (int i = 0; i < 65; ++i)
        data += "p" + QByteArray::number(i) + "=" + QByteArray::number(i) + ";";
    auto root = parsed("<TXML><Event uri=\"Core:Config\">" + data + "</Event></TXML>");
    QCOMPARE(root->pairCount(), 64);
    QCOMPARE(root->pairName(63), "p63");
    QCOMPARE(root->remaining(), int(qstrlen("p64=64;")));
    QCOMPARE(root->value("p64"), "");

    // Exactly 64 leave nothing behind, trailing separators included.
    data.chop(qstrlen("p64=64;"));
    root = parsed("<TXML><Event uri=\"Core:Config\">" + data + ";;</Event></TXML>");
    QCOMPARE(root->pairCount(), 64);
    QCOMPARE(root->remaining(), 0);
}

void TestDocuments::appStatusMask()
{
    auto root = parsed("<TXML><Event uri=\"Core:AppStatus\"/><AppStatus mask=\"0x109\"/></TXML>");
    QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT | TXML_FLAG_APPSTATUS));
    QCOMPARE(int(CTXMLUriLib::type(root->uri)), 62);
    QCOMPARE(root->appStatus, 0x109u);
    // Bits above the twelve applications are kept; the reader decides.
    root = parsed("<TXML><AppStatus mask=\"4294967295\"/></TXML>");
    QCOMPARE(root->appStatus, 0xFFFFFFFFu);
    root = parsed("<TXML><AppStatus mask=\"-3\"/></TXML>");
    QCOMPARE(root->appStatus, 0u);
    root = parsed("<TXML><AppStatus mask=\"lots\"/></TXML>");
    QCOMPARE(root->appStatus, 0u);
}

void TestDocuments::translations()
{
    const QByteArray longKey = repeated("\xc3\xa9", 200);  // 400 bytes of "é"
    auto root = parsed("<TXML><Translations><T key=\"Cancel\" value=\"Annuler\"/>"
                       "<T key=\"a%3Db\" value=\"x &amp; y\"/><T value=\"no key\"/>"
                       "<T key=\"" + longKey + "\" value=\"v\"/><Other/></Translations></TXML>");
    QCOMPARE(root->flags, unsigned(TXML_FLAG_TRANSLATIONS));
    QCOMPARE(int(root->translations.size()), 3);
    QCOMPARE(root->translations[0].key, "Cancel");
    QCOMPARE(root->translations[0].value, "Annuler");
    QCOMPARE(root->translations[1].key, "a%3Db");  // decoding is the reader's step
    QCOMPARE(root->translations[1].value, "x & y");
    QCOMPARE(int(qstrlen(root->translations[2].key)), 254);  // 255 would split a character
    QVERIFY(isValidUtf8(root->translations[2].key));

    // The next document replaces the records.
    root->parse(QByteArray("<TXML><Event uri=\"Core:UiReport\"/></TXML>"));
    QVERIFY(root->translations.empty());
    QVERIFY(!(root->flags & TXML_FLAG_TRANSLATIONS));
}

void TestDocuments::softkeysWithFlyouts()
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
        doc += "<Softkey url=\"softkey:" + QByteArray::number(i) + "-K\" position=\"" +
               QByteArray::number(i) + "\"/>";
    doc += "</Softkeys><Flyout><Item label=\"Home\" url=\"softkey:1-Home\"/></Flyout></TXML>";

    auto root = parsed(doc);
    QCOMPARE(root->flags, unsigned(TXML_FLAG_SOFTKEYS | TXML_FLAG_FLYOUT));
    const CTXMLSoftkeys& keys = root->softkeys;
    QCOMPARE(keys.count, TXML_MAX_SOFTKEYS);  // the 21st and 22nd are dropped
    QCOMPARE(int(keys.elementType), 2);
    QCOMPARE(keys.setId, 7);
    QCOMPARE(keys[19].url, "softkey:19-K");

    const CTXMLSoftkey& hold = keys[0];
    QCOMPARE(hold.label, "Hold");
    QCOMPARE(hold.position, 0);
    QCOMPARE(int(hold.icon), 12);
    QCOMPARE(hold.iconName, "hold.png");
    QCOMPARE(hold.url2, "softkey:539-HoldLong");
    QCOMPARE(hold.id, 77);
    QCOMPARE(hold.extent, 1280);
    QCOMPARE(int(hold.type), 0);
    QCOMPARE(int(hold.priority), 1);
    QVERIFY(!hold.hasFlyout());

    const CTXMLSoftkey& mode = keys[1];
    QCOMPARE(mode.position, -1);  // none given
    QCOMPARE(int(mode.type), int(CTXMLSoftkey::SoftkeyContextSensitive));
    QCOMPARE(mode.valueList, "abc;ABC");
    QCOMPARE(mode.defaultIndex, 1);
    QCOMPARE(mode.groupLabel, "Mode");
    QCOMPARE(int(mode.priority), 3);
    QCOMPARE(int(mode.layoutType), 2);
    QCOMPARE(mode.flyout.count(), 3);  // the nested item of an unknown element is not one
    QVERIFY(!mode.flyout[0].isGroupDiv());
    QVERIFY(mode.flyout[1].isGroupDiv());
    const CTXMLFlyoutItem& item = mode.flyout[2];
    QCOMPARE(item.badge, "3");
    QCOMPARE(item.abbreviation, "A");
    QVERIFY(item.selected);
    QVERIFY(!item.enabled);
    QVERIFY(!item.hasQuickAccess);
    QCOMPARE(int(item.icon.id), 162);
    QCOMPARE(item.icon.flags, 2);
    QCOMPARE(item.icon.iconList, "1,2");
    QCOMPARE(mode.flyout[0].value, "abc");
    QCOMPARE(mode.flyout[3].url, "");  // out of range: a blank item

    QCOMPARE(root->flyout.count(), 1);
    QCOMPARE(root->flyout[0].label, "Home");

    QCOMPARE(keys.findItemByUrl("softkey:539-"), 0);
    QCOMPARE(keys.findItemByUrl("SoftKey:ToggleEditMode"), 1);
    QCOMPARE(keys.findItemByUrl("softkey:540-"), -1);
    QCOMPARE(keys.findItemByUrl(""), -1);
    QCOMPARE(keys.findItemByUrl(nullptr), -1);

    // The same document compares equal; a changed item does not.
    auto again = parsed(doc);
    QVERIFY(again->softkeys == root->softkeys);
    again->softkeys[1].flyout[2].selected = false;
    QVERIFY(again->softkeys != root->softkeys);
}

void TestDocuments::softkeysStructure()
{
    auto keys = std::make_unique<CTXMLSoftkeys>();
    for (int i = 0; i < TXML_MAX_SOFTKEYS; ++i)
        QCOMPARE(keys->add("L", ("softkey:" + std::to_string(i) + "-").c_str(), i), i);
    QCOMPARE(keys->add("L", "softkey:99-", 0), -1);
    QCOMPARE(keys->count, 20);
    QCOMPARE(keys->findItemByUrl("softkey:1"), 1);  // the first key with the prefix
    QCOMPARE(keys->findItemByUrl("softkey:19-"), 19);

    // Any index is safe; writes outside the 20 entries go nowhere.
    (*keys)[20].position = 5;
    (*keys)[-1].position = 5;
    QCOMPARE((*keys)[20].position, -1);
    const CTXMLSoftkeys& constKeys = *keys;
    QCOMPARE(constKeys[1000].url, "");

    keys->reset(tavoElementMenu);
    QCOMPARE(keys->count, 0);
    QCOMPARE(int(keys->elementType), int(tavoElementMenu));
    QCOMPARE(keys->findItemByUrl("softkey:1"), -1);
    QCOMPARE(keys->keys[3].url, "");

    // Equality looks at used entries only.
    auto other = std::make_unique<CTXMLSoftkeys>();
    other->reset(tavoElementMenu);
    QVERIFY(*keys == *other);
    other->keys[5].position = 3;
    QVERIFY(*keys == *other);
    other->add("x", "y", 0);
    QVERIFY(*keys != *other);

    CTXMLFlyoutCluster cluster;
    for (int i = 0; i < TXML_MAX_FLYOUT_ITEMS; ++i)
        QCOMPARE(cluster.add("l", "u", nullptr, nullptr), i);
    QCOMPARE(cluster.add("l", "u", nullptr, nullptr), -1);
}

void TestDocuments::textLimitsCountUtf8Bytes()
{
    const QByteArray ascii64 = repeated("a", 64);
    const QByteArray euro = repeated("\xe2\x82\xac", 30);     // 90 bytes, 3 each
    const QByteArray face = repeated("\xf0\x9f\x98\x80", 20);  // 80 bytes, 4 each
    auto root = parsed("<TXML><Softkeys>"
                       "<Softkey url=\"a\" label=\"" + ascii64 + "\"/>"
                       "<Softkey url=\"b\" label=\"" + ascii64 + "b\"/>"
                       "<Softkey url=\"c\" label=\"" + euro + "\"/>"
                       "<Softkey url=\"d\" label=\"" + face + "\" group=\"x" + face + "\"/>"
                       "<Softkey url=\"" + repeated("u", 600) + "\"/>"
                       "</Softkeys></TXML>");
    const CTXMLSoftkeys& keys = root->softkeys;
    QCOMPARE(QByteArray(keys[0].label), ascii64);
    QCOMPARE(QByteArray(keys[1].label), ascii64);
    QCOMPARE(int(qstrlen(keys[2].label)), 63);  // 21 whole characters
    QVERIFY(isValidUtf8(keys[2].label));
    QCOMPARE(int(qstrlen(keys[3].label)), 64);
    QCOMPARE(int(qstrlen(keys[3].groupLabel)), 61);  // "x" and 15 faces
    QVERIFY(isValidUtf8(keys[3].groupLabel));
    QCOMPARE(int(qstrlen(keys[4].url)), 512);

    // Pair values hold 1024 bytes, names 64; a cut never splits a character.
    const QByteArray value = "v" + repeated("\xc3\xa9", 600);
    root = parsed("<TXML><Event uri=\"Core:Config\">" + repeated("n", 100) + "=" + value +
                  "</Event></TXML>");
    QCOMPARE(int(qstrlen(root->pairName(0))), 64);
    QCOMPARE(int(qstrlen(root->pairValue(0))), 1023);
    QVERIFY(isValidUtf8(root->pairValue(0)));
    // An escape that decodes to half a character is cut as well.
    root = parsed("<TXML><Event uri=\"Core:Config\">x=" + repeated("a", 1023) +
                  "%C3%A9</Event></TXML>");
    QCOMPARE(int(qstrlen(root->pairValue(0))), 1023);
}

void TestDocuments::eventRoundTrip_data()
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

void TestDocuments::eventRoundTrip()
{
    QFETCH(QByteArray, uri);
    QFETCH(int, type);
    QFETCH(int, flags);
    QFETCH(QByteArray, data);

    CTXMLEvent event;
    QVERIFY(event.set(uri.constData(), type, flags));
    QVERIFY(event.setData(data.constData()));
    const std::string text = event.serialize();

    auto root = parsed(QByteArray::fromStdString(text));
    QVERIFY2(root->error[0] == 0, root->error);
    QCOMPARE(root->flags, unsigned(TXML_FLAG_EVENT));
    QCOMPARE(QByteArray(root->uri), uri);
    QCOMPARE(root->eventType, type);
    QCOMPARE(root->eventFlags, flags);
    QCOMPARE(QByteArray(root->data), data);

    CTXMLEvent back;
    QVERIFY(back.parse(text.data(), text.size()));
    QCOMPARE(QByteArray(back.uri), uri);
    QCOMPARE(QByteArray(back.data), data);
    QCOMPARE(back.serialize(), text);
}

void TestDocuments::eventDataText()
{
    CTXMLEvent event;
    event.set(TxmlUriTranslate);
    QCOMPARE(event.uri, CTXMLUriLib::uri(51));
    QVERIFY(event.addPair(CTXMLUriLib::varname(33), CTXMLUriLib::percentEncode("12,40,7").c_str()));
    QVERIFY(event.addPair("b", ""));
    QCOMPARE(event.data, "data=12%2C40%2C7;b=");
    QCOMPARE(event.value("data"), std::string("12,40,7"));
    QVERIFY(event.hasPair("b"));
    QVERIFY(!event.hasPair("c"));
    QCOMPARE(event.serialize(), std::string("<TXML><Event uri=\"Gui:Translate\">"
                                            "data=12%2C40%2C7;b=</Event></TXML>"));

    // set starts afresh.
    event.set("x", 1, 1);
    QCOMPARE(event.data, "");

    // Bytes XML cannot carry travel as escapes that the pair syntax decodes.
    event.setData("k=a\x01" "b\xff");
    auto root = parsed(QByteArray::fromStdString(event.serialize()));
    QCOMPARE(root->data, "k=a%01b%FF");
    QCOMPARE(root->value("k"), "a\x01" "b\xff");

    // A full data text takes no half pair, and a long text is cut at a character.
    const QByteArray big = repeated("\xc3\xa9", 9000);
    QVERIFY(!event.setData(big.constData()));
    QCOMPARE(int(qstrlen(event.data)), 16382);
    QVERIFY(isValidUtf8(event.data));
    const QByteArray before(event.data);
    QVERIFY(!event.addPair("n", "v"));
    QCOMPARE(QByteArray(event.data), before);
    event.setData("a=1");
    QVERIFY(event.appendData(";b=2"));
    QCOMPARE(event.value("b"), std::string("2"));

    // An URI that does not fit is cut and reported.
    QVERIFY(!event.set(repeated("u", 600).constData()));
    QCOMPARE(int(qstrlen(event.uri)), 512);

    // No document, no event.
    CTXMLEvent none;
    QVERIFY(!none.parse("<TXML/>", 7));
    QVERIFY(!none.parse("<TXML><Event/></TXML>", 21));
    QVERIFY(!none.parse(nullptr, 0));
}

void TestDocuments::malformedDocumentsLeaveRootEmpty_data()
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

void TestDocuments::malformedDocumentsLeaveRootEmpty()
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

void TestDocuments::pairSyntax()
{
    CTXMLUriParser<4> parser;
    QCOMPARE(parser.parseData(" a = 1 ; ;b=;c;d=x=y;e=5"), 4);
    QCOMPARE(parser.name(0), "a");
    QCOMPARE(parser.value(0), "1");
    QCOMPARE(parser.value("b"), "");
    QCOMPARE(parser.indexOf("c"), 2);  // a name without "=" is a pair with an empty value
    QCOMPARE(parser.value("d"), "x=y");  // only the first "=" splits
    QCOMPARE(parser.indexOf("e"), -1);
    QCOMPARE(parser.remaining(), 3);  // "e=5"
    QCOMPARE(parser.indexOf(nullptr), -1);
    QCOMPARE(parser.value(4), "");

    QCOMPARE(parser.parseData("k%3D=v%3B%25%2;%zz=%4"), 2);
    QCOMPARE(parser.name(0), "k=");
    QCOMPARE(parser.value(0), "v;%%2");
    QCOMPARE(parser.name(1), "%zz");
    QCOMPARE(parser.value(1), "%4");
    QCOMPARE(parser.parseData("a=x%00y"), 1);
    QCOMPARE(parser.value(0), "x");  // an escaped NUL ends the text
    QCOMPARE(parser.parseData(nullptr), 0);
    QCOMPARE(parser.parseData(""), 0);
    QCOMPARE(parser.parseData("a=1;b=2", 3), 1);  // only the given bytes
    QCOMPARE(parser.value(0), "1");

    // The instance form of the URI library reads by number.
    CTXMLUriLib lib;
    lib.parse("mask=000.000;encoding=Latin;min=3");
    QCOMPARE(lib.value(TxmlVarMask), "000.000");
    QCOMPARE(lib.value(37), "Latin");
    QCOMPARE(lib.value(TxmlVarMax), "");
    QVERIFY(lib.contains(TxmlVarMin));
    QVERIFY(!lib.contains(TxmlVarMax));
}

void TestDocuments::percentEncoding()
{
    QCOMPARE(CTXMLUriLib::percentEncode("12,40,7"), std::string("12%2C40%2C7"));
    QCOMPARE(CTXMLUriLib::percentEncode("a-z_A.Z~09"), std::string("a-z_A.Z~09"));
    QCOMPARE(CTXMLUriLib::percentEncode("%=;&'\"<> \xc3\xa9"),
             std::string("%25%3D%3B%26%27%22%3C%3E%20%C3%A9"));
    QCOMPARE(CTXMLUriLib::percentEncode(nullptr), std::string());

    char out[6];
    QCOMPARE(int(CTXMLUriLib::percentEncode("a,b", out, 5)), 4);  // "b" finds no room
    QCOMPARE(out, "a%2C");
    QCOMPARE(int(CTXMLUriLib::percentEncode("ab,", out, 5)), 2);  // no half escape
    QCOMPARE(out, "ab");
    QCOMPARE(int(CTXMLUriLib::percentEncode("x", nullptr, 4)), 0);

    // What percentEncode writes, the pair syntax reads back.
    const char* nasty = "a=b;c%d&e<f>\"g' h\xc3\xa9";
    const std::string pair = std::string("v=") + CTXMLUriLib::percentEncode(nasty);
    CTXMLUriParser<2> parser;
    parser.parseData(pair.c_str());
    QCOMPARE(parser.value("v"), nasty);
}

void TestDocuments::simulatorDocuments()
{
    CTXMLQws qws;
    QVERIFY(qws.parse(QByteArray("<TXML><Event uri=\"Qws:Key\">state=6;key=65;data=0;ASCII=a"
                                 "</Event><Softkeys><Softkey url=\"x\"/></Softkeys></TXML>")));
    QCOMPARE(qws.flags, unsigned(TXML_FLAG_EVENT));  // the rest is not for the simulator link
    QCOMPARE(int(CTXMLUriLib::qwsType(qws.uri)), int(TxmlQwsKey));
    QCOMPARE(qws.pairCount(), 4);
    QCOMPARE(qws.value(TxmlVarState), "6");
    QCOMPARE(qws.value(TxmlVarKey), "65");
    QCOMPARE(qws.value(TxmlVarAscii), "a");

    QVERIFY(qws.parse(std::string("<TXML><Event uri=\"Qws:Move\">x=-4;y=20;key=moving</Event></TXML>")));
    QCOMPARE(int(CTXMLUriLib::qwsType(qws.uri)), 0);
    QCOMPARE(qws.value(0), "-4");
    QCOMPARE(qws.value(1), "20");

    QVERIFY(!qws.parse("<TXML>"));
    QCOMPARE(qws.flags, 0u);
    QCOMPARE(qws.pairCount(), 0);

    qws.parse("<TXML><Event uri=\"Qws:Show\"/></TXML>");
    QVERIFY(qws.hasEvent());
    qws.reset();
    QVERIFY(!qws.hasEvent());
    QCOMPARE(qws.uri, "");
}

QTEST_GUILESS_MAIN(TestDocuments)
#include "tst_documents.moc"
