// Link detection on a 20 KB HTML meeting invitation: stripHtml and findLinks
// of the library (QRegExp, as the phone's software has it) beside the same
// patterns compiled as QRegularExpression (PCRE2, JIT) in the same run. The
// alternative only scans: it shows what the engine costs, not a second link
// finder (PCRE2 takes the first alternative that matches where QRegExp takes
// the longest, so its matches differ; their counts are printed).
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTextDocument>

#include <algorithm>
#include <cstdio>
#include <functional>

#include "tools/CLinkify.h"

namespace {
// An invitation as a mail client writes it: styles, conditional comments,
// nested spans and tables, dial-in numbers by country, a join link, SIP and
// H.323 addresses, IDs and pass codes, and an agenda of plain prose.
QString invitation()
{
    QString html = QStringLiteral(
        "<html xmlns:o=\"urn:schemas-microsoft-com:office:office\"><head>\r\n"
        "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\">\r\n"
        "<style><!-- p.MsoNormal {margin:0cm; font-size:11.0pt; font-family:\"Calibri\",sans-serif;}"
        " a:link {color:#0563C1; text-decoration:underline;} --></style>\r\n"
        "<!--[if gte mso 9]><xml><o:shapedefaults v:ext=\"edit\" spidmax=\"1026\" /></xml><![endif]-->\r\n"
        "</head><body lang=\"EN-US\" link=\"#0563C1\"><div class=\"WordSection1\">\r\n"
        "<p class=\"MsoNormal\"><span style=\"font-size:14pt\">Quarterly planning review</span></p>\r\n"
        "<p class=\"MsoNormal\">Organizer: <a href=\"mailto:jane.doe@example.com\">jane.doe@example.com</a>"
        " &middot; Room 4.12, building B</p>\r\n");
    const char* const countries[][2] = {
        {"United States", "+1 (555) 123-4567"}, {"United Kingdom", "+44 20 7946 0958"},
        {"Germany", "+49 30 901820 55"},        {"France", "+33 1 23 45 67 89"},
        {"Switzerland", "+41 44 668 18 00"},    {"Japan", "+81 3-1234-5678"},
        {"Australia", "+61 2 9374 4000"},       {"Toll free", "1-800-555-0199"},
    };
    int block = 0;
    while (html.size() < 20 * 1024 - 1200) {
        ++block;
        html += QStringLiteral("<p class=\"MsoNormal\"><b><span style=\"color:#1F3864\">Session %1</span></b></p>\r\n"
                               "<table class=\"MsoNormalTable\" border=\"0\" cellpadding=\"0\"><tbody>\r\n")
                    .arg(block);
        for (const auto& c : countries) {
            html += QStringLiteral("<tr><td><p class=\"MsoNormal\"><span>%1</span></p></td>"
                                   "<td><p class=\"MsoNormal\"><span>%2</span></p></td></tr>\r\n")
                        .arg(QLatin1String(c[0]), QLatin1String(c[1]));
        }
        html += QStringLiteral(
                    "</tbody></table>\r\n"
                    "<p class=\"MsoNormal\">Join online: <a href=\"https://meet.example.com/j/81234%1?pwd=Zk9xT2\">"
                    "https://meet.example.com/j/81234%1?pwd=Zk9xT2</a><br>\r\n"
                    "Conference ID: 812 34%1 77&nbsp;&nbsp;Passcode: 4%1902<br>\r\n"
                    "Video systems: sip:81234%1@meet.example.com or h323:10.20.30.%2 ext 81234%1<br>\r\n"
                    "Bridge number: 555 867 53%1 passcode 99%1&ndash;one tap: tel:+1555867530%1</p>\r\n"
                    "<p class=\"MsoNormal\">Agenda: review of the numbers from 2019 and the plan for the "
                    "next two quarters; questions to <a href=\"mailto:planning@example.org\">planning@example.org</a>"
                    " before 14.03.2025, or call extension 4471. Slides on www.example.org/slides/q%1.</p>\r\n"
                    "<!-- session %1 end -->\r\n")
                    .arg(block % 10)
                    .arg(10 + block);
    }
    html += QStringLiteral("<p class=\"MsoNormal\">&nbsp;</p></div></body></html>\r\n");
    return html;
}

// stripHtml's steps with QRegularExpression.
QString stripHtmlPcre(const QString& text)
{
    static const QRegularExpression comment(QStringLiteral(R"RX(<\!\-\-.*?\-\->)RX"), QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression span(QStringLiteral(R"RX(<span[^>]*>([^<>]+)<\/span>)RX"));
    static const QRegularExpression lines(QStringLiteral(R"RX((\d\d\d\d)\s*<br[^>]*\/?>\s*((?:[\(\+]|(?:&#43;))?\d))RX"));
    static const QRegularExpression breaking(CLinkify::HTML_BREAKING_TAG_REGEX.pattern());
    static const QRegularExpression tag(CLinkify::HTML_TAG_REGEX.pattern());
    if (!Qt::mightBeRichText(text))
        return text;
    QString s = text;
    s.remove(comment);
    s.replace(span, QStringLiteral("\\1"));
    s.replace(lines, QStringLiteral("\\1\n\\2"));
    s.replace(breaking, QStringLiteral(" "));
    s.replace(QLatin1String("</div>"), QLatin1String("\n"));
    s.replace(tag, QStringLiteral(" "));
    static const char* const entities[][2] = {{"&lt;", "<"},   {"&gt;", ">"},    {"&amp;", "&"},  {"&quot;", "\""},
                                              {"&nbsp;", " "}, {"&#160;", " "},  {"&ndash;", "-"}, {"&#8211;", "-"},
                                              {"&mdash;", "-"}, {"&#8212;", "-"}, {"&#43;", "+"}};
    for (const auto& e : entities)
        s.replace(QLatin1String(e[0]), QLatin1String(e[1]));
    s.remove(QLatin1Char('\r'));
    return s;
}

struct PatternT {
    const char* name;
    const QRegExp* qregexp;
};

int scanQRegExp(const QRegExp& pattern, const QString& text)
{
    const QRegExp rx(pattern);
    int count = 0;
    for (int pos = 0; (pos = rx.indexIn(text, pos)) != -1;) {
        const int length = rx.matchedLength();
        if (length < 1)
            break;
        pos += length;
        ++count;
    }
    return count;
}

int scanPcre(const QRegularExpression& pattern, const QString& text)
{
    int count = 0;
    for (QRegularExpressionMatchIterator it = pattern.globalMatch(text); it.hasNext(); it.next())
        ++count;
    return count;
}

// Microseconds of the fastest of runs calls: on a shared machine the other
// processes only ever add time.
double bestUs(int runs, const std::function<void()>& work)
{
    double best = 1e30;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, timer.nsecsElapsed() / 1000.0);
    }
    return best;
}
}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QString html = invitation();
    const QString text = CLinkify::stripHtml(html);
    if (stripHtmlPcre(html) != text)
        std::printf("note: the PCRE2 stripHtml gives a different text\n");
    const int runs = 100;
    const int all = 1 | 2 | 4 | 8 | 16 | 32 | 128;

    std::printf("bench_linkify: a %d-character HTML meeting invitation, %d characters of text after stripHtml\n",
                int(html.size()), int(text.size()));
    std::printf("best of %d runs, microseconds per call\n\n", runs);

    const double stripQ = bestUs(runs, [&] { CLinkify::stripHtml(html); });
    const double stripP = bestUs(runs, [&] { stripHtmlPcre(html); });
    std::printf("%-26s %12s %12s %8s\n", "", "QRegExp", "PCRE2 JIT", "ratio");
    std::printf("%-26s %12.0f %12.0f %7.1fx\n", "stripHtml", stripQ, stripP, stripQ / stripP);

    const PatternT patterns[] = {{"WEB_REGEX", &CLinkify::WEB_REGEX},       {"PASSWORD_REGEX", &CLinkify::PASSWORD_REGEX},
                                 {"EMAIL_REGEX", &CLinkify::EMAIL_REGEX},   {"PHONE_REGEX", &CLinkify::PHONE_REGEX},
                                 {"PHONE_REGEX_LENIENT", &CLinkify::PHONE_REGEX_LENIENT},
                                 {"SIP_REGEX", &CLinkify::SIP_REGEX},       {"H323_REGEX", &CLinkify::H323_REGEX},
                                 {"TEL_REGEX", &CLinkify::TEL_REGEX}};
    double sumQ = 0, sumP = 0;
    for (const PatternT& p : patterns) {
        QRegularExpression pcre(p.qregexp->pattern(), p.qregexp->caseSensitivity() == Qt::CaseInsensitive
                                                           ? QRegularExpression::CaseInsensitiveOption
                                                           : QRegularExpression::NoPatternOption);
        pcre.optimize();
        if (!pcre.isValid()) {
            std::printf("%-26s PCRE2 refuses the pattern: %s\n", p.name, qPrintable(pcre.errorString()));
            continue;
        }
        int countQ = 0, countP = 0;
        const double q = bestUs(runs, [&] { countQ = scanQRegExp(*p.qregexp, text); });
        const double r = bestUs(runs, [&] { countP = scanPcre(pcre, text); });
        if (p.qregexp != &CLinkify::PHONE_REGEX_LENIENT) {
            sumQ += q;
            sumP += r;
        }
        std::printf("%-26s %12.0f %12.0f %7.1fx   matches %d / %d\n", p.name, q, r, q / r, countQ, countP);
    }
    std::printf("%-26s %12.0f %12.0f %7.1fx\n", "scans of findLinks", sumQ, sumP, sumQ / sumP);

    int links = 0;
    const double find = bestUs(runs, [&] { links = CLinkify::findLinks(text, all, false).size(); });
    const double whole = bestUs(runs, [&] { CLinkify::findLinks(CLinkify::stripHtml(html), all, false); });
    std::printf("\nfindLinks, all kinds, strict: %.0f us for %d links (%.0f%% of it in the scans above)\n", find, links,
                100.0 * sumQ / find);
    std::printf("stripHtml + findLinks: %.0f us; with PCRE2 JIT for stripHtml and the scans: about %.0f us\n", whole,
                whole - stripQ - sumQ + stripP + sumP);
    return 0;
}
