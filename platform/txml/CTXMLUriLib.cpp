#include "CTXMLUriLib.h"

#include <cstring>

namespace {

struct Entry {
    int number;
    const char* text;
};

// The one table of numbers and texts; docs/txml.md lists it with the roles.
const Entry kUris[] = {
    {TxmlUriBack, "SoftKey:Back"},
    {TxmlUriExit, "SoftKey:Exit"},
    {TxmlUriBackspace, "SoftKey:Backspace"},
    {TxmlUriEncoding, "SoftKey:Encoding"},
    {TxmlUriClear, "SoftKey:Clear"},
    {TxmlUriDone, "SoftKey:Done"},
    {TxmlUriReset, "SoftKey:Reset"},
    {TxmlUriCancel, "SoftKey:Cancel"},
    {TxmlUriMore, "SoftKey:More"},
    {TxmlUriToggleEditMode, "SoftKey:ToggleEditMode"},
    {TxmlUriSelect, "SoftKey:Select"},
    {TxmlUriEdit, "SoftKey:Edit"},
    {TxmlUriOk, "SoftKey:Ok"},
    {TxmlUriConfig, "Core:Config"},
    {TxmlUriPageUp, "SoftKey:PageUp"},
    {TxmlUriPageDown, "SoftKey:PageDown"},
    {TxmlUriLocalQuery, "Core:LocalQuery"},
    {TxmlUriGuiEvent, "Gui:Event"},
    {TxmlUriTranslate, "Gui:Translate"},
    {TxmlUriFlyoutSelect, "Key:FlyoutSelect"},
    {TxmlUriAppStatus, "Core:AppStatus"},
    {TxmlUriPopup, "Gui:Popup"},
    {TxmlUriSoftkeyPage, "Gui:SoftkeyPage"},
    {TxmlUriUiReport, "Core:UiReport"},
    {TxmlUriUpdateText, "Core:UpdateText"},
    {TxmlUriMemshow, "Core:Memshow"},
    {TxmlUriLockEdit, "Gui:LockScreenEdit"},
    {TxmlUriValidate, "Softkey:ValidationRequired"},
    {TxmlUriAnalytics, "Gui:SoftkeyAnalytics"},
    {TxmlUriLocalPopup, "Core:LocalPopup"},
    {TxmlUriUpdateCancel, "SoftKey:UpdateCancel"},
    {TxmlUriUpdateProgress, "SoftKey:UpdateProgress"},
};

const Entry kVariables[] = {
    {TxmlVarX, "x"},
    {TxmlVarY, "y"},
    {TxmlVarArg, "arg"},
    {TxmlVarMax, "max"},
    {TxmlVarMin, "min"},
    {TxmlVarReplaceAll, "replaceAll"},
    {TxmlVarState, "state"},
    {TxmlVarPress, "pressed"},
    {TxmlVarRelease, "released"},
    {TxmlVarData, "data"},
    {TxmlVarMask, "mask"},
    {TxmlVarEncoding, "encoding"},
    {TxmlVarAscii, "ASCII"},
    {TxmlVarLatin, "Latin"},
    {TxmlVarCyrillic, "Cyrillic"},
    {TxmlVarKatakana, "Katakana"},
    {TxmlVarUnicode, "Unicode"},
    {TxmlVarProtocol, "protocol"},
    {TxmlVarKey, "key"},
    {TxmlVarLocalScreen, "localScreen"},
    {TxmlVarKeyIndex, "keyIndex"},
    {TxmlVarLabels, "labels"},
    {TxmlVarFlyIn, "flyIn"},
    {TxmlVarLanguage, "language"},
    {TxmlVarValue, "value"},
    {TxmlVarTestAutomation, "testAutomation"},
    {TxmlVarDatabase, "database"},
    {TxmlVarEditPolicy, "editPolicy"},
    {TxmlVar24Hours, "hours24"},
    {TxmlVarXt9, "xt9"},
    {TxmlVarCheck, "check"},
    {TxmlVarLeadingZero, "leadingZero"},
    {TxmlVarLayoutType, "layoutType"},
    {TxmlVarConfigDigit, "configDigit"},
    {TxmlVarJapaneseFont, "japaneseFont"},
};

const Entry kQws[] = {
    {TxmlQwsMove, "Qws:Move"},
    {TxmlQwsShow, "Qws:Show"},
    {TxmlQwsKey, "Qws:Key"},
};

template <std::size_t N>
const char* textOf(const Entry (&table)[N], int number)
{
    for (const Entry& e : table)
        if (e.number == number)
            return e.text;
    return "";
}

// Exact text, or the text followed by a "?" query.
template <std::size_t N>
int numberOf(const Entry (&table)[N], const char* text, bool allowQuery)
{
    if (!text || !*text)
        return -1;
    for (const Entry& e : table) {
        const std::size_t n = std::strlen(e.text);
        if (std::strncmp(text, e.text, n) == 0 &&
            (text[n] == 0 || (allowQuery && text[n] == '?')))
            return e.number;
    }
    return -1;
}

bool isUnreserved(unsigned char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           c == '-' || c == '_' || c == '.' || c == '~';
}

}  // namespace

TxmlUriType_T CTXMLUriLib::type(const char* uri)
{
    return static_cast<TxmlUriType_T>(numberOf(kUris, uri, true));
}

TxmlQwsType_T CTXMLUriLib::qwsType(const char* uri)
{
    return static_cast<TxmlQwsType_T>(numberOf(kQws, uri, true));
}

TxmlVariableName_T CTXMLUriLib::vartype(const char* name)
{
    return static_cast<TxmlVariableName_T>(numberOf(kVariables, name, false));
}

const char* CTXMLUriLib::uri(TxmlUriType_T type)
{
    return textOf(kUris, type);
}

const char* CTXMLUriLib::varname(TxmlVariableName_T var)
{
    return textOf(kVariables, var);
}

const char* CTXMLUriLib::qwsUri(TxmlQwsType_T type)
{
    return textOf(kQws, type);
}

std::size_t CTXMLUriLib::percentEncode(const char* in, char* out, std::size_t outSize)
{
    static const char hex[] = "0123456789ABCDEF";
    if (!out || outSize == 0)
        return 0;
    std::size_t n = 0;
    for (const char* p = in ? in : ""; *p; ++p) {
        const unsigned char c = static_cast<unsigned char>(*p);
        if (isUnreserved(c)) {
            if (n + 1 >= outSize)
                break;
            out[n++] = static_cast<char>(c);
        } else {
            if (n + 3 >= outSize)
                break;
            out[n++] = '%';
            out[n++] = hex[c >> 4];
            out[n++] = hex[c & 15];
        }
    }
    out[n] = 0;
    return n;
}

std::string CTXMLUriLib::percentEncode(const char* in)
{
    std::string out;
    const std::size_t length = in ? std::strlen(in) : 0;
    out.resize(length * 3 + 1);
    out.resize(percentEncode(in, &out[0], out.size()));
    return out;
}
