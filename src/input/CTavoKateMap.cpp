#include "input/CTavoKateMap.h"

#include <initializer_list>

#include "log/GuiLog.h"

encodedCharactersT CTavoKateMap::latinCharacters = {
    "", "þß", "àáâãäåæç", "ðèéêë", "ìíîï", "", "ñòóôõöø", "", "ùúûü", "ýÿ", "", ""};
encodedCharactersT CTavoKateMap::cyrillicCharacters = {
    "", "", "абвгґ", "деёж", "зийїк", "лмно", "прст", "уўфхц", "чшщъ", "ыьэєюя", "", ""};
encodedCharactersT CTavoKateMap::katakanaCharacters = {
    "ワヲンーヽ・アバベビ", "アイウエオァィゥェォ", "カキクケコボブダデヂ", "サシスセソドヅガゲギ",
    "タチツテトッゴグパペ", "ナニヌネノピポプヵヶ", "ハヒフヘホヮヴヱヰザ", "マミムメモゼジゾズ゜",
    "ヤユヨャュョ", "ラリルレロ゛", "", ""};
encodedCharactersT CTavoKateMap::unicodeCharacters = {
    "0", "1", "2ABC", "3DEF", "4", "5", "6", "7", "8", "9", "", ""};

namespace {
const QChar kSharpS(0x00DF);

// Upper case of a row, keeping every "ß" as it is: Qt's full case mapping
// would turn it into "SS".
QString upperKeepingSharpS(const QString& row)
{
    const int at = row.indexOf(kSharpS);
    if (at < 0)
        return row.toUpper();
    return row.left(at).toUpper() + kSharpS + upperKeepingSharpS(row.mid(at + 1));
}

// Twelve strings that live as long as the process.
struct Table
{
    QString keys[CTavoKateMap::KeyCount];
    Table(std::initializer_list<const char*> rows)
    {
        int i = 0;
        for (const char* row : rows)
            keys[i++] = QString::fromUtf8(row);
    }
};
}  // namespace

CTavoKateMap::CTavoKateMap()
{
    setAlphanumeric(defaultLetterKeys(), QStringLiteral("english"));
}

void CTavoKateMap::setAlphanumeric(QString* lowerSource, QString language)
{
    Q_UNUSED(language);
    if (!lowerSource) {
        guiLog(3, "CTavoKateMap::setAlphanumeric: no source, map unchanged");
        return;
    }
    for (int i = 0; i < KeyCount; ++i) {
        lower[i] = lowerSource[i];
        upper[i] = lowerSource[i].toUpper();
    }
}

void CTavoKateMap::setAlphanumeric(encodedCharactersT* table, QString language)
{
    Q_UNUSED(language);
    if (!table) {
        guiLog(3, "CTavoKateMap::setAlphanumeric: no table, map unchanged");
        return;
    }
    for (int i = 0; i < KeyCount; ++i) {
        // A row is NUL-terminated within its 64 bytes; one that is not is cut there.
        const char* row = (*table)[i];
        lower[i] = QString::fromUtf8(row, int(qstrnlen(row, sizeof((*table)[i]))));
        upper[i] = upperKeepingSharpS(lower[i]);
    }
}

void CTavoKateMap::updateAlphanumericMap(QStringList& keys)
{
    QString* letters = alphanumericKeys();
    if (keys.isEmpty()) {
        const QString* defaults = defaultLetterKeys();
        for (int i = 0; i < KeyCount; ++i)
            letters[i] = defaults[i];
    } else {
        for (int i = 0; i < KeyCount && i < keys.size(); ++i)
            letters[i] = keys.at(i);
    }
    setAlphanumeric(letters, QStringLiteral("english"));
}

void CTavoKateMap::setDial(const QString* table)
{
    for (int i = 0; i < KeyCount; ++i)
        lower[i] = upper[i] = table[i];
}

void CTavoKateMap::updateDialPad(bool plusOnStar)
{
    setDial(plusOnStar ? dialPlusOnStar() : plainDial());
}

void CTavoKateMap::updateDialPadAsPerInternationalPrefix(bool first, bool second)
{
    if (!second)
        setDial(plainDial());
    else
        setDial(first ? dialPlusOnZero() : dialPlusOnStar());
}

CTavoKateMap& CTavoKateMap::alphanumericMap()
{
    static CTavoKateMap map;
    return map;
}

CTavoKateMap& CTavoKateMap::dialMap()
{
    static CTavoKateMap map;
    return map;
}

QString* CTavoKateMap::alphanumericKeys()
{
    static Table table({" /,_$~=?0", "!|'^@:1", "abc2", "def3", "ghi4", "jkl5", "mno6", "pqrs7",
                                      "tuv8", "wxyz9", ".*-&%+;()", "#><{}[]\"`"});
    return table.keys;
}

QString* CTavoKateMap::defaultLetterKeys()
{
    static Table table({" /,_$~=?0", "!|'^@:1", "abc2", "def3", "ghi4", "jkl5", "mno6", "pqrs7",
                                      "tuv8", "wxyz9", ".*-&%+;()", "#><{}[]\"`"});
    return table.keys;
}

QString* CTavoKateMap::digitKeys()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "", ""});
    return table.keys;
}

QString* CTavoKateMap::steppedKeys()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "-", ""});
    return table.keys;
}

QString* CTavoKateMap::starDigitKeys()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "*", ""});
    return table.keys;
}

QString* CTavoKateMap::ipKeys()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ".", ""});
    return table.keys;
}

QString* CTavoKateMap::hexKeys()
{
    static Table table({"0", "1", "2abcABC", "3defDEF", "4", "5", "6", "7", "8", "9", ":.", "/[]"});
    return table.keys;
}

QString* CTavoKateMap::urlKeys()
{
    static Table table({"0;&=$_+", "1!|'^", "2abcABC", "3defDEF", "4ghiGHI", "5jklJKL", "6mnoMNO",
                                      "7pqrsPQRS", "8tuvTUV", "9wxyzWXYZ", ".*@:~-?%", "/#[]"});
    return table.keys;
}

QString* CTavoKateMap::plainDial()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "*", "#"});
    return table.keys;
}

QString* CTavoKateMap::dialPlusOnStar()
{
    static Table table({"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "*+", "#"});
    return table.keys;
}

QString* CTavoKateMap::dialPlusOnZero()
{
    static Table table({"0+", "1", "2", "3", "4", "5", "6", "7", "8", "9", "*", "#"});
    return table.keys;
}
