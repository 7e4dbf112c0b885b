#include "tools/CLinkify.h"

#include <QDate>
#include <QSet>
#include <QTextDocument>
#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "log/GuiLog.h"

namespace {
// The patterns as the phone's software writes them, in QRegExp's own syntax.
// The DTMF variants also take the dial characters ";w,p*#" behind a number.
const char kWeb[] =
    R"RX(((?:(http|https|Http|Https|rtsp|Rtsp):\/\/(?:(?:[a-zA-Z0-9\$\-\_\.\+\!\*\'\(\)\,\;\?\&\=]|(?:\%[a-fA-F0-9]{2})){1,64}(?:\:(?:[a-zA-Z0-9\$\-\_\.\+\!\*\'\(\)\,\;\?\&\=]|(?:\%[a-fA-F0-9]{2})){1,25})?\@)?)?((?:(?:[a-zA-Z0-9][a-zA-Z0-9\-]{0,64}\.)+(?:(?:aero|arpa|asia|a[cdefgilmnoqrstuwxz])|(?:biz|b[abdefghijmnorstvwyz])|(?:cat|com|eng|coop|c[acdfghiklmnoruvxyz])|d[ejkmoz]|(?:edu|e[cegrstu])|f[ijkmor]|(?:gov|g[abdefghilmnpqrstuwy])|h[kmnrtu]|(?:info|int|i[delmnoqrst])|(?:jobs|j[emop])|k[eghimnrwyz]|l[abcikrstuvy]|(?:mil|mobi|museum|m[acdghklmnopqrstuvwxyz])|(?:name|net|n[acefgilopruz])|(?:org|om)|(?:pro|p[aefghklmnrstwy])|qa|r[eouw]|s[abcdeghijklmnortuvyz]|(?:tel|travel|t[cdfghjklmnoprtvwz])|u[agkmsyz]|v[aceginu]|w[fs]|y[etu]|z[amw]))|(?:(?:25[0-5]|2[0-4][0-9]|[0-1][0-9]{2}|[1-9][0-9]|[1-9])\.(?:25[0-5]|2[0-4][0-9]|[0-1][0-9]{2}|[1-9][0-9]|[1-9]|0)\.(?:25[0-5]|2[0-4][0-9]|[0-1][0-9]{2}|[1-9][0-9]|[1-9]|0)\.(?:25[0-5]|2[0-4][0-9]|[0-1][0-9]{2}|[1-9][0-9]|[0-9])))(?:\:\d{1,5})?)(\/(?:(?:[a-zA-Z0-9\;\/\?\:\@\&\=\#\~\-\.\+\!\*\'\(\)\,\_])|(?:\%[a-fA-F0-9]{2}))*)?(?:\b|$))RX";
const char kEmail[] =
    R"RX([a-zA-Z0-9\+\_\%\-][a-zA-Z0-9\+\.\_\%\-]{0,256}\@[a-zA-Z0-9][a-zA-Z0-9\-]{0,64}(\.[a-zA-Z0-9][a-zA-Z0-9\-]{0,25})+)RX";
const char kPhone[] =
    R"RX((?:(?:Phone|Bridge|Audio|Video|Conf|Conference)(?:[ \t]?)(?:ID|IP|number|num?)(?:[ \t\-:=]{0,3}))?(((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\.){3}(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])|((?:[\+\(]?(?:(\/)*)(?:(conf|conference|meeting\s*ID\s*:?\s*)?)\d{1,15})(?:[ \-\(\)\.]+\d{3,20})*)(\/)*)(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?)RX";
const char kPhoneDtmf[] =
    R"RX((?:(?:Phone|Bridge|Audio|Video|Conf|Conference)(?:[ \t]?)(?:ID|IP|number|num?)(?:[ \t\-:=]{0,3}))?(((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\.){3}(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])|((?:[\+\(]?(?:(\/)*)(?:(conf|conference|meeting\s*ID\s*:?\s*)?)\d{1,15})(?:[ \-\(\)\.]+\d{3,20})*([;w,p*#]+[\d;w,p*#]*)*)(\/)*)(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?)RX";
const char kPhoneLenient[] =
    R"RX((?:(?:Phone|Bridge|Audio|Video|Conf|Conference)(?:[ \t]?)(?:ID|IP|number|num?)(?:[ \t\-:=]{0,3}))?(((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\.){3}(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])|((?:[\+\(]?(?:(\/)*)(?:(conf|conference|meeting\s*ID\s*:?\s*)?)[\d]+)(?:[ \-\(\)\.]+\d+)*)(\/)*)(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?)RX";
const char kPhoneLenientDtmf[] =
    R"RX((?:(?:Phone|Bridge|Audio|Video|Conf|Conference)(?:[ \t]?)(?:ID|IP|number|num?)(?:[ \t\-:=]{0,3}))?(((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\.){3}(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])|((?:[\+\(]?(?:(\/)*)(?:(conf|conference|meeting\s*ID\s*:?\s*)?)[\d]+)(?:[ \-\(\)\.]+\d+)*([;w,p*#]+[\d;w,p*#]*)*)(\/)*)(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?)RX";
const char kSip[] =
    R"RX(((?:[sS][iI][pP][sS]?):)\s?((?://)?(?:\S+\@)?(?:(?:\d{1,3}\.\d{1,3}\.\d{1,3}\.\d{1,3})|(?:[a-zA-Z0-9\-\.]+))(?::[\d]{1,5})?(?:[\w\-?\@?\,?\=\%\&]+)?)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b)RX";
const char kH323[] =
    R"RX(((?:[hH]323):)\s?((?://)?(?:\S+\@)?(?:(?:\d{1,3}\.\d{1,3}\.\d{1,3}\.\d{1,3})|(?:[a-zA-Z0-9\-\.]+))(?::[\d]{1,5})?(?:[\w\-?\@?\,?\=\%\&]+)?)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b)RX";
const char kTel[] =
    R"RX(([tT][eE][lL]:)\+?(\d{4,15}(?:;\d+)?)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b)RX";
const char kTelDtmf[] =
    R"RX(([tT][eE][lL]:)\+?(\d{4,15}(?:;\d+)?([;w,p*#]+[\d;w,p*#]*)*)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b[;w,p*#]*)RX";
const char kTelLenient[] =
    R"RX(([tT][eE][lL]:)\+?(\d{3,20}(?:;\d+)?)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b)RX";
const char kTelLenientDtmf[] =
    R"RX(([tT][eE][lL]:)\+?(\d{3,20}(?:;\d+)?([;w,p*#]+[\d;w,p*#]*)*)(?:;ext=(\d+))?(?:(?: with)?(?: conference| conf)?(?: entry)?(?: (?:pass|password|passcode|pin|code|ext|extension))(?:[ \t\-:=]{0,3})((\d+)))?\b[;w,p*#]*)RX";
const char kDate[] =
    R"RX((?:\d{1,2}\-\d{1,2}\-\d{4})|(?:\d{1,2}/\d{1,2}/\d{4})|(?:\d{1,2}\.\d{1,2}\.\d{4})|(?:\d{4}\-\d{1,2}\-\d{1,2})|(?:\d{4}/\d{1,2}/\d{1,2})|(?:\d{4}\.\d{1,2}\.\d{1,2})|(?:\w+ [0-3]?\d, \d{4})|(?:\d{4} \w+ [0-3]?\d))RX";
const char kMeetingId[] =
    R"RX((conf|conference|meeting\s*ID\s*:?\s*))RX";
const char kHtmlBreakingTag[] =
    R"RX(</?\s*(br|p|img|ul|li|dl|dt|dd|hr|button|col|frame|iframe|input|object|option|select|table|tbody|td|textarea|thead|tr)\b[^>]*>)RX";
const char kIpAddress[] =
    R"RX(((25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9])\.){3}(25[0-5]|2[0-4][0-9]|1[0-9][0-9]|[1-9]?[0-9]))RX";
const char kPassword[] =
    R"RX((?:[Pp]ass|[Pp]assword|[Pp]asscode|[Pp]in|[Cc]ode)(?:[ \t\-\:\=]{0,30})(([0-9]+)))RX";
const char kHtmlTag[] = R"RX(<[^>]*>)RX";
const char kHtmlCommentTag[] = R"RX(<\!\-\-.*\-\->)RX";
const char kNonDigits[] = R"RX(\D)RX";
const char kNonDigitsDtmf[] = R"RX([^\d;w,p*#])RX";
const char kBackslash[] = R"RX((\/))RX";
const char kDtmfChars[] = R"RX([;w,p*#])RX";

// QRegExp compiles a pattern in its constructor, but after setPattern only at
// the first match. The counted repetitions of these patterns compile to about
// 850 kB, which a GUI process now pays only once it looks for links.
QRegExp uncompiled(const char* pattern, Qt::CaseSensitivity cs)
{
    QRegExp rx;
    rx.setCaseSensitivity(cs);
    rx.setPattern(QString::fromLatin1(pattern));
    return rx;
}

QRegExp sensitive(const char* pattern)
{
    return uncompiled(pattern, Qt::CaseSensitive);
}

QRegExp insensitive(const char* pattern)
{
    return uncompiled(pattern, Qt::CaseInsensitive);
}

// The first position of one of chars in text, or -1.
int firstOf(const QString& text, const char* chars, int from = 0)
{
    for (int i = from; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.unicode() < 128 && std::strchr(chars, char(c.unicode())))
            return i;
    }
    return -1;
}

