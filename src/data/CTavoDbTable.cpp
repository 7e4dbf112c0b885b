#include "data/CTavoDbTable.h"

#include <QByteArray>
#include <QVector>

#include "CTJDbResp.h"
#include "log/GuiLog.h"

namespace {
// Every cell is both shown and edited as its value.
const QVector<int> kCellRoles = {Qt::DisplayRole, Qt::EditRole};
// Rows a batch may leave empty before its own place.
const int kMaxRowGap = 65536;

long long idOf(const TJDB::CTJDbResp& response, int row, int column)
{
    return QByteArray(response.field(row, column), response.fieldLength(row, column)).toLongLong(nullptr, 10);
}
}  // namespace

CTavoDbTable::CTavoDbTable(const QString& name, QObject* parent)
    : QAbstractTableModel(parent), m_name(name)
{
}

CTavoDbTable::~CTavoDbTable() = default;

// --- model -----------------------------------------------------------------

int CTavoDbTable::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_data.size();
}

int CTavoDbTable::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_header.size();
}

QVariant CTavoDbTable::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_data.size() || (role != Qt::DisplayRole && role != Qt::EditRole))
        return QVariant();
    return m_data.at(index.row()).value(index.column());
}

QVariant CTavoDbTable::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return section >= 0 && section < m_header.size() ? QVariant(m_header.at(section)) : QVariant();
    return QAbstractTableModel::headerData(section, orientation, role);
}

QVariant CTavoDbTable::emptyCell(int column) const
{
    return column == m_rowIdColumn ? QVariant(qlonglong(-1)) : QVariant(QString());
}

bool CTavoDbTable::insertRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || row > m_data.size() || count <= 0)
        return false;
    QList<QVariant> empty;
    for (int c = 0; c < m_header.size(); ++c)
        empty.append(emptyCell(c));
    beginInsertRows(QModelIndex(), row, row + count - 1);
    for (int i = 0; i < count; ++i)
        m_data.insert(row, empty);
    endInsertRows();
    return true;
}

bool CTavoDbTable::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || count <= 0 || row + count > m_data.size())
        return false;
    beginRemoveRows(QModelIndex(), row, row + count - 1);
    m_data.erase(m_data.begin() + row, m_data.begin() + row + count);
    endRemoveRows();
    return true;
}

bool CTavoDbTable::insertColumns(int column, int count, const QModelIndex& parent)
{
    if (parent.isValid() || column < 0 || column > m_header.size() || count <= 0)
        return false;
    beginInsertColumns(QModelIndex(), column, column + count - 1);
    for (QList<QVariant>& row : m_data) {
        for (int i = 0; i < count; ++i)
            row.insert(qMin(column, row.size()), QVariant(QString()));
    }
    for (int i = 0; i < count; ++i)
        m_header.insert(column, QString());
    if (m_rowIdColumn >= column)
        m_rowIdColumn += count;
    endInsertColumns();
    return true;
}

bool CTavoDbTable::removeColumns(int column, int count, const QModelIndex& parent)
{
    if (parent.isValid() || column < 0 || count <= 0 || column + count > m_header.size())
        return false;
    beginRemoveColumns(QModelIndex(), column, column + count - 1);
    for (QList<QVariant>& row : m_data) {
        const int first = qMin(column, row.size());
        row.erase(row.begin() + first, row.begin() + qMin(column + count, row.size()));
    }
    m_header.erase(m_header.begin() + column, m_header.begin() + column + count);
    if (m_rowIdColumn >= column + count)
        m_rowIdColumn -= count;
    else if (m_rowIdColumn >= column)
        m_rowIdColumn = -1;
    endRemoveColumns();
    return true;
}

// --- lookups ---------------------------------------------------------------

QList<QVariant> CTavoDbTable::record(int row) const
{
    return m_data.value(row);
}

long long CTavoDbTable::rowId(int row) const
{
    if (row < 0 || row >= m_data.size() || m_rowIdColumn < 0 || m_rowIdColumn >= m_data.at(row).size())
        return -1;
    return m_data.at(row).at(m_rowIdColumn).toLongLong();
}

QList<QVariant> CTavoDbTable::recordByRowId(long long id) const
{
    return record(rowIndex(id));
}

QVariant CTavoDbTable::valueByRowId(long long id, int column) const
{
    return record(rowIndex(id)).value(column);
}

