#include "data/CTavoDbTableFilter.h"

CTavoDbTableFilter::CTavoDbTableFilter()
    : m_current(-1)
{
}

CTavoDbTableFilter::~CTavoDbTableFilter()
{
}

unsigned char CTavoDbTableFilter::filter(CTavoDbTable* table, QVector<unsigned long long>* rows, void* view)
{
    Q_UNUSED(table);
    Q_UNUSED(rows);
    Q_UNUSED(view);
    return 0;
}

void CTavoDbTableFilter::setName(const QString& name, const QString& column, int current, bool clearOptions)
{
    m_name = name;
    m_column = column;
    if (clearOptions)
        m_options.clear();
    setCurrentIndex(current);
}

int CTavoDbTableFilter::findIndex(const QString& option) const
{
    return m_options.indexOf(option);
}

QString CTavoDbTableFilter::currentSelection() const
{
    return m_options.value(m_current);
}

void CTavoDbTableFilter::setOptions(const QStringList& options)
{
    const QString selected = currentSelection();
    m_options = options;
    setCurrentIndex(selected.isEmpty() ? -1 : findIndex(selected));
}

void CTavoDbTableFilter::setCurrentIndex(int index)
{
    m_current = (index >= 0 && index < m_options.size()) ? index : -1;
    m_option = m_options.value(m_current);
}
