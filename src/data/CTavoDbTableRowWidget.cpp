#include "data/CTavoDbTableRowWidget.h"

#include <QDomElement>
#include <QImage>
#include <QPainter>

#include "data/CTavoDbTable.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "tools/TavoToolFlags.h"
#include "tools/TavoTools.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoImageWidget.h"
#include "widgets/CTavoLabelWidget.h"

namespace {
// Tables that feed a row widget keep their read mark in this column.
const int kReadColumn = 9;

// Lays an element out from its block. A "location" there is relative to the
// row; without one the element keeps its place.
void layoutInRow(CTavoWidget* element, const QPoint& origin)
{
    element->layout();
    CTavoWidgetStyle* style = element->style();
    if (!style)
        return;
    const QVariant& location = style->get("location");
    if (location.isValid() && location.canConvert(QMetaType::QPoint) && location.userType() != QMetaType::QString) {
        const QPoint at = location.toPoint();
        element->move(origin.x() + at.x(), origin.y() + at.y());
    }
}
// The position of the row with this id. Rows are built one after another and
// row ids mostly grow with the position: a few likely places come before the
// table's linear search.
int findRow(const CTavoDbTable* table, long long id)
{
    static int s_lastFound = 0;
    const int rows = table->rowCount();
    const long long guesses[] = {s_lastFound + 1LL, s_lastFound - 1LL, s_lastFound, id - table->rowId(0)};
    for (long long guess : guesses) {
        if (guess >= 0 && guess < rows && table->rowId(int(guess)) == id && id != -1) {
            s_lastFound = int(guess);
            return s_lastFound;
        }
    }
    const int found = table->rowIndex(id);
    if (found >= 0)
        s_lastFound = found;
    return found;
}

QVariant cell(const CTavoDbTable* table, int row, int column)
{
    return row < 0 ? QVariant() : table->record(row).value(column);
}
}  // namespace

CTavoDbTableRowWidget::CTavoDbTableRowWidget(QWidget* parent, CTavoDbTable* table, QList<QPair<int, QString> >& columns,
                                             QMap<int, ValueConverter>* converters)
    : CTavoButton(parent)
    , m_table(table)
    , m_columns(&columns)
    , m_converters(converters)
    , m_moreInfo(nullptr)
{
    if (table && !columns.isEmpty()) {
        for (const QPair<int, QString>& column : qAsConst(columns)) {
            const QString header = table->headerData(column.first, Qt::Horizontal).toString();
            CTavoWidget* element = tavoToolCreateWidget(column.second, header, parent);
            if (!element)
                continue;
            // Made on the surface to find its sheet, owned by the row.
            element->setParent(this);
            m_elements.append(element);
        }
    }
    m_settings.m_clickUrl = QStringLiteral("table-row-clicked");
    m_settings.m_holdUrl = QStringLiteral("table-row-held");

    m_moreInfo = new CTavoButton(parent);
    m_moreInfo->setParent(this);
    TavoButtonSettings settings;
    settings.m_clickUrl = QStringLiteral("table-row-more-info");
    m_moreInfo->init(&settings, QString(), -1, false);
    m_moreInfo->setObjectName(QStringLiteral("table-row-more-info"));
    connect(m_moreInfo, &CTavoButton::buttonClicked, this, &CTavoDbTableRowWidget::onElementClicked);
    addSubWidget(m_moreInfo);
    connect(this, &CTavoButton::buttonClicked, this, &CTavoDbTableRowWidget::onElementClicked);
}

CTavoDbTableRowWidget::~CTavoDbTableRowWidget()
{
    delete m_moreInfo;
    m_moreInfo = nullptr;
    qDeleteAll(m_elements);
    m_elements.clear();
}

void CTavoDbTableRowWidget::setRowId(unsigned long long id)
{
    m_rowId = id;
    refresh();
}

