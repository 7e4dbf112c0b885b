#include "TxmlReader.h"

#include <expat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "CTXMLRoot.h"

namespace txml {
namespace {

// Where the reader stands; unknown elements and everything inside them are skipped.
enum ContextT {
    InNothing,
    InRoot,
    InEvent,
    InTranslations,
    InSoftkeys,
    InSoftkey,
    InFlyout,
    InLineKeys,
    InListMenu,
    InSkipped
};

const int kMaxDepth = 64;

struct Reader {
    XML_Parser parser = nullptr;
    CTXML* doc = nullptr;
    CTXMLRoot* root = nullptr;
    ContextT stack[kMaxDepth];
    int depth = 0;     // elements open
    int skipped = 0;   // open elements below a skipped one or beyond kMaxDepth
    bool sawEvent = false;
    bool stopped = false;
    std::string eventText;
    char stopReason[64] = {0};

    ContextT top() const { return depth > 0 && depth <= kMaxDepth ? stack[depth - 1] : InNothing; }
};

const char* attr(const XML_Char** atts, const char* name)
{
    for (int i = 0; atts && atts[i] && atts[i + 1]; i += 2)
        if (std::strcmp(atts[i], name) == 0)
            return atts[i + 1];
    return nullptr;
}

// A number attribute: decimal or 0x hex, clamped to int; missing or bad gives fallback.
long number(const XML_Char** atts, const char* name, long fallback, long lo = INT_MIN,
            long hi = INT_MAX)
{
    const char* text = attr(atts, name);
    if (!text || !*text)
        return fallback;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text, &end, 0);
    if (end == text)
        return fallback;
    if (errno == ERANGE)
        v = v < 0 ? LONG_MIN : LONG_MAX;
    return v < lo ? lo : v > hi ? hi : v;
}

unsigned int mask(const XML_Char** atts, const char* name)
{
    const char* text = attr(atts, name);
    if (!text || !*text)
        return 0;
    char* end = nullptr;
    errno = 0;
    const unsigned long long v = std::strtoull(text, &end, 0);
    if (end == text || errno == ERANGE || text[0] == '-')
        return 0;
    return static_cast<unsigned int>(v & 0xFFFFFFFFull);
}

bool flag(const XML_Char** atts, const char* name, bool fallback)
{
    const char* text = attr(atts, name);
    if (!text || !*text)
        return fallback;
    return !(std::strcmp(text, "0") == 0 || std::strcmp(text, "false") == 0 ||
             std::strcmp(text, "no") == 0);
}

void text(char* dst, std::size_t size, const XML_Char** atts, const char* name)
{
    copyText(dst, size, attr(atts, name));
}

void readIcon(CTXMLIcon& icon, const XML_Char** atts)
{
    icon.set(static_cast<int>(number(atts, "icon", 0)), static_cast<int>(number(atts, "iconFlags", 0)),
             attr(atts, "iconName"), attr(atts, "iconLabel"), attr(atts, "iconList"));
}

void readItem(CTXMLFlyoutCluster& cluster, const XML_Char** atts)
{
    CTXMLFlyoutItem* entry = cluster.append();
    if (!entry)
        return;  // beyond the limit an item is dropped
    CTXMLFlyoutItem& item = *entry;
    CTXMLIcon icon;
    readIcon(icon, atts);
    item.set(attr(atts, "label"), attr(atts, "url"), attr(atts, "badge"), &icon,
             flag(atts, "enabled", true), attr(atts, "value"), flag(atts, "selected", false),
             flag(atts, "quick", true), attr(atts, "abbr"));
    text(item.data, sizeof item.data, atts, "data");
}

// Fills the next entry in place; a 21st key is dropped: a document has 20.
bool readSoftkey(CTXMLSoftkeys& keys, const XML_Char** atts)
{
    const int index = keys.count;
    CTXMLSoftkey* entry = keys.append();
    if (!entry)
        return false;
    CTXMLSoftkey& key = *entry;
    key.set(attr(atts, "label"), attr(atts, "url"), static_cast<int>(number(atts, "position", -1)),
            static_cast<CTXMLSoftkey::SoftkeyTypeT>(number(atts, "type", 0, 0, 3)),
            attr(atts, "url2"), attr(atts, "url3"), attr(atts, "values"),
            static_cast<ItemPriorityT>(number(atts, "priority", 1, 0, 3)), attr(atts, "group"),
            static_cast<int>(number(atts, "default", 0)),
            static_cast<CTXMLIcon::tavoIcon>(number(atts, "icon", 0, 0, CTXMLIcon::TAVO_ICON_MAX)),
            static_cast<SoftkeyLayoutTypeT>(number(atts, "layout", 0, 0, 3)));
    text(key.iconName, sizeof key.iconName, atts, "iconName");
    key.id = static_cast<int>(number(atts, "id", index));
    key.extent = static_cast<int>(number(atts, "extent", 0));
    return true;
}

void readLineKey(CTXMLLineKeys& keys, const XML_Char** atts)
{
    CTXMLLineKey key;
    key.kind = static_cast<int>(number(atts, "kind", 0));
    key.id = static_cast<int>(number(atts, "id", keys.count()));
    text(key.label, sizeof key.label, atts, "label");
    text(key.url, sizeof key.url, atts, "url");
    text(key.url2, sizeof key.url2, atts, "url2");
    text(key.url3, sizeof key.url3, atts, "url3");
    readIcon(key.icon, atts);
    key.priority = static_cast<ItemPriorityT>(number(atts, "priority", 1, 0, 3));
    keys.add(key);
}

void readListEntry(std::vector<CTXMLListMenu>& menu, const XML_Char** atts)
{
    if (static_cast<int>(menu.size()) >= TXML_MAX_LIST_MENU)
        return;
    CTXMLListMenu entry;
    text(entry.label, sizeof entry.label, atts, "label");
    text(entry.url, sizeof entry.url, atts, "url");
    text(entry.url2, sizeof entry.url2, atts, "url2");
    text(entry.url3, sizeof entry.url3, atts, "url3");
    entry.type = static_cast<int>(number(atts, "type", 0));
    entry.id = static_cast<int>(number(atts, "id", static_cast<long>(menu.size())));
    entry.extent = static_cast<int>(number(atts, "extent", 0));
    entry.priority = static_cast<ItemPriorityT>(number(atts, "priority", 1, 0, 3));
    readIcon(entry.icon, atts);
    menu.push_back(entry);
}

void readTranslation(std::vector<TranslationT>& list, const XML_Char** atts)
{
    const char* key = attr(atts, "key");
    if (!key || static_cast<int>(list.size()) >= TXML_MAX_TRANSLATIONS)
        return;
    TranslationT t;
    copyText(t.key, sizeof t.key, key);
    copyText(t.value, sizeof t.value, attr(atts, "value"));
    list.push_back(t);
}

bool is(const char* name, const char* wanted)
{
    return std::strcmp(name, wanted) == 0;
}

// Which context an element opens, given where it stands; InSkipped when unknown.
ContextT open(Reader& r, const char* name, const XML_Char** atts)
{
    CTXML& doc = *r.doc;
    CTXMLRoot* root = r.root;
    switch (r.top()) {
    case InNothing:
        return is(name, "TXML") ? InRoot : InSkipped;
    case InRoot:
        if (is(name, "Event")) {
            if (r.sawEvent)
                return InSkipped;  // one event per document
            r.sawEvent = true;
            text(doc.uri, sizeof doc.uri, atts, "uri");
            doc.eventType = static_cast<int>(number(atts, "type", 0));
            doc.eventFlags = static_cast<int>(number(atts, "flags", 0));
            if (doc.uri[0])
                doc.flags |= TXML_FLAG_EVENT;
            return InEvent;
        }
        if (!root)
            return InSkipped;
        if (is(name, "AppStatus")) {
            root->appStatus = mask(atts, "mask");
            root->flags |= TXML_FLAG_APPSTATUS;
            return InSkipped;
        }
        if (is(name, "Translations")) {
            root->flags |= TXML_FLAG_TRANSLATIONS;
            return InTranslations;
        }
        if (is(name, "Softkeys")) {
            root->flags |= TXML_FLAG_SOFTKEYS;
            root->softkeys.reset(static_cast<tavoElementTypeT>(number(atts, "type", 1, 0, 4)));
            root->softkeys.setId = static_cast<int>(number(atts, "set", 0));
            return InSoftkeys;
        }
        if (is(name, "Flyout")) {
            root->flags |= TXML_FLAG_FLYOUT;
            return InFlyout;
        }
        if (is(name, "LineKeys")) {
            root->flags |= TXML_FLAG_LINEKEYS;
            return InLineKeys;
        }
        if (is(name, "ListMenu")) {
            root->flags |= TXML_FLAG_LISTMENU;
            return InListMenu;
        }
        return InSkipped;
    case InTranslations:
        if (is(name, "T"))
            readTranslation(root->translations, atts);
        return InSkipped;
    case InSoftkeys:
        if (is(name, "Softkey"))
            return readSoftkey(root->softkeys, atts) ? InSoftkey : InSkipped;
        return InSkipped;
    case InSoftkey:
        if (is(name, "Item") && root->softkeys.count > 0)
            readItem(root->softkeys.keys[root->softkeys.count - 1].flyout, atts);
        return InSkipped;
    case InFlyout:
        if (is(name, "Item"))
            readItem(root->flyout, atts);
        return InSkipped;
    case InLineKeys:
        if (is(name, "LineKey"))
            readLineKey(root->lineKeys, atts);
        return InSkipped;
    case InListMenu:
        if (is(name, "Entry"))
            readListEntry(root->listMenu, atts);
        return InSkipped;
    case InEvent:
    case InSkipped:
        return InSkipped;
    }
    return InSkipped;
}

void XMLCALL onStart(void* user, const XML_Char* name, const XML_Char** atts)
{
    Reader& r = *static_cast<Reader*>(user);
    if (r.skipped > 0) {
        ++r.skipped;
        return;
    }
    const ContextT context = open(r, name, atts);
    if (context == InSkipped || r.depth >= kMaxDepth) {
        r.skipped = 1;
        return;
    }
    r.stack[r.depth++] = context;
}

void XMLCALL onEnd(void* user, const XML_Char*)
{
    Reader& r = *static_cast<Reader*>(user);
    if (r.skipped > 0) {
        --r.skipped;
        return;
    }
    if (r.depth > 0)
        --r.depth;
}

void XMLCALL onText(void* user, const XML_Char* s, int len)
{
    Reader& r = *static_cast<Reader*>(user);
    if (r.skipped == 0 && r.top() == InEvent && len > 0)
        r.eventText.append(s, static_cast<std::size_t>(len));
}

void stop(Reader& r, const char* why)
{
    if (r.stopped)
        return;
    r.stopped = true;
    copyText(r.stopReason, sizeof r.stopReason, why);
    XML_StopParser(r.parser, XML_FALSE);
}

// Entities declared in a document could expand without bound: no DOCTYPE at all.
void XMLCALL onDoctype(void* user, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    stop(*static_cast<Reader*>(user), "DOCTYPE not allowed");
}

void XMLCALL onEntityDecl(void* user, const XML_Char*, int, const XML_Char*, int,
                          const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*)
{
    stop(*static_cast<Reader*>(user), "entity declarations not allowed");
}

}  // namespace

