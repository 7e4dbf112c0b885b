#include "data/CTavoDbTableView.h"

#include <QResizeEvent>

#include "data/CTavoDb.h"
#include "data/CTavoDbTable.h"
#include "data/CTavoDbTableFilter.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoObject.h"
#include "widgets/CTavoView.h"

namespace {
const int kFilterDelayMs = 250;
const int kDefaultRowHeight = 60;
}  // namespace

CTavoDbTableView::CTavoDbTableView(QWidget* parent)
    : CTavoLayoutWidget(parent)
    , m_view(nullptr)
    , m_model(nullptr)
    , m_lastInserted(nullptr)
    , m_lazyRows(true)
    , m_initCount(0)
    , m_keepPosition(false)
    , m_resetFocus(false)
    , m_focusInserted(true)
    , m_info(nullptr)
{
    qRegisterMetaType<CTavoDbTableView::ReasonCode>("ReasonCode");
    qRegisterMetaType<CTavoDbTableView::ReasonCode>("CTavoDbTableView::ReasonCode");
    m_view = new CTavoView(this);
    m_view->setObjectName(QStringLiteral("db-tableview-view"));
    m_view->layout();
    m_info = new CTavoLabelWidget(this);
    m_info->setObjectName(QStringLiteral("db-tableview-info"));
    m_info->setVisible(false);
    m_filterTimer.setSingleShot(true);
    m_filterTimer.setInterval(kFilterDelayMs);
    connect(&m_filterTimer, &QTimer::timeout, this, &CTavoDbTableView::onfilterAndSort);
    connect(m_view, &CTavoView::requestInitialization, this, &CTavoDbTableView::initializeItem);
}

CTavoDbTableView::~CTavoDbTableView()
{
    m_filterTimer.stop();
    if (m_model)
        disconnect(m_model, nullptr, this, nullptr);
    m_view->takeAll();
    // Items are QObject children of the list; deleting them takes them out of it.
    qDeleteAll(m_items);
    m_items.clear();
}

// --- the table -------------------------------------------------------------------

void CTavoDbTableView::connectToTable(const QString& name)
{
    if (name.isEmpty() || name == m_tableName)
        return;
    m_tableName = name;
    CTavoDb* db = m_db;
    if (!db && CTavoLayoutMgr::instance())
        db = &CTavoLayoutMgr::instance()->db();
    if (!db) {
        guiLog(3, "CTavoDbTableView: no database link for table %s", qPrintable(name));
        return;
    }
    CTavoDbTable* table = db->table(name);
    if (!table)
        table = db->subscribeToTable(name);
    if (!table) {
        guiLog(3, "CTavoDbTableView: table %s is not available", qPrintable(name));
        return;
    }
    setModel(table);
}

void CTavoDbTableView::setModel(QAbstractItemModel* model)
{
    CTavoDbTable* table = qobject_cast<CTavoDbTable*>(model);
    if (model && !table)
        guiLog(3, "CTavoDbTableView: a %s is not a cached table", model->metaObject()->className());
    if (table == m_model)
        return;
    if (m_model)
        disconnect(m_model, nullptr, this, nullptr);
    m_model = table;
    if (m_model) {
        connect(m_model, &QAbstractItemModel::dataChanged, this, &CTavoDbTableView::dataChanged);
        connect(m_model, &QAbstractItemModel::rowsRemoved, this, &CTavoDbTableView::rowsRemoved);
        connect(m_model, &QAbstractItemModel::rowsInserted, this, &CTavoDbTableView::rowsInserted);
        connect(m_model, &QAbstractItemModel::headerDataChanged, this, &CTavoDbTableView::onHeaderDataChanged);
        connect(m_model, &QAbstractItemModel::modelReset, this, &CTavoDbTableView::reset);
        // Rows must not outlive the table they read.
        connect(m_model, &QObject::destroyed, this, [this] {
            m_model = nullptr;
            reset();
        });
    }
    rebuildConverters();
    reset();
}

void CTavoDbTableView::reset()
{
    m_filterTimer.stop();
    m_lastInserted = nullptr;
    m_view->takeAll();
    for (CTavoObject* item : qAsConst(m_items))
        deleteItem(item);
    m_items.clear();
    m_pool.clear();
    m_poolHead = 0;
    const int rows = m_model ? m_model->rowCount() : 0;
    m_items.reserve(rows);
    for (int row = 0; row < rows; ++row) {
        const unsigned long long id = static_cast<unsigned long long>(m_model->rowId(row));
        CTavoObject* item = createItem(id);
        m_items.append(item);
        assignIdToItem(item, id);
    }
    resetViewMap();
    // A fresh fill: every item in table order, then the filters.
    for (CTavoObject* item : qAsConst(m_items))
        m_view->append(item);
    if (m_filters.isEmpty())
        formatView(true);
    filterAndSort(ReasonGeneral);
}

