#pragma once
#include "tgui_export.h"
// The one place where single-block text is wrapped and elided, and the few
// painters that draw the prepared layouts. Labels and captions call these, so
// every text on the screen breaks and elides the same way.
#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QRect>
#include <QSize>
#include <QString>
#include <QTextLayout>
#include <QVector>

class QPainter;
class QPen;

// Wrap bits of the text flags; they sit beside the alignment bits.
enum TavoTextWrapFlagsT {
    TavoTextNoWrap = 256,
    TavoTextWordWrap = 4096,
    TavoTextAnywhere = 8192,
    TavoTextWordWrapOrAnywhere = 12288
};

// A font's size in pixels, also for a font whose size was given in points.
inline int pixelSizeOf(const QFont& font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
}

// The process-wide ellipsis, one character (U+2026).
TGUI_EXPORT const QString& tavoTextEllipsis();

// Lays `text` out into `layout` for a box of width x height, wrapping by the
// wrap bits of `flags` and shortening the whole text with the ellipsis when
// it would overflow. Returns the natural size (widest line plus one, height
// used); (-1, -1) without metrics or layout, (0, 0) for a width below 1.
TGUI_EXPORT QSize formatText(QFontMetrics* metrics, QTextLayout* layout, QString text, int width,
                 int height, int flags, bool* elided = nullptr, bool elideFromLeft = false,
                 int lineHeight = 0, QVector<int> lineWidths = QVector<int>());

// Draws a prepared layout at (x, y), centred vertically in a box of height h.
TGUI_EXPORT void paintTextLayout(QTextLayout* layout, QPainter* painter, int x, int y, int w, int h);
// The same, top-aligned.
TGUI_EXPORT void paintTextLayoutTop(QTextLayout* layout, QPainter* painter, int x, int y, int w, int h);
// As paintTextLayout, drawing only inside `clip`.
TGUI_EXPORT void paintTextLayoutWithClipping(QTextLayout* layout, QPainter* painter, int x, int y, int w,
                                 int h, const QRect& clip);

// One-off text: formats `text` into `rect`, measured with the painter's font,
// lays it out in `font` and paints it with `pen`, which stays set.
TGUI_EXPORT void utilPaintText(QPainter* painter, const QRect& rect, int flags, const QString& text,
                   const QPen& pen, const QFont& font);
