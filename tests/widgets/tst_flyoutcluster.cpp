// Flyout clusters: content that is built once and reused, the rows and their
// digits under the banner, the banner's text from the manager, placing beside
// an owner, and the flyout driven by real key and mouse events: quick access,
// the key map, selection by touch, scrolling, and the time-out.
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QtTest>

#include "CTXMLFlyoutCluster.h"
#include "IconTestSupport.h"
#include "TextTestSupport.h"
#include "layout/CTavoLayoutMgr.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/CTavoFlyoutItem.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"

namespace {

const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kRed = qRgb(255, 0, 0);
const QRgb kNavy = qRgb(0, 0, 64);

const QByteArray kStyle =
    "CTavoFlyoutCluster { size: 300x400; location: 0:0; background: #000040; items-offset-y: 60;"
    " item-gap: 2; border-color: #ff0000; border-outline-width: 2; flyin-timeout: 400; }"
    " CTavoFlyoutItem { size: 300x40; background-focused: #00ff00; }"
    " CTavoFlyoutItem#flyout-group-div-item { size: 300x6; background: #808080; }"
    " CTavoLabelWidget { font: 14px DejaVu Sans; color: #ffffff; }"
    " CTavoParagraph#flyout-system-name-label { size: 300x56; location: 0:0; support-html: true; }";

// Items "label" with URL "u:label" and value "v:label"; "-" is a divider.
CTXMLFlyoutCluster cluster(const QStringList& labels)
{
    CTXMLFlyoutCluster c;
    for (const QString& label : labels) {
        if (label == "-") {
            c.add("GROUPDIV", "GROUPDIV", "GROUPDIV", nullptr);
            continue;
        }
        const QByteArray text = label.toUtf8();
        c.add(text, "u:" + text, "", nullptr, true, "v:" + text);
    }
    return c;
}

QStringList numbered(int n)
{
    QStringList labels;
    for (int i = 1; i <= n; ++i)
        labels << QString("Item %1").arg(i);
    return labels;
}

// The manager whose phone data the banner shows.
class Host : public CTavoLayoutMgr
{
public:
    Host() : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), true) {}
    QString name, number, pin, ip;
    bool network = true;
    QString systemName() const override { return name; }
    QString systemNumber() const override { return number; }
    QString contentPIN() const override { return pin; }
    QString systemIp(bool) const override { return ip; }
    bool isNetworkUp() const override { return network; }
};

// A shown screen with a styled flyout on it and a recorder of its reports.
struct Screen
{
    QWidget window;
    CTavoFlyoutCluster* flyout;
    QSignalSpy* reports;

    explicit Screen(const QByteArray& extra = QByteArray())
    {
        window.resize(800, 480);
        window.show();
        flyout = new CTavoFlyoutCluster(&window);
        QByteArray text = kStyle + extra;
        QByteArray attributes;
        flyout->updateStyle(text.data(), attributes.data(), true);
        reports = new QSignalSpy(flyout, &CTavoLayoutWidget::layoutWidgetSignal);
    }
    ~Screen() { delete reports; }

    void show(const QStringList& labels)
    {
        CTXMLFlyoutCluster c = cluster(labels);
        flyout->init(&c);
        flyout->flyOut();
    }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(flyout, Qt::Key(key), modifiers);
    }
    void mouse(QEvent::Type type, const QPoint& at)
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, at, flyout->mapToGlobal(at), button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(flyout, &event);
    }
    QStringList urls() const
    {
        QStringList out;
        for (const QList<QVariant>& r : *reports)
            out << r.at(0).toString() + " " + r.at(1).toString();
        return out;
    }
    QStringList digits() const
    {
        QStringList out;
        for (CTavoFlyoutItem* item : flyout->items())
            if (item->isVisible())
                out << (item->isGroupDiv() ? "-" : item->quickAccessLabel()->text());
        return out;
    }
};

QImage render(QWidget& widget)
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::black);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

}  // namespace

class TestFlyoutCluster : public QObject
{
    Q_OBJECT
    Host* m_host = nullptr;

private slots:
    void initTestCase() { m_host = new Host; }
    void cleanupTestCase() { delete m_host; }

