#pragma once
#include "tgui_export.h"
// A local copy of one table of the database peer as a Qt table model. CTavoDb
// feeds it the answers and notifications of its subscription: a whole
// synchronisation (type -1) rebuilds it batch by batch, insertions (2),
// updates (4) and deletions (1) change single rows found by their row id.
//
// The row id column ("rowid" or "docid") holds qlonglong cells, every other
// cell is a QString (null for SQL NULL). A row's position is only its arrival
// order: the row id is its identity.
#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QVariant>

namespace TJDB {
class CTJDbResp;
}

class TGUI_EXPORT CTavoDbTable : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit CTavoDbTable(const QString& name = QString(), QObject* parent = nullptr);
    ~CTavoDbTable() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Column names for Qt::Horizontal.
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    // Rows of empty cells; columns of empty cells with empty names.
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;
    bool insertColumns(int column, int count, const QModelIndex& parent = QModelIndex()) override;
    bool removeColumns(int column, int count, const QModelIndex& parent = QModelIndex()) override;

    QString name() const { return m_name; }
    void setName(const QString& name) { m_name = name; }
    // The cells of a row; empty out of range.
    QList<QVariant> record(int row) const;
    // -1 out of range, without a row id column, or for a row shorter than it.
    long long rowId(int row) const;
    QList<QVariant> recordByRowId(long long id) const;
    QVariant valueByRowId(long long id, int column) const;
    // Position of the row with this id, -1 if none. A linear search: phone
    // tables are small and no index is kept.
    int rowIndex(long long id) const;
    int findRowWhere(int column, const QString& text) const;
    QList<int> findRowsWhere(int column, const QString& text) const;
    // Rows of the whole table as the peer last reported them.
    int rowCountReported() const { return m_rowCountReported; }
    int rowIdColumn() const { return m_rowIdColumn; }

    // Applies one batch or notification of the peer.
    virtual void updateData(TJDB::CTJDbResp& response);

signals:
    void tableIsEmpty();
    void totalInsertRowsFromTJDB(int value);
    void totalDeleteRowsFromTJDB(int value);

protected:
    void resyncTable(TJDB::CTJDbResp& response, int columns, int rows, int total, int start, int end);
    void resetTable(TJDB::CTJDbResp& response, int columns, int total);
    void resetHeader(TJDB::CTJDbResp& response, int columns);
    void appendRows(TJDB::CTJDbResp& response, int columns, int rows, int total, int start, int end);
    void insertItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows);
    void updateItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows);
    void deleteItemsFromNotification(TJDB::CTJDbResp& response, int columns, int rows);

private:
    // A batch row as cells of this table: the row id column as qlonglong.
    QList<QVariant> buildRow(const TJDB::CTJDbResp& response, int row) const;
    QVariant emptyCell(int column) const;

    QString m_name;
    QList<QList<QVariant>> m_data;
    QList<QString> m_header;
    int m_rowCountReported = 0;
    int m_rowIdColumn = -1;
    bool m_notified = false;
};
