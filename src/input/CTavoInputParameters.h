#pragma once
#include "tgui_export.h"
// What a caller fills to describe a text field for CTavoInput::set: the
// allowed modes, the default text, the limits and the parameter string of the
// field's document.
#include <QString>

class TGUI_EXPORT CTavoInputParameters
{
public:
    int m_id = 0;                  // the caller's own; the field does not read it
    QString m_modes;               // ";" separated mode names, the first one applies
    QString m_defaultText;
    int m_maxLength = 512;         // UTF-8 bytes
    int m_minLength = 0;           // characters the lock screen's validate key waits for
    int m_echoMode = 0;            // QLineEdit::EchoMode
    QString m_uriParams;           // "name=value;..." pairs of the field's document
    bool m_applyText = true;
    bool m_startWithKey = false;
    bool m_showDefaultText = true; // false shows a password's default as "****"
    int m_mode = 13;               // 0..12 names the mode for the identifier; 13 leaves it
    int m_encoding = 5;            // 0..4 is applied after the set; 5 means none
};
