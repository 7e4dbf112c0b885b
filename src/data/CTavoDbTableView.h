#pragma once
#include "tgui_export.h"
// A scrolling list of the rows of one live cached table (CTavoDbTable). The
// host's filters work on the list of row numbers the view shows (m_viewMap):
// they drop and reorder numbers, rows are never copied. Every table row has an
// item in m_items, in table order; an item is a bare placeholder object with a
// rectangle until its row comes into view, when the list asks for it
// (requestInitialization) and a CTavoDbTableRowWidget takes its place.
//
// Insertions and changes are refreshed together 250 ms after the first of a
// burst; removals at once. An empty list shows "No records" in the label
// "db-tableview-info".
#include <QAbstractItemModel>
#include <QList>
#include <QMap>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QVector>

#include "data/CTavoDbTableRowWidget.h"
#include "layout/CTavoLayoutWidget.h"

class CTavoDbTable;
class CTavoDbTableFilter;
class CTavoLabelWidget;
class CTavoObject;
class CTavoView;

class TGUI_EXPORT CTavoDbTableView : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    // Why the view was refreshed.
    enum ReasonCode { ReasonGeneral = 0, ReasonRowsInserted = 1, ReasonRowsRemoved = 2, ReasonDataChanged = 3 };
    Q_ENUM(ReasonCode)
    typedef CTavoDbTableRowWidget::ValueConverter ValueConverter;

    explicit CTavoDbTableView(QWidget* parent = nullptr);
    ~CTavoDbTableView() override;

    // The table of this name from the manager's database link, subscribed if new.
    void connectToTable(const QString& name);
    void setModel(QAbstractItemModel* model);
    CTavoDbTable* model() const { return m_model; }
    QString tableName() const { return m_tableName; }

    // Each filter once, in the order added; not owned.
    void addDataFilter(CTavoDbTableFilter* filter);
    void removeDataFilter(CTavoDbTableFilter* filter);
    const QList<CTavoDbTableFilter*>& filters() const { return m_filters; }

    int getNumOfItems() const;
    // Focuses the item of table row `row` (its position in the table).
    void focusTableRow(const int& row);
    // The size of a row: the row block's "size", else the list's width by 60.
    QSize getItemSize() const;

    // The columns a row shows: column number and the class of its element.
    void setColumns(const QList<QPair<int, QString> >& columns);
    const QList<QPair<int, QString> >& columns() const { return m_columns; }
    // A function that turns a column's values into what its element shows.
    void setValueConverter(int column, ValueConverter converter);
    // A data mocker replaces what the rows show of the named column.
    void addDataMocker(const QString& column, ValueConverter mocker);
    void removeDataMocker(const QString& column);
    void clearAllDataMocker();

    // The style sheet and its name for the rows, applied to this surface,
    // whose sheet every row widget reads.
    void setRowStyles(const QString& sheet, const QString& name);

    void setLazyRows(bool lazy) { m_lazyRows = lazy; }
    bool lazyRows() const { return m_lazyRows; }
    void setKeepPosition(bool keep) { m_keepPosition = keep; }
    void setResetFocus(bool reset) { m_resetFocus = reset; }
    void setFocusInserted(bool focus) { m_focusInserted = focus; }

    CTavoView* view() const { return m_view; }
    CTavoLabelWidget* infoLabel() const { return m_info; }
    const QVector<unsigned long long>& viewMap() const { return m_viewMap; }
    const QList<CTavoObject*>& items() const { return m_items; }
    int initCount() const { return m_initCount; }
    // Row widgets kept at most before the one built longest ago, out of view,
    // becomes the next row asked for (its old place gets a placeholder again).
    void setRowPoolSize(int rows) { m_poolSize = qMax(1, rows); }
    int rowPoolSize() const { return m_poolSize; }
    // Row widgets that exist now.
    int builtRows() const;
    bool isRefreshPending() const { return m_filterTimer.isActive(); }

    void layout() override;
    void Show(bool bForceAnimation = false) override;

signals:
    void rowEvent(QString url, quint64 rowId);
    void viewUpdated(CTavoDbTableView::ReasonCode reason);
    void rowModified(quint64 row);
    void tableEmpty();

public slots:
    virtual void onfilterAndSort();
    virtual void filterAndSort(CTavoDbTableView::ReasonCode reason);
    void onDataChangedFilterAndSort();
    void onRowinsertFilterAndSort();
    void initializeItem(CTavoObject* object);
    void hide();

protected slots:
    virtual void dataChanged(const QModelIndex& from, const QModelIndex& to);
    virtual void rowsRemoved(const QModelIndex& parent, int first, int last);
    virtual void rowsInserted(const QModelIndex& parent, int first, int last);
    virtual void onHeaderDataChanged(Qt::Orientation orientation, int first, int last);
    void reset();

protected:
    void resizeEvent(QResizeEvent* event) override;

    CTavoObject* createItem(unsigned long long id);
    CTavoDbTableRowWidget* createRowWidget(unsigned long long id);
    void assignIdToItem(CTavoObject* item, unsigned long long id);
    void resetViewMap();
    void displayFilteredView();
    // Places the items again after a change of the list, keeping the position.
    void formatView(bool fromTop);
    void rebuildConverters();
    void deleteItem(CTavoObject* item);
    // The row built longest ago if it can serve another row, its place given
    // to `placeholder`; null if there is none to spare.
    CTavoDbTableRowWidget* recycleRow(CTavoObject* placeholder);
    int indexInList(const QVector<CTavoObject*>& list, const CTavoObject* item) const;
    void placeInfo();

    CTavoView* m_view;
    CTavoDbTable* m_model;
    CTavoObject* m_lastInserted;
    QPair<QString, QString> m_rowStyles;
    QList<CTavoDbTableFilter*> m_filters;
    QVector<unsigned long long> m_viewMap;
    QList<CTavoObject*> m_items;
    QTimer m_filterTimer;
    QString m_tableName;
    bool m_lazyRows;
    int m_initCount;
    bool m_keepPosition;
    bool m_resetFocus;
    bool m_focusInserted;
    CTavoLabelWidget* m_info;

private:
    QList<QPair<int, QString> > m_columns;
    QMap<int, ValueConverter> m_valueConverters;
    QMap<int, ValueConverter> m_mockers;
    // What the rows use: the value converters with the mockers over them.
    QMap<int, ValueConverter> m_converters;
    // Rows built from placeholders, in the order built (a ring from m_poolHead).
    QVector<CTavoDbTableRowWidget*> m_pool;
    int m_poolHead = 0;
    int m_poolSize = 64;
};