// Only these keywords make the extension part of a normalised number.
const QRegExp& extensionKeywords()
{
    static const QRegExp rx(QStringLiteral("ext|extension|passcode"));
    return rx;
}

// What the stock patterns cannot match without: web addresses hold a dot,
// e-mail addresses an "@", URIs a colon. A long text without it is not
// searched for nothing; a replaced pattern is always searched.
bool mayMatch(const QString& text, const QRegExp& pattern, char required)
{
    static const char* const stock[] = {kWeb, kEmail, kSip, kH323, kTel, kTelDtmf};
    for (const char* p : stock) {
        if (pattern.pattern() == QLatin1String(p))
            return text.contains(QLatin1Char(required));
    }
    return true;
}

bool isDialKind(CLinkify::LinkTypeT type)
{
    return type == CLinkify::LinkPhone || type == CLinkify::LinkTel || type == CLinkify::LinkPhoneLenient;
}
}  // namespace

QRegExp CLinkify::WEB_REGEX = sensitive(kWeb);
QRegExp CLinkify::EMAIL_REGEX = sensitive(kEmail);
QRegExp CLinkify::PHONE_REGEX = insensitive(kPhone);
QRegExp CLinkify::PHONE_REGEX_LENIENT = insensitive(kPhoneLenient);
QRegExp CLinkify::CUSTOM_PHONE_REGEX;
QRegExp CLinkify::SIP_REGEX = sensitive(kSip);
QRegExp CLinkify::H323_REGEX = sensitive(kH323);
QRegExp CLinkify::TEL_REGEX = sensitive(kTel);
QRegExp CLinkify::TEL_REGEX_LENIENT = sensitive(kTelLenient);
QRegExp CLinkify::DATE_REGEX = sensitive(kDate);
QRegExp CLinkify::HTML_TAG_REGEX = sensitive(kHtmlTag);
QRegExp CLinkify::HTML_COMMENT_TAG_REGEX = sensitive(kHtmlCommentTag);
QRegExp CLinkify::NON_DIGITS_REGEX = sensitive(kNonDigits);
QRegExp CLinkify::BACKSLASH_REGEX = sensitive(kBackslash);
QRegExp CLinkify::DTMF_CHARS_REGEX = sensitive(kDtmfChars);
QRegExp CLinkify::MEETING_ID_REGEX = insensitive(kMeetingId);
QRegExp CLinkify::HTML_BREAKING_TAG_REGEX = sensitive(kHtmlBreakingTag);
QRegExp CLinkify::IP_ADDRESS_REGEX = sensitive(kIpAddress);
QRegExp CLinkify::PASSWORD_REGEX = sensitive(kPassword);
QString CLinkify::s_customPhoneText;