    void anEqualClusterCostsNothingAndRowsAreReused()
    {
        Screen s;
        s.flyout->setKeyIndex(3);
        CTXMLFlyoutCluster first = cluster({"Call", "Mute", "Hold"});
        s.flyout->init(&first);
        QCOMPARE(s.urls(), QStringList{"Gui:Event labels=Call;Mute;Hold;keyIndex=3"});
        const QVector<CTavoFlyoutItem*> rows = s.flyout->items();
        QCOMPARE(rows.size(), 3);
        QCOMPARE(s.flyout->itemPositions().mid(0, 3), (QVector<int>{60, 102, 144}));

        // Equal content, and a change the user does not see: nothing happens.
        CTXMLFlyoutCluster same = cluster({"Call", "Mute", "Hold"});
        s.flyout->init(&same);
        same[1].enabled = false;
        s.flyout->init(&same);
        QCOMPARE(s.reports->size(), 1);
        QVERIFY(s.flyout->item(1)->isEnabled());
        // A forced refresh redoes the same content.
        s.flyout->setNeedsRefresh();
        s.flyout->init(&same);
        QCOMPARE(s.reports->size(), 2);
        QVERIFY(!s.flyout->item(1)->isEnabled());

        // New content goes into the same rows; fewer items hide the rest.
        CTXMLFlyoutCluster other = cluster({"Park", "Transfer"});
        s.flyout->init(&other);
        QCOMPARE(s.flyout->items(), rows);
        QCOMPARE(s.flyout->item(0)->text(), QString("Park"));
        QVERIFY(!s.flyout->item(2)->isVisible());
        QCOMPARE(s.flyout->numOfVisibleItems(), 2);
        QCOMPARE(s.flyout->findChildren<CTavoFlyoutItem*>().size(), 3);
        QCOMPARE(s.reports->last().at(1).toString(), QString("labels=Park;Transfer;keyIndex=3"));
        // Rows under the 60-pixel banner, 40 high with a gap of 2; the height follows.
        QCOMPARE(s.flyout->height(), 60 + 2 * 42);
        QCOMPARE(s.flyout->width(), 300);
    }

    void rowsPastTheBottomOnlyChangeTheHeight()
    {
        Screen s;
        CTXMLFlyoutCluster four = cluster(numbered(4));
        s.flyout->init(&four);
        QCOMPARE(s.flyout->height(), 60 + 4 * 42);
        // Lower down, 100 pixels are left below: with the banner on, the rows
        // keep their places and only the height is cut.
        s.flyout->move(0, 380);
        CTXMLFlyoutCluster five = cluster(numbered(5));
        s.flyout->init(&five);
        QCOMPARE(s.flyout->height(), 100);
        QCOMPARE(s.flyout->item(4)->text(), QString("Item 5"));
        QVERIFY(!s.flyout->item(4)->isVisible());
        // Without banner and off the home screen the rows are placed again, from the top.
        s.flyout->setShowInfoBanner(false);
        s.flyout->setIsOnHomeScreen(false);
        s.flyout->init(&five);
        QCOMPARE(s.flyout->itemPositions().mid(0, 2), (QVector<int>{0, 42}));
        QVERIFY(s.flyout->item(4)->isVisible());
        QCOMPARE(s.flyout->height(), 100);
        // Scrolling covers the rest: five rows of 42 in 100 pixels.
        QCOMPARE(s.flyout->maxOffset().y(), 5 * 42 - 100 - 1);
        QCOMPARE(s.flyout->scrollSpringLength(), 10);
    }

    void quickAccessDigits_data()
    {
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QStringList>("digits");
        QTest::newRow("single item") << QStringList{"A"} << QStringList{""};
        QTest::newRow("dividers take none") << QStringList{"A", "-", "B", "C"} << QStringList{"1", "-", "2", "3"};
        QStringList eleven = numbered(11);
        QTest::newRow("tenth is 0, eleventh none")
            << eleven << QStringList{"1", "2", "3", "4", "5", "6", "7", "8", "9", "0", ""};
        QTest::newRow("only dividers") << QStringList{"-", "-"} << QStringList{"-", "-"};
        QTest::newRow("empty") << QStringList{} << QStringList{};
    }
    void quickAccessDigits()
    {
        QFETCH(QStringList, labels);
        QFETCH(QStringList, digits);
        Screen s;
        CTXMLFlyoutCluster c = cluster(labels);
        s.flyout->init(&c);
        QCOMPARE(s.digits(), digits);
        for (CTavoFlyoutItem* item : s.flyout->items())
            QCOMPARE(item->objectName(), QString(item->isGroupDiv() ? "flyout-group-div-item" : "flyout-item"));
        // Nothing to choose: nobody has the focus, and no digit reaches anything.
        if (!labels.contains("A") && !labels.contains("Item 1")) {
            QCOMPARE(s.flyout->convertItemToIndex(1), -1);
            QCOMPARE(s.flyout->lastNonGroupDivIndex(), -1);
            s.flyout->flyOut();
            s.key(Qt::Key_1, Qt::KeypadModifier);
            QVERIFY(s.flyout->isOpen());
        }
    }