int CTavoDbTable::rowIndex(long long id) const
{
    if (m_rowIdColumn < 0)
        return -1;
    for (int i = 0; i < m_data.size(); ++i) {
        const QList<QVariant>& row = m_data.at(i);
        if (m_rowIdColumn < row.size() && row.at(m_rowIdColumn).toLongLong() == id)
            return i;
    }
    return -1;
}

int CTavoDbTable::findRowWhere(int column, const QString& text) const
{
    for (int i = 0; i < m_data.size(); ++i) {
        const QList<QVariant>& row = m_data.at(i);
        if (column >= 0 && column < row.size() && row.at(column).toString() == text)
            return i;
    }
    return -1;
}

QList<int> CTavoDbTable::findRowsWhere(int column, const QString& text) const
{
    QList<int> found;
    for (int i = 0; i < m_data.size(); ++i) {
        const QList<QVariant>& row = m_data.at(i);
        if (column >= 0 && column < row.size() && row.at(column).toString() == text)
            found.append(i);
    }
    return found;
}

// --- answers and notifications -----------------------------------------------

QList<QVariant> CTavoDbTable::buildRow(const TJDB::CTJDbResp& response, int row) const
{
    QList<QVariant> cells;
    cells.reserve(m_header.size());
    for (int c = 0; c < m_header.size(); ++c) {
        if (c >= response.numOfCols())
            cells.append(emptyCell(c));
        else if (c == m_rowIdColumn)
            cells.append(QVariant(qlonglong(idOf(response, row, c))));
        else if (response.isNull(row, c))
            cells.append(QVariant(QString()));
        else
            cells.append(QVariant(QString::fromUtf8(response.field(row, c), response.fieldLength(row, c))));
    }
    return cells;
}

void CTavoDbTable::updateData(TJDB::CTJDbResp& response)
{
    const int columns = response.numOfCols();
    const int rows = response.numOfRows();
    const int total = qMax(0, response.getInt(TJDB::ReqElementTotalRows));
    const int start = qMax(0, response.getInt(TJDB::ReqElementStartRow));
    const int end = qMax(0, response.getInt(TJDB::ReqElementEndRow));
    const int type = response.getInt(TJDB::ReqElementNotification);
    switch (type) {
    case TJDB::NotificationSync:
        guiLog(0, "Synchronizing table with %d rows and %d columns", rows, columns);
        resyncTable(response, columns, rows, total, start, end);
        break;
    case TJDB::NotificationInsert:
        insertItemsFromNotification(response, columns, rows);
        break;
    case TJDB::NotificationUpdate:
        updateItemsFromNotification(response, columns, rows);
        break;
    case TJDB::NotificationDelete:
        deleteItemsFromNotification(response, columns, rows);
        break;
    default:
        guiLog(4, "Unsupported notification type: %d, table %s", type, qPrintable(m_name));
        break;
    }
    m_notified = true;
}

void CTavoDbTable::resyncTable(TJDB::CTJDbResp& response, int columns, int rows, int total, int start, int end)
{
    if (columns > 0) {
        if (start == 0)
            resetTable(response, columns, total);
        appendRows(response, columns, rows, total, start, end);
        return;
    }
    // An empty result is how a table learns that it is empty.
    if (!m_data.isEmpty())
        removeRows(0, m_data.size());
    m_rowCountReported = 0;
    emit tableIsEmpty();
}

void CTavoDbTable::resetTable(TJDB::CTJDbResp& response, int columns, int total)
{
    const int difference = columns - m_header.size();
    if (difference > 0)
        insertColumns(m_header.size(), difference);
    else if (difference < 0)
        removeColumns(columns, -difference);
    bool renamed = false;
    for (int c = 0; c < columns && !renamed; ++c)
        renamed = m_header.at(c) != QString::fromUtf8(response.colName(c));
    if (difference != 0 || renamed)
        resetHeader(response, columns);

    if (m_rowCountReported > total && m_data.size() > total)
        removeRows(total, m_data.size() - total);
    // Each synchronisation builds the table anew.
    if (!m_data.isEmpty())
        removeRows(0, m_data.size());
    m_rowCountReported = total;
}

void CTavoDbTable::resetHeader(TJDB::CTJDbResp& response, int columns)
{
    m_header.clear();
    m_rowIdColumn = -1;
    for (int c = 0; c < columns; ++c) {
        const QString name = QString::fromUtf8(response.colName(c));
        if (name == QLatin1String("rowid") || name == QLatin1String("docid"))
            m_rowIdColumn = c;
        m_header.append(name);
    }
    if (columns > 0)
        emit headerDataChanged(Qt::Horizontal, 0, columns - 1);
}

