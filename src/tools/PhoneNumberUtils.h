#pragma once
#include "tgui_export.h"
// Text rules around phone numbers.
#include <QString>

class TGUI_EXPORT PhoneNumberUtils
{
public:
    // The number without the punctuation people type into it: "-", "(", ")" and space.
    static QString removePunctuation(const QString& number);
};