CTavoObject* CTavoDbTableView::createItem(unsigned long long id)
{
    if (!m_lazyRows)
        return createRowWidget(id);
    auto* placeholder = new CTavoObject(m_view, QRect(QPoint(0, 0), getItemSize()));
    placeholder->setVisible(true);
    // Keys walk the focus over rows not built yet.
    placeholder->setFocusable(true);
    return placeholder;
}

CTavoDbTableRowWidget* CTavoDbTableView::createRowWidget(unsigned long long id)
{
    auto* row = new CTavoDbTableRowWidget(this, m_model, m_columns, &m_converters);
    // Owned by the list: the surface paints only what the list holds of it.
    row->setParent(m_view);
    row->setRowId(id);
    row->layout();
    if (row->width() <= 0 || row->height() <= 0)
        row->setSize(getItemSize());
    connect(row, &CTavoDbTableRowWidget::rowSelected, this, &CTavoDbTableView::rowEvent);
    return row;
}

void CTavoDbTableView::assignIdToItem(CTavoObject* item, unsigned long long id)
{
    if (!item)
        return;
    item->setRowId(id);
    item->setInitialized(false);
    if (!m_lazyRows)
        initializeItem(item);
}

void CTavoDbTableView::deleteItem(CTavoObject* item)
{
    if (!item)
        return;
    if (auto* row = qobject_cast<CTavoDbTableRowWidget*>(item)) {
        const int at = m_pool.indexOf(row);
        if (at >= 0) {
            m_pool.remove(at);
            if (m_poolHead > at)
                --m_poolHead;
            if (m_poolHead >= m_pool.size())
                m_poolHead = 0;
        }
    }
    if (item == m_lastInserted)
        m_lastInserted = nullptr;
    // Hidden at once: it may be painted or pressed until it goes.
    item->setVisible(false);
    item->setParent(nullptr);
    item->deleteLater();
}

int CTavoDbTableView::builtRows() const
{
    int n = 0;
    for (CTavoObject* item : m_items)
        n += qobject_cast<CTavoDbTableRowWidget*>(item) ? 1 : 0;
    return n;
}

// --- building rows ---------------------------------------------------------------

void CTavoDbTableView::initializeItem(CTavoObject* object)
{
    if (!object)
        return;
    if (auto* row = qobject_cast<CTavoDbTableRowWidget*>(object)) {
        row->setRowId(row->rowId());
        row->setInitialized(true);
        row->update();
        emit rowModified(row->rowId());
        return;
    }
    const int viewIndex = m_view->indexOf(object);
    if (viewIndex < 0 || !m_model) {
        ++m_initCount;
        return;
    }
    // Without filters the list is in table order: try the same place first.
    int itemIndex = (viewIndex < m_items.size() && m_items.at(viewIndex) == object) ? viewIndex
                                                                                   : m_items.indexOf(object);
    const QRect place = object->rect();
    const bool focused = object->isFocused();
    const unsigned long long id = object->rowId();
    // A long list reuses the row built longest ago: its place takes this
    // placeholder, so that no object is made or deleted.
    CTavoDbTableRowWidget* row = recycleRow(object);
    const bool reused = row != nullptr;
    if (reused) {
        row->setRowId(id);
        row->setFocused(false);
    } else {
        row = createRowWidget(id);
    }
    row->setInitialized(true);
    row->setSize(place.size());
    row->move(place.left(), place.top());
    m_view->replace(viewIndex, row);
    if (itemIndex >= 0)
        m_items[itemIndex] = row;
    if (m_lastInserted == object)
        m_lastInserted = row;
    if (focused)
        row->setFocused(true);
    if (m_pool.size() < m_poolSize) {
        m_pool.append(row);
    } else {
        m_pool[m_poolHead] = row;
        m_poolHead = (m_poolHead + 1) % m_pool.size();
    }
    if (!reused) {
        object->setVisible(false);
        object->deleteLater();
    }
    // Built during a paint that skipped it: it shows in the next one.
    row->update();
    emit viewUpdated(ReasonDataChanged);
    ++m_initCount;
}

