// Wrapping, eliding and painting of single text blocks, on a known font.
#include <QPainter>
#include <QTextLayout>
#include <QtTest>

#include "TextTestSupport.h"
#include "widgets/TavoTextFormat.h"

namespace {

const QChar kEllipsis(0x2026);
const QChar kLrm(0x200E);
const QChar kRlm(0x200F);
const int kLeft = 1;
const int kHCenter = 4;

const QString kLong = QStringLiteral(
    "The quick brown fox jumps over the lazy dog while the phone keeps ringing in the hall");

struct Block
{
    QFont font = TextTest::dejaVu(14);
    QFontMetrics metrics{font};
    QTextLayout layout{QString(), font};
    bool elided = true;

    QSize format(const QString& text, int w, int h, int flags, bool fromLeft = false,
                 int lineHeight = 0)
    {
        return formatText(&metrics, &layout, text, w, h, flags, &elided, fromLeft, lineHeight);
    }
    QString lineText(int i) const
    {
        const QTextLine line = layout.lineAt(i);
        return layout.text().mid(line.textStart(), line.textLength());
    }
    // Every laid-out line stays inside the box width (whole pixels).
    bool linesFit(int width) const
    {
        for (int i = 0; i < layout.lineCount(); ++i)
            if (int(layout.lineAt(i).naturalTextWidth()) > width)
                return false;
        return true;
    }
};

} // namespace

