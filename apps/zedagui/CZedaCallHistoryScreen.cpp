#include "CZedaCallHistoryScreen.h"

#include <QDateTime>
#include <QKeyEvent>
#include <QLocale>

#include "log/GuiLog.h"
#include "style/CTavoIconDefinition.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoScrollBar.h"
#include "widgets/CTavoView.h"

namespace {

const int kCalls = 312;
const int kRowHeight = 60;  // until the skin says otherwise

QString text(const char* english)
{
    return CZedaCallHistoryScreen::tr(english, english);
}

int iconNumber(const char* name)
{
    const QString wanted = QString::fromLatin1(name);
    for (int i = 1; i < TAVO_ICON_COUNT; ++i) {
        if (tavoIconNames[i] == wanted)
            return i;
    }
    return -1;
}

// One call: icon, name, number and time. The row's block places them
// ("icon-location", "name-location", ...) relative to the row, as a button's
// block places its labels, and the row moves them along when the view places it.
class CallRow : public CTavoWidget
{
public:
    CallRow(QWidget* surface, const CZedaCallHistoryScreen::CallT& call, bool alternate)
        : CTavoWidget(surface, 2)
    {
        setObjectName(alternate ? QStringLiteral("call-row-alt") : QStringLiteral("call-row"));
        static const char* const icons[] = {"MissedCall", "ReceivedCall", "PlacedCall"};
        m_parts[0] = m_icon = new CTavoIcon(surface);
        m_icon->setObjectName(QStringLiteral("call-icon"));
        m_parts[1] = new CTavoLabelWidget(surface, call.name);
        m_parts[1]->setObjectName(call.kind == 0 ? QStringLiteral("call-name-missed") : QStringLiteral("call-name"));
        m_parts[2] = new CTavoLabelWidget(surface, call.number);
        m_parts[2]->setObjectName(QStringLiteral("call-number"));
        m_parts[3] = new CTavoLabelWidget(surface, CZedaCallHistoryScreen::timeText(call));
        m_parts[3]->setObjectName(QStringLiteral("call-time"));
        for (CTavoWidget* part : m_parts) {
            part->setParent(this);
            addSubWidget(part);
        }
        m_iconNumber = iconNumber(icons[qBound(0, call.kind, 2)]);
    }

    void layout() override
    {
        CTavoWidget::layout();
        static const char* const keys[] = {"icon-location", "name-location", "number-location", "time-location"};
        for (int i = 0; i < 4; ++i) {
            m_parts[i]->layout();
            const QPoint at = m_style ? m_style->Location(QString::fromLatin1(keys[i]), QPoint(0, 0)) : QPoint();
            m_parts[i]->move(left() + at.x(), top() + at.y());
        }
        m_icon->init(CTavoIconDefinition(QString(), QString(), m_iconNumber));
    }

    void repositionAllElements(int dx, int dy) override
    {
        for (CTavoWidget* part : m_parts)
            part->moveBy(dx, dy);
    }

private:
    CTavoWidget* m_parts[4];
    CTavoIcon* m_icon;
    int m_iconNumber = -1;
};

}  // namespace

QVector<CZedaCallHistoryScreen::CallT> CZedaCallHistoryScreen::sampleCalls(int count)
{
    static const char* const names[] = {
        "Anna Berger", "Reception", "Dr. Chen Wei", "Conference room B", "Marco Rossi", "Sofia Lindqvist",
        "Helpdesk", "Jonas Weber", "Priya Natarajan", "Lucas Moreau", "Emma Johansson", "Facilities",
        "Tomasz Nowak", "Yuki Tanaka", "Olivia Brown", "Ahmed Haddad", "Night line", "Carmen Ruiz",
        "Liam O'Connor", "Mia Schneider", "Noah Fischer", "Sales desk", "Elena Petrova", "Kofi Mensah"};
    const int nameCount = int(sizeof names / sizeof names[0]);
    // A fixed "now", so that every run shows the same list.
    const QDateTime now(QDate(2026, 5, 15), QTime(17, 42));
    QVector<CallT> calls;
    calls.reserve(count);
    qint64 minutesBack = 0;
    for (int i = 0; i < count; ++i) {
        minutesBack += 7 + (i * 37) % 53;
        const QDateTime at = now.addSecs(-minutesBack * 60);
        const int kind = (i % 7 == 2 || i % 11 == 5) ? 0 : (i % 3 == 0 ? 2 : 1);
        const int area = 200 + (i * 131) % 700;
        const int line = 1000 + (i * 7919) % 9000;
        calls.append({QString::fromLatin1(names[(i * 5 + i / 3) % nameCount]),
                      QStringLiteral("+49 711 %1 %2").arg(area).arg(line), at, int(at.date().daysTo(now.date())),
                      kind});
    }
    return calls;
}

