// Skin XML from untrusted files.
#include <QCoreApplication>
#include <QTemporaryFile>

#include <cstdint>

#include "style/CTavoStyleSheetFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryFile* file = [] {
        auto* f = new QTemporaryFile();
        f->open();
        return f;
    }();
    file->resize(0);
    file->seek(0);
    file->write(reinterpret_cast<const char*>(data), qint64(size));
    file->flush();
    CTavoStyleSheetFile skin;
    skin.parse(file->fileName());
    for (auto it = skin.items().constBegin(); it != skin.items().constEnd(); ++it) {
        skin.getStyle(it.key());
        skin.getAttributes(it.key());
    }
    return 0;
}
