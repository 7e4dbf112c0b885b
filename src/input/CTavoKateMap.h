#pragma once
#include "tgui_export.h"
// The tables from which the twelve dial pad keys take their multi-tap
// candidates: the letters of each encoding, the fixed keymaps of the numeric
// and address modes, and the dial map of telephone numbers. Key indexes: 0 to
// 9 the digit keys, 10 star, 11 pound.
//
// Two maps serve the whole process (alphanumericMap() and dialMap()), so that
// a change of letters or of the dial pad reaches every field at its next
// keymap load.
#include <QString>
#include <QStringList>

// Twelve rows of UTF-8, each NUL-terminated within 64 bytes.
typedef char encodedCharactersT[12][64];

class TGUI_EXPORT CTavoKateMap
{
public:
    enum { KeyCount = 12 };

    // Filled with the default letters.
    CTavoKateMap();

    // lower[i] is the source, upper[i] its upper case form. The language is
    // always "english" and changes nothing.
    void setAlphanumeric(QString* lowerSource, QString language);
    // From a table of UTF-8 rows; "ß" keeps its form in the upper case map.
    void setAlphanumeric(encodedCharactersT* table, QString language);
    // Empty: back to the default letters; otherwise the first twelve entries
    // replace the letters of the keys. The map is filled from the result.
    void updateAlphanumericMap(QStringList& keys);
    // true: "+" on the star key; false: no "+" key.
    void updateDialPad(bool plusOnStar);
    // second false: no "+"; with first true "+" on zero, else on star.
    void updateDialPadAsPerInternationalPrefix(bool first, bool second);

    QString lower[KeyCount];
    QString upper[KeyCount];

    static CTavoKateMap& alphanumericMap();
    static CTavoKateMap& dialMap();
    // The letters the alphanumeric map is filled from for ASCII.
    static QString* alphanumericKeys();

    // The fixed keymaps, twelve strings each.
    static QString* digitKeys();         // "123"
    static QString* steppedKeys();       // "123T"
    static QString* starDigitKeys();     // "123*"
    static QString* ipKeys();            // "IP"
    static QString* hexKeys();           // "Hex", "IPv6"
    static QString* urlKeys();           // "URL"
    static QString* defaultLetterKeys(); // letters of ASCII
    static QString* plainDial();
    static QString* dialPlusOnStar();
    static QString* dialPlusOnZero();

    static encodedCharactersT latinCharacters;
    static encodedCharactersT cyrillicCharacters;
    static encodedCharactersT katakanaCharacters;
    static encodedCharactersT unicodeCharacters;

private:
    void setDial(const QString* table);
};