    void digitsReachTheNthChoiceThroughRealKeys()
    {
        Screen s;
        CTXMLFlyoutCluster c = cluster({"A", "B", "-", "C", "D", "E", "-", "F"});
        c[0].hasQuickAccess = false;
        c[5].enabled = false;
        s.flyout->setKeyIndex(1);
        s.flyout->init(&c);
        QCOMPARE(s.digits(), (QStringList{"", "2", "-", "3", "4", "5", "-", "6"}));
        QCOMPARE(s.flyout->convertItemToIndex(5), 5);
        QCOMPARE(s.flyout->lastNonGroupDivIndex(), 7);
        QSignalSpy closed(s.flyout, &CTavoFlyoutCluster::closed);

        // Digit 5 is the disabled fifth choice: nothing, the flyout stays.
        s.flyout->flyOut();
        s.reports->clear();
        s.key(Qt::Key_5, Qt::KeypadModifier);
        QVERIFY(s.flyout->isOpen());
        QVERIFY(s.reports->isEmpty());
        // Digit 1 reaches the first item although it shows no digit; 4 the fourth choice.
        s.key(Qt::Key_4, Qt::KeypadModifier);
        QCOMPARE(s.urls(), (QStringList{"u:D state=pressed;key=Key:FlyoutSelect;value=v:D;",
                                        "Gui:Event flyIn=1;keyIndex=1"}));
        QVERIFY(!s.flyout->isOpen() && !s.flyout->isVisible());
        QCOMPARE(closed.size(), 1);
        // Closed, a digit is not the flyout's.
        s.reports->clear();
        s.key(Qt::Key_1, Qt::KeypadModifier);
        QVERIFY(s.reports->isEmpty());
        s.flyout->flyOut();
        s.key(Qt::Key_1);
        QCOMPARE(s.urls().value(0), QString("u:A state=pressed;key=Key:FlyoutSelect;value=v:A;"));
    }

    void quickAccessTouchesTheRowCentre()
    {
        Screen s;
        s.window.move(30, 20);
        s.flyout->move(10, 5);
        s.show({"A", "B", "C"});
        struct Recorder : QObject
        {
            QList<QMouseEvent> seen;
            bool eventFilter(QObject*, QEvent* e) override
            {
                if (e->type() == QEvent::MouseButtonPress || e->type() == QEvent::MouseButtonRelease)
                    seen.append(QMouseEvent(*static_cast<QMouseEvent*>(e)));
                return false;
            }
        } recorder;
        s.flyout->installEventFilter(&recorder);
        s.flyout->performQuickAccess(2, QEvent::KeyPress);
        s.flyout->performQuickAccess(2, QEvent::KeyRelease);
        s.flyout->performQuickAccess(3, QEvent::ShortcutOverride);
        QCOMPARE(recorder.seen.size(), 2);
        const QMouseEvent& press = recorder.seen.at(0);
        const QPoint centre = s.flyout->item(1)->center();
        QCOMPARE(press.type(), QEvent::MouseButtonPress);
        QCOMPARE(press.localPos(), QPointF(centre));
        QCOMPARE(press.windowPos(), QPointF(centre + QPoint(10, 5)));
        QCOMPARE(press.screenPos(), QPointF(s.flyout->mapToGlobal(centre)));
        QCOMPARE(press.buttons(), Qt::MouseButtons(Qt::LeftButton));
        QVERIFY(!press.spontaneous());
        QCOMPARE(recorder.seen.at(1).buttons(), Qt::MouseButtons(Qt::NoButton));
        QCOMPARE(s.urls().value(1), QString("u:B state=pressed;key=Key:FlyoutSelect;value=v:B;"));
    }

