// Pair lists of documents ("name=value;...") from the core, with the document
// separator and the style arguments' one; the serialised form reads back the same.
#include <cstdint>
#include <cstdlib>

#include "layout/CTavoVarList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1)
        return 0;
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), int(size - 1));
    CTavoVarList list(QString(), (data[0] & 1) ? QStringLiteral(",") : QStringLiteral(";"));
    list.set(text);
    const auto& pairs = list.pairs();
    for (auto it = pairs.constBegin(); it != pairs.constEnd(); ++it)
        (void)list[it.key()];
    CTavoVarList again(list.serialize());
    // Names are kept as read; a read-back only loses what the document form cannot hold.
    if (again.pairs().size() > pairs.size() + 1)
        abort();
    return 0;
}
