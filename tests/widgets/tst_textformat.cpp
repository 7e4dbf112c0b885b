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
const QRgb kWhite = qRgb(255, 255, 255);
const QString kLong = QStringLiteral(
    "The quick brown fox jumps over the lazy dog while the phone keeps ringing in the hall");

struct Block
{
    QFont font = TextTest::dejaVu(14);
    QFontMetrics metrics{font};
    QTextLayout layout{QString(), font};
    bool elided = true;

    QSize format(const QString& text, int w, int h, int flags, bool fromLeft = false, int lineHeight = 0)
    {
        return formatText(&metrics, &layout, text, w, h, flags, &elided, fromLeft, lineHeight);
    }
    // Every laid-out line stays inside the box width (whole pixels).
    bool linesFit(int width) const
    {
        for (int i = 0; i < layout.lineCount(); ++i)
            if (int(layout.lineAt(i).naturalTextWidth()) > width)
                return false;
        return true;
    }
    QImage paint(void (*painter)(QTextLayout*, QPainter*, int, int, int, int), int h)
    {
        QImage image(100, 120, QImage::Format_RGB32);
        image.fill(kWhite);
        QPainter p(&image);
        painter(&layout, &p, 0, 0, 100, h);
        return image;
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
        // No width: nothing laid out, the layout left alone, the ellipsis still reported.
        b.layout.setText("previous");
        QCOMPARE(b.format("abc" + QString(kEllipsis), 0, 20, kLeft), QSize(0, 0));
        QCOMPARE(b.layout.text(), QString("previous"));
        QVERIFY(b.elided);
        QCOMPARE(b.format("abc", -5, 20, kLeft), QSize(0, 0));
        QVERIFY(!b.elided);
    }

    void textThatFitsIsKept()
    {
        Block b;
        const QSize size = b.format("Anna Miller", 300, 40, kLeft | TavoTextWordWrap);
        QCOMPARE(b.layout.text(), QString("Anna Miller"));
        QVERIFY(!b.elided);
        QCOMPARE(size, QSize(int(b.layout.lineAt(0).naturalTextWidth() + 1),
                             b.metrics.leading() + int(b.layout.lineAt(0).height())));
        // A fixed pitch replaces the line height, leading included.
        b.format("one two three four five six seven", 50, 400, kLeft | TavoTextWordWrap, false, 18);
        QVERIFY(b.layout.lineCount() >= 3);
        QVERIFY(!b.elided && b.linesFit(50));
        QCOMPARE(b.layout.lineAt(0).y(), qreal(b.metrics.leading()));
        for (int i = 1; i < b.layout.lineCount(); ++i)
            QCOMPARE(b.layout.lineAt(i).y() - b.layout.lineAt(i - 1).y(), 18.0);
        // Breaking inside words fills lines without eliding any.
        b.format("abcdefghijklmnopqrstuvwxyz", 50, 400, kLeft | TavoTextWordWrapOrAnywhere);
        QVERIFY(!b.elided && b.layout.lineCount() > 1 && b.linesFit(50));
        // Centred alignment comes from the flags.
        b.format("ab", 200, 30, 4 | TavoTextNoWrap);
        const qreal left = b.layout.lineAt(0).cursorToX(0);
        QVERIFY(left > 50 && qAbs(left - (200 - b.layout.lineAt(0).cursorToX(2))) <= 1.0);
    }