CTavoDbTableRowWidget* CTavoDbTableView::recycleRow(CTavoObject* placeholder)
{
    if (m_pool.size() < m_poolSize)
        return nullptr;
    CTavoDbTableRowWidget* row = m_pool.at(m_poolHead);
    const QRect visible = m_view->visibleRect();
    if (!row || row->isFocused() || row->isDown() || m_view->pressedItem() == row || row->intersects(visible))
        return nullptr;
    const int viewIndex = indexInList(m_view->items(), row);
    const int itemIndex = m_items.indexOf(row);
    if (itemIndex < 0)
        return nullptr;
    // The placeholder stands in for the row where the row was.
    static_cast<QRect&>(*placeholder) = row->rect();
    placeholder->setFocused(false);
    placeholder->setVisible(row->isVisible());
    placeholder->setRowId(row->rowId());
    placeholder->setInitialized(false);
    if (viewIndex >= 0)
        m_view->replace(viewIndex, placeholder);
    m_items[itemIndex] = placeholder;
    if (m_lastInserted == row)
        m_lastInserted = placeholder;
    return row;
}

int CTavoDbTableView::indexInList(const QVector<CTavoObject*>& list, const CTavoObject* item) const
{
    // Rows of one height stand at top / height in a list placed from the top.
    const int step = item->height() + m_view->itemGap();
    if (step > 0) {
        const int guess = (item->top() - m_view->contentRect().top()) / step;
        if (guess >= 0 && guess < list.size() && list.at(guess) == item)
            return guess;
    }
    return list.indexOf(const_cast<CTavoObject*>(item));
}

// --- filtering -------------------------------------------------------------------

void CTavoDbTableView::resetViewMap()
{
    const int rows = m_items.size();
    m_viewMap.resize(rows);
    for (int i = 0; i < rows; ++i)
        m_viewMap[i] = static_cast<unsigned long long>(i);
}

void CTavoDbTableView::onfilterAndSort()
{
    filterAndSort(ReasonGeneral);
}

void CTavoDbTableView::onDataChangedFilterAndSort()
{
    filterAndSort(ReasonDataChanged);
}

void CTavoDbTableView::onRowinsertFilterAndSort()
{
    filterAndSort(ReasonRowsInserted);
}

void CTavoDbTableView::filterAndSort(CTavoDbTableView::ReasonCode reason)
{
    resetViewMap();
    unsigned char changed = 0;
    for (CTavoDbTableFilter* filter : qAsConst(m_filters))
        changed |= filter->filter(m_model, &m_viewMap, this);
    Q_UNUSED(changed);
    if (!m_filters.isEmpty())
        displayFilteredView();
    else
        formatView(false);
    if (m_viewMap.isEmpty())
        m_info->setText(tr("No records", "No records"));
    m_info->setVisible(m_viewMap.isEmpty());
    if (m_info->isVisible())
        m_info->update();
    emit viewUpdated(reason);
    if (m_focusInserted && m_lastInserted) {
        m_view->setFocusedItem(m_lastInserted, true);
        m_lastInserted = nullptr;
    }
}

void CTavoDbTableView::displayFilteredView()
{
    const QPoint position = m_view->scrollOffset();
    m_view->takeAll();
    for (CTavoObject* item : qAsConst(m_items))
        item->setVisible(false);
    for (unsigned long long number : qAsConst(m_viewMap)) {
        if (number >= static_cast<unsigned long long>(m_items.size()))
            continue;
        CTavoObject* item = m_items.at(int(number));
        if (!item)
            continue;
        item->setVisible(true);
        m_view->append(item);
    }
    if (!m_keepPosition || m_resetFocus) {
        m_view->format(Qt::Vertical, QSize(-1, -1), 0, true);
        m_view->setFocusedItem(0, true);
        m_view->setScrollOffsetAndState(QPoint(0, 0));
    } else {
        m_view->format(Qt::Vertical, QSize(-1, -1), -1, false);
        m_view->setScrollOffsetAndState(position);
        m_view->restartAutoScroll(m_view->autoscrollTimeout());
    }
    m_view->update();
}

void CTavoDbTableView::formatView(bool fromTop)
{
    const int focus = fromTop ? 0 : m_view->focusedIndex();
    m_view->format(Qt::Vertical, QSize(-1, -1), focus, fromTop);
    if (!fromTop) {
        // The list may have become shorter than the place it was scrolled to.
        const int bottom = qMax(0, m_view->contentSize().height() + m_view->bottomSpace() + m_view->contentExtra()
                                       - m_view->contentRect().height());
        if (m_view->scrollOffset().y() > bottom)
            m_view->setScrollOffsetAndState(QPoint(0, bottom));
    }
    m_view->update();
}

void CTavoDbTableView::addDataFilter(CTavoDbTableFilter* filter)
{
    if (!filter || m_filters.contains(filter))
        return;
    m_filters.append(filter);
}