bool CLinkify::isPhonePattern(const QRegExp& pattern)
{
    return pattern == PHONE_REGEX || pattern == PHONE_REGEX_LENIENT;
}

QList<CLinkify::LinkT> CLinkify::findLinks(const QString& text, const QRegExp& pattern, unsigned int capture)
{
    QList<LinkT> links;
    // A copy keeps the search state apart from the filters below, which may be
    // handed one of the same static patterns.
    const QRegExp rx(pattern);
    const bool phone = isPhonePattern(rx);
    int pos = 0;
    while ((pos = rx.indexIn(text, pos)) != -1) {
        const int length = rx.matchedLength();
        if (length < 1)
            break;
        const QString uri = capture <= unsigned(rx.captureCount()) ? rx.cap(int(capture)) : QString();
        LinkT link{rx.cap(0), uri, pos, pos + length, LinkTypeT(0)};
        pos += length;
        if (phone) {
            const int dial = DTMF_CHARS_REGEX.indexIn(link.uri, 1);
            if (dial > 0)
                link.uri.truncate(dial);
            // Dates, meeting IDs and addresses were taken whole so that they
            // leave no number behind; now they go.
            if (link.text.contains(BACKSLASH_REGEX) || link.text.contains(MEETING_ID_REGEX)
                || IP_ADDRESS_REGEX.exactMatch(link.uri))
                continue;
        }
        links.append(link);
    }
    return links;
}

