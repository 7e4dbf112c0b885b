// Labels and paragraphs through their public interface, checked on pixels.
#include <QPainter>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include "TextTestSupport.h"
#include "style/CTavoStyleSheet.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"
#include "widgets/TavoTextFormat.h"

namespace {

const QChar kEllipsis(0x2026);
const QRgb kWhite = qRgb(255, 255, 255);

class CountingSurface : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

QImage render(CTavoWidget& widget, const QSize& size = QSize(320, 200))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(kWhite);
    QPainter painter(&image);
    widget.paint(&painter);
    return image;
}

int countColour(const QImage& image, bool (*match)(const QColor&))
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (match(image.pixelColor(x, y)))
                ++n;
    return n;
}

bool isRed(const QColor& c) { return c.red() > 180 && c.green() < 90 && c.blue() < 90; }
bool isBlue(const QColor& c) { return c.blue() > 180 && c.red() < 90 && c.green() < 90; }
bool isBlack(const QColor& c) { return c.red() < 40 && c.green() < 40 && c.blue() < 40; }

QFont family(int px)
{
    return TextTest::dejaVu(px);
}

} // namespace

class TestLabel : public QObject
{
    Q_OBJECT

    CTavoStyleSheet m_sheet;

    void useStyle(const QString& style)
    {
        m_sheet.set(style.toUtf8().constData(), "");
    }

private slots:
    void initTestCase() { QVERIFY(!family(14).family().isEmpty()); }

    void repaintsOnlyWhenTheTextChanges()
    {
        CountingSurface surface;
        surface.resize(200, 100);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        CTavoLabelWidget label(&surface, 10, 10, 150, 30);
        label.setStyle(family(14), QPen(Qt::black), 1 | TavoTextNoWrap);
        label.setText("Anna");
        QTRY_VERIFY(surface.paints > 0);
        QCoreApplication::processEvents();
        surface.paints = 0;
        label.setText("Anna");
        QTest::qWait(50);
        QCOMPARE(surface.paints, 0);
        label.setText("Bert");
        QTRY_COMPARE(surface.paints, 1);
        surface.paints = 0;
        label.setText(QString("Carl"), false);
        QTest::qWait(50);
        QCOMPARE(surface.paints, 0);
        QCOMPARE(label.text(), QString("Carl"));
    }

    void emptyTextHidesTheLabel()
    {
        CTavoLabelWidget label(nullptr, 0, 0, 100, 20);
        label.setText("");
        QVERIFY(!label.isVisible());
        label.setText("x");
        QVERIFY(label.isVisible());
        QVERIFY(label.actualSize().width() > 0);
        label.setText(QString());
        QVERIFY(!label.isVisible());
        QCOMPARE(label.actualSize(), QSize(0, 0));
        QCOMPARE(TextTest::inkBox(render(label), kWhite), QRect());

        // A zero-size label takes its size from the text.
        CTavoLabelWidget sized(nullptr);
        sized.setStyle(family(14), QPen(Qt::black), 1);
        sized.setText("Hello");
        QCOMPARE(sized.width(), QFontMetrics(family(14)).horizontalAdvance("Hello"));
        QVERIFY(sized.height() > 0);
        QVERIFY(!TextTest::inkBox(render(sized), kWhite).isEmpty());
    }

    void styleFromTheSheet()
    {
        useStyle("CTavoLabelWidget { font: 20px DejaVu Sans; color: #0000ff; size: 200x40;"
                 " text-align: left; textwrap: nowrap; disabled-color: #ff0000;"
                 " highlighted-color: #ff0000; shadow: true; }");
        CTavoLabelWidget label(nullptr);
        label.setStyleSheet(&m_sheet, true);
        QCOMPARE(label.width(), 200);
        QCOMPARE(label.font().pixelSize(), 20);
        QCOMPARE(label.basePixelSize(), 20);
        QCOMPARE(label.minPixelSize(), 18); // 90 % of the design size
        QCOMPARE(label.color(), QColor(0, 0, 255));
        QCOMPARE(label.invertedColor(), QColor(255, 255, 0));
        QCOMPARE(label.flags(), 1u | TavoTextNoWrap);
        QVERIFY(label.hasShadow());
        QCOMPARE(label.highlightFormat().foreground().color(), QColor(255, 0, 0));

        label.setText("Mail");
        const QImage enabled = render(label);
        QVERIFY(countColour(enabled, isBlue) > 20);
        QVERIFY(countColour(enabled, isBlack) > 10); // the shadow
        QCOMPARE(countColour(enabled, isRed), 0);
        label.setEnabled(false);
        const QImage disabled = render(label);
        QVERIFY(countColour(disabled, isRed) > 20);
        QCOMPARE(countColour(disabled, isBlue), 0);
    }

