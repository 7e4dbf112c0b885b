#pragma once
#include "tgui_export.h"
// One icon file of the icon repository, decoded lazily: a raster (type 1) or a
// vector (type 3); type 0 when nothing was found. Missing files answer with the
// shared placeholder. The repository frees what a resource loaded; copies of a
// resource only share its pointers.
#include <QMap>
#include <QSize>
#include <QString>

class QPixmap;
class QSvgRenderer;

class TGUI_EXPORT CIconResource
{
public:
    CIconResource();
    explicit CIconResource(const QString& path);

    int getType() const { return m_type; }
    const QString& fileName() const { return m_fileName; }
    // The "_Inv" form of the file if the skin supplies one; otherwise out is the plain name.
    bool getInvertedFilename(QString& out) const;
    QPixmap* getImage(bool* placeholderUsed, bool inverted);
    QSvgRenderer* getSvg(bool* placeholderUsed, bool inverted);
    QPixmap* getCachedSvgPixmap(const QSize& size, bool inverted);

    // Frees what this resource decoded, leaving the shared placeholders alone.
    void release();

    // The process-wide stand-ins for missing files.
    static QPixmap* placeholderPixmap();
    static QSvgRenderer* placeholderSvg();

private:
    QPixmap* m_image;
    QPixmap* m_invertedImage;
    QSvgRenderer* m_svg;
    int m_type;
    QString m_fileName;
};

// Vector icons rasterised per file, size and inversion; lives as long as the process.
extern TGUI_EXPORT QMap<QString, QPixmap*> gSvgPixmapCache;
