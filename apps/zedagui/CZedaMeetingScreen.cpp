#include "CZedaMeetingScreen.h"

#include <algorithm>

#include "CZedaSupervisor.h"
#include "log/GuiLog.h"
#include "supervision/CTavoApplication.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"

namespace {
const int kAllKinds = CLinkify::LinkWeb | CLinkify::LinkEmail | CLinkify::LinkPhone | CLinkify::LinkSip
                      | CLinkify::LinkH323 | CLinkify::LinkTel | CLinkify::LinkPassword;

const char* kindName(int type)
{
    switch (type) {
    case CLinkify::LinkWeb: return "web";
    case CLinkify::LinkEmail: return "e-mail";
    case CLinkify::LinkPhone: return "phone";
    case CLinkify::LinkSip: return "SIP";
    case CLinkify::LinkH323: return "H.323";
    case CLinkify::LinkTel: return "tel";
    case CLinkify::LinkPassword: return "pass code";
    default: return "link";
    }
}
}  // namespace

CZedaMeetingScreen::CZedaMeetingScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("meeting"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("meeting-title"));
    m_details = new CTavoParagraph(this);
    m_details->setObjectName(QStringLiteral("meeting-details"));
    m_linkList = new CTavoParagraph(this);
    m_linkList->setObjectName(QStringLiteral("meeting-links"));
    m_child = new CTavoLabelWidget(this);
    m_child->setObjectName(QStringLiteral("child-state"));
}

void CZedaMeetingScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
    m_title->setText(tr("Meeting details"));
}

void CZedaMeetingScreen::showEvent(QShowEvent* event)
{
    // Rendering the HTML takes a while: not while the phone boots.
    if (m_links.isEmpty())
        setMeeting(sampleMeeting());
    CTavoLayoutWidget::showEvent(event);
}

QString CZedaMeetingScreen::sampleMeeting()
{
    return QStringLiteral(
        "<div><b>Quarterly planning review</b> on Thursday at 10:00</div>"
        "<div>Join online: https://meet.example.com/j/812345?pwd=Zk9x</div>"
        "<div>Organizer: jane.doe@example.com</div>"
        "<div>Dial in: +1 (555) 123-4567 or +44 207 946 0958</div>"
        "<div>Conference ID: 812 345 77, Passcode: 4471</div>"
        "<div>Video systems: sip:812345@meet.example.com</div>");
}

const char* CZedaMeetingScreen::kindColour(int type)
{
    switch (type) {
    case CLinkify::LinkWeb: return "#4da3ff";
    case CLinkify::LinkEmail: return "#5ed67a";
    case CLinkify::LinkPhone:
    case CLinkify::LinkTel: return "#ffa53a";
    case CLinkify::LinkSip:
    case CLinkify::LinkH323: return "#c58cff";
    case CLinkify::LinkPassword: return "#ffe14d";
    default: return "#ffffff";
    }
}

QString CZedaMeetingScreen::highlighted(const QString& text, const QList<LinkT>& links)
{
    QList<LinkT> ordered = links;
    std::stable_sort(ordered.begin(), ordered.end(), [](const LinkT& a, const LinkT& b) { return a.start < b.start; });
    QString html;
    int at = 0;
    for (const LinkT& link : ordered) {
        // Links of equal length may overlap: the first one is shown.
        if (link.start < at)
            continue;
        html += text.mid(at, link.start - at).toHtmlEscaped();
        html += QStringLiteral("<span style=\"color:%1;text-decoration:underline\">%2</span>")
                    .arg(QLatin1String(kindColour(link.type)), link.text.toHtmlEscaped());
        at = link.end;
    }
    html += text.mid(at).toHtmlEscaped();
    html.replace(QLatin1Char('\n'), QLatin1String("<br/>"));
    return html;
}

void CZedaMeetingScreen::setMeeting(const QString& html)
{
    // Lines as the calendar's blocks end them, without the blanks of the tags.
    QStringList rows = CLinkify::stripHtml(html).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString& row : rows)
        row = row.simplified();
    rows.removeAll(QString());
    const QString text = rows.join(QLatin1Char('\n'));
    m_links = CLinkify::findLinks(text, kAllKinds, false);
    m_details->setText(highlighted(text, m_links));
    guiLog(2, "zedagui: meeting details with %d links", int(m_links.size()));

    QList<LinkT> listed = m_links;
    CLinkify::removeDuplicateLinks(listed);
    CLinkify::reorderLinks(true, {QStringLiteral("example.com")}, listed);
    QStringList lines;
    for (const LinkT& link : listed)
        lines << QStringLiteral("<span style=\"color:%1\">%2</span> %3")
                     .arg(QLatin1String(kindColour(link.type)), QLatin1String(kindName(link.type)), link.uri.toHtmlEscaped());
    m_linkList->setText(lines.join(QLatin1String(" &nbsp; ")));
}

void CZedaMeetingScreen::setSupervisor(CZedaSupervisor* supervisor)
{
    connect(supervisor, &CZedaSupervisor::childStateChanged, this, &CZedaMeetingScreen::setChildState);
    const CTavoApplication* app = supervisor->applications().value(0);
    if (!app)
        m_child->setText(tr("No supervised child"));
    else if (!app->isValid())
        setChildState(app->name(), QStringLiteral("missing"), 1, tr("no program %1").arg(app->path()));
    else if (app->state() == QProcess::Running)
        setChildState(app->name(), QStringLiteral("running"), app->restartCount() + 1, QString());
}

void CZedaMeetingScreen::setChildState(const QString& name, const QString& state, int run, const QString& detail)
{
    QString line;
    if (state == QLatin1String("running"))
        line = tr("Supervised %1: running, run %2").arg(name).arg(run);
    else if (state == QLatin1String("stopped"))
        line = tr("Supervised %1: run %2 ended (%3)").arg(name).arg(run).arg(detail);
    else
        line = tr("Supervised %1: %2 (%3)").arg(name, state, detail);
    m_child->setText(line);
}
