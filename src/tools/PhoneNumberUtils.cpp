#include "tools/PhoneNumberUtils.h"

QString PhoneNumberUtils::removePunctuation(const QString& number)
{
    QString out;
    out.reserve(number.size());
    for (const QChar c : number) {
        if (c != QLatin1Char('-') && c != QLatin1Char(')') && c != QLatin1Char('(') && c != QLatin1Char(' '))
            out += c;
    }
    return out;
}
