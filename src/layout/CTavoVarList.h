#pragma once
#include "tgui_export.h"
// Pairs in the document language's syntax: "name=value" joined by ";", values
// entity-encoded. Reading may split at another separator (style arguments use
// ","); serialising always writes the document form.
#include <QMap>
#include <QString>

class TGUI_EXPORT CTavoVarList
{
public:
    explicit CTavoVarList(const QString& text = QString(), const QString& separator = QStringLiteral(";"));

    void set(const QString& text);
    QString operator[](const QString& name) const;
    void addPair(const QString& name, const QString& value);
    void addPair(const QString& name, int value);
    QString serialize() const;

    const QMap<QString, QString>& pairs() const { return m_pairs; }
    void setSeparator(const QString& separator) { m_separator = separator; }
    void clear() { m_pairs.clear(); }

private:
    QMap<QString, QString> m_pairs;
    QString m_separator;
};
