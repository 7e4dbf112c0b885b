#include "CZedaContactsScreen.h"

#include <QKeyEvent>

#include "data/CTavoDb.h"
#include "data/CTavoDbTable.h"
#include "data/CTavoDbTableView.h"
#include "log/GuiLog.h"
#include "style/CTavoIconRepository.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoView.h"

namespace {

// Columns of the demo's table: rowid, id, name, number, company, favourite,
// presence, email, note, seen (the read mark, column 9).
const int kName = 2;
const int kNumber = 3;
const int kPresence = 6;

QString text(const char* english)
{
    return CZedaContactsScreen::tr(english, english);
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

// Presence 1 is reachable, 2 busy; anything else shows no icon.
QVariant presenceIcon(int, int, const QVariant& value, CTavoDbTable*)
{
    static const int reachable = iconNumber("Call");
    static const int busy = iconNumber("MissedCall");
    switch (value.toInt()) {
    case 1:
        return reachable;
    case 2:
        return busy;
    default:
        return -1;
    }
}

}  // namespace

CZedaContactsScreen::CZedaContactsScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("contacts"));
    auto* strip = new CTavoWidget(this, 2);
    strip->setObjectName(QStringLiteral("contacts-strip"));
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("contacts-title"));
    m_count = new CTavoLabelWidget(this);
    m_count->setObjectName(QStringLiteral("contacts-count"));

    m_list = new CTavoDbTableView(this);
    m_list->setObjectName(QStringLiteral("contacts-list"));
    m_list->setColumns({{kPresence, QStringLiteral("CTavoIcon")},
                        {kName, QStringLiteral("CTavoLabelWidget")},
                        {kNumber, QStringLiteral("CTavoLabelWidget")}});
    m_list->setValueConverter(kPresence, &presenceIcon);
    connect(m_list, &CTavoDbTableView::viewUpdated, this, &CZedaContactsScreen::refreshCount);
    connect(m_list, &CTavoDbTableView::tableEmpty, this, [] { guiLog(2, "zedagui: the contacts table is empty"); });
    connect(m_list, &CTavoDbTableView::rowEvent, this, [this](const QString& url, quint64 rowId) {
        emit layoutWidgetSignal(QStringLiteral("Contacts:Row"), QStringLiteral("%1;row=%2").arg(url).arg(rowId));
    });
    // A table that appears while the list shows is taken at once.
    if (m_db) {
        connect(m_db, &CTavoDb::tableCreated, this, [this](const QString& name, const CTavoDbTable* table) {
            if (name == QLatin1String("contacts") && isVisible() && !m_list->model())
                setTable(const_cast<CTavoDbTable*>(table));
        });
    }
    m_list->show();
}

// The list takes the table when it is first shown: the rows already there are
// the list, not insertions to focus.
void CZedaContactsScreen::showEvent(QShowEvent* event)
{
    CTavoLayoutWidget::showEvent(event);
    if (m_list->model() || !m_db)
        return;
    CTavoDbTable* table = m_db->table(QStringLiteral("contacts"));
    if (!table)
        table = m_db->subscribeToTable(QStringLiteral("contacts"));
    if (table)
        setTable(table);
}

void CZedaContactsScreen::setTable(CTavoDbTable* table)
{
    m_list->setModel(table);
    refreshCount();
}

void CZedaContactsScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
    m_list->setRowStyles(style, attributes);
    retranslateUi();
}

void CZedaContactsScreen::retranslateUi()
{
    m_title->setText(text(QT_TRANSLATE_NOOP("CZedaContactsScreen", "Contacts")));
    refreshCount();
}

void CZedaContactsScreen::refreshCount()
{
    // A focused new row may scroll the list past its end: the last rows stay at the bottom.
    CTavoView* view = m_list->view();
    const int bottom = qMax(0, view->contentSize().height() + view->bottomSpace() + view->contentExtra()
                                   - view->contentRect().height());
    if (view->scrollOffset().y() > bottom)
        view->setScrollOffsetAndState(QPoint(0, bottom));
    const int rows = m_list->getNumOfItems();
    m_count->setText(text(QT_TRANSLATE_NOOP("CZedaContactsScreen", "%1 contacts")).arg(rows));
}

QString CZedaContactsScreen::getContextSensitiveInformation()
{
    const CTavoObject* focused = m_list->view()->focussedItem();
    return QStringLiteral("rows=%1 built=%2 focus=%3")
        .arg(m_list->getNumOfItems())
        .arg(m_list->builtRows())
        .arg(focused ? QString::number(focused->rowId()) : QStringLiteral("none"));
}

// Keys typed on the screen are the list's.
void CZedaContactsScreen::keyPressEvent(QKeyEvent* event)
{
    if (!m_list->view()->eventFilter(m_list, event))
        event->ignore();
}

void CZedaContactsScreen::keyReleaseEvent(QKeyEvent* event)
{
    if (!m_list->view()->eventFilter(m_list, event))
        event->ignore();
}
