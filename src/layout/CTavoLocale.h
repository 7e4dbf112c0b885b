#pragma once
#include "tgui_export.h"
// A QLocale from a language code of the core: "fr-fr" becomes "fr_FR".
#include <QLocale>
#include <QString>

class TGUI_EXPORT CTavoLocale : public QLocale
{
public:
    explicit CTavoLocale(const QString& code);
};
