#pragma once
#include "tgui_export.h"
// The parsed look of one surface: selector to style block, plus attributes.
// Lookup goes over class, object name and pseudo state in a fixed order.
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

#include "style/CTavoWidgetStyle.h"

class QObject;
struct QMetaObject;

class TGUI_EXPORT CTavoStyleSheet
{
public:
    CTavoStyleSheet();

    // Replaces the whole content; null pointers change nothing. Both UTF-8.
    void set(const char* style, const char* attributes);

    CTavoWidgetStyle* get(QObject* object, const QString& pseudoState);
    // Exact lookup; the pointer stays valid until the next set().
    CTavoWidgetStyle* get(const QString& selector);
    CTavoWidgetStyle* get(const char* selector);
    // The class name, then each superclass name.
    CTavoWidgetStyle* get(const QMetaObject* metaObject);

    bool hasPseudoState(QObject* object, const QString& state) const;
    // A missing name is created, empty.
    QString getAttribute(const QString& name);
    QList<QPair<int, QString>> getDefinedClasses(const QStringList& names) const;

    const QMap<QString, CTavoWidgetStyle>& styles() const { return m_styles; }
    const QMap<QString, QString>& attributes() const { return m_attributes; }

private:
    QMap<QString, CTavoWidgetStyle> m_styles;
    QMap<QString, QString> m_attributes;
    QString m_styleText;
};
