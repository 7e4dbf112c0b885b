#pragma once
#include "tgui_export.h"
// Judges an IPv6 text while it is typed: a complete configurable address is
// Acceptable, a text that still has the shape of one is Intermediate.
#include <QRegExp>
#include <QValidator>

#include "input/TavoIpAddressValidation.h"

class TGUI_EXPORT CTavoIPv6AddressValidator : public QValidator
{
    Q_OBJECT
public:
    // Groups of up to four hex digits, at most eight, and an optional "/prefix".
    static constexpr const char* kShape = "[0-9a-fA-F]{0,4}(:[0-9a-fA-F]{0,4}){0,7}(/[0-9]{0,3}){0,1}";

    explicit CTavoIPv6AddressValidator(QObject* parent = nullptr);

    State validate(QString& text, int& pos) const override;

private:
    QRegExp m_shape;
};
