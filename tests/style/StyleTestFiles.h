#pragma once
// Files the style tests write: pictures of one colour and one-rectangle vectors.
#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>

inline QByteArray svgOf(int width, int height, const char* fill)
{
    return QString::asprintf("<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d'>"
                             "<rect width='%d' height='%d' fill='%s'/></svg>",
                             width, height, width, height, fill)
        .toUtf8();
}

// Makes the folder as well; false when anything fails.
inline bool writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

inline bool writePicture(const QString& path, const QColor& color, const QSize& size = QSize(8, 6),
                         QImage::Format format = QImage::Format_ARGB32)
{
    QDir().mkpath(QFileInfo(path).path());
    QImage image(size, format);
    image.fill(color);
    return image.save(path, "PNG");
}