    void shrinksToFitThenElides()
    {
        useStyle("CTavoLabelWidget { font: 20px DejaVu Sans; size: 150x30;"
                 " minimum-char-pixels: 10; textwrap: nowrap; }");
        CTavoLabelWidget label(nullptr);
        label.setStyleSheet(&m_sheet, true);
        QCOMPARE(label.minPixelSize(), 10);

        label.setText("Anna");
        QCOMPARE(label.currentPixelSize(), 20);
        QVERIFY(!label.isElided());

        // Too wide at 20 px, fits when a little smaller.
        const QString medium = "Anna-Maria Smith";
        QVERIFY(QFontMetrics(family(20)).horizontalAdvance(medium) > 150);
        label.setText(medium);
        QVERIFY(label.currentPixelSize() < 20);
        QVERIFY(label.currentPixelSize() >= 10);
        QVERIFY(!label.isElided());
        QCOMPARE(label.textLayout().text(), medium);
        QVERIFY(QFontMetrics(label.font()).horizontalAdvance(medium) <= 150);
        // The largest size that fits was taken.
        QVERIFY(QFontMetrics(family(label.currentPixelSize() + 1)).horizontalAdvance(medium) > 150);

        // Far too long: stops at the floor and elides.
        label.setText("Anna-Maria Smith-Jones, Head of Customer Relations and Support");
        QCOMPARE(label.currentPixelSize(), 10);
        QVERIFY(label.isElided());
        QVERIFY(label.textLayout().text().endsWith(kEllipsis));

        // A shorter text again starts from the design size.
        label.setText("Bo");
        QCOMPARE(label.currentPixelSize(), 20);
    }

    void highlightedRangeIsDrawnInItsColour()
    {
        useStyle("CTavoLabelWidget { font: 20px DejaVu Sans; color: #000000; size: 300x40;"
                 " highlighted-color: #ff0000; textwrap: nowrap; }");
        CTavoLabelWidget label(nullptr);
        label.setStyleSheet(&m_sheet, true);
        label.setText("Hello World");
        QCOMPARE(countColour(render(label), isRed), 0);

        label.setHighlighted("world");
        const QImage image = render(label);
        QVERIFY(countColour(image, isRed) > 20);
        // The red part stands right of the plain part.
        const int split = QFontMetrics(label.font()).horizontalAdvance("Hello ");
        QImage left = image.copy(0, 0, split - 1, image.height());
        QCOMPARE(countColour(left, isRed), 0);

        label.setHighlighted(-1, 0);
        QCOMPARE(countColour(render(label), isRed), 0);
        label.setHighlighted("absent");
        QCOMPARE(countColour(render(label), isRed), 0);

        // The highlight pen colours the whole text.
        label.setUseHighlightPen(true);
        QVERIFY(countColour(render(label), isRed) > 40);
    }

    void alignmentAndInversion()
    {
        CTavoLabelWidget label(nullptr, 0, 0, 300, 40);
        label.setStyle(family(16), QPen(Qt::black), 2 | TavoTextNoWrap);
        label.setText("right");
        const QRect right = TextTest::inkBox(render(label), kWhite);
        QVERIFY(right.right() >= 295);
        label.setAlignment(1);
        QCOMPARE(label.flags(), 1u | TavoTextNoWrap);
        QVERIFY(TextTest::inkBox(render(label), kWhite).left() <= 3);
        QVERIFY(label.firstLineWidth() > 0);

        QColor out;
        CTavoLabelWidget::invertColor(QColor(10, 20, 30, 40), out);
        QCOMPARE(out, QColor(245, 235, 225, 40));
    }

    void paragraphStacksPlainLines()
    {
        CTavoParagraph paragraph(nullptr, 5, 7, 200, 0);
        paragraph.setStyle(family(14), QPen(Qt::black), 1 | TavoTextWordWrap);
        paragraph.setText("first\n\nthird");
        QCOMPARE(paragraph.lineCount(), 3);
        const int h0 = paragraph.line(0)->height();
        QVERIFY(h0 > 0);
        QCOMPARE(paragraph.line(1)->height(), h0); // the empty line keeps its height
        QCOMPARE(paragraph.line(1)->text(), QString(" "));
        QCOMPARE(paragraph.line(0)->top(), 7);
        QCOMPARE(paragraph.line(1)->top(), 7 + h0);
        QCOMPARE(paragraph.line(2)->top(), 7 + 2 * h0);
        QCOMPARE(paragraph.actualSize().height(), 3 * h0);
        QCOMPARE(paragraph.height(), 3 * h0);

        const QRect ink = TextTest::inkBox(render(paragraph), kWhite);
        QVERIFY(ink.top() >= 7 && ink.bottom() < 7 + 3 * h0);
        QVERIFY(ink.height() > 2 * h0);

        // Moving carries the lines.
        paragraph.move(25, 40);
        QCOMPARE(paragraph.line(2)->top(), 40 + 2 * h0);
        QCOMPARE(paragraph.line(0)->left(), 25);

        // A long line with blanks wraps over several rows and the rest moves down.
        paragraph.setText("one two three four five six seven eight nine ten\nlast");
        QCOMPARE(paragraph.lineCount(), 2);
        QVERIFY(paragraph.line(0)->textLayout().lineCount() >= 2);
        QVERIFY(paragraph.line(0)->height() >= 2 * h0);
        QCOMPARE(paragraph.line(1)->top(), paragraph.line(0)->top() + paragraph.line(0)->height());
        QVERIFY(!paragraph.line(0)->isElided());

        // A long word without blanks wraps anywhere rather than eliding.
        paragraph.setText(QString(60, QChar('w')));
        QCOMPARE(paragraph.lineCount(), 1);
        QVERIFY(!paragraph.line(0)->isElided());
        QVERIFY(paragraph.line(0)->textLayout().lineCount() > 1);

        paragraph.clear();
        QCOMPARE(paragraph.lineCount(), 0);
        QCOMPARE(TextTest::inkBox(render(paragraph), kWhite), QRect());
    }

