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
using TextTest::CountingSurface;
using TextTest::kWhite;
using TextTest::render;

// Pixels clearly red (r), blue (b) or black (k).
int count(const QImage& image, char colour)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            const int r = c.red(), g = c.green(), b = c.blue();
            n += colour == 'r' ? (r > 180 && g < 90 && b < 90)
               : colour == 'b' ? (b > 180 && r < 90 && g < 90) : (r < 40 && g < 40 && b < 40);
        }
    return n;
}

} // namespace

class TestLabel : public QObject
{
    Q_OBJECT
    CTavoStyleSheet m_sheet;

    void styled(CTavoWidget& widget, const char* style)
    {
        m_sheet.set(style, "");
        widget.setStyleSheet(&m_sheet, true);
    }

private slots:
    void initTestCase() { QVERIFY(!TextTest::dejaVu(14).family().isEmpty()); }

    void repaintsOnlyWhenTheTextChanges()
    {
        CountingSurface surface;
        surface.resize(200, 100);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        CTavoLabelWidget label(&surface, 10, 10, 150, 30);
        label.setStyle(TextTest::dejaVu(14), QPen(Qt::black), 1 | TavoTextNoWrap);
        label.setText("Anna");
        QTRY_VERIFY(surface.paints > 0);
        QCoreApplication::processEvents();
        surface.paints = 0;
        label.setText("Anna");
        label.setText(QString("Carl"), false);
        QTest::qWait(50);
        QCOMPARE(surface.paints, 0);
        label.setText("Bert");
        QTRY_COMPARE(surface.paints, 1);
    }

    void emptyTextHidesAndZeroBoxesFollowTheText()
    {
        CTavoLabelWidget label(nullptr, 0, 0, 100, 20);
        label.setText("");
        QVERIFY(!label.isVisible());
        label.setText("x");
        QVERIFY(label.isVisible() && label.actualSize().width() > 0);
        label.setText(QString());
        QVERIFY(!label.isVisible());
        QCOMPARE(label.actualSize(), QSize(0, 0));
        QCOMPARE(TextTest::inkBox(render(label), kWhite), QRect());

        CTavoLabelWidget sized(nullptr);
        sized.setStyle(TextTest::dejaVu(14), QPen(Qt::black), 1);
        sized.setText("Hello");
        QCOMPARE(sized.width(), QFontMetrics(TextTest::dejaVu(14)).horizontalAdvance("Hello"));
        QVERIFY(sized.height() > 0 && !TextTest::inkBox(render(sized), kWhite).isEmpty());
    }

    void styleGivesColoursShadowAndMinimum()
    {
        CTavoLabelWidget label;
        styled(label, "CTavoLabelWidget { font: 20px DejaVu Sans; color: #0000ff; size: 200x40; text-align: left;"
                      " textwrap: nowrap; disabled-color: #ff0000; shadow: true; }");
        QCOMPARE(label.minPixelSize(), 18); // 90 % of the design size
        QCOMPARE(label.invertedColor(), QColor(255, 255, 0));
        label.setText("Mail");
        const QImage enabled = render(label);
        QVERIFY(count(enabled, 'b') > 20 && count(enabled, 'k') > 10 && count(enabled, 'r') == 0);
        label.setEnabled(false);
        const QImage disabled = render(label);
        QVERIFY(count(disabled, 'r') > 20 && count(disabled, 'b') == 0);

        QColor out;
        CTavoLabelWidget::invertColor(QColor(10, 20, 30, 40), out);
        QCOMPARE(out, QColor(245, 235, 225, 40));
    }

    void shrinksToFitThenElides()
    {
        CTavoLabelWidget label;
        styled(label, "CTavoLabelWidget { font: 20px DejaVu Sans; size: 150x30; minimum-char-pixels: 10;"
                      " textwrap: nowrap; }");
        label.setText("Anna");
        QCOMPARE(label.currentPixelSize(), 20);
        // Too wide at 20 px: the largest size that fits is taken.
        const QString medium = "Anna-Maria Smith";
        label.setText(medium);
        const int size = label.currentPixelSize();
        QVERIFY(size < 20 && size >= 10 && !label.isElided());
        QVERIFY(QFontMetrics(label.font()).horizontalAdvance(medium) <= 150);
        QVERIFY(QFontMetrics(TextTest::dejaVu(size + 1)).horizontalAdvance(medium) > 150);
        // Far too long: stops at the floor and elides.
        label.setText("Anna-Maria Smith-Jones, Head of Customer Relations and Support");
        QCOMPARE(label.currentPixelSize(), 10);
        QVERIFY(label.isElided() && label.textLayout().text().endsWith(kEllipsis));
        // A text of another length starts again from the design size.
        label.setText("Bo");
        QCOMPARE(label.currentPixelSize(), 20);
    }

    void highlightAndAlignment()
    {
        CTavoLabelWidget label;
        styled(label, "CTavoLabelWidget { font: 20px DejaVu Sans; color: #000000; size: 300x40;"
                      " highlighted-color: #ff0000; textwrap: nowrap; }");
        label.setText("Hello World");
        QCOMPARE(count(render(label), 'r'), 0);
        label.setHighlighted("world");
        const QImage image = render(label);
        QVERIFY(count(image, 'r') > 20);
        // Only the part right of "Hello " is red.
        const int split = QFontMetrics(label.font()).horizontalAdvance("Hello ");
        QCOMPARE(count(image.copy(0, 0, split - 1, image.height()), 'r'), 0);
        label.setHighlighted(-1, 0);
        QCOMPARE(count(render(label), 'r'), 0);
        label.setHighlighted("absent");
        QCOMPARE(count(render(label), 'r'), 0);
        // The highlight pen colours the whole text.
        label.setUseHighlightPen(true);
        QVERIFY(count(render(label), 'r') > 40);

        label.setUseHighlightPen(false);
        label.setAlignment(2);
        QVERIFY(TextTest::inkBox(render(label), kWhite).right() >= 295);
        label.setAlignment(1);
        QCOMPARE(label.flags(), 1u | TavoTextNoWrap);
        QVERIFY(TextTest::inkBox(render(label), kWhite).left() <= 3);
    }