void CTavoDbTableView::removeDataFilter(CTavoDbTableFilter* filter)
{
    if (m_filters.removeAll(filter) == 0 || !m_filters.isEmpty())
        return;
    // Refreshes without filters keep the list as it is: it becomes the table again here.
    m_view->takeAll();
    for (CTavoObject* item : qAsConst(m_items)) {
        item->setVisible(true);
        m_view->append(item);
    }
    resetViewMap();
    formatView(true);
    m_info->setVisible(m_items.isEmpty());
}

// --- table notifications ---------------------------------------------------------

void CTavoDbTableView::rowsInserted(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid() || !m_model || first < 0 || last < first)
        return;
    // Rows added at the end of an unfiltered list are placed at once, so that
    // the list shows them before the refresh places everything again.
    const bool appending = m_filters.isEmpty() && first >= m_items.size() && m_view->count() == m_items.size();
    CTavoObject* previous = appending && !m_view->items().isEmpty() ? m_view->items().last() : nullptr;
    int y = previous ? previous->bottom() + 1 + m_view->itemGap() : m_view->contentRect().top();
    for (int row = first; row <= last; ++row) {
        const unsigned long long id = static_cast<unsigned long long>(m_model->rowId(row));
        CTavoObject* item = createItem(id);
        const int at = qBound(0, row, m_items.size());
        m_items.insert(at, item);
        // Without filters the list shows the table's order as it is.
        if (m_filters.isEmpty())
            m_view->insert(qBound(0, at, m_view->count()), item);
        else
            item->setVisible(false);
        if (appending) {
            item->move(m_view->contentRect().left(), y);
            y = item->bottom() + 1 + m_view->itemGap();
        }
        assignIdToItem(item, id);
        m_lastInserted = item;
    }
    if (appending && !m_items.isEmpty()) {
        const int top = m_view->contentRect().top();
        m_view->setContentSize(QSize(qMax(m_view->contentSize().width(), m_items.last()->width()),
                                     m_items.last()->bottom() + 1 - top));
        m_view->update();
    }
    // Rows at hand replace the note at once; the refresh says the rest.
    if (m_filters.isEmpty() && !m_items.isEmpty())
        m_info->setVisible(false);
    if (m_lazyRows) {
        // A burst of insertions costs one refresh, after the burst.
        m_filterTimer.start(kFilterDelayMs);
    } else {
        filterAndSort(ReasonRowsInserted);
    }
}

void CTavoDbTableView::dataChanged(const QModelIndex& from, const QModelIndex& to)
{
    if (m_items.isEmpty())
        return;
    const int first = qMax(0, from.row());
    const int last = qMin(to.row(), m_items.size() - 1);
    for (int row = first; row <= last; ++row) {
        CTavoObject* item = m_items.at(row);
        const long long id = m_model ? m_model->rowId(row) : -1;
        assignIdToItem(item, id >= 0 ? static_cast<unsigned long long>(id) : item->rowId());
    }
    m_view->update();
    if (m_lazyRows)
        m_filterTimer.start(kFilterDelayMs);
    else
        filterAndSort(ReasonDataChanged);
}

void CTavoDbTableView::rowsRemoved(const QModelIndex& parent, int first, int last)
{
    if (parent.isValid() || first < 0 || last < first || first >= m_items.size())
        return;
    last = qMin(last, m_items.size() - 1);
    for (int row = last; row >= first; --row) {
        CTavoObject* item = m_items.takeAt(row);
        const int at = m_view->indexOf(item);
        if (at >= 0)
            m_view->takeAt(at);
        deleteItem(item);
    }
    if (m_items.isEmpty())
        emit tableEmpty();
    filterAndSort(ReasonRowsRemoved);
}

void CTavoDbTableView::onHeaderDataChanged(Qt::Orientation orientation, int first, int last)
{
    Q_UNUSED(first);
    Q_UNUSED(last);
    if (orientation != Qt::Horizontal)
        return;
    // The columns may have moved: mockers follow their names, rows are built anew.
    rebuildConverters();
    for (CTavoObject* item : qAsConst(m_items))
        assignIdToItem(item, item->rowId());
    m_view->update();
}

// --- columns, converters and mockers ---------------------------------------------

void CTavoDbTableView::setColumns(const QList<QPair<int, QString> >& columns)
{
    m_columns = columns;
    // Rows hold their elements from construction: build them again.
    reset();
}

void CTavoDbTableView::setValueConverter(int column, ValueConverter converter)
{
    if (converter)
        m_valueConverters.insert(column, converter);
    else
        m_valueConverters.remove(column);
    rebuildConverters();
}