    void paragraphSpanIsPlainText()
    {
        CTavoParagraph paragraph(nullptr, 0, 0, 200, 0);
        paragraph.setSupportHtml(true);
        paragraph.setStyle(family(14), QPen(Qt::black), 1);
        paragraph.setText("<span>a</span>");
        QVERIFY(!paragraph.showsHtml());
        QCOMPARE(paragraph.lineCount(), 1);
        QCOMPARE(paragraph.line(0)->text(), QString("a"));
    }

    void htmlParagraphProducesPixels()
    {
        useStyle("CTavoParagraph { font: 16px DejaVu Sans; size: 240x10; support-html: true; }");
        CTavoParagraph paragraph(nullptr);
        paragraph.setStyleSheet(&m_sheet, true);
        QVERIFY(paragraph.supportHtml());
        QSignalSpy resized(&paragraph, &CTavoParagraph::contentsSizeChanged);
        paragraph.setText("<p><b>Call</b> from <u>Anna</u></p><p>second paragraph of text</p>");
        QVERIFY(paragraph.showsHtml());
        QCOMPARE(resized.count(), 1);
        QVERIFY(paragraph.image());
        const QImage& image = *paragraph.image();
        QCOMPARE(image.width(), 240);
        QVERIFY(image.height() > 30); // two paragraphs
        QCOMPARE(paragraph.height(), image.height());
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 128)
                    ++opaque;
        QVERIFY(opaque > 100);
        QVERIFY(opaque < image.width() * image.height() / 2); // a transparent page

        // Painted as pixels onto the surface, white text by the default sheet.
        QImage screen(300, 200, QImage::Format_RGB32);
        screen.fill(Qt::black);
        paragraph.move(10, 20);
        QPainter painter(&screen);
        paragraph.paint(&painter);
        painter.end();
        const QRect ink = TextTest::inkBox(screen, qRgb(0, 0, 0));
        QVERIFY(!ink.isEmpty());
        QVERIFY(ink.left() >= 10 && ink.top() >= 20);

        // The same document again is not rendered again.
        paragraph.setText("<p><b>Call</b> from <u>Anna</u></p><p>second paragraph of text</p>");
        QCOMPARE(resized.count(), 1);

        // A second paragraph shares the page; each keeps its own image.
        CTavoParagraph other(nullptr, 0, 0, 120, 0);
        other.setSupportHtml(true);
        other.setText("<i>x</i>");
        QVERIFY(other.image());
        QCOMPARE(paragraph.image()->width(), 240);
        QCOMPARE(other.image()->width(), 120);

        paragraph.setEnabled(false);
        QImage dim(300, 200, QImage::Format_RGB32);
        dim.fill(Qt::black);
        QPainter dimPainter(&dim);
        paragraph.paint(&dimPainter);
        dimPainter.end();
        QVERIFY(!TextTest::inkBox(dim, qRgb(0, 0, 0)).isEmpty());
        QVERIFY(dim != screen);
    }

    void autoCropClosesLongGaps()
    {
        const uint blank = 0xFFFFFFFFu;
        QImage image(8, 1 + 10 + 1 + 3 + 1, QImage::Format_ARGB32);
        image.fill(blank);
        auto ink = [&](int y) {
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(0, 0, 0));
        };
        ink(0);
        ink(11);
        ink(15);
        const QImage cropped = CTavoParagraph::autoCropped(image, blank);
        // 10 blank rows keep 6; 3 keep 3.
        QCOMPARE(cropped.height(), 1 + 6 + 1 + 3 + 1);
        QCOMPARE(cropped.pixel(0, 0), qRgb(0, 0, 0));
        QCOMPARE(cropped.pixel(0, 7), qRgb(0, 0, 0));
        QCOMPARE(cropped.pixel(0, 8), blank);
        QCOMPARE(cropped.pixel(0, 11), qRgb(0, 0, 0));

        // A row that is not all one value is never dropped.
        QImage mixed(4, 9, QImage::Format_ARGB32);
        mixed.fill(blank);
        mixed.setPixel(2, 8, qRgb(1, 2, 3));
        QCOMPARE(CTavoParagraph::autoCropped(mixed, blank).height(), 7);
        QCOMPARE(CTavoParagraph::autoCropped(QImage(), blank), QImage());
    }
};

TAVO_TEXT_TEST_MAIN(TestLabel)
#include "tst_label.moc"