QList<CLinkify::LinkT> CLinkify::findLinks(const QString& text, int types, bool lenient)
{
    QList<LinkT> all;
    if ((types & LinkWeb) && mayMatch(text, WEB_REGEX, '.')) {
        for (LinkT& link : findLinks(text, WEB_REGEX, 0)) {
            // The domain of an e-mail address.
            if (link.start > 0 && text.at(link.start - 1) == QLatin1Char('@'))
                continue;
            link.type = LinkWeb;
            all.append(link);
        }
    }
    if (types & LinkPassword) {
        for (LinkT& link : findLinks(text, PASSWORD_REGEX, 2)) {
            link.type = LinkPassword;
            all.append(link);
        }
    }
    if ((types & LinkEmail) && mayMatch(text, EMAIL_REGEX, '@')) {
        for (LinkT& link : findLinks(text, EMAIL_REGEX, 0)) {
            link.type = LinkEmail;
            all.append(link);
        }
    }
    if (types & LinkPhone) {
        const QRegExp& tel = lenient ? TEL_REGEX_LENIENT : TEL_REGEX;
        const int year = QDate::currentDate().year();
        for (LinkT& link : findLinks(text, lenient ? PHONE_REGEX_LENIENT : PHONE_REGEX, 0)) {
            if (link.uri.length() == 10 && DATE_REGEX.indexIn(link.uri) != -1)
                continue;
            if (!lenient) {
                bool ok = false;
                const int number = link.uri.toInt(&ok);
                if (ok && (number == year || number == year - 1))
                    continue;
            }
            link.uri = normalizeTelNumber(link.uri);
            QString digits = normalizeTelNumber(link.uri);
            const int dial = firstOf(digits, ";w,p");
            if (dial >= 0)
                digits.truncate(dial);
            digits.remove(NON_DIGITS_REGEX);
            if (digits.length() > (link.uri.startsWith(QLatin1Char('+')) ? 12 : 15))
                continue;
            if (!tel.exactMatch(link.uri))
                continue;
            link.type = LinkPhone;
            all.append(link);
        }
        if (!CUSTOM_PHONE_REGEX.pattern().isEmpty()) {
            const QRegExp custom(CUSTOM_PHONE_REGEX);
            for (LinkT& link : findLinks(text, custom, 0)) {
                QString number = link.uri;
                QString extension;
                if (custom.captureCount() > 1 && custom.indexIn(link.uri) == 0) {
                    number = custom.cap(1);
                    extension = custom.cap(2);
                }
                const bool plus = number.startsWith(QLatin1Char('+'));
                number.remove(NON_DIGITS_REGEX);
                if (plus)
                    number.prepend(QLatin1Char('+'));
                number.prepend(QLatin1String("tel:"));
                if (!extension.isEmpty())
                    number += QLatin1String(";ext=") + extension;
                link.uri = number;
                link.type = LinkPhone;
                all.append(link);
            }
        }
    }
    const struct {
        LinkTypeT type;
        const QRegExp* pattern;
    } uriKinds[] = {{LinkSip, &SIP_REGEX}, {LinkH323, &H323_REGEX}, {LinkTel, &TEL_REGEX}};
    for (const auto& kind : uriKinds) {
        if (!(types & kind.type) || !mayMatch(text, *kind.pattern, ':'))
            continue;
        for (LinkT& link : findLinks(text, *kind.pattern, 0)) {
            link.type = kind.type;
            link.uri = normalizeUri(*kind.pattern, link.uri);
            all.append(link);
        }
    }
    return removeSublinks(all);
}

