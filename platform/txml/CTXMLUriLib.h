#pragma once
#include "txml_export.h"
// The numbered vocabulary of TXML: URI types (keys and events) and variable
// names (the names of the pair syntax). The numbers are the phone's; the
// texts are this library's and are listed in docs/txml.md. An instance also
// holds one parsed parameter string, read by variable number.
#include <cstddef>
#include <string>

#include "CTXMLUriParser.h"

// URI types. TxmlUriUnknown is what type() gives for a text not in the table.
enum TxmlUriType_T : int {
    TxmlUriUnknown = -1,
    TxmlUriBack = 0,                 // local: back softkey
    TxmlUriExit = 2,                 // local: leave the screen
    TxmlUriBackspace = 3,            // backspace softkey of a text field
    TxmlUriEncoding = 4,             // encoding softkey of a text field
    TxmlUriClear = 5,                // local: clear softkey
    TxmlUriDone = 7,                 // commit softkey; event of editDone on Select
    TxmlUriReset = 8,                // reset softkey of a text field
    TxmlUriCancel = 9,               // local: cancel softkey
    TxmlUriMore = 10,                // More softkey: next page of keys
    TxmlUriToggleEditMode = 13,      // mode switching softkey of a text field
    TxmlUriSelect = 17,              // local: select softkey
    TxmlUriEdit = 18,                // local: edit softkey
    TxmlUriOk = 20,                  // local: OK softkey
    TxmlUriConfig = 30,              // core: configuration pairs
    TxmlUriPageUp = 39,              // local: previous page
    TxmlUriPageDown = 40,            // local: next page
    TxmlUriLocalQuery = 41,          // local core: asks whether this screen is the local one
    TxmlUriGuiEvent = 45,            // GUI: report of a widget (flyout content, local answer)
    TxmlUriTranslate = 51,           // GUI: request of translated strings
    TxmlUriFlyoutSelect = 59,        // key name of a flyout choice in a GUI report
    TxmlUriAppStatus = 62,           // core: status mask of the connected applications
    TxmlUriPopup = 65,               // GUI: show a popup with "text1=...;text2=..."
    TxmlUriSoftkeyPage = 79,         // GUI: softkey page changed
    TxmlUriUiReport = 95,            // core: send a UI report (test automation)
    TxmlUriUpdateText = 118,         // core: type text into the focused field (test automation)
    TxmlUriMemshow = 151,            // core: send a memory report (test automation)
    TxmlUriLockEdit = 178,           // GUI: each edit of the lock screen's field
    TxmlUriValidate = 179,           // validate softkey of the lock screen's field
    TxmlUriAnalytics = 238,          // GUI: softkey press with its index, for analytics
    TxmlUriLocalPopup = 239,         // local core: show a popup
    TxmlUriUpdateCancel = 331,       // softkey shown while the phone updates
    TxmlUriUpdateProgress = 408      // softkey shown while the phone updates
};

// Variable names.
enum TxmlVariableName_T : int {
    TxmlVarUnknown = -1,
    TxmlVarX = 0,                    // x of a window move
    TxmlVarY = 1,                    // y of a window move
    TxmlVarArg = 11,                 // argument of an address check
    TxmlVarMax = 16,                 // maximum numeric value
    TxmlVarMin = 17,                 // minimum numeric value
    TxmlVarReplaceAll = 18,          // "true": select all before typing
    TxmlVarState = 24,               // key event state / simulator event type
    TxmlVarPress = 25,               // press value of variable 24
    TxmlVarRelease = 26,             // release value of variable 24
    TxmlVarData = 33,                // data text of an event
    TxmlVarMask = 36,                // input mask
    TxmlVarEncoding = 37,            // encoding of a field
    TxmlVarAscii = 38,               // encoding names 38 .. 42
    TxmlVarLatin = 39,
    TxmlVarCyrillic = 40,
    TxmlVarKatakana = 41,
    TxmlVarUnicode = 42,
    TxmlVarProtocol = 44,            // URL protocol
    TxmlVarKey = 53,                 // key (name or code), move mode
    TxmlVarLocalScreen = 56,         // 1: the local screen answers
    TxmlVarKeyIndex = 72,            // softkey position that owns a flyout
    TxmlVarLabels = 74,              // ";" separated labels of a flyout
    TxmlVarFlyIn = 75,               // 1: a flyout closed
    TxmlVarLanguage = 86,            // configuration: language code
    TxmlVarValue = 88,               // value of a choice
    TxmlVarTestAutomation = 91,      // configuration: test automation flag
    TxmlVarDatabase = 92,            // configuration: database name
    TxmlVarEditPolicy = 98,          // edit policy ("replaceonly")
    TxmlVar24Hours = 102,            // configuration: 24-hour clock
    TxmlVarXt9 = 116,                // configuration: predictive entry on
    TxmlVarCheck = 123,              // address check selector
    TxmlVarLeadingZero = 132,        // non-zero allows leading zeros
    TxmlVarLayoutType = 134,         // configuration: keyboard layout digit
    TxmlVarConfigDigit = 172,        // configuration: digit for the host
    TxmlVarJapaneseFont = 236        // configuration: Japanese font choice
};

// Simulator document types (qwsType).
enum TxmlQwsType_T : int {
    TxmlQwsUnknown = -1,
    TxmlQwsMove = 0,                 // move the window
    TxmlQwsShow = 1,                 // show the manager
    TxmlQwsKey = 3                   // inject a key
};

class TXML_EXPORT CTXMLUriLib
{
public:
    CTXMLUriLib() = default;

    // Number of a URI text: exact match, or the table text followed by "?"
    // and a query. TxmlUriUnknown for anything else, null included.
    static TxmlUriType_T type(const char* uri);
    static TxmlQwsType_T qwsType(const char* uri);
    // Number of a variable name; TxmlVarUnknown when not in the table.
    static TxmlVariableName_T vartype(const char* name);
    // Texts by number; "" for a number not in the table.
    static const char* uri(TxmlUriType_T type);
    static const char* uri(int type) { return uri(static_cast<TxmlUriType_T>(type)); }
    static const char* varname(TxmlVariableName_T var);
    static const char* varname(int var) { return varname(static_cast<TxmlVariableName_T>(var)); }
    static const char* qwsUri(TxmlQwsType_T type);
    // Percent-encodes every byte that is not an unreserved URI character
    // (A-Z a-z 0-9 - _ . ~). Writes at most outSize bytes including the NUL,
    // never splitting an escape; returns the length written.
    static std::size_t percentEncode(const char* in, char* out, std::size_t outSize);
    static std::string percentEncode(const char* in);

    // The instance form: a parameter string parsed once, read by number.
    int parse(const char* params) { return m_parser.parseData(params); }
    const char* value(TxmlVariableName_T var) const { return m_parser.value(varname(var)); }
    const char* value(int var) const { return m_parser.value(varname(var)); }
    const char* value(const char* name) const { return m_parser.value(name); }
    bool contains(TxmlVariableName_T var) const { return m_parser.indexOf(varname(var)) >= 0; }
    CTXMLUriParser<TXML_MAX_PAIRS>& parser() { return m_parser; }
    const CTXMLUriParser<TXML_MAX_PAIRS>& parser() const { return m_parser; }

private:
    CTXMLUriParser<TXML_MAX_PAIRS> m_parser;
};
