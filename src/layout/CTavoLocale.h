#pragma once
// A QLocale from a language code of the core: "fr-fr" becomes "fr_FR".
#include <QLocale>
#include <QString>

class CTavoLocale : public QLocale
{
public:
    explicit CTavoLocale(const QString& code);
};
