// The sample skin in the run folder: it parses, its surfaces style the widget
// base, its pictures exist, and the icons the demo shows are real files.
#include <QtTest>

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

    void managerItemCarriesTheDesignResolutionAndItsBlock()
    {
        QVERIFY(m_file.get("manager"));
        CTavoStyleSheet sheet;
        load(sheet, "manager");
        QCOMPARE(sheet.getAttribute("design-x") + "x" + sheet.getAttribute("design-y"), QString("800x480"));
        CTavoWidgetStyle* manager = sheet.get("CTavoLayoutMgr");
        QVERIFY(manager && manager->isValid());
        QCOMPARE(manager->Size("size"), QSize(800, 480));
        // The full-screen background is a brush: a vector picture of that size
        // would be rasterised in 16 bits and band.
        const QBrush* background = manager->BrushPtr("background", nullptr);
        QVERIFY(background && background->gradient());
        QCOMPARE(background->gradient()->type(), QGradient::LinearGradient);
        QVERIFY(manager->Image("background-image").isNull());
        // The boot screen: a picture inside the screen and a spinner.
        const CTavoImage boot = manager->Image("booting-image");
        QVERIFY(!boot.isNull());
        const QRect bootRect(manager->Location("booting-img-location"), manager->Size("booting-img-size"));
        QVERIFY(bootRect.isValid() && QRect(0, 0, 800, 480).contains(bootRect));
        QCOMPARE(boot.size(), bootRect.size());
        QVERIFY(!manager->Image("booting-spinner-image").isNull());
    }

    void homeTilesAreLaidOutWithIconLabelAndLooks()
    {
        CTavoStyleSheet sheet;
        load(sheet, "home");
        QVERIFY(sheet.get("CTavoLabelWidget#title") && sheet.get("CTavoParagraph#intro"));
        int previousRight = -1;
        for (const char* name : {"Messages", "Contacts", "CallHistory", "Settings"}) {
            CTavoButton button;
            button.setObjectName(name);
            button.setStyleSheet(&sheet, true);
            QCOMPARE(button.size(), QSize(148, 124));
            QVERIFY2(button.left() > previousRight, name);
            previousRight = button.right();
            QVERIFY(button.backgroundBrush() && !button.pressedImage().isNull() && button.pressAnimation());
            QCOMPARE(button.renderQuality(), 1);
        }
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
        QVERIFY(!tile.focusedPressedImage().isNull() && !tile.focusedImage().isNull()
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
        for (const char* selector : {"CTavoButton", "CTavoButton#softkey-1", "CTavoButton:urgent"}) {
            CTavoWidgetStyle* block = sheet.get(selector);
            QVERIFY2(block && !block->Image("background-pressed-image").isNull()
                         && block->BrushPtr("background-focused"), selector);
        }
        CTavoWidgetStyle* surface = sheet.get("CTavoLayoutWidget");
        QVERIFY(surface && surface->Location("location") == QPoint(0, 416));
        int right = 0;
        for (int i = 1; i <= 4; ++i) {
            CTavoButton key;
            key.setObjectName(QString("softkey-%1").arg(i));
            key.setStyleSheet(&sheet, true);
            QVERIFY(key.left() >= right && key.backgroundBrush());
            right = key.right();
        }
        QVERIFY(right < 800);
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
};

QTEST_MAIN(TestSampleSkin)
#include "tst_sampleskin.moc"