QString CZedaCallHistoryScreen::timeText(const CallT& call)
{
    const QLocale c = QLocale::c();
    const QString time = c.toString(call.at.time(), QStringLiteral("HH:mm"));
    if (call.daysAgo == 0)
        return time;
    if (call.daysAgo == 1)
        return text(QT_TRANSLATE_NOOP("CZedaCallHistoryScreen", "Yesterday")) + QLatin1Char(' ') + time;
    return c.toString(call.at.date(), QStringLiteral("dd/MM")) + QLatin1Char(' ') + time;
}

CZedaCallHistoryScreen::CZedaCallHistoryScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
    , m_calls(sampleCalls(kCalls))
{
    setObjectName(QStringLiteral("call-history"));
    // In painting order: the strip under the texts.
    auto* strip = new CTavoWidget(this, 2);
    strip->setObjectName(QStringLiteral("call-history-strip"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("call-history-title"));
    m_count = new CTavoLabelWidget(this);
    m_count->setObjectName(QStringLiteral("call-history-count"));

    // The list on a surface of its own: its view fills it, so that the view's
    // offsets and its bar are those of the surface.
    m_list = new CTavoLayoutWidget(this);
    m_list->setObjectName(QStringLiteral("call-list"));
    m_view = new CTavoView(m_list);
    m_view->setObjectName(QStringLiteral("call-history-view"));
    connect(m_view, &CTavoView::requestInitialization, this, &CZedaCallHistoryScreen::buildRow);
    for (int i = 0; i < m_calls.size(); ++i) {
        auto* placeholder = new CTavoObject(m_view, QRect(0, 0, 800, kRowHeight));
        placeholder->setVisible(true);
        // Keys walk the focus over rows not built yet.
        placeholder->setFocusable(true);
        placeholder->setRowId(quint64(i));
        m_view->append(placeholder);
    }
    m_list->show();
}

void CZedaCallHistoryScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
    m_list->updateStyle(s, a, true);
    // Placeholders take the row's size from the skin.
    QSize row(m_view->contentRect().width(), kRowHeight);
    if (CTavoWidgetStyle* block = m_list->styleSheet()->get("CTavoWidget#call-row"))
        row = block->Size(QStringLiteral("size"), row);
    for (CTavoObject* item : m_view->items()) {
        if (item && !item->isInitialized())
            item->setSize(row);
    }
    m_view->format(Qt::Vertical, QSize(-1, -1), 0, true);
    retranslateUi();
}

void CZedaCallHistoryScreen::retranslateUi()
{
    m_title->setText(text(QT_TRANSLATE_NOOP("CZedaCallHistoryScreen", "Call history")));
    m_count->setText(text(QT_TRANSLATE_NOOP("CZedaCallHistoryScreen", "%1 calls")).arg(m_calls.size()));
}

void CZedaCallHistoryScreen::buildRow(CTavoObject* placeholder)
{
    const int index = int(placeholder->rowId());
    if (index < 0 || index >= m_calls.size() || m_view->itemAt(index) != placeholder) {
        guiLog(3, "zedagui: no call for row %d", index);
        return;
    }
    auto* row = new CallRow(m_list, m_calls[index], index % 2 == 1);
    row->layout();
    row->move(placeholder->left(), placeholder->top());
    row->setFocused(placeholder->isFocused());
    m_view->replace(index, row);
    placeholder->deleteLater();
    ++m_built;
    // Built during a paint that skipped it: it shows in the next one.
    row->update();
}

QString CZedaCallHistoryScreen::getContextSensitiveInformation()
{
    const CTavoScrollBar* bar = m_view->scrollBar();
    return QStringLiteral("offset=%1 focus=%2 bar=%3 moving=%4 built=%5")
        .arg(m_view->scrollOffset().y())
        .arg(m_view->focusedIndex())
        .arg(bar && bar->isVisible() ? QStringLiteral("visible") : QStringLiteral("hidden"))
        .arg(m_view->isBeingScrolled() ? QStringLiteral("yes") : QStringLiteral("no"))
        .arg(m_built);
}

// Keys typed on the screen are the list's.
void CZedaCallHistoryScreen::keyPressEvent(QKeyEvent* event)
{
    if (!m_view->eventFilter(m_list, event))
        event->ignore();
}

void CZedaCallHistoryScreen::keyReleaseEvent(QKeyEvent* event)
{
    if (!m_view->eventFilter(m_list, event))
        event->ignore();
}
