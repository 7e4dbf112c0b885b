#pragma once
// Icon files for the icon and button tests: plain coloured PNGs written to a
// temporary directory that becomes the icon repository's directory.
#include <QColor>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QString>
#include <QTemporaryDir>

#include "style/CTavoIconRepository.h"

namespace IconTest {

// Writes `name`.png of the given size and colour; returns its path.
inline QString writePng(const QTemporaryDir& dir, const QString& name, const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(colour);
    const QString path = dir.path() + "/" + name + ".png";
    image.save(path, "PNG");
    return path;
}

// Points the repository at `dir`, dropping what it had loaded.
inline void useIconDir(const QTemporaryDir& dir)
{
    iconRepository.clear();
    iconRepository.setIconPath(dir.path() + "/");
}

inline int countColour(const QImage& image, const QRect& area, QRgb colour)
{
    int n = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (image.pixel(x, y) == colour)
                ++n;
    return n;
}

} // namespace IconTest
