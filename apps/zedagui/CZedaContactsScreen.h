#pragma once
// The contacts of the sample phone: a title strip over a table view of the
// directory's live "contacts" table (name, number, a presence icon; the read
// mark of column "seen" sets the names of new contacts apart). Rows the peer
// inserts appear focused, deleted ones go, an empty table says "No records".
// Keys typed on the screen go to the list.
#include "layout/CTavoLayoutWidget.h"

class CTavoDbTable;
class CTavoDbTableView;
class CTavoLabelWidget;

class CZedaContactsScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaContactsScreen(QWidget* parent);

    // Applies the skin item to the screen and to the list.
    void applySkin(const QString& style, const QString& attributes);
    CTavoDbTableView* list() const { return m_list; }
    // Shows this table; the manager's link gives it once "dbs" is up.
    void setTable(CTavoDbTable* table);

    // What the list shows now, for the demo's record.
    QString getContextSensitiveInformation() override;
    void retranslateUi() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private slots:
    void refreshCount();

private:
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_count;
    CTavoDbTableView* m_list;
};