QList<CLinkify::LinkT> CLinkify::findUniqueLinks(const QString& text, int types)
{
    QList<LinkT> unique;
    QSet<QString> seen;
    for (const LinkT& link : findLinks(text, types, false)) {
        if (seen.contains(link.uri))
            continue;
        seen.insert(link.uri);
        unique.append(link);
    }
    return unique;
}

QString CLinkify::stripHtml(const QString& text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    QString s = text;
    HTML_COMMENT_TAG_REGEX.setMinimal(true);
    s.remove(HTML_COMMENT_TAG_REGEX);
    s.replace(QRegExp(QStringLiteral(R"RX(<span[^>]*>([^<>]+)<\/span>)RX")), QStringLiteral("\\1"));
    // Two numbers on two lines must not run together into one.
    s.replace(QRegExp(QStringLiteral(R"RX((\d\d\d\d)\s*<br[^>]*\/?>\s*((?:[\(\+]|(?:&#43;))?\d))RX")),
              QStringLiteral("\\1\n\\2"));
    s.replace(HTML_BREAKING_TAG_REGEX, QStringLiteral(" "));
    s.replace(QLatin1String("</div>"), QLatin1String("\n"));
    s.replace(HTML_TAG_REGEX, QStringLiteral(" "));
    static const char* const entities[][2] = {
        {"&lt;", "<"},     {"&gt;", ">"},     {"&amp;", "&"},     {"&quot;", "\""},
        {"&nbsp;", " "},   {"&#160;", " "},   {"&ndash;", "-"},   {"&#8211;", "-"},
        {"&mdash;", "-"},  {"&#8212;", "-"},  {"&#43;", "+"},
    };
    for (const auto& e : entities)
        s.replace(QLatin1String(e[0]), QLatin1String(e[1]));
    s.remove(QLatin1Char('\r'));
    return s;
}

QString CLinkify::normalizeTelNumber(const QString& text)
{
    const QRegExp& rx = PHONE_REGEX;
    if (rx.indexIn(text) == -1)
        return QString();
    QString number = text;
    QString extension;
    // Capture 2 is the first group of the address alternative in the phone
    // pattern, so the stock pattern never yields an extension here.
    if (rx.captureCount() > 2) {
        number = rx.cap(1);
        extension = rx.cap(2);
    }
    const bool keyword = rx.cap(0).contains(extensionKeywords());
    const bool plus = number.startsWith(QLatin1Char('+'));
    number.remove(NON_DIGITS_REGEX);
    number.replace(QLatin1Char(';'), QLatin1Char('w'));
    if (plus)
        number.prepend(QLatin1Char('+'));
    number.prepend(QLatin1String("tel:"));
    if (keyword && !extension.isEmpty())
        number += QLatin1String(";ext=") + extension;
    return number;
}

QString CLinkify::normalizeUri(const QRegExp& pattern, const QString& text)
{
    if (pattern.indexIn(text) == -1 || pattern.cap(1).isEmpty())
        return text;
    QString uri = pattern.cap(1).toLower() + pattern.cap(2);
    if (!pattern.cap(3).isEmpty())
        uri += QStringLiteral(";ext=%1").arg(pattern.cap(3));
    else if (!pattern.cap(4).isEmpty())
        uri += QStringLiteral(";ext=%1").arg(pattern.cap(4));
    return uri;
}

bool CLinkify::isEmail(const QString& text)
{
    if (!EMAIL_REGEX.exactMatch(text) || text.endsWith(QLatin1String(".web")))
        return false;
    static const QRegExp ipDomain(QStringLiteral(R"RX(@(\d+\.\d+\.\d+\.\d+)$)RX"));
    if (ipDomain.indexIn(text) != -1) {
        for (const QString& part : ipDomain.cap(1).split(QLatin1Char('.'))) {
            bool ok = false;
            if (part.toInt(&ok) > 255 || !ok)
                return false;
        }
    }
    return true;
}

