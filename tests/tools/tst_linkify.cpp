// Link detection: what each kind of link finds in free text (data rows by
// kind), the filters behind the phone patterns, the operations on lists of
// links, HTML made readable, replaceable patterns, dial characters and custom
// phone formats, hostile text; and the punctuation taken out of numbers.
#include <QDate>
#include <QElapsedTimer>
#include <QtTest>

#include "tools/CLinkify.h"
#include "tools/PhoneNumberUtils.h"

namespace {
// "type uri" per link, in the order found.
QStringList described(const QList<LinkT>& links)
{
    QStringList out;
    for (const LinkT& l : links)
        out << QStringLiteral("%1 %2").arg(int(l.type)).arg(l.uri);
    return out;
}

LinkT link(int start, int end, const QString& uri, int type = CLinkify::LinkWeb)
{
    return LinkT{uri, uri, start, end, CLinkify::LinkTypeT(type)};
}

const int kAll = 1 | 2 | 4 | 8 | 16 | 32 | 128;
}  // namespace

class TestLinkify : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { CLinkify::resetPatterns(); }

    void findsLinksByKind_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("types");
        QTest::addColumn<bool>("lenient");
        QTest::addColumn<QStringList>("expected");
        // Links as "type uri", separated by "|"; {Y} is this year, {Y-1} the one before, ...
        struct Row { const char* name; const char* text; int types; bool lenient; const char* links; };
        static const Row rows[] = {
            // Web: schemes, user and port, paths; addresses; never an e-mail's domain.
            {"web: bare domain", "go to www.example.com.", 1, false, "1 www.example.com"},
            {"web: path and query", "see http://example.com/path?x=1 now", 1, false, "1 http://example.com/path?x=1"},
            {"web: rtsp to an address", "rtsp://10.1.2.3:554/stream", 1, false, "1 rtsp://10.1.2.3:554/stream"},
            {"web: unknown top-level domain", "foo.invalidtld", 1, false, ""},
            {"web: IPv4 address, no phone", "server 192.168.1.10 here", 1 | 4, false, "1 192.168.1.10"},
            {"web: e-mail domain dropped", "mail john.doe@example.com", 1 | 2, false, "2 john.doe@example.com"},
            // E-mail.
            {"email: subdomains, plus", "mail a.b+c@mail.example.co.uk now", 2, false, "2 a.b+c@mail.example.co.uk"},
            // Phone, strict.
            {"phone: dashes", "Call 555-123-4567", 4, false, "4 tel:5551234567"},
            {"phone: plus and brackets", "or +1 (555) 123-4567", 4, false, "4 tel:+15551234567"},
            {"phone: keyword prefix", "Video ID 5551234", 4, false, "4 tel:5551234"},
            // Capture 2 of the stock pattern is an address group: no ";ext=".
            {"phone: ext not taken", "Phone: 555 1234 ext 22", 4, false, "4 tel:5551234"},
            {"phone: swallows its pass code", "Bridge number: 555 123 4567 passcode 9999", 4 | 128, false, "4 tel:5551234567"},
            {"phone: conference ID", "Conference ID: 123 456 789", 4, false, ""},
            {"phone: meeting ID", "meeting ID: 555 123 456", 4, true, ""},
            {"phone: IPv4 address", "192.168.1.10", 4, true, ""},
            {"phone: slashed date of this year", "on 05/11/{Y}", 4, false, ""},
            {"phone: this year", "in {Y}", 4, false, ""},
            {"phone: last year", "{Y-1}", 4, false, ""},
            {"phone: two years ago", "{Y-2}", 4, false, "4 tel:{Y-2}"},
            {"phone: too many digits", "123 456 789 012 345 678", 4, false, ""},
            {"phone: three digits", "room 123", 4, false, ""},
            // Phone, lenient.
            {"lenient: this year", "in {Y}", 4, true, "4 tel:{Y}"},
            {"lenient: three digits", "room 123", 4, true, "4 tel:123"},
            {"lenient: ten-character date", "12-05-{Y}", 4, true, ""},
            {"lenient: long number", "123 456 789 012 345 678", 4, true, "4 tel:123456789012345678"},
            // Pass codes: the digits.
            {"pass code", "Passcode: 123456", 128, false, "128 123456"},
            {"pass code: case", "PIN 4321 and code=77", 128, false, "128 77"},
            // SIP and H.323: scheme in lower case, the rest as written, ";ext=" from a pass code.
            {"sip: scheme case", "SIP:Alice@Example.com", 8, false, "8 sip:Alice@Example.com"},
            {"sip: sips, port", "sips:bob@10.0.0.1:5061", 8, false, "8 sips:bob@10.0.0.1:5061"},
            {"sip: pin", "sip:alice@example.com pin 1234", 8, false, "8 sip:alice@example.com;ext=1234"},
            {"sip: ext parameter", "sip:1234@host;ext=55", 8, false, "8 sip:1234@host;ext=55"},
            {"h323: address, ext", "h323:10.0.0.1 ext 55", 16, false, "16 h323:10.0.0.1;ext=55"},
            // tel: the plus stays outside the captures.
            {"tel", "tel:+15551234567", 32, false, "32 tel:15551234567"},
            {"tel: passcode", "TEL:5551234 passcode 42", 32, false, "32 tel:5551234;ext=42"},
            {"tel: too short", "tel:123", 32, true, ""},
            {"tel: covers its phone", "tel:5551234", 4 | 32, false, "32 tel:5551234"},
            // Several kinds: grouped by kind in search order, sublinks gone.
            {"mixed", "sip:a@b.com www.c.com 555 1234 code 42 x@y.org", kAll, false,
             "1 www.c.com|2 x@y.org|4 tel:5551234|8 sip:a@b.com"},
            {"only the kinds asked for", "sip:a@b.com www.c.com 555 1234", 1 | 8, false, "1 www.c.com|8 sip:a@b.com"},
            {"empty", "", kAll, true, ""},
        };
        const int year = QDate::currentDate().year();
        auto years = [year](QString text) {
            for (int back = 3; back >= 1; --back)
                text.replace(QStringLiteral("{Y-%1}").arg(back), QString::number(year - back));
            return text.replace(QLatin1String("{Y}"), QString::number(year));
        };
        for (const Row& r : rows) {
            QTest::newRow(r.name) << years(r.text) << r.types << r.lenient
                                  << years(r.links).split(QLatin1Char('|'), Qt::SkipEmptyParts);
        }
    }

    void findsLinksByKind()
    {
        QFETCH(QString, text);
        QFETCH(int, types);
        QFETCH(bool, lenient);
        const QList<LinkT> links = CLinkify::findLinks(text, types, lenient);
        QTEST(described(links), "expected");
        for (const LinkT& l : links) {
            QVERIFY(l.start >= 0 && l.end <= text.size() && l.start < l.end);
            QCOMPARE(text.mid(l.start, l.end - l.start), l.text);
        }
    }

    void onePatternAndItsCapture()
    {
        const QString text = "pin 12 and code: 345";
        QList<LinkT> links = CLinkify::findLinks(text, CLinkify::PASSWORD_REGEX, 1);
        QCOMPARE(described(links), QStringList({"0 12", "0 345"}));
        QCOMPARE((QList<int>{links.at(1).start, links.at(1).end}), (QList<int>{11, 20}));
        QCOMPARE(links.at(1).text, QStringLiteral("code: 345"));
        // A capture the pattern does not have gives an empty uri.
        QCOMPARE(CLinkify::findLinks(text, CLinkify::PASSWORD_REGEX, 9).value(0).uri, QString());
        // A match of length 0 ends the search.
        QVERIFY(CLinkify::findLinks(text, QRegExp("x*"), 0).isEmpty());

        // Any pattern equal to a phone pattern is filtered: "12/" goes, and
        // the rest is left to the checks of the full search.
        const QRegExp phone(CLinkify::PHONE_REGEX);
        QCOMPARE(described(CLinkify::findLinks("12/05 and 555 1234;5 p", phone, 0)), QStringList({"0 05", "0 555 1234", "0 5"}));
        QCOMPARE(CLinkify::findLinks("10.0.0.1 meeting ID: 123 conf456", phone, 0).size(), 0);
        // Another pattern keeps what the filter would drop.
        QCOMPARE(CLinkify::findLinks("12/05", QRegExp("\\d+/\\d+"), 0).size(), 1);
    }

    void uniqueLinksKeepTheFirst()
    {
        const QString text = "Call 555 1234 now, again 555 1234 or 555-1234; sip:a@b.com sip:a@b.com";
        const QList<LinkT> unique = CLinkify::findUniqueLinks(text, kAll);
        QCOMPARE(described(unique), QStringList({"4 tel:5551234", "8 sip:a@b.com"}));
        QCOMPARE(unique.first().start, 5);
        QCOMPARE(CLinkify::findLinks(text, kAll, false).size(), 5);
    }

    void removeSublinksLetsTheLastOverlapDecide()
    {
        // a overlaps the longer b and then the shorter c: c, the last, keeps it.
        // c is shorter than both a and b; d and e are equally long: both stay.
        const QList<LinkT> links = {link(0, 5, "a"), link(3, 12, "b"), link(4, 6, "c"), link(20, 24, "d"),
                                    link(22, 26, "e")};
        QCOMPARE(described(CLinkify::removeSublinks(links)), QStringList({"1 a", "1 b", "1 d", "1 e"}));
        QCOMPARE(CLinkify::removeSublinks({}).size(), 0);
        // Touching is not overlapping.
        QCOMPARE(CLinkify::removeSublinks({link(0, 3, "x"), link(3, 9, "y")}).size(), 2);
    }

    void removeSublinksAgreesWithThePairwiseRule()
    {
        // The rule as stated, pair by pair, against random lists: overlapping,
        // nested, equal, empty and inverted links.
        auto pairwise = [](const QList<LinkT>& links) {
            QStringList kept;
            for (int i = 0; i < links.size(); ++i) {
                bool keep = true;
                for (int j = 0; j < links.size(); ++j) {
                    const LinkT& a = links.at(i);
                    const LinkT& b = links.at(j);
                    if (i != j && a.end > b.start && a.start < b.end)
                        keep = a.end - a.start >= b.end - b.start;
                }
                if (keep)
                    kept << links.at(i).uri;
            }
            return kept;
        };
        QRandomGenerator random(20261122);
        for (int round = 0; round < 300; ++round) {
            QList<LinkT> links;
            const int count = random.bounded(40);
            for (int i = 0; i < count; ++i) {
                const int start = random.bounded(60);
                links << link(start, start + random.bounded(-2, 15), QString::number(i));
            }
            QStringList fast;
            for (const LinkT& l : CLinkify::removeSublinks(links))
                fast << l.uri;
            QCOMPARE(fast, pairwise(links));
        }
    }

    void duplicatesByUriAndByDigits()
    {
        QList<LinkT> links = {link(0, 1, "tel:+1555", 4),     link(0, 1, "tel:1555;ext=9", 32),
                              link(0, 1, "1555", 64),        link(0, 1, "www.a.com"),
                              link(0, 1, "www.a.com", 2),    link(0, 1, "tel:1556w22", 4),
                              link(0, 1, "tel:1556", 32)};
        CLinkify::removeDuplicateLinks(links);
        // Numbers compare by their digits before any dial character; others by uri.
        QCOMPARE(described(links), QStringList({"4 tel:+1555", "1 www.a.com", "4 tel:1556w22"}));
    }

    void reorderPutsPreferredDomainsAndDialStringsFirst()
    {
        QList<LinkT> links = {link(0, 1, "www.x.com"),          link(0, 1, "bob@mail.corp.com", 2),
                              link(0, 1, "tel:555", 4),          link(0, 1, "tel:555w12", 32),
                              link(0, 1, "sip:eve@other.org", 8), link(0, 1, "sip:amy@CORP.COM", 8),
                              link(0, 1, "555#", 64),            link(0, 1, "a@b@corp.com", 2)};
        QList<LinkT> preferred = links;
        CLinkify::reorderLinks(true, {"corp.com"}, preferred);
        QCOMPARE(described(preferred),
                 QStringList({"2 bob@mail.corp.com", "8 sip:amy@CORP.COM", "32 tel:555w12", "64 555#", "4 tel:555",
                              "1 www.x.com", "8 sip:eve@other.org", "2 a@b@corp.com"}));
        // Without preference or domains, only the numbers move forward.
        for (bool prefer : {false, true}) {
            QList<LinkT> plain = links;
            CLinkify::reorderLinks(prefer, prefer ? QStringList() : QStringList{"corp.com"}, plain);
            QCOMPARE(described(plain),
                     QStringList({"32 tel:555w12", "64 555#", "4 tel:555", "1 www.x.com", "2 bob@mail.corp.com",
                                  "8 sip:eve@other.org", "8 sip:amy@CORP.COM", "2 a@b@corp.com"}));
        }
    }

    void normalisers()
    {
        QCOMPARE(CLinkify::normalizeTelNumber("+1 (555) 123-4567"), QStringLiteral("tel:+15551234567"));
        QCOMPARE(CLinkify::normalizeTelNumber("call 555.1234 soon"), QStringLiteral("tel:5551234"));
        QCOMPARE(CLinkify::normalizeTelNumber("no number"), QString());
        QCOMPARE(CLinkify::normalizeTelNumber(""), QString());
        QCOMPARE(CLinkify::normalizeUri(CLinkify::SIP_REGEX, "SIPS:Carol@Host.Example"), QStringLiteral("sips:Carol@Host.Example"));
        QCOMPARE(CLinkify::normalizeUri(CLinkify::SIP_REGEX, "nothing here"), QStringLiteral("nothing here"));
        QCOMPARE(CLinkify::normalizeUri(CLinkify::TEL_REGEX, "tel:5551234;ext=7 pin 8"), QStringLiteral("tel:5551234;ext=7"));
        // A pattern whose first capture can stay empty gives the text back.
        QCOMPARE(CLinkify::normalizeUri(QRegExp("(x?)(\\d+)"), "123"), QStringLiteral("123"));
    }

    void isEmail_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("email");
        QTest::newRow("plain") << "a@b.co" << true;
        QTest::newRow("tags") << "first.last+tag@sub.example.org" << true;
        QTest::newRow("no dot") << "a@b" << false;
        QTest::newRow("web suffix") << "me@intranet.web" << false;
        QTest::newRow("address") << "root@10.0.0.255" << true;
        QTest::newRow("address over 255") << "root@10.0.0.256" << false;
        QTest::newRow("address overflowing") << "root@99999999999.1.1.1" << false;
        QTest::newRow("empty") << "" << false;
    }

    void isEmail()
    {
        QFETCH(QString, text);
        QTEST(CLinkify::isEmail(text), "email");
    }

    void stripHtml_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("text");
        QTest::newRow("not rich text") << "a < b & c" << "a < b & c";
        QTest::newRow("tags, spans, comments, entities")
            << "<p>Join: <span class=\"x\">555 1234</span><br/>Tel &#43;1 555<!-- old 999 -->&nbsp;&amp;&lt;b&gt;&quot;</p>"
               "<div>a</div>b&mdash;c&ndash;d&#8211;e&#8212;f&#160;g\r\n"
            << " Join: 555 1234 Tel +1 555 &<b>\"  a\nb-c-d-e-f g\n";
        QTest::newRow("numbers on two lines") << "<b>x</b> 2024<br>+1 555 1234 <BR> 1234<br/>&#43;5"
                                              << " x  2024\n+1 555 1234   1234\n+5";
        QTest::newRow("comments are minimal") << "<i>1</i><!-- a -->2<!-- b -->3" << " 1 23";
        QTest::newRow("breaking tags") << "<table><tr><td>1</td><td>2</td></tr></table>" << "   1  2   ";
    }

    void stripHtml()
    {
        QFETCH(QString, html);
        QTEST(CLinkify::stripHtml(html), "text");
    }

    void replacingAndResettingPatterns()
    {
        const QString text = "Example.com and example.com, sip:x@y.com";
        CLinkify::setPattern(CLinkify::LinkWeb, QStringLiteral("example\\.com"));
        QCOMPARE(described(CLinkify::findLinks(text, 1, false)), QStringList({"1 example.com"}));
        CLinkify::setPattern(CLinkify::LinkSip, QRegExp("SIP:\\S+", Qt::CaseInsensitive));
        QCOMPARE(CLinkify::findLinks(text, 8, false).size(), 1);
        // Invalid patterns and kinds without a pattern leave everything as it was.
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("CLinkify::setPattern: invalid pattern for link type 1 kept out"));
        CLinkify::setPattern(CLinkify::LinkWeb, QStringLiteral("(unclosed"));
        QTest::ignoreMessage(QtDebugMsg, "CLinkify::setPattern: no pattern for link type 3");
        CLinkify::setPattern(CLinkify::LinkTypeT(3), QStringLiteral("x"));
        QCOMPARE(CLinkify::WEB_REGEX.pattern(), QStringLiteral("example\\.com"));
        // The lenient phone pattern has its own kind.
        CLinkify::setPattern(CLinkify::LinkPhoneLenient, QRegExp("\\d{7}"));
        QCOMPARE(CLinkify::findLinks("call 5551234 or 555 1234", 4, true).size(), 1);

        CLinkify::resetPatterns();
        QCOMPARE(described(CLinkify::findLinks(text, 1 | 8, false)), QStringList({"1 Example.com", "1 example.com", "8 sip:x@y.com"}));
        QCOMPARE(CLinkify::findLinks("call 5551234 or 555 1234", 4, true).size(), 2);
        QCOMPARE(CLinkify::PHONE_REGEX.caseSensitivity(), Qt::CaseInsensitive);
        QCOMPARE(CLinkify::EMAIL_REGEX.caseSensitivity(), Qt::CaseSensitive);
    }

    void dialCharacters()
    {
        const QString text = "Dial 5551234567,,1234# now, or tel:5551234;w123#";
        // Without them the digits of the dial string are a number of their own.
        QCOMPARE(CLinkify::NON_DIGITS_REGEX.pattern(), QStringLiteral("\\D"));
        QCOMPARE(described(CLinkify::findLinks(text, 4 | 32, false)),
                 QStringList({"4 tel:5551234567", "4 tel:1234", "32 tel:5551234"}));
        CLinkify::updatePhoneTelPatterns(true);
        QCOMPARE(CLinkify::NON_DIGITS_REGEX.pattern(), QStringLiteral("[^\\d;w,p*#]"));
        // The phone link is cut at its first dial character; the tel link keeps
        // them, and its third capture, the dial string, becomes the extension.
        const QList<LinkT> links = CLinkify::findLinks(text, 4 | 32, false);
        QCOMPARE(described(links), QStringList({"4 tel:5551234567", "32 tel:5551234;w123;ext=;w123"}));
        QCOMPARE(links.at(0).text, QStringLiteral("5551234567,,1234#"));
        QCOMPARE(CLinkify::normalizeTelNumber("555 1234;12#"), QStringLiteral("tel:5551234w12#"));
        CLinkify::updatePhoneTelPatterns(false);
        QCOMPARE(CLinkify::normalizeTelNumber("555 1234;12#"), QStringLiteral("tel:5551234"));
    }

    void customPhoneFormats()
    {
        const QString text = "a +1 (555) 123.4567 b 1234 c 98-76";
        QVERIFY(CLinkify::CUSTOM_PHONE_REGEX.pattern().isEmpty());
        QVERIFY(CLinkify::setCustomPhoneNumberFormat("+x (xxx) xxx.xxxx|xxxx"));
        QCOMPARE(CLinkify::CUSTOM_PHONE_REGEX.pattern(),
                 QStringLiteral("\\+[\\d\\*] \\([\\d\\*][\\d\\*][\\d\\*]\\) [\\d\\*][\\d\\*][\\d\\*]\\.[\\d\\*][\\d\\*][\\d\\*][\\d\\*]"
                                "|[\\d\\*][\\d\\*][\\d\\*][\\d\\*]"));
        QCOMPARE(CLinkify::CUSTOM_PHONE_REGEX.caseSensitivity(), Qt::CaseInsensitive);
        // The stock pattern finds the same number: equal lengths, both stay.
        QCOMPARE(described(CLinkify::findLinks(text, 4, false)),
                 QStringList({"4 tel:+15551234567", "4 tel:1234", "4 tel:+15551234567", "4 tel:1234"}));

        // A character outside the format language leaves the pattern in force.
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("phone number format \"XX-XX\" has an unusable character at 0"));
        QVERIFY(CLinkify::setCustomPhoneNumberFormat("XX-XX"));
        QCOMPARE(CLinkify::findLinks(text, 4, false).size(), 4);

        // A raw pattern: capture 1 the number, capture 2 the extension.
        QVERIFY(CLinkify::setCustomPhoneNumberFormat("/(\\d\\d)-(\\d\\d)/"));
        QCOMPARE(described(CLinkify::findLinks(text, 4, false)),
                 QStringList({"4 tel:+15551234567", "4 tel:1234", "4 tel:98;ext=76"}));
        // An invalid raw pattern is taken and reported; it finds nothing.
        QVERIFY(!CLinkify::setCustomPhoneNumberFormat("/(\\d/"));
        QCOMPARE(CLinkify::findLinks("98-76", 4, false).size(), 0);
        // An empty format switches custom numbers off.
        QVERIFY(CLinkify::setCustomPhoneNumberFormat(""));
        QVERIFY(CLinkify::CUSTOM_PHONE_REGEX.pattern().isEmpty());
        // "x" stands for "*" as well; "*" is stripped unless dial characters are on.
        QVERIFY(CLinkify::setCustomPhoneNumberFormat("xx"));
        QCOMPARE(described(CLinkify::findLinks("code *9", 4, false)), QStringList({"4 tel:9"}));
    }

    void hostileTextEndsInTime()
    {
        // Long runs that the patterns could take for numbers, domains or tags.
        QElapsedTimer clock;
        clock.start();
        const QString digits(1 << 20, QLatin1Char('7'));
        const QList<LinkT> links = CLinkify::findLinks(digits, kAll, false);
        // 15 digits per number: all of them are phone links, in order.
        QCOMPARE(links.size(), (1 << 20) / 15);
        QCOMPARE(links.first().uri, QStringLiteral("tel:777777777777777"));
        QVERIFY(CLinkify::findLinks(digits, kAll, true).size() == 1);
        const QString deep = QString("<div><span>").repeated(20000) + "555 1234" + QString("</span></div>").repeated(20000);
        const QString stripped = CLinkify::stripHtml(deep);
        QCOMPARE(stripped.trimmed(), QStringLiteral("555 1234"));
        QCOMPARE(described(CLinkify::findLinks(stripped, kAll, false)), QStringList({"4 tel:5551234"}));
        QVERIFY(CLinkify::stripHtml(QString("<!--").repeated(2000)).size() > 0);
        qDebug("hostile texts took %lld ms", clock.elapsed());
    }

    // The punctuation people type into numbers, and only that, goes.
    void removePunctuation_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("north american") << "(555) 123-4567" << "5551234567";
        QTest::newRow("other marks kept") << "555.123/4567,#*" << "555.123/4567,#*";
        QTest::newRow("sip uri") << "sip:(555) 12" << "sip:55512";
        QTest::newRow("only punctuation") << "( - ) " << "";
        QTest::newRow("letters") << "1-800-FLOWERS" << "1800FLOWERS";
        QTest::newRow("non-ascii") << QString::fromUtf8("（５５５） ２") << QString::fromUtf8("（５５５）２");
    }

    void removePunctuation()
    {
        QFETCH(QString, text);
        QTEST(PhoneNumberUtils::removePunctuation(text), "expected");
    }
};

QTEST_GUILESS_MAIN(TestLinkify)
#include "tst_linkify.moc"