    void overflowIsElided_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("lines"); // box height in lines of the font
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("fromLeft");
        QTest::addColumn<QString>("kept"); // "^x": starts with x, "x$": ends with x
        QTest::addColumn<int>("lineCount"); // 0: more than one
        const QString number = "+49 711 1234 5678 9012 3456";
        QTest::newRow("no wrap") << kLong << 120 << 1 << int(TavoTextNoWrap) << false << "^The quick" << 1;
        QTest::newRow("word wrap, one line") << kLong << 120 << 1 << int(TavoTextWordWrap) << false << "^The" << 1;
        QTest::newRow("word longer than line") << "Donaudampfschifffahrtsgesellschaft" << 100 << 2
                                               << int(TavoTextWordWrap) << false << "^Donau" << 1;
        QTest::newRow("several lines") << kLong << 140 << 4 << int(TavoTextWordWrap) << false
                                       << "^The quick brown" << 0;
        QTest::newRow("left, no wrap") << number << 90 << 1 << int(TavoTextNoWrap) << true << "3456$" << 1;
        QTest::newRow("left, anywhere") << kLong << 120 << 1 << int(TavoTextAnywhere) << true << "hall$" << 1;
        QTest::newRow("left, word wrap, one line") << kLong << 150 << 1 << int(TavoTextWordWrap) << true
                                                   << "hall$" << 1;
        // Over several word-wrapped lines the first stays and the last is left-elided.
        QTest::newRow("left, word wrap, lines") << kLong << 150 << 3 << int(TavoTextWordWrap) << true
                                                << "^The quick" << 0;
    }
    void overflowIsElided()
    {
        QFETCH(QString, text);
        QFETCH(int, width);
        QFETCH(int, lines);
        QFETCH(int, flags);
        QFETCH(bool, fromLeft);
        QFETCH(QString, kept);
        QFETCH(int, lineCount);
        Block b;
        const QSize size = b.format(text, width, lines * b.metrics.height(), kLeft | flags, fromLeft);
        const QString out = b.layout.text();
        QCOMPARE(out.count(kEllipsis), 1);
        QVERIFY(b.linesFit(width));
        QVERIFY(size.width() <= width + 1 && size.height() <= lines * b.metrics.height());
        if (lineCount)
            QCOMPARE(b.layout.lineCount(), lineCount);
        else
            QVERIFY(b.layout.lineCount() >= 2);
        QVERIFY(kept.startsWith('^') ? out.startsWith(kept.mid(1)) : out.endsWith(kept.chopped(1)));
        if (fromLeft && lineCount == 0) {
            const QTextLine last = b.layout.lineAt(b.layout.lineCount() - 1);
            QVERIFY(out.mid(last.textStart()).startsWith(kEllipsis));
            QVERIFY(out.endsWith("hall"));
        } else {
            // The flag reports the ellipsis at the end it was cut from.
            QVERIFY(b.elided);
            QVERIFY(fromLeft ? out.startsWith(kEllipsis) : out.endsWith(kEllipsis));
        }
    }

    void rightToLeftRepair_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("laidOut");
        QTest::addColumn<int>("direction");
        const QString name = QString::fromUtf8("שם: דוד");
        QTest::newRow("label: value") << name << QString(kLrm) + QString::fromUtf8("שם") + kLrm
                                                     + QString::fromUtf8(": דוד")
                                      << int(Qt::LeftToRight);
        QTest::newRow("parenthesis") << QString::fromUtf8("שלום (עולם)")
                                     << QString::fromUtf8("שלום (") + kRlm + QString::fromUtf8("עולם)")
                                     << int(Qt::LayoutDirectionAuto);
        QTest::newRow("latin inside") << QString::fromUtf8("שלום (abc)") << QString::fromUtf8("שלום (abc)")
                                      << int(Qt::LayoutDirectionAuto);
        QTest::newRow("left to right") << "Name: David" << "Name: David" << int(Qt::LayoutDirectionAuto);
        QTest::newRow("already elided") << name + kEllipsis << name + kEllipsis << int(Qt::LayoutDirectionAuto);
    }
    void rightToLeftRepair()
    {
        QFETCH(QString, text);
        Block b;
        b.format(text, 300, 30, kLeft | TavoTextNoWrap);
        QTEST(b.layout.text(), "laidOut");
        QTEST(int(b.layout.textOption().textDirection()), "direction");
    }

    void hostileInputEndsShortened()
    {
        Block b;
        QString huge;
        for (int i = 0; i < 2000; ++i)
            huge += QStringLiteral("word%1 ").arg(i);
        const QString arabic = QString::fromUtf8("مرحبا بكم في نظام الهاتف الجديد الذي يعمل بشكل جيد جدا");
        for (int flags : {int(TavoTextNoWrap), int(TavoTextWordWrap), int(TavoTextAnywhere),
                          int(TavoTextWordWrapOrAnywhere)}) {
            for (bool left : {false, true}) {
                for (const QString& text : {huge, arabic}) {
                    b.format(text, 80, 40, kLeft | flags, left);
                    QVERIFY(b.layout.text().length() < text.length() + 2);
                    QCOMPARE(b.layout.text().count(kEllipsis), 1);
                    QVERIFY(b.linesFit(80));
                }
                for (int h : {0, -10})
                    b.format(huge, 80, h, kLeft | flags, left);
                b.format(huge, 3, 40, kLeft | flags, left);
                b.format(QString(), 80, 40, kLeft | flags, left);
                b.format(QString(500, QChar(0x05D0)) + ":" + QString(500, QChar(0x0627)) + "(", 80, 40,
                         kLeft | flags, left);
                b.format("\n\r\n\t" + QString(kEllipsis) + QString(kEllipsis), 1, 1, flags, left);
            }
        }
    }

    void paintCentresVerticallyWhenThereIsRoom()
    {
        Block b;
        b.format("Hg", 100, 100, kLeft | TavoTextNoWrap);
        const QRect atTop = TextTest::inkBox(b.paint(paintTextLayoutTop, 100), kWhite);
        const QRect centred = TextTest::inkBox(b.paint(paintTextLayout, 100), kWhite);
        QVERIFY(!atTop.isEmpty());
        const int lineH = int(b.layout.lineAt(0).height());
        QCOMPARE(centred.topLeft(), atTop.topLeft() + QPoint(0, (100 - lineH) / 2));
        QCOMPARE(TextTest::inkBox(b.paint(paintTextLayout, lineH - 4), kWhite), atTop);

        QImage image(10, 10, QImage::Format_RGB32);
        QPainter p(&image);
        QTextLayout empty;
        paintTextLayout(nullptr, &p, 0, 0, 10, 10);
        paintTextLayout(&b.layout, nullptr, 0, 0, 10, 10);
        paintTextLayout(&empty, &p, 0, 0, 10, 10);
        paintTextLayoutTop(nullptr, &p, 0, 0, 10, 10);
        p.end();

        // The clip keeps lines outside it from being drawn.
        b.format("first line xx second", 60, 10 * b.metrics.height(), kLeft | TavoTextWordWrap);
        QVERIFY(b.layout.lineCount() >= 2);
        image = QImage(100, 200, QImage::Format_RGB32);
        image.fill(kWhite);
        p.begin(&image);
        paintTextLayoutWithClipping(&b.layout, &p, 0, 0, 100, 0, QRect(0, 0, 100, b.metrics.height() / 2));
        p.end();
        QVERIFY(TextTest::inked(image, QRect(0, 0, 100, b.metrics.height()), kWhite) > 0);
        QCOMPARE(TextTest::inked(image, QRect(0, int(b.layout.lineAt(1).y()) + 1, 100, 200), kWhite), 0);
    }

    void utilPaintTextMeasuresWithThePainterFont()
    {
        auto paint = [](int painterPixels) {
            QImage image(200, 60, QImage::Format_RGB32);
            image.fill(kWhite);
            QPainter p(&image);
            p.setFont(TextTest::dejaVu(painterPixels));
            utilPaintText(&p, QRect(10, 10, 80, 30), kLeft | TavoTextWordWrap, kLong, QPen(Qt::red),
                          TextTest::dejaVu(12));
            [&] { QCOMPARE(p.pen().color(), QColor(Qt::red)); }();
            return image;
        };
        const QImage image = paint(12);
        const QRect box = TextTest::inkBox(image, kWhite);
        // Elided to the box; antialiasing may bleed one pixel.
        QVERIFY(box.width() > 40 && QRect(9, 9, 82, 32).contains(box));
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x)
                QVERIFY(image.pixelColor(x, y).green() == image.pixelColor(x, y).blue());
        // Measured in a larger painter font, less of the text is kept: one line, not two.
        const QRect small = TextTest::inkBox(paint(40), kWhite);
        QVERIFY(small.width() < box.width() && small.height() < box.height());
        utilPaintText(nullptr, QRect(0, 0, 10, 10), 0, "x", QPen(), QFont());
    }
};

TAVO_TEXT_TEST_MAIN(TestTextFormat)
#include "tst_textformat.moc"