void CTavoDbTable::appendRows(TJDB::CTJDbResp& response, int columns, int rows, int total, int start, int end)
{
    Q_UNUSED(columns);
    Q_UNUSED(total);
    const int lastColumn = m_header.size() - 1;
    if (rows == 0) {
        if (start <= end && end < m_data.size() && lastColumn >= 0)
            emit dataChanged(index(start, 0), index(end, lastColumn), kCellRoles);
        return;
    }
    // Never more new rows than the batch brings, whatever element 12 says.
    end = int(qMin<qint64>(end, qint64(start) + rows - 1));
    // Rows are placed by position, so the batches of a synchronisation may
    // come in any order: rows before a batch that overtook others stay empty
    // until their own batch comes. A gap wider than any phone table is a
    // broken answer, not an early batch.
    if (start > m_data.size() && (end < start || start - m_data.size() > kMaxRowGap)) {
        guiLog(4, "CTavoDbTable::appendRows failed, nStartRow = %d, nEndRow = %d, m_data.size = %d", start, end,
               m_data.size());
        return;
    }

    int firstNew = m_data.size();
    if (m_data.size() <= end) {
        QList<QVariant> empty;
        for (int c = 0; c < m_header.size(); ++c)
            empty.append(emptyCell(c));
        // The new rows carry their cells already when views hear of them.
        beginInsertRows(QModelIndex(), firstNew, end);
        for (int r = firstNew; r <= end; ++r)
            m_data.append(r < start ? empty : buildRow(response, r - start));
        endInsertRows();
    } else {
        firstNew = end + 1;
    }
    int failed = 0;
    for (int i = 0; i < rows; ++i) {
        const int position = start + i;
        if (position >= firstNew && position <= end)
            continue;
        if (position < m_data.size() && position <= end)
            m_data[position] = buildRow(response, i);
        else
            ++failed;
    }
    if (failed)
        guiLog(4, "CTavoDbTable::appendRows failed, nStartRow = %d, nEndRow = %d, m_data.size = %d", start, end,
               m_data.size());
    if (lastColumn >= 0 && start <= end)
        emit dataChanged(index(start, 0), index(end, lastColumn), kCellRoles);
}

void CTavoDbTable::insertItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows)
{
    Q_UNUSED(columns);
    if (m_rowIdColumn < 0) {
        guiLog(4,
               "Warning: received an insertion notification but the cached table [%s] does not contain rowID "
               "information.",
               qPrintable(m_name));
        return;
    }
    emit totalInsertRowsFromTJDB(rows);
    QList<QList<QVariant>> fresh;
    QList<long long> freshIds;
    for (int r = 0; r < rows; ++r) {
        const long long id = idOf(response, r, m_rowIdColumn);
        if (rowIndex(id) != -1 || freshIds.contains(id))
            continue;  // a row we already have
        fresh.append(buildRow(response, r));
        freshIds.append(id);
    }
    if (fresh.isEmpty())
        return;
    // New rows go to the end; ordering is the views' business.
    beginInsertRows(QModelIndex(), m_data.size(), m_data.size() + fresh.size() - 1);
    m_data.append(fresh);
    endInsertRows();
}

void CTavoDbTable::updateItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows)
{
    Q_UNUSED(columns);
    if (m_rowIdColumn < 0) {
        guiLog(4,
               "Warning: received a update notification but the cached table [%s] does not contain rowID "
               "information.",
               qPrintable(m_name));
        return;
    }
    const int lastColumn = m_header.size() - 1;
    for (int r = 0; r < rows; ++r) {
        const int at = rowIndex(idOf(response, r, 0));
        if (at < 0)
            continue;
        m_data[at] = buildRow(response, r);
        emit dataChanged(index(at, 0), index(at, lastColumn), kCellRoles);
    }
}

void CTavoDbTable::deleteItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows)
{
    Q_UNUSED(columns);
    if (m_rowIdColumn < 0) {
        guiLog(4,
               "Warning: received a delete notification but the cached table [%s] does not contain rowID "
               "information.",
               qPrintable(m_name));
        return;
    }
    emit totalDeleteRowsFromTJDB(rows);
    for (int r = 0; r < rows; ++r) {
        const long long id = idOf(response, r, 0);
        for (int at = rowIndex(id); at >= 0; at = rowIndex(id)) {
            beginRemoveRows(QModelIndex(), at, at);
            m_data.removeAt(at);
            endRemoveRows();
        }
    }
    if (m_data.isEmpty())
        emit tableIsEmpty();
}
