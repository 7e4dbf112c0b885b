#pragma once
#include "tgui_export.h"
// One named item of a skin file: the texts for one surface.
#include <QString>

class TGUI_EXPORT CTavoStyleItem
{
public:
    QString m_name;
    QString m_attributes;
    QString m_style;
    QString m_auxStyle;
};