void CTavoDbTableView::addDataMocker(const QString& column, ValueConverter mocker)
{
    if (!m_model) {
        guiLog(3, "Try to set the data mocker when table model is null.");
        return;
    }
    for (int c = 0; c < m_model->columnCount(); ++c) {
        if (m_model->headerData(c, Qt::Horizontal).toString() == column) {
            if (mocker)
                m_mockers.insert(c, mocker);
            else
                m_mockers.remove(c);
            rebuildConverters();
            return;
        }
    }
    guiLog(3, "CTavoDbTableView: no column %s for a data mocker in table %s", qPrintable(column),
           qPrintable(m_model->name()));
}

void CTavoDbTableView::removeDataMocker(const QString& column)
{
    if (!m_model)
        return;
    for (int c = 0; c < m_model->columnCount(); ++c) {
        if (m_model->headerData(c, Qt::Horizontal).toString() == column) {
            m_mockers.remove(c);
            rebuildConverters();
            return;
        }
    }
}

void CTavoDbTableView::clearAllDataMocker()
{
    if (m_mockers.isEmpty())
        return;
    m_mockers.clear();
    rebuildConverters();
}

void CTavoDbTableView::rebuildConverters()
{
    m_converters = m_valueConverters;
    for (auto it = m_mockers.constBegin(); it != m_mockers.constEnd(); ++it)
        m_converters.insert(it.key(), it.value());
    // Built rows show the new values at once.
    for (CTavoObject* item : qAsConst(m_items)) {
        if (auto* row = qobject_cast<CTavoDbTableRowWidget*>(item))
            row->refresh();
    }
    m_view->update();
}

// --- geometry, focus and showing -------------------------------------------------

QSize CTavoDbTableView::getItemSize() const
{
    QSize size(m_view->contentRect().width() > 0 ? m_view->contentRect().width() : width(), kDefaultRowHeight);
    auto* sheet = const_cast<CTavoStyleSheet*>(&m_styleSheet);
    if (CTavoWidgetStyle* block = sheet->get("CTavoDbTableRowWidget"))
        size = block->Size(QStringLiteral("size"), size);
    return size;
}

int CTavoDbTableView::getNumOfItems() const
{
    return m_view->count();
}

void CTavoDbTableView::focusTableRow(const int& row)
{
    CTavoObject* item = m_items.value(row);
    const int at = item ? m_view->indexOf(item) : -1;
    if (at < 0) {
        guiLog(3, "CTavoDbTableView: table row %d is not in the list", row);
        return;
    }
    m_view->setFocusedItem(at, true);
}

void CTavoDbTableView::setRowStyles(const QString& sheet, const QString& name)
{
    m_rowStyles = qMakePair(sheet, name);
    QString s = sheet;
    QString n = name;
    updateStyle(s, n, true);
}

void CTavoDbTableView::layout()
{
    CTavoLayoutWidget::layout();
    m_view->layout();
    placeInfo();
    // Placeholders take the row's size from the sheet.
    const QSize size = getItemSize();
    for (CTavoObject* item : qAsConst(m_items)) {
        if (item && !qobject_cast<CTavoDbTableRowWidget*>(item))
            item->setSize(size);
    }
    formatView(false);
}

void CTavoDbTableView::resizeEvent(QResizeEvent* event)
{
    CTavoLayoutWidget::resizeEvent(event);
    if (m_styleSheet.get(this, m_pseudoState))
        return;
    // Without a sheet the list fills the surface.
    m_view->layout();
    placeInfo();
    const QSize size = getItemSize();
    for (CTavoObject* item : qAsConst(m_items)) {
        if (item && !qobject_cast<CTavoDbTableRowWidget*>(item))
            item->setSize(size);
    }
    formatView(false);
}

void CTavoDbTableView::placeInfo()
{
    // Without a block of its own the note takes the first row's place.
    if (m_info->width() <= 0 || m_info->height() <= 0)
        m_info->setgeo(QRect(QPoint(0, 0), getItemSize()));
}

void CTavoDbTableView::Show(bool bForceAnimation)
{
    if (!isVisible() && m_view->rect().isValid() && m_view->count() > 0) {
        m_view->resetScrollOffset();
        m_view->setFocusedItem(0, true);
    }
    if (!isOnTop())
        raise();
    m_view->restartAutoScroll(m_view->autoscrollTimeout());
    CTavoLayoutWidget::Show(bForceAnimation);
}

void CTavoDbTableView::hide()
{
    m_view->stopScrolling();
    CTavoLayoutWidget::hide();
}