namespace {
// The two largest distinct link indices seen; -1 for none.
struct TopTwo {
    int first = -1;
    int second = -1;
    void add(int index)
    {
        if (index == first || index == second)
            return;
        if (index > first) {
            second = first;
            first = index;
        } else if (index > second) {
            second = index;
        }
    }
    void add(const TopTwo& other)
    {
        add(other.first);
        add(other.second);
    }
};
}  // namespace

QList<CLinkify::LinkT> CLinkify::removeSublinks(const QList<LinkT>& links)
{
    // Each link is decided by the last other link in list order that overlaps
    // it (b.start < a.end and b.end > a.start): kept if at least as long. A
    // plain double loop is quadratic, too slow for the thousands of numbers in
    // a long text; this finds every decider in one sweep. Links enter as their
    // start passes below the end of the link asked about, and a Fenwick tree
    // over their ends, largest first, gives the two last ones that end
    // beyond its start.
    const int n = links.size();
    std::vector<int> starts(n), ends(n);
    for (int i = 0; i < n; ++i) {
        starts[i] = links.at(i).start;
        ends[i] = links.at(i).end;
    }
    std::vector<int> endValues(ends);
    std::sort(endValues.begin(), endValues.end(), std::greater<int>());
    endValues.erase(std::unique(endValues.begin(), endValues.end()), endValues.end());
    // 1-based rank of an end among the distinct ends, largest first.
    auto rankOfEnd = [&](int end) {
        return int(std::lower_bound(endValues.begin(), endValues.end(), end, std::greater<int>()) - endValues.begin()) + 1;
    };
    // How many distinct ends lie beyond x.
    auto endsBeyond = [&](int x) {
        return int(std::lower_bound(endValues.begin(), endValues.end(), x, std::greater<int>()) - endValues.begin());
    };
    std::vector<TopTwo> tree(endValues.size() + 1);

    std::vector<int> byStart(n), byEnd(n);
    for (int i = 0; i < n; ++i)
        byStart[i] = byEnd[i] = i;
    std::stable_sort(byStart.begin(), byStart.end(), [&](int a, int b) { return starts[a] < starts[b]; });
    std::stable_sort(byEnd.begin(), byEnd.end(), [&](int a, int b) { return ends[a] < ends[b]; });

    std::vector<char> keep(n, 1);
    int entered = 0;
    for (int a : byEnd) {
        while (entered < n && starts[byStart[entered]] < ends[a]) {
            const int b = byStart[entered++];
            for (int r = rankOfEnd(ends[b]); r < int(tree.size()); r += r & -r)
                tree[r].add(b);
        }
        TopTwo last;
        for (int r = endsBeyond(starts[a]); r > 0; r -= r & -r)
            last.add(tree[r]);
        const int decider = last.first == a ? last.second : last.first;
        if (decider >= 0)
            keep[a] = (ends[a] - starts[a]) >= (ends[decider] - starts[decider]);
    }
    QList<LinkT> kept;
    for (int i = 0; i < n; ++i) {
        if (keep[i])
            kept.append(links.at(i));
    }
    return kept;
}

QString CLinkify::phoneKey(const QString& uri)
{
    QString key = uri;
    const int dial = firstOf(key, ";w,p*#");
    if (dial >= 0)
        key.truncate(dial);
    key.remove(NON_DIGITS_REGEX);
    return key;
}

void CLinkify::removeDuplicateLinks(QList<LinkT>& links)
{
    QSet<QString> keys;
    QList<LinkT> kept;
    for (const LinkT& link : links) {
        const QString key = isDialKind(link.type) ? phoneKey(link.uri) : link.uri;
        if (keys.contains(key))
            continue;
        keys.insert(key);
        kept.append(link);
    }
    links = kept;
}

void CLinkify::reorderLinks(bool preferDomains, const QStringList& domains, QList<LinkT>& links)
{
    QList<LinkT> preferred, withDial, numbers, others;
    for (const LinkT& link : links) {
        if (isDialKind(link.type)) {
            (link.uri.contains(DTMF_CHARS_REGEX) ? withDial : numbers).append(link);
            continue;
        }
        bool prefer = false;
        if (preferDomains && !domains.isEmpty()) {
            const QStringList parts = link.uri.split(QLatin1Char('@'));
            if (parts.size() == 2) {
                for (const QString& domain : domains) {
                    if (parts.at(1).endsWith(domain, Qt::CaseInsensitive)) {
                        prefer = true;
                        break;
                    }
                }
            }
        }
        (prefer ? preferred : others).append(link);
    }
    links = preferred + withDial + numbers + others;
}

