#pragma once
#include "tgui_export.h"
// One visible row of a CTavoDbTableView: a button whose content is one element
// per shown column (labels, icons, images, made by tavoToolCreateWidget with the
// column's header text as object name), filled from the cached table by row id,
// and a small "more info" button. The row paints its elements itself; they are
// its QObject children, so neither the surface nor the view paints them again.
// A row is reused for another row of the table by setRowId.
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QVariant>

#include "widgets/CTavoButton.h"

class CTavoDbTable;

class TGUI_EXPORT CTavoDbTableRowWidget : public CTavoButton
{
    Q_OBJECT
    Q_CLASSINFO("TavoPaintsChildren", "yes")
public:
    // Row index, column, value and table in; the value to show out.
    typedef QVariant (*ValueConverter)(int, int, const QVariant&, CTavoDbTable*);

    // columns and converters stay the caller's and must outlive the row.
    CTavoDbTableRowWidget(QWidget* parent, CTavoDbTable* table, QList<QPair<int, QString> >& columns,
                          QMap<int, ValueConverter>* converters);
    ~CTavoDbTableRowWidget() override;

    void setRowId(unsigned long long id);
    void refresh();
    CTavoWidget* getElement(const QString& name) const;

    const QList<CTavoWidget*>& elements() const { return m_elements; }
    CTavoButton* moreInfo() const { return m_moreInfo; }
    CTavoDbTable* table() const { return m_table; }

    void move(int x, int y) override;
    bool handleEvent(QEvent::Type type, QPoint position) override;
    using CTavoObject::handleEvent;
    void setDown(bool down) override;
    void paint(QPainter* painter) override;
    void layout() override;
    void refreshDom() override;

signals:
    void rowSelected(QString url, quint64 rowId);

public slots:
    void onElementClicked(QString url, QString data);

private:
    QList<CTavoWidget*> m_elements;
    CTavoDbTable* m_table;
    QList<QPair<int, QString> >* m_columns;
    QMap<int, ValueConverter>* m_converters;
    CTavoButton* m_moreInfo;
};
