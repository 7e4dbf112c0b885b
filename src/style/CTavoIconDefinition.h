#pragma once
#include "tgui_export.h"
// What a widget asks to show: URL and label texts, a primary and a pressed
// icon number (-1 for none) and further numbers.
#include <QList>
#include <QString>
#include <QStringList>

class TGUI_EXPORT CTavoIconDefinition
{
public:
    CTavoIconDefinition();
    CTavoIconDefinition(const QString& url, const QString& label, int icon = -1, int pressedIcon = -1,
                        const QList<int>& icons = QList<int>());

    bool operator==(const CTavoIconDefinition& other) const;
    bool operator!=(const CTavoIconDefinition& other) const { return !(*this == other); }

    // A matching primary or pressed number becomes -1; the list loses every match.
    void removeIndex(int index);
    bool containsIndex(int index) const;
    // Keeps only numbers whose decimal text stands in the list.
    void removeAllExcept(const QStringList& keep);

    QString m_url;
    QString m_label;
    int m_iconIndex;
    int m_pressedIconIndex;
    QList<int> m_iconIndexes;
};