void CLinkify::setPattern(LinkTypeT type, const QRegExp& pattern)
{
    QRegExp* target = nullptr;
    switch (type) {
    case LinkWeb: target = &WEB_REGEX; break;
    case LinkEmail: target = &EMAIL_REGEX; break;
    case LinkPhone: target = &PHONE_REGEX; break;
    case LinkSip: target = &SIP_REGEX; break;
    case LinkH323: target = &H323_REGEX; break;
    case LinkTel: target = &TEL_REGEX; break;
    case LinkPhoneLenient: target = &PHONE_REGEX_LENIENT; break;
    case LinkPassword: target = &PASSWORD_REGEX; break;
    }
    if (!target) {
        guiLog(3, "CLinkify::setPattern: no pattern for link type %d", int(type));
        return;
    }
    if (!pattern.isValid()) {
        guiLog(3, "CLinkify::setPattern: invalid pattern for link type %d kept out: %s (%s)", int(type),
               qPrintable(pattern.pattern()), qPrintable(pattern.errorString()));
        return;
    }
    *target = pattern;
}

void CLinkify::setPattern(LinkTypeT type, const QString& pattern)
{
    setPattern(type, QRegExp(pattern, Qt::CaseSensitive));
}

void CLinkify::resetPatterns()
{
    WEB_REGEX = sensitive(kWeb);
    EMAIL_REGEX = sensitive(kEmail);
    SIP_REGEX = sensitive(kSip);
    H323_REGEX = sensitive(kH323);
    PASSWORD_REGEX = sensitive(kPassword);
    DATE_REGEX = sensitive(kDate);
    HTML_TAG_REGEX = sensitive(kHtmlTag);
    HTML_COMMENT_TAG_REGEX = sensitive(kHtmlCommentTag);
    BACKSLASH_REGEX = sensitive(kBackslash);
    DTMF_CHARS_REGEX = sensitive(kDtmfChars);
    MEETING_ID_REGEX = insensitive(kMeetingId);
    HTML_BREAKING_TAG_REGEX = sensitive(kHtmlBreakingTag);
    IP_ADDRESS_REGEX = sensitive(kIpAddress);
    CUSTOM_PHONE_REGEX = QRegExp();
    s_customPhoneText.clear();
    updatePhoneTelPatterns(false);
}

void CLinkify::updatePhoneTelPatterns(bool dtmf)
{
    PHONE_REGEX = insensitive(dtmf ? kPhoneDtmf : kPhone);
    PHONE_REGEX_LENIENT = insensitive(dtmf ? kPhoneLenientDtmf : kPhoneLenient);
    TEL_REGEX = sensitive(dtmf ? kTelDtmf : kTel);
    TEL_REGEX_LENIENT = sensitive(dtmf ? kTelLenientDtmf : kTelLenient);
    NON_DIGITS_REGEX = sensitive(dtmf ? kNonDigitsDtmf : kNonDigits);
}

bool CLinkify::setCustomPhoneNumberFormat(const QString& format)
{
    QString pattern;
    bool valid = true;
    if (format.size() > 2 && format.startsWith(QLatin1Char('/')) && format.endsWith(QLatin1Char('/'))) {
        pattern = format.mid(1, format.size() - 2);
    } else {
        for (int i = 0; i < format.size(); ++i) {
            const ushort c = format.at(i).unicode();
            if (c == 'x') {
                pattern += QLatin1String("[\\d\\*]");
            } else if (c == '(' || c == ')' || c == '+' || c == '-' || c == '.') {
                pattern += QLatin1Char('\\');
                pattern += QChar(c);
            } else if (c == '|' || c == ' ' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z')) {
                pattern += QChar(c);
            } else {
                guiLog(3, "CLinkify: phone number format \"%s\" has an unusable character at %d; the old pattern stays",
                       qPrintable(format), i);
                valid = false;
                break;
            }
        }
    }
    if (pattern != s_customPhoneText) {
        s_customPhoneText = pattern;
        if (valid)
            CUSTOM_PHONE_REGEX = QRegExp(pattern, Qt::CaseInsensitive);
    }
    return CUSTOM_PHONE_REGEX.isValid();
}
