// The device's base-profile file read by the icon repository: any bytes.
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>

#include "style/CTavoIconRepository.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir dir;
    static const QByteArray path = dir.filePath(QStringLiteral("baseprofile")).toLocal8Bit();
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char*>(data), qint64(size));
    file.close();
    CTavoIconRepository::s_baseProfileFile = path.constData();
    (void)CTavoIconRepository::readBaseProfile();
    return 0;
}