bool readDocument(const char* data, std::size_t length, CTXML& doc, CTXMLRoot* root)
{
    if (root)
        root->reset();
    else
        doc.reset();
    if (!data || length == 0) {
        copyText(doc.error, sizeof doc.error, "empty document");
        return false;
    }
    Reader r;
    r.doc = &doc;
    r.root = root;
    r.parser = XML_ParserCreate("UTF-8");
    if (!r.parser) {
        copyText(doc.error, sizeof doc.error, "out of memory");
        return false;
    }
    XML_SetUserData(r.parser, &r);
    XML_SetElementHandler(r.parser, onStart, onEnd);
    XML_SetCharacterDataHandler(r.parser, onText);
    XML_SetStartDoctypeDeclHandler(r.parser, onDoctype);
    XML_SetEntityDeclHandler(r.parser, onEntityDecl);

    // XML_Parse takes an int length: feed large inputs in slices.
    const std::size_t slice = 1u << 20;
    bool ok = true;
    std::size_t done = 0;
    while (ok) {
        const std::size_t n = length - done < slice ? length - done : slice;
        const bool last = done + n == length;
        ok = XML_Parse(r.parser, data + done, static_cast<int>(n), last ? XML_TRUE : XML_FALSE) ==
             XML_STATUS_OK;
        done += n;
        if (last)
            break;
    }
    if (!ok || r.stopped) {
        char why[sizeof doc.error];
        std::snprintf(why, sizeof why, "line %lu: %s",
                      static_cast<unsigned long>(XML_GetCurrentLineNumber(r.parser)),
                      r.stopped ? r.stopReason : XML_ErrorString(XML_GetErrorCode(r.parser)));
        XML_ParserFree(r.parser);
        if (root)
            root->reset();
        else
            doc.reset();
        copyText(doc.error, sizeof doc.error, why);
        return false;
    }
    XML_ParserFree(r.parser);

    if (doc.flags & TXML_FLAG_EVENT) {
        copyText(doc.data, sizeof doc.data, r.eventText.data(), r.eventText.size());
        doc.pairs.parseData(r.eventText.data(), r.eventText.size());
    }
    doc.marker = 1;
    return true;
}

}  // namespace txml
