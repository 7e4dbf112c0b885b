#include "input/CTavoIpAddressValidator.h"

#include <QStringList>

CTavoIpAddressValidator::CTavoIpAddressValidator(QObject* parent)
    : QValidator(parent)
{
}

QValidator::State CTavoIpAddressValidator::validate(QString& text, int& pos) const
{
    Q_UNUSED(pos);
    if (text.isEmpty())
        return Acceptable;
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() > 4)
        return Invalid;
    for (const QString& part : parts) {
        if (part.contains(QLatin1Char('_')))
            continue;
        bool ok = false;
        const int value = part.toInt(&ok);
        if (!ok || value > 255)
            return Invalid;
    }
    return Acceptable;
}
