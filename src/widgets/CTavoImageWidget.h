#pragma once
#include "tgui_export.h"
// One picture handed over as an image or as base64 JPEG text; the skin's
// "default-image" shows while there is none.
#include <QByteArray>
#include <QImage>

#include "style/CTavoImage.h"
#include "widgets/CTavoWidget.h"

class TGUI_EXPORT CTavoImageWidget : public CTavoWidget
{
    Q_OBJECT

public:
    explicit CTavoImageWidget(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);

    void setImage(const QImage& image);
    // Base64 of a JPEG; empty data is ignored, undecodable data clears the image.
    void setImage(const QByteArray& base64);

    const QImage& image() const { return m_image; }
    const CTavoImage& defaultImage() const { return m_defaultImage; }

    void layout() override;
    void paint(QPainter* painter) override;

private:
    QImage m_image;
    CTavoImage m_defaultImage;
};
