// The sample skin in the run folder: what its surfaces give the widgets that
// the demo's screenshots cannot tell (focus and urgent looks, badge and label
// places), and that the icons the demo shows are real files. The manager's
// block and the tiles' places are proven on the demo's pixels.
#include <QtTest>

#include <QPainter>
#include <QSvgRenderer>

#include "style/CTavoIconRepository.h"
#include "style/CTavoResourceRepository.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoIconLabel.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoVarWidthButton.h"
#include "widgets/CTavoWidget.h"

class TestSampleSkin : public QObject
{
    Q_OBJECT
    QString m_oldCwd;
    CTavoStyleSheetFile m_file;

    // The style sheet of one item of the skin file.
    void load(CTavoStyleSheet& sheet, const char* item)
    {
        sheet.set(m_file.getStyle(item).toLatin1().constData(), m_file.getAttributes(item).toLatin1().constData());
    }

private slots:
    void initTestCase()
    {
        m_oldCwd = QDir::currentPath();
        QVERIFY(QDir::setCurrent(qEnvironmentVariable("TGUI_RUN_DIR", TGUI_SOURCE_DIR "/run")));
        QCOMPARE(m_file.parse("Skins/default/default.xml"), 0);
    }
    void cleanupTestCase()
    {
        iconRepository.clear();
        StyleResourceContainer.reset();
        CTavoWidgetStyle::resetScaling();
        QDir::setCurrent(m_oldCwd);
    }

    void homeTilesAreLaidOutWithIconLabelAndLooks()
    {
        CTavoStyleSheet sheet;
        load(sheet, "home");
        QVERIFY(sheet.get("CTavoLabelWidget#title") && sheet.get("CTavoParagraph#intro"));
        iconRepository.setIconPath(QString());
        iconRepository.clear();
        CTavoButton tile;
        tile.setObjectName("Messages");
        tile.setStyleSheet(&sheet, true);
        TavoButtonSettings settings;
        settings.set("Messages", "Messages", "home:messages", QString(), QString(),
                     CTavoIconDefinition(QString(), "3", 5), "", 1);
        tile.init(&settings);
        QCOMPARE(tile.rect(), QRect(66, 176, 148, 124));
        QVERIFY(tile.backgroundBrush() && tile.pressAnimation() && !tile.focusedPressedImage().isNull() && !tile.focusedImage().isNull()
                && tile.focusedImage() != tile.pressedImage());
        // The icon stands centred 14 pixels below the top; its count badge beside it.
        QCOMPARE(tile.icon()->pos(), QPoint(66 + 46, 176 + 14));
        QCOMPARE(tile.icon()->iconRect().size(), QSize(56, 56));
        QVERIFY(tile.icon()->label()->isVisible() && tile.icon()->label()->text() == "3");
        QCOMPARE(tile.icon()->label()->rect().size(), QSize(24, 24));
        // The label fills the content and sits at its bottom.
        QVERIFY(tile.labelWidget()->isVisible() && tile.rect().contains(tile.labelWidget()->rect()));
        QCOMPARE(tile.labelWidget()->pen().color(), QColor("#ffffff"));
        // Urgent tiles take their own block and keep their place.
        tile.setPriority(ItemPriorityUrgent);
        QCOMPARE(tile.pseudoState(), QString("urgent"));
        QCOMPARE(tile.pos(), QPoint(66, 176));
        QVERIFY(tile.backgroundBrush() && tile.backgroundBrush()->color().red() == 230);
        iconRepository.clear();
    }

    void softkeysHaveTheirLooksAndSpanTheBottom()
    {
        CTavoStyleSheet sheet;
        load(sheet, "softkeys");
        for (const char* selector : {"CTavoButton", "CTavoButton#softkey-button", "CTavoButton:urgent"}) {
            CTavoWidgetStyle* block = sheet.get(selector);
            QVERIFY2(block && !block->Image("background-pressed-image").isNull()
                         && block->BrushPtr("background-focused"), selector);
        }
        CTavoWidgetStyle* surface = sheet.get("CTavoSoftkey");
        QVERIFY(surface && surface->Location("location") == QPoint(0, 416));
        QVERIFY(surface->Bool("put-more-sk-at-page-end", false));
        // Pages of four keys of 196 pixels, two apart, four from the edge: the row spans the bottom.
        CTavoWidgetStyle* pages = sheet.get("CTavoPageView#softkey-pageview");
        QVERIFY(pages && pages->Size("page-layout") == QSize(4, 1));
        const int keyWidth = sheet.get("CTavoButton#softkey-button")->Size("size").width();
        const int right = int(pages->UInt("inter-page-gap", 0)) + 4 * keyWidth + 3 * int(pages->UInt("item-gap", 0));
        QVERIFY(right > 780 && right < 800);
        CTavoVarWidthButton button;
        button.setStyleSheet(&sheet, true);
        button.setText("Paste");
        QVERIFY(button.width() > 24 && button.height() == 40);
    }

