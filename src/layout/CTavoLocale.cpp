#include "layout/CTavoLocale.h"

#include <QStringList>

CTavoLocale::CTavoLocale(const QString& code) : QLocale(code)
{
    if (code.size() != 5)
        return;
    const QStringList parts = code.split(QLatin1Char('-'));
    if (parts.size() != 2)
        return;
    QLocale::operator=(QLocale(parts.at(0) + QLatin1Char('_') + parts.at(1).toUpper()));
}
