#pragma once
// Shared by the text tests: a known font loaded from its file, so that widths
// do not depend on the machine's font configuration, and a test main.
#include <QApplication>
#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QImage>
#include <QPainter>
#include <QRect>
#include <QString>
#include <QWidget>
#include <QtTest>

#include "widgets/CTavoWidget.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define TAVO_TEXT_TEST_LSAN 1
#endif
#endif

namespace TextTest {

// DejaVu Sans: Latin, Hebrew and Arabic in one file.
inline QFont dejaVu(int pixelSize)
{
    static const int id = QFontDatabase::addApplicationFont("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf");
    QFont font(id < 0 ? QString() : QFontDatabase::applicationFontFamilies(id).value(0));
    font.setPixelSize(pixelSize);
    font.setStyleStrategy(QFont::NoFontMerging);
    return font;
}

// Pixels of `image` within `area` whose colour differs from `background`, and their bounding box.
inline int inked(const QImage& image, const QRect& area, QRgb background, QRect* box = nullptr)
{
    int count = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            if (image.pixel(x, y) != background && ++count && box)
                *box |= QRect(x, y, 1, 1);
    return count;
}
inline QRect inkBox(const QImage& image, QRgb background)
{
    QRect box;
    inked(image, image.rect(), background, &box);
    return box;
}

const QRgb kWhite = qRgb(255, 255, 255);

// What `widget` paints on a canvas of `background`.
inline QImage render(CTavoWidget& widget, QRgb background = kWhite, const QSize& size = QSize(320, 200))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(background);
    QPainter painter(&image);
    widget.paint(&painter);
    return image;
}

// A shown surface that counts its repaints.
class CountingSurface : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

} // namespace TextTest

// The offscreen platform plugin of Qt 5.15 never frees its screen objects;
// they are made while the application starts, so only that moment is exempt
// from leak checking.
#ifdef TAVO_TEXT_TEST_LSAN
#define TAVO_TEXT_APP_BEGIN __lsan_disable();
#define TAVO_TEXT_APP_END __lsan_enable();
#else
#define TAVO_TEXT_APP_BEGIN
#define TAVO_TEXT_APP_END
#endif

#define TAVO_TEXT_TEST_MAIN(TestClass)                                                      \
    int main(int argc, char** argv)                                                         \
    {                                                                                       \
        TAVO_TEXT_APP_BEGIN                                                                 \
        QApplication app(argc, argv);                                                       \
        TAVO_TEXT_APP_END                                                                   \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                            \
        TestClass tc;                                                                       \
        QTEST_SET_MAIN_SOURCE_PATH                                                          \
        return QTest::qExec(&tc, argc, argv);                                               \
    }