    void keyMap()
    {
        Screen s;
        QLineEdit before(&s.window);
        before.show();
        before.setFocus();
        s.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.show({"A", "B", "-", "C", "D"});
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(s.flyout));
        QCOMPARE(s.flyout->focusedIndex(), 0);
        // Up picks the next row, Down the one before, as the key numbers say; dividers are passed.
        s.key(Qt::Key_Up);
        s.key(Qt::Key_Up);
        QCOMPARE(s.flyout->focusedIndex(), 3);
        QVERIFY(s.flyout->item(3)->isFocused() && !s.flyout->item(1)->isFocused());
        s.key(Qt::Key_Up);
        s.key(Qt::Key_Up);
        QCOMPARE(s.flyout->focusedIndex(), 4);
        s.key(Qt::Key_Down);
        s.key(Qt::Key_Down);
        QCOMPARE(s.flyout->focusedIndex(), 1);
        // Star and pound are taken and do nothing; Select chooses the focused row.
        s.reports->clear();
        s.key(Qt::Key_Asterisk, Qt::KeypadModifier);
        s.key(Qt::Key_NumberSign, Qt::KeypadModifier);
        QVERIFY(s.flyout->isOpen() && s.reports->isEmpty());
        s.key(Qt::Key_Return);
        QCOMPARE(s.urls().value(0), QString("u:B state=pressed;key=Key:FlyoutSelect;value=v:B;"));
        QVERIFY(!s.flyout->isOpen());