    void demoIconsAreFilesAndOthersFallBack()
    {
        iconRepository.setIconPath(QString());
        iconRepository.clear();
        for (int number : {5, 7, 8, 9, 22, 25, 27, 28}) {
            CIconResource& icon = iconRepository[number];
            QCOMPARE(icon.getType(), 3);
            bool placeholder = false;
            QSvgRenderer* renderer = icon.getSvg(&placeholder, false);
            QVERIFY2(!placeholder && renderer, qPrintable(iconRepository.iconName(number)));
        }
        bool placeholder = false;
        QPixmap* missing = iconRepository[QString("Alerts")].getImage(&placeholder, false);
        QVERIFY(placeholder);
        QVERIFY(missing && !missing->isNull());
    }

    // The menu flyout's entries ask for icons the table names with ".png": raster
    // files, loaded as they are. Each is shipped at the flyout's icon size, so it
    // is drawn 1:1, and is the rendering of its drawn source in icons/src (the
    // way scripts/render-icons.sh makes it), so art and file cannot drift apart.
    void flyoutRasterIconsAreFilesRenderedFromTheirSources()
    {
        CTavoStyleSheet sheet;
        load(sheet, "flyout");
        CTavoWidgetStyle* cell = sheet.get("CTavoIcon#flyout-item-icon");
        QVERIFY(cell);
        const QSize size = cell->Size("size");
        QCOMPARE(size, QSize(28, 28));

        iconRepository.setIconPath(QString());
        iconRepository.clear();
        QDir sources("Skins/common/icons/src");
        QStringList drawn = sources.entryList({"*.svg"}, QDir::Files, QDir::Name);
        QStringList shipped;
        for (int number : {340, 341, 347, 348}) {
            const QString name = iconRepository.iconName(number);
            QVERIFY2(name.endsWith(".png"), qPrintable(name));
            shipped << QFileInfo(name).completeBaseName() + ".svg";
            CIconResource& icon = iconRepository[number];
            QCOMPARE(icon.getType(), 1);
            bool placeholder = false;
            QPixmap* pixmap = icon.getImage(&placeholder, false);
            QVERIFY2(!placeholder && pixmap && pixmap->size() == size, qPrintable(name));

            QSvgRenderer source(sources.filePath(shipped.last()));
            QVERIFY2(source.isValid(), qPrintable(shipped.last()));
            QImage expected(size, QImage::Format_ARGB32_Premultiplied);
            expected.fill(Qt::transparent);
            QPainter painter(&expected);
            source.render(&painter);
            painter.end();
            const QImage actual = pixmap->toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
            int worst = 0;
            int drawnPixels = 0;
            for (int y = 0; y < size.height(); ++y) {
                for (int x = 0; x < size.width(); ++x) {
                    const QRgb a = actual.pixel(x, y);
                    const QRgb e = expected.pixel(x, y);
                    worst = qMax(worst, qMax(qAbs(qAlpha(a) - qAlpha(e)), qAbs(qGray(a) - qGray(e))));
                    drawnPixels += qAlpha(a) > 128;
                }
            }
            // Another Qt build may round an edge pixel a little differently, never more.
            QVERIFY2(worst <= 24 && drawnPixels > 60,
                     qPrintable(QString("%1: differs by %2, %3 drawn").arg(name).arg(worst).arg(drawnPixels)));
        }
        // Every drawn source is shipped, and nothing else lies there.
        shipped.sort();
        QCOMPARE(drawn, shipped);
        iconRepository.clear();
    }
};

QTEST_MAIN(TestSampleSkin)
#include "tst_sampleskin.moc"
