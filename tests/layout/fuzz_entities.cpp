// Entity decoding of document values from the core: any text, decoded and
// encoded again; what was encoded must decode to itself.
#include <cstdint>
#include <cstdlib>

#include "layout/CTXMLDataConverter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    const QString decoded = CTXMLDataConverter::decodeEntities(text);
    if (CTXMLDataConverter::decodeEntities(CTXMLDataConverter::encodeEntities(decoded)) != decoded)
        abort();
    return 0;
}