class TestTextFormat : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(!TextTest::dejaVu(14).family().isEmpty()); }

    void missingArgumentsAndEmptyBox()
    {
        Block b;
        QCOMPARE(formatText(nullptr, &b.layout, "abc", 100, 20, kLeft), QSize(-1, -1));
        QCOMPARE(formatText(&b.metrics, nullptr, "abc", 100, 20, kLeft), QSize(-1, -1));

        // A zero-width box lays nothing out and leaves the layout alone.
        b.layout.setText("previous");
        QCOMPARE(b.format("abc" + QString(kEllipsis), 0, 20, kLeft), QSize(0, 0));
        QCOMPARE(b.layout.text(), QString("previous"));
        QCOMPARE(b.layout.lineCount(), 0);
        QVERIFY(b.elided);
        QCOMPARE(b.format("abc", -5, 20, kLeft), QSize(0, 0));
        QVERIFY(!b.elided);
    }

    void textThatFitsIsKept()
    {
        Block b;
        const QString text = "Anna Miller";
        const QSize size = b.format(text, 300, 40, kLeft | TavoTextWordWrap);
        QCOMPARE(b.layout.text(), text);
        QVERIFY(!b.elided);
        QCOMPARE(b.layout.lineCount(), 1);
        QCOMPARE(size.width(), int(b.layout.lineAt(0).naturalTextWidth() + 1));
        QCOMPARE(size.height(), b.metrics.leading() + int(b.layout.lineAt(0).height()));

        // Several lines when the box is tall enough for all of them.
        b.format("one two three four five six", 60, 400, kLeft | TavoTextWordWrap);
        QVERIFY(b.layout.lineCount() >= 3);
        QVERIFY(!b.layout.text().contains(kEllipsis));
        QVERIFY(!b.elided);
        QVERIFY(b.linesFit(60));
    }

    void elidesAtTheRight()
    {
        Block b;
        b.format(kLong, 120, 20, kLeft | TavoTextNoWrap);
        QCOMPARE(b.layout.lineCount(), 1);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().endsWith(kEllipsis));
        QVERIFY(kLong.startsWith(b.layout.text().chopped(1)));
        QVERIFY(b.linesFit(120));

        // Word wrap in a one-line box: one line that ends with the ellipsis.
        b.format(kLong, 120, 20, kLeft | TavoTextWordWrap);
        QCOMPARE(b.layout.lineCount(), 1);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().endsWith(kEllipsis));
        QVERIFY(b.linesFit(120));

        // A single word longer than the line.
        b.format("Donaudampfschifffahrtsgesellschaft", 100, 40, kLeft | TavoTextWordWrap);
        QVERIFY(b.layout.text().endsWith(kEllipsis));
        QVERIFY(b.layout.text().startsWith("Donau"));
        QVERIFY(b.linesFit(100));
    }

    void elidesAtTheLeft()
    {
        Block b;
        const QString number = "+49 711 1234 5678 9012 3456";
        b.format(number, 90, 20, kLeft | TavoTextNoWrap, true);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().startsWith(kEllipsis));
        QVERIFY(number.endsWith(b.layout.text().mid(1)));
        QVERIFY(b.linesFit(90));

        b.format(kLong, 120, 20, kLeft | TavoTextAnywhere, true);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().startsWith(kEllipsis));
        QVERIFY(b.layout.text().endsWith("hall"));
        QCOMPARE(b.layout.lineCount(), 1);
    }

    void leftElidingOverWordWrappedLines()
    {
        Block b;
        const int lineH = b.metrics.height();
        // Room for three lines; the first stays as it is, the last is left-elided.
        b.format(kLong, 150, 3 * lineH, kLeft | TavoTextWordWrap, true);
        QVERIFY(b.layout.lineCount() >= 2);
        QVERIFY(b.layout.text().startsWith("The quick"));
        QVERIFY(b.layout.text().contains(kEllipsis));
        QVERIFY(b.layout.text().endsWith("hall"));
        QVERIFY(b.lineText(b.layout.lineCount() - 1).startsWith(kEllipsis));
        QVERIFY(b.linesFit(150));

        // A single line box: the whole text elided from the left.
        b.format(kLong, 150, lineH, kLeft | TavoTextWordWrap, true);
        QCOMPARE(b.layout.lineCount(), 1);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().startsWith(kEllipsis));
        QVERIFY(b.layout.text().endsWith("hall"));
    }

    void multiLineOverflowIsShortenedAsAWhole()
    {
        Block b;
        const int lineH = b.metrics.height();
        const QSize size = b.format(kLong, 140, 4 * lineH, kLeft | TavoTextWordWrap);
        QVERIFY(b.elided);
        QVERIFY(b.layout.text().endsWith(kEllipsis));
        QVERIFY(b.layout.lineCount() >= 2);
        QVERIFY(b.linesFit(140));
        QVERIFY(size.height() <= 4 * lineH);
        QVERIFY(size.width() <= 141);
        // The block keeps the start of the text and loses the tail.
        QVERIFY(b.layout.text().startsWith("The quick brown"));
        QVERIFY(!b.layout.text().contains("hall"));

        // Word wrap that may break inside words fills lines without eliding any.
        b.format("abcdefghijklmnopqrstuvwxyz", 50, 400, kLeft | TavoTextWordWrapOrAnywhere);
        QVERIFY(!b.elided);
        QVERIFY(b.layout.lineCount() > 1);
        QVERIFY(b.linesFit(50));
    }

    void fixedLinePitch()
    {
        Block b;
        b.format("one two three four five six seven", 50, 400, kLeft | TavoTextWordWrap,
                 false, 18);
        QVERIFY(b.layout.lineCount() >= 3);
        for (int i = 1; i < b.layout.lineCount(); ++i)
            QCOMPARE(b.layout.lineAt(i).y() - b.layout.lineAt(i - 1).y(), 18.0);
        QCOMPARE(b.layout.lineAt(0).y(), qreal(b.metrics.leading()));
    }

    void centredAlignment()
    {
        Block b;
        b.format("ab", 200, 30, kHCenter | TavoTextNoWrap);
        const QTextLine line = b.layout.lineAt(0);
        const qreal left = line.cursorToX(0);
        const qreal right = 200 - line.cursorToX(2);
        QVERIFY(qAbs(left - right) <= 1.0);
        QVERIFY(left > 50);
    }

    void rightToLeftRepair()
    {
        Block b;
        const QString hebrew = QString::fromUtf8("שם: דוד");
        b.format(hebrew, 300, 30, kLeft | TavoTextNoWrap);
        const QString t = b.layout.text();
        QCOMPARE(t.count(kLrm), 2);
        QVERIFY(t.startsWith(kLrm));
        QCOMPARE(b.layout.textOption().textDirection(), Qt::LeftToRight);
        QCOMPARE(QString(t).remove(kLrm), hebrew);

        const QString paren = QString::fromUtf8("שלום (עולם)");
        b.format(paren, 300, 30, kLeft | TavoTextNoWrap);
        QCOMPARE(b.layout.text(), QString::fromUtf8("שלום (") + kRlm + QString::fromUtf8("עולם)"));
        QCOMPARE(b.layout.textOption().textDirection(), Qt::LayoutDirectionAuto);

        // Latin parentheses inside Hebrew text need no mark.
        b.format(QString::fromUtf8("שלום (abc)"), 300, 30, kLeft | TavoTextNoWrap);
        QVERIFY(!b.layout.text().contains(kRlm));

        // Left-to-right text and text already elided are left alone.
        b.format("Name: David", 300, 30, kLeft | TavoTextNoWrap);
        QCOMPARE(b.layout.text(), QString("Name: David"));
        const QString elided = QString::fromUtf8("שם: דוד") + kEllipsis;
        b.format(elided, 300, 30, kLeft | TavoTextNoWrap);
        QCOMPARE(b.layout.text(), elided);

        // Long right-to-left text still elides, once.
        const QString arabic = QString::fromUtf8("مرحبا بكم في نظام الهاتف الجديد الذي يعمل بشكل جيد جدا");
        b.format(arabic, 100, 20, kLeft | TavoTextNoWrap);
        QVERIFY(b.elided);
        QCOMPARE(b.layout.text().count(kEllipsis), 1);
        QVERIFY(b.linesFit(100));
    }

    void hostileInput()
    {
        Block b;
        QString huge;
        for (int i = 0; i < 2000; ++i)
            huge += QStringLiteral("word%1 ").arg(i);
        for (int flags : {int(TavoTextNoWrap), int(TavoTextWordWrap), int(TavoTextAnywhere),
                          int(TavoTextWordWrapOrAnywhere)}) {
            for (bool left : {false, true}) {
                b.format(huge, 80, 40, kLeft | flags, left);
                QVERIFY(b.layout.text().length() < huge.length());
                QVERIFY(b.layout.text().contains(kEllipsis));
                QVERIFY(b.linesFit(80));
                b.format(huge, 3, 40, kLeft | flags, left);
                b.format(huge, 80, 0, kLeft | flags, left);
                b.format(huge, 80, -10, kLeft | flags, left);
                b.format(QString(), 80, 40, kLeft | flags, left);
                b.format(QString(500, QChar(0x05D0)) + ":" + QString(500, QChar(0x0627)) + "(",
                         80, 40, kLeft | flags, left);
                b.format("\n\r\n\t" + QString(kEllipsis) + QString(kEllipsis), 1, 1, flags, left);
            }
        }
    }

    void paintCentresVertically()
    {
        Block b;
        b.format("Hg", 100, 100, kLeft | TavoTextNoWrap);
        const QRgb white = qRgb(255, 255, 255);
        auto render = [&](bool top, int h) {
            QImage image(100, 120, QImage::Format_RGB32);
            image.fill(white);
            QPainter p(&image);
            p.setPen(Qt::black);
            if (top)
                paintTextLayoutTop(&b.layout, &p, 0, 0, 100, h);
            else
                paintTextLayout(&b.layout, &p, 0, 0, 100, h);
            return image;
        };
        const QRect atTop = TextTest::inkBox(render(true, 100), white);
        const QRect centred = TextTest::inkBox(render(false, 100), white);
        QVERIFY(!atTop.isEmpty());
        const int lineH = int(b.layout.lineAt(0).height());
        QCOMPARE(centred.top() - atTop.top(), (100 - lineH) / 2);
        QCOMPARE(centred.left(), atTop.left());
        // A box lower than the text: no centring.
        QCOMPARE(TextTest::inkBox(render(false, lineH - 4), white), atTop);

        QImage image(10, 10, QImage::Format_RGB32);
        QPainter p(&image);
        paintTextLayout(nullptr, &p, 0, 0, 10, 10);
        paintTextLayout(&b.layout, nullptr, 0, 0, 10, 10);
        QTextLayout empty;
        paintTextLayout(&empty, &p, 0, 0, 10, 10);
        paintTextLayoutTop(nullptr, &p, 0, 0, 10, 10);
    }

    void paintWithClipSkipsLinesOutside()
    {
        Block b;
        const int lineH = b.metrics.height();
        b.format("first line xx second", 60, 10 * lineH, kLeft | TavoTextWordWrap);
        QVERIFY(b.layout.lineCount() >= 2);
        const QRgb white = qRgb(255, 255, 255);
        QImage image(100, 200, QImage::Format_RGB32);
        image.fill(white);
        QPainter p(&image);
        p.setPen(Qt::black);
        // A box lower than the text: no centring, the lines stand where the layout put them.
        paintTextLayoutWithClipping(&b.layout, &p, 0, 0, 100, 0, QRect(0, 0, 100, lineH / 2));
        p.end();
        const QTextLine second = b.layout.lineAt(1);
        QVERIFY(TextTest::inked(image, QRect(0, 0, 100, lineH), white) > 0);
        QCOMPARE(TextTest::inked(image, QRect(0, int(second.y()) + 1, 100, 200), white), 0);
    }

    void utilPaintTextDrawsInsideItsBox()
    {
        const QRgb white = qRgb(255, 255, 255);
        QImage image(200, 60, QImage::Format_RGB32);
        image.fill(white);
        QPainter p(&image);
        p.setFont(TextTest::dejaVu(40));
        p.setPen(Qt::green);
        utilPaintText(&p, QRect(10, 10, 80, 30), kLeft | TavoTextNoWrap, kLong, QPen(Qt::red),
                      TextTest::dejaVu(12));
        QCOMPARE(p.pen().color(), QColor(Qt::green));
        QCOMPARE(p.font().pixelSize(), 40);
        p.end();
        const QRect box = TextTest::inkBox(image, white);
        QVERIFY(!box.isEmpty());
        // Antialiasing may bleed one pixel.
        QVERIFY(QRect(9, 9, 82, 32).contains(box));
        bool red = false;
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x) {
                const QColor c = image.pixelColor(x, y);
                QVERIFY(c.green() == c.blue());
                red = red || (c.red() > 200 && c.green() < 60);
            }
        QVERIFY(red);
        utilPaintText(nullptr, QRect(0, 0, 10, 10), 0, "x", QPen(), QFont());
    }
};

TAVO_TEXT_TEST_MAIN(TestTextFormat)
#include "tst_textformat.moc"