        // Left, Right and Back close and give the focus back; the key goes on unhandled.
        for (int key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Back}) {
            before.setFocus();
            s.flyout->flyOut();
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
            QVERIFY(!s.flyout->event(&press) || !press.isAccepted());
            QVERIFY2(!s.flyout->isOpen(), qPrintable(QString::number(key)));
            QCOMPARE(QApplication::focusWidget(), static_cast<QWidget*>(&before));
        }
    }

    void focusGoesBackOnlyForSomeReasons()
    {
        Screen s;
        QLineEdit plain(&s.window);
        plain.show();
        s.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        // A time-out or a choice gives the focus back to text fields only.
        for (int reason = 0; reason < 4; ++reason) {
            plain.setFocus();
            s.show({"A", "B"});
            s.flyout->flyIn(false, reason);
            QCOMPARE(QApplication::focusWidget() == &plain, reason >= 2);
            QVERIFY(!s.flyout->isVisible());
        }
    }

    void theTimeOutRestartsOnlyWithHandledKeys()
    {
        {
            QWidget bare;
            CTavoFlyoutCluster unstyled(&bare);
            QCOMPARE(unstyled.flyinTimeout(), 5000);
        }
        Screen s;
        QSignalSpy closed(s.flyout, &CTavoFlyoutCluster::closed);
        s.show({"A", "B", "C"});
        QCOMPARE(s.flyout->flyinTimeout(), 400);
        QTest::qWait(250);
        s.key(Qt::Key_Up);  // handled: the clock starts again
        QTest::qWait(250);
        s.key(Qt::Key_A);   // not the flyout's key
        s.mouse(QEvent::MouseButtonPress, QPoint(150, 70));
        s.mouse(QEvent::MouseButtonRelease, QPoint(150, 200));
        QVERIFY(s.flyout->isOpen());
        QTRY_VERIFY_WITH_TIMEOUT(!s.flyout->isOpen(), 1000);
        QCOMPARE(closed.size(), 1);
        QCOMPARE(s.reports->last().at(1).toString(), QString("flyIn=1;keyIndex=-1"));
        // The clock does not close it a second time.
        QTest::qWait(500);
        QCOMPARE(closed.size(), 1);
    }

    void touches()
    {
        Screen s;
        s.show(numbered(20));
        QSignalSpy opened(s.flyout, &CTavoFlyoutCluster::opened);
        // A press and release on a row chooses it.
        s.mouse(QEvent::MouseButtonPress, QPoint(150, 60 + 42 + 20));
        QVERIFY(s.flyout->item(1)->isDown() && s.flyout->item(1)->isFocused());
        s.mouse(QEvent::MouseButtonRelease, QPoint(150, 60 + 42 + 20));
        QCOMPARE(s.urls().value(1), QString("u:Item 2 state=pressed;key=Key:FlyoutSelect;value=v:Item 2;"));
        QVERIFY(!s.flyout->isOpen());

        // Released beside the row: nothing. A drag scrolls and chooses nothing either.
        s.flyout->flyOut();
        s.reports->clear();
        s.mouse(QEvent::MouseButtonPress, QPoint(150, 80));
        s.mouse(QEvent::MouseButtonRelease, QPoint(150, 200));
        s.mouse(QEvent::MouseButtonPress, QPoint(150, 300));
        for (int y = 290; y >= 150; y -= 10)
            s.mouse(QEvent::MouseMove, QPoint(150, y));
        QVERIFY(!s.flyout->item(5)->isDown());
        s.mouse(QEvent::MouseButtonRelease, QPoint(150, 150));
        QVERIFY(s.reports->isEmpty() && s.flyout->isOpen());
        QVERIFY(s.flyout->scrollOffset().y() > 100);
        QCOMPARE(s.flyout->scrollOffset().x(), 0);
        // The banner covers the rows scrolled under it; a press on it closes.
        QCOMPARE(s.flyout->rectOfChildOnScreen(s.flyout->item(3)),
                 s.flyout->item(3)->rect().translated(-s.flyout->scrollOffset()));
        s.flyout->stopScrolling();
        s.mouse(QEvent::MouseButtonPress, QPoint(150, 30));
        QVERIFY(!s.flyout->isOpen());
        QVERIFY(s.reports->isEmpty() == false);
        QCOMPARE(opened.size(), 1);
    }

    void moreOpensTheNextPage()
    {
        Screen s(" CTavoFlyoutCluster { size: 300x400; items-offset-y: 0; flyout-more-enable: true; }");
        QSignalSpy opened(s.flyout, &CTavoFlyoutCluster::opened);
        CTXMLFlyoutCluster c = cluster({"A"});
        c.add("More", "More", "", nullptr, true, "u:key");
        s.flyout->init(&c);
        s.flyout->flyOut();
        s.key(Qt::Key_2, Qt::KeypadModifier);
        QVERIFY(s.flyout->isOpen());
        QCOMPARE(opened.size(), 2);
        QCOMPARE(s.urls().last(), QString("More state=pressed;key=Key:FlyoutSelect;value=u:key;"));
    }

    void surplusItemsAreDropped()
    {
        Screen s;
        CTXMLFlyoutCluster many = cluster(numbered(25));
        s.flyout->init(&many);
        QCOMPARE(s.flyout->items().size(), 20);
        QCOMPARE(s.flyout->numOfVisibleItems(), 20);
        QCOMPARE(s.flyout->convertItemToIndex(21), -1);
        Screen few(" CTavoFlyoutCluster { size: 300x400; items-offset-y: 60; items-maximum: 5; }");
        few.flyout->init(&many);
        QCOMPARE(few.flyout->items().size(), 5);
        QVERIFY(few.reports->last().at(1).toString().startsWith("labels=Item 1;Item 2;Item 3;Item 4;Item 5;"));
        // Indices outside the list change nothing.
        few.flyout->flyOut();
        few.flyout->performQuickAccess(9, QEvent::KeyPress);
        few.flyout->performQuickAccess(-3, QEvent::KeyRelease);
        few.flyout->pickItem(-1);
        QCOMPARE(few.flyout->focusedIndex(), 0);
        QVERIFY(few.flyout->isOpen());
    }

    void snapTo_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<QByteArray>("extra");
        QTest::addColumn<QPoint>("expected");
        // The owner is 100,300 100x40; the flyout 300 by 60 + 2 * 42 = 144.
        QTest::newRow("under, left edges") << 2 << 0 << QByteArray() << QPoint(100, 340);
        QTest::newRow("above, left edges") << 0 << 2 << QByteArray() << QPoint(100, 156);
        QTest::newRow("above, right edges") << 1 << 3 << QByteArray() << QPoint(-100, 156);
        QTest::newRow("beside, right") << 1 << 0 << QByteArray() << QPoint(200, 300);
        QTest::newRow("more: at the left") << 0 << 3 << QByteArray("flyout-more-enable: true;") << QPoint(0, 156);
        QTest::newRow("snap to top") << 2 << 0 << QByteArray("snap-to-top: true;") << QPoint(0, 0);
        QTest::newRow("no banner: translated")
            << 0 << 2 << QByteArray("items-offset-y: 0; menu-flyout-translate: 7;") << QPoint(107, 216);
    }
    void snapTo()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QByteArray, extra);
        Screen s(" CTavoFlyoutCluster { size: 300x400; items-offset-y: 60; " + extra + " }");
        CTXMLFlyoutCluster two = cluster({"A", "B"});
        s.flyout->init(&two);
        const QRect owner(100, 300, 100, 40);
        s.flyout->snapTo(owner, CTavoFlyoutCluster::SnapLocation(from), CTavoFlyoutCluster::SnapLocation(to),
                         Qt::DownArrow);
        QTEST(s.flyout->pos(), "expected");
        QCOMPARE(s.flyout->snappedToRect(), owner);
    }

    void snapToParentMarksTheOwnerWhileOpen()
    {
        Screen s;
        CTavoLayoutWidget bar(&s.window);
        QByteArray sheet = "CTavoLayoutWidget { size: 800x60; location: 0:420; } CTavoButton { size: 160x50; location: 620:5; }";
        QByteArray none;
        bar.updateStyle(sheet.data(), none.data(), true);
        bar.show();
        TavoButtonSettings settings;
        CTavoButton key(&settings, &bar);
        CTXMLFlyoutCluster two = cluster({"A", "B"});
        s.flyout->init(&two);
        // The key's top right corner, lengthened by 5 below, meets the flyout's bottom right.
        s.flyout->snapToParent(&key, CTavoFlyoutCluster::TopRight, CTavoFlyoutCluster::BottomRight, Qt::UpArrow,
                               "settings", 5);
        QCOMPARE(s.flyout->snappedToRect(), QRect(620, 425, 160, 55));
        QCOMPARE(s.flyout->geometry(), QRect(780 - 300, 425 - s.flyout->height(), 300, s.flyout->height()));
        QCOMPARE(s.flyout->snapSettings(), QString("settings"));
        QCOMPARE(s.flyout->arrow(), Qt::UpArrow);
        s.flyout->flyOut();
        QVERIFY(key.isFocused());
        s.flyout->flyIn(false, CTavoFlyoutCluster::FlyinByKey);
        QVERIFY(!key.isFocused());
    }

    void sideBySideGroupsEndOnOneLine()
    {
        Screen s(" CTavoFlyoutCluster { size: 300x400; items-offset-y: 60; item-gap: 2; side-by-side-groups: true;"
                 " padding: 0 0 0 10; }"
                 " CTavoFlyoutItem { size: 100x40; }");
        CTXMLFlyoutCluster c = cluster({"A", "B", "C", "-", "D", "-", "E", "F"});
        s.flyout->init(&c);
        QVERIFY(!s.flyout->item(3)->isVisible());
        QList<int> groups;
        int rows = 0;
        int itemHeight = 0;
        int itemWidth = 0;
        QSize size;
        s.flyout->getGroupConfig(groups, &c, rows, size, itemHeight, itemWidth);
        QCOMPARE(groups, (QList<int>{3, 1, 2}));
        QCOMPARE(rows, 3);
        QCOMPARE(size, QSize(3 * 102, 3 * 42));
        QCOMPARE(s.flyout->size(), QSize(3 * 102 + 20, 3 * 42 + 4 + 60));
        QCOMPARE(s.flyout->item(4)->topLeft(), QPoint(10 + 102, 62 + 2 * 42));
        QCOMPARE(s.flyout->item(7)->topLeft(), QPoint(10 + 204, 62 + 2 * 42));
        QCOMPARE(s.flyout->item(0)->topLeft(), QPoint(10, 62));
        QCOMPARE(s.flyout->item(3)->objectName(), QString("flyout-group-div-item"));
    }

    void paintsRowsBannerAndBorder()
    {
        Screen s;
        s.show({"A", "B", "C"});
        const QImage image = render(*s.flyout);
        QCOMPARE(image.pixel(150, 61), kGreen);   // the focused first row
        QCOMPARE(image.pixel(150, 103), kNavy);   // the second row has no look of its own
        QCOMPARE(image.pixel(0, 150), kRed);      // border
        QCOMPARE(image.pixel(299, 10), kRed);
        // Scrolled by 30, the first row begins under the banner's edge.
        s.flyout->setScrollOffset(QPoint(5, 30));
        const QImage scrolled = render(*s.flyout);
        QCOMPARE(s.flyout->scrollOffset(), QPoint(0, 30));
        QCOMPARE(scrolled.pixel(150, 61), kGreen);
        QCOMPARE(scrolled.pixel(150, 71), kNavy);
    }

    void bannerText_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("pin");
        QTest::addColumn<QString>("ip");
        QTest::addColumn<bool>("network");
        QTest::addColumn<QByteArray>("extra");
        QTest::addColumn<QString>("text");
        QTest::newRow("name and address") << "Desk" << "" << "" << "10.0.0.2" << true << QByteArray()
                                          << "<div id=\"name\">Desk</div><div id=\"ip\">IP: 10.0.0.2</div>";
        QTest::newRow("number and pin") << "Desk" << "4711" << "99" << "10.0.0.2" << true << QByteArray()
                                        << "<div id=\"name\">Desk</div><div id=\"num\">4711</div>"
                                           "<div id=\"ip\">IP: 10.0.0.2 &nbsp;&nbsp;&nbsp;99</div>";
        QTest::newRow("23 characters stay") << "ABCDEFGHIJKLMNOPQRSTUVW" << "" << "" << "1.2.3.4" << true << QByteArray()
                                            << "<div id=\"name\">ABCDEFGHIJKLMNOPQRSTUVW</div><div id=\"ip\">IP: 1.2.3.4</div>";
        QTest::newRow("24 are cut to 21") << "ABCDEFGHIJKLMNOPQRSTUVWX" << "" << "7" << "1.2.3.4" << true << QByteArray()
                                          << "<div id=\"name\">ABCDEFGHIJKLMNOPQRSTU&#8230;</div>"
                                             "<div id=\"ip\">IP: 1.2.3.4 &nbsp;7</div>";
        QTest::newRow("network down") << "Desk" << "" << "" << "10.0.0.2" << false << QByteArray()
                                      << "<div id=\"name\">Desk</div><div id=\"ip\">Network Unavailable</div>";
        QTest::newRow("network down, not reported") << "Desk" << "" << "" << "10.0.0.2" << false
                                                    << QByteArray("report-network-unavailable: false;")
                                                    << "<div id=\"name\">Desk</div><div id=\"ip\">IP: 10.0.0.2</div>";
        QTest::newRow("address not yet known") << "Desk" << "" << "" << "..." << true << QByteArray()
                                               << "<div id=\"name\">Desk</div><div id=\"ip\"></div>";
        QTest::newRow("markup in the name") << "<b>&" << "" << "" << "" << true << QByteArray()
                                            << "<div id=\"name\">&lt;b&gt;&amp;</div><div id=\"ip\"></div>";
    }
    void bannerText()
    {
        QFETCH(QString, name);
        QFETCH(QString, number);
        QFETCH(QString, pin);
        QFETCH(QString, ip);
        QFETCH(bool, network);
        QFETCH(QByteArray, extra);
        QFETCH(QString, text);
        m_host->name = name;
        m_host->number = number;
        m_host->pin = pin;
        m_host->ip = ip;
        m_host->network = network;
        Screen s(" CTavoFlyoutCluster { size: 300x400; items-offset-y: 60; " + extra + " }");
        s.show({"A"});
        QCOMPARE(s.flyout->banner()->text(), text);
        QVERIFY(s.flyout->banner()->isVisible());
        // Without the banner the rows take its room.
        s.flyout->setShowInfoBanner(false);
        QCOMPARE(s.flyout->itemsOffsetY(), 0);
        QVERIFY(!s.flyout->banner()->isVisible());
    }

    void theHomeEntryLooksChosenOnTheHomeScreen()
    {
        Screen s(" CTavoLabelWidget#flyout-item-label:blue { font: 14px DejaVu Sans; color: #0000ff; }");
        s.show({"Home", "Settings"});
        s.flyout->setIsOnHomeScreen(true);
        QCOMPARE(s.flyout->item(0)->label()->pseudoState(), QString("blue"));
        QCOMPARE(s.flyout->item(0)->label()->color(), QColor(0, 0, 255));
        s.flyout->setIsOnHomeScreen(false);
        QCOMPARE(s.flyout->item(0)->label()->pseudoState(), QString());
        QVERIFY(!s.flyout->isOnHome());
        // A row with a check mark for the selected choice.
        CTXMLFlyoutCluster c = cluster({"abc", "ABC"});
        c[1].selected = true;
        s.flyout->init(&c);
        QVERIFY(!s.flyout->item(0)->checkIcon()->isVisible());
        QVERIFY(s.flyout->item(1)->checkIcon()->isVisible());
        QCOMPARE(s.flyout->item(1)->checkIcon()->loadedIcon(), 162);
    }
};

TAVO_TEXT_TEST_MAIN(TestFlyoutCluster)
#include "tst_flyoutcluster.moc"
