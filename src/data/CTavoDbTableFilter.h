#pragma once
#include "tgui_export.h"
// The base of the filters a host plugs into a CTavoDbTableView. A filter works
// on the view's list of row numbers only: it may drop and reorder numbers, never
// copy rows. It carries a name, the column and option texts it applies, and a
// list of options of which one (or none) is current, for a menu of choices.
#include <QString>
#include <QStringList>
#include <QVector>

class CTavoDbTable;

class TGUI_EXPORT CTavoDbTableFilter
{
public:
    CTavoDbTableFilter();
    virtual ~CTavoDbTableFilter();

    // Non-zero when it changed rows. The base does nothing and returns 0.
    virtual unsigned char filter(CTavoDbTable* table, QVector<unsigned long long>* rows, void* view);

    // Names the filter and the column it works on and selects option current
    // (-1 none; an index outside the options selects none). With clearOptions the
    // option list is emptied first.
    void setName(const QString& name, const QString& column, int current, bool clearOptions);
    // Index of the option with this text, -1 if none.
    int findIndex(const QString& option) const;
    // Text of the current option, or empty.
    QString currentSelection() const;
    // New options; the current one stays selected if its text is still there.
    void setOptions(const QStringList& options);
    void setCurrentIndex(int index);

    QString name() const { return m_name; }
    QString column() const { return m_column; }
    QString option() const { return m_option; }
    QStringList options() const { return m_options; }
    int currentIndex() const { return m_current; }

protected:
    QString m_name;
    QString m_column;
    QString m_option;
    QStringList m_options;
    int m_current;
};