    void paragraphStacksPlainLines()
    {
        CTavoParagraph paragraph(nullptr, 5, 7, 200, 0);
        paragraph.setStyle(TextTest::dejaVu(14), QPen(Qt::black), 1 | TavoTextWordWrap);
        paragraph.setText("first\n\nthird");
        QCOMPARE(paragraph.lineCount(), 3);
        const int h0 = paragraph.line(0)->height();
        QVERIFY(h0 > 0);
        // The empty middle line keeps one blank line's height.
        QCOMPARE(paragraph.line(1)->text(), QString(" "));
        QCOMPARE((QList<int>{paragraph.line(2)->top(), paragraph.actualSize().height(), paragraph.height()}),
                 (QList<int>{7 + 2 * h0, 3 * h0, 3 * h0}));
        const QRect ink = TextTest::inkBox(render(paragraph), kWhite);
        QVERIFY(ink.top() >= 7 && ink.bottom() < 7 + 3 * h0 && ink.height() > 2 * h0);
        paragraph.move(25, 40);
        QCOMPARE(paragraph.line(2)->pos(), QPoint(25, 40 + 2 * h0));

        // A long line with blanks wraps over several rows and the rest moves down.
        paragraph.setText("one two three four five six seven eight nine ten\nlast");
        QCOMPARE(paragraph.lineCount(), 2);
        QVERIFY(paragraph.line(0)->height() >= 2 * h0 && !paragraph.line(0)->isElided());
        QCOMPARE(paragraph.line(1)->top(), paragraph.line(0)->top() + paragraph.line(0)->height());
        // A long word without blanks wraps anywhere rather than eliding.
        paragraph.setText(QString(60, QChar('w')));
        QVERIFY(!paragraph.line(0)->isElided() && paragraph.line(0)->textLayout().lineCount() > 1);
        paragraph.clear();
        QCOMPARE(paragraph.lineCount(), 0);
        QCOMPARE(TextTest::inkBox(render(paragraph), kWhite), QRect());

        // A span is plain text even where HTML is supported.
        paragraph.setSupportHtml(true);
        paragraph.setText("<span>a</span>");
        QVERIFY(!paragraph.showsHtml());
        QCOMPARE(paragraph.line(0)->text(), QString("a"));
    }

    void htmlIsRenderedOnceIntoAnImage()
    {
        CTavoParagraph paragraph;
        styled(paragraph, "CTavoParagraph { font: 16px DejaVu Sans; size: 240x10; support-html: true; }");
        QSignalSpy resized(&paragraph, &CTavoParagraph::contentsSizeChanged);
        const QString html = "<p><b>Call</b> from <u>Anna</u></p><p>second paragraph of text</p>";
        paragraph.setText(html);
        QVERIFY(paragraph.showsHtml() && paragraph.image() && resized.count() == 1);
        const QImage& image = *paragraph.image();
        // Two paragraphs.
        QVERIFY(image.width() == 240 && image.height() > 30 && paragraph.height() == image.height());
        // A transparent page with white text by the default sheet.
        const int ink = TextTest::inked(image, image.rect(), 0u);
        QVERIFY(ink > 100 && ink < image.width() * image.height() / 2);
        paragraph.move(10, 20);
        const QImage screen = render(paragraph, qRgb(0, 0, 0));
        const QRect box = TextTest::inkBox(screen, qRgb(0, 0, 0));
        QVERIFY(!box.isEmpty() && box.left() >= 10 && box.top() >= 20);
        paragraph.setText(html);
        QCOMPARE(resized.count(), 1);

        // A second paragraph shares the page; each keeps its own image.
        CTavoParagraph other(nullptr, 0, 0, 120, 0);
        other.setSupportHtml(true);
        other.setText("<i>x</i>");
        QVERIFY(other.image() && other.image()->width() == 120 && paragraph.image()->width() == 240);
        paragraph.setEnabled(false);
        const QImage dim = render(paragraph, qRgb(0, 0, 0));
        QVERIFY(!TextTest::inkBox(dim, qRgb(0, 0, 0)).isEmpty() && dim != screen);
    }

    void autoCropClosesLongGaps()
    {
        const uint blank = 0xFFFFFFFFu;
        QImage image(8, 16, QImage::Format_ARGB32);
        image.fill(blank);
        for (int y : {0, 11, 15})
            for (int x = 0; x < image.width(); ++x)
                image.setPixel(x, y, qRgb(0, 0, 0));
        image.setPixel(3, 13, qRgb(1, 2, 3)); // not all one value: kept
        const QImage cropped = CTavoParagraph::autoCropped(image, blank);
        // 10 blank rows keep 6; the short gaps stay whole.
        QCOMPARE(cropped.height(), 1 + 6 + 1 + 3 + 1);
        QCOMPARE(cropped.pixel(0, 7), qRgb(0, 0, 0));
        QCOMPARE(cropped.pixel(3, 9), qRgb(1, 2, 3));
        QCOMPARE(CTavoParagraph::autoCropped(QImage(), blank), QImage());
    }
};

TAVO_TEXT_TEST_MAIN(TestLabel)
#include "tst_label.moc"
