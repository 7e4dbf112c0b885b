#pragma once
#include "tgui_export.h"
// A real widget that shows an enlarged strip of another widget (the source)
// above it, centred on a point: used to place the cursor in a text field under
// a finger. The whole source is rendered once, enlarged, into a cache; each
// show only cuts the strip out of the cache and shapes it with the mask.
#include <QImage>
#include <QPoint>
#include <QRect>
#include <QWidget>

class TGUI_EXPORT CTavoMagnifyingGlass : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QImage magGlassMask READ magGlassMask WRITE setMagGlassMask)
    Q_PROPERTY(float magFactor READ magFactor WRITE setMagFactor)
    Q_PROPERTY(int magGap READ magGap WRITE setMagGap)

public:
    CTavoMagnifyingGlass(QWidget* parent, QWidget* source);
    ~CTavoMagnifyingGlass() override;

    QImage magGlassMask() const { return m_mask ? *m_mask : QImage(); }
    void setMagGlassMask(const QImage& mask);
    float magFactor() const { return m_magFactor; }
    void setMagFactor(float factor);
    int magGap() const { return m_magGap; }
    void setMagGap(int gap) { m_magGap = gap; }

    // The part of the source that is rendered; a null rectangle renders it all.
    QRect clip() const { return m_clip; }
    void setClip(const QRect& clip) { m_clip = clip; }
    QWidget* source() const { return m_source; }
    const QImage* cachedImage() const { return m_cachedImage; }
    // How many times the glass was painted anew (a show at the same place is not).
    int renderCount() const { return m_renderCount; }

public slots:
    // point in the source's coordinates.
    void show(QPoint point);
    // The text under the glass changed: the next show renders the source anew.
    void updateMagnifiedView();

private:
    QWidget* m_source;
    QImage* m_mask;
    QImage* m_cachedImage;
    QRect m_clip;
    float m_magFactor;
    int m_magGap;
    int m_renderCount = 0;
};
