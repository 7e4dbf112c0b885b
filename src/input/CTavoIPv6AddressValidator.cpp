#include "input/CTavoIPv6AddressValidator.h"

CTavoIPv6AddressValidator::CTavoIPv6AddressValidator(QObject* parent)
    : QValidator(parent), m_shape(QString::fromLatin1(kShape))
{
}

QValidator::State CTavoIPv6AddressValidator::validate(QString& text, int& pos) const
{
    Q_UNUSED(pos);
    if (isValidIPAddress(text.trimmed(), 2, QString()))
        return Acceptable;
    // exactMatch keeps match state in the QRegExp; a copy keeps validate const.
    QRegExp shape(m_shape);
    return shape.exactMatch(text) ? Intermediate : Invalid;
}