void CTavoDbTableRowWidget::refresh()
{
    if (!m_table || !m_columns)
        return;
    const long long id = static_cast<long long>(m_rowId);
    const int rowIndex = findRow(m_table, id);
    bool stateKnown = false;
    QString state;
    for (int i = 0; i < m_columns->size(); ++i) {
        // An unknown class left no element: the later columns lose their partner.
        CTavoWidget* element = m_elements.value(i);
        if (!element)
            break;
        const int column = m_columns->at(i).first;
        QVariant value = cell(m_table, rowIndex, column);
        if (m_converters) {
            const auto it = m_converters->constFind(column);
            if (it != m_converters->constEnd() && it.value())
                value = it.value()(rowIndex, column, value, m_table);
        }
        if (auto* label = qobject_cast<CTavoLabelWidget*>(element)) {
            QString text = value.toString();
            if (!stateKnown) {
                const QString read = cell(m_table, rowIndex, kReadColumn).toString();
                state = read != QLatin1String("0") ? QStringLiteral("read") : QString();
                stateKnown = true;
            }
            if (text.contains(QLatin1String("&#125;")) || text.contains(QLatin1String("&#123;"))) {
                text.replace(QLatin1String("&#123;"), QLatin1String("{"));
                text.replace(QLatin1String("&#125;"), QLatin1String("}"));
            }
            label->setPseudoState(state, true);
            label->setText(text);
        } else if (auto* icon = qobject_cast<CTavoIcon*>(element)) {
            icon->init(value.toInt(), -1);
        } else if (auto* image = qobject_cast<CTavoImageWidget*>(element)) {
            if (value.userType() == QMetaType::QImage)
                image->setImage(value.value<QImage>());
            else
                image->setImage(value.toByteArray());
        }
    }
}

CTavoWidget* CTavoDbTableRowWidget::getElement(const QString& name) const
{
    for (CTavoWidget* element : m_elements) {
        if (element->objectName() == name)
            return element;
    }
    return nullptr;
}

void CTavoDbTableRowWidget::onElementClicked(QString url, QString data)
{
    Q_UNUSED(data);
    if (!url.isEmpty())
        emit rowSelected(url, m_rowId);
}

void CTavoDbTableRowWidget::layout()
{
    CTavoWidget::layout();
    const QPoint origin = topLeft();
    m_moreInfo->layout();
    m_moreInfo->setVisible(m_moreInfo->rect().isValid());
    if (m_style) {
        const QPoint at = m_style->Location(QStringLiteral("more-info-location"), QPoint(0, 0));
        m_moreInfo->move(origin.x() + at.x(), origin.y() + at.y());
    }
    for (CTavoWidget* element : qAsConst(m_elements))
        layoutInRow(element, origin);
}

void CTavoDbTableRowWidget::move(int x, int y)
{
    if (x == left() && y == top())
        return;
    const int dx = x - left();
    const int dy = y - top();
    CTavoWidget::move(x, y);
    m_moreInfo->moveBy(dx, dy);
    for (CTavoWidget* element : qAsConst(m_elements))
        element->moveBy(dx, dy);
}

void CTavoDbTableRowWidget::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    CTavoWidget::paint(painter);
    for (CTavoWidget* element : qAsConst(m_elements))
        element->paint(painter);
    if (m_moreInfo->isVisible())
        m_moreInfo->paint(painter);
}

bool CTavoDbTableRowWidget::handleEvent(QEvent::Type type, QPoint position)
{
    if (m_moreInfo->isVisible() && m_moreInfo->contains(position))
        return m_moreInfo->handleEvent(type, position);
    return CTavoButton::handleEvent(type, position);
}

void CTavoDbTableRowWidget::setDown(bool down)
{
    CTavoButton::setDown(down);
    m_moreInfo->setDown(down);
}

void CTavoDbTableRowWidget::refreshDom()
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    CTavoButton::refreshDom();
    if (!m_visible || !rect().isValid())
        return;
    QDomElement own = m_dom.documentElement();
    if (own.isNull())
        return;
    QList<QObject*> done;
    for (CTavoWidget* element : qAsConst(m_elements))
        element->report(done, own);
}
