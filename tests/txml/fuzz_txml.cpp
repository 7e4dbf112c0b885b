// Any bytes through every reader of the document library. Besides surviving,
// two properties must hold: what a parse yields stays within its limits, and
// an event written from what was read always reads back the same.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "CTXMLEvent.h"
#include "CTXMLQws.h"
#include "CTXMLRoot.h"
#include "CTXMLUriLib.h"

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

void checkText(const char* text, std::size_t size)
{
    check(strnlen(text, size) < size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CTXMLRoot* root = new CTXMLRoot;  // one large root, as a GUI process has
    const char* bytes = reinterpret_cast<const char*>(data);

    const bool ok = root->parse(bytes, size);
    if (!ok)
        check(root->flags == 0 && root->error[0] != 0);
    check(root->pairCount() <= TXML_MAX_PAIRS && root->remaining() >= 0);
    check(root->softkeys.count <= TXML_MAX_SOFTKEYS);
    checkText(root->uri, sizeof root->uri);
    checkText(root->data, sizeof root->data);
    for (int i = 0; i < root->pairCount(); ++i) {
        checkText(root->pairName(i), TXML_NAME_SIZE);
        checkText(root->pairValue(i), TXML_VALUE_SIZE);
        CTXMLUriLib::vartype(root->pairName(i));
    }
    for (int i = 0; i < root->softkeys.count; ++i) {
        const CTXMLSoftkey& key = root->softkeys[i];
        checkText(key.label, sizeof key.label);
        check(key.flyout.count() <= TXML_MAX_FLYOUT_ITEMS);
        root->softkeys.findItemByUrl(key.url);
    }
    for (const TranslationT& t : root->translations) {
        checkText(t.key, sizeof t.key);
        checkText(t.value, sizeof t.value);
    }
    CTXMLUriLib::type(root->uri);

    if (ok && root->hasEvent()) {
        auto event = std::make_unique<CTXMLEvent>();
        event->set(root->uri, root->eventType, root->eventFlags);
        event->setData(root->data);
        const std::string text = event->serialize();
        auto back = std::make_unique<CTXMLQws>();
        check(back->parse(text));
        check(std::strcmp(back->uri, root->uri) == 0);
        check(back->eventType == root->eventType && back->eventFlags == root->eventFlags);
        check(std::strcmp(back->data, event->data) == 0);
    }

    // The simulator reader and the pair syntax on the raw bytes.
    auto qws = std::make_unique<CTXMLQws>();
    qws->parse(bytes, size);
    CTXMLUriLib::qwsType(qws->uri);
    auto pairs = std::make_unique<CTXMLUriParser<TXML_MAX_PAIRS>>();
    pairs->parseData(bytes, size);
    check(pairs->count() <= TXML_MAX_PAIRS && pairs->remaining() <= static_cast<int>(size));
    const std::string text(bytes, strnlen(bytes, size));
    const std::string encoded = CTXMLUriLib::percentEncode(text.c_str());
    const std::string pair = "v=" + encoded;
    pairs->parseData(pair.c_str());
    if (text.size() < TXML_VALUE_SIZE)
        check(text == pairs->value("v"));  // percentEncode and the pair syntax agree
    return 0;
}
