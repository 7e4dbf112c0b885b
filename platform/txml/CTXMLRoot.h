#pragma once
#include "txml_export.h"
// The parsed form of one TXML document from the core. A parse replaces the
// whole content; a document that is not well formed leaves the flags clear.
// Grammar: docs/txml.md.
#include <cstring>
#include <vector>

#include "CTXML.h"
#include "CTXMLFlyoutCluster.h"
#include "CTXMLLineKeys.h"
#include "CTXMLListMenu.h"
#include "CTXMLSoftkeys.h"

struct TranslationT {
    char key[TXML_TRANSLATION_SIZE];    // UTF-8, entities still encoded
    char value[TXML_TRANSLATION_SIZE];
};

class TXML_EXPORT CTXMLRoot : public CTXML
{
public:
    unsigned int appStatus;                  // GuiAppsT mask (flag TXML_FLAG_APPSTATUS)
    std::vector<TranslationT> translations;  // flag TXML_FLAG_TRANSLATIONS
    CTXMLSoftkeys softkeys;                  // flag TXML_FLAG_SOFTKEYS
    CTXMLFlyoutCluster flyout;               // flag TXML_FLAG_FLYOUT
    CTXMLLineKeys lineKeys;                  // flag TXML_FLAG_LINEKEYS
    std::vector<CTXMLListMenu> listMenu;     // flag TXML_FLAG_LISTMENU

    CTXMLRoot();
    void reset() override;

    // Parses length bytes (no terminator needed); returns false when the
    // document is not well formed, which leaves flags 0 and error set.
    bool parse(const char* data, std::size_t length);
    bool parse(const char* text) { return parse(text, text ? std::strlen(text) : 0); }
    // Any byte container with data() and size() (QByteArray, std::string).
    template <typename Bytes>
    auto parse(const Bytes& bytes)
        -> decltype(static_cast<const char*>(bytes.data()), bytes.size(), bool())
    {
        return parse(static_cast<const char*>(bytes.data()),
                     bytes.size() > 0 ? static_cast<std::size_t>(bytes.size()) : 0u);
    }
};
