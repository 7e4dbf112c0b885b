#pragma once
#include "tgui_export.h"
// A handle on a picture held by the resource repository: a raster image, a
// pixmap or a vector renderer. Two words, copied by value, never owning.
#include <QMetaType>
#include <QSize>
#include <QString>

class QPainter;
class QRect;
class QImage;
class QPixmap;

// Value types of the style language beyond Qt's own meta types.
enum TavoStyleTypeT
{
    TavoLinearGradientType = 257,
    TavoRadialGradientType = 258,
    TavoKeywordType = 259,
    TavoAnimationType = 260,
    TavoVectorImageType = 261
};

class TGUI_EXPORT CTavoImage
{
public:
    CTavoImage();
    // Keeps the pointer only for QImage, QPixmap and the vector type; the name is not kept.
    CTavoImage(QMetaType::Type type, void* data, const QString& name = QString());
    explicit CTavoImage(QPixmap* pixmap);

    bool isNull() const;
    QSize size() const;
    int width() const;
    int height() const;

    // A handle with a null pointer on the left equals everything.
    bool operator==(const CTavoImage& other) const;
    bool operator!=(const CTavoImage& other) const;

    bool paint(QPainter* painter, const QRect& rect) const;
    QPixmap pixmap() const;
    QImage data() const;
    void dim();
    void append(const CTavoImage& other);
    CTavoImage& operator<<(const CTavoImage& other);
    bool update(QMetaType::Type type, const QString& path, bool centered = false);
    void drawCenteredImage(const QString& path);

    QMetaType::Type type() const { return m_type; }
    void* pointer() const { return m_data; }

    static bool s_removeVideoKey;

private:
    QMetaType::Type m_type;
    void* m_data;
};
