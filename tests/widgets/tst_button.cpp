// Buttons: press, hold and release through a real layout widget and through
// handleEvent, the URL and data they report, their look from the skin, the
// key table and the button records made from documents.
#include <QElapsedTimer>
#include <QKeyEvent>
#include <climits>
#include <QPainter>
#include <QSignalSpy>
#include <QtTest>

#include "CTXMLIcon.h"
#include "CTXMLLineKey.h"
#include "CTXMLSoftkey.h"
#include "IconTestSupport.h"
#include "TextTestSupport.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoLayoutWidget.h"
#include "style/CTavoStyleSheet.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoButtonDefs.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoIconLabel.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoVarWidthButton.h"

using IconTest::countColour;
using TextTest::kWhite;
using TextTest::render;
typedef QList<QVariant> Event;

namespace {

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kGreen = qRgb(0, 255, 0);
const int kMessages = 5;

int s_sounds = 0;
void countSound()
{
    ++s_sounds;
}

TavoButtonSettings settings(const QString& label, const QString& click, const QString& hold = QString(),
                            const QString& press = QString(), int icon = -1, const QString& aux = QString())
{
    TavoButtonSettings s;
    s.set("name", label, click, hold, press, CTavoIconDefinition(QString(), QString(), icon), aux, 1);
    return s;
}

// A shown surface holding one styled button block.
struct Surface
{
    CTavoLayoutWidget widget;

    explicit Surface(const QByteArray& button = QByteArray())
    {
        QByteArray text("CTavoLayoutWidget { size: 400x300; location: 0:0; }"
                        " CTavoButton { size: 100x40; location: 10:10; background: #ff0000; " + button + " }");
        QByteArray attributes;
        widget.updateStyle(text.data(), attributes.data(), true);
        widget.show();
    }
    void press(const QPoint& at) { QTest::mousePress(&widget, Qt::LeftButton, Qt::NoModifier, at); }
    void release(const QPoint& at) { QTest::mouseRelease(&widget, Qt::LeftButton, Qt::NoModifier, at); }
    void move(const QPoint& at)
    {
        QMouseEvent event(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
};

} // namespace

class TestButton : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    CTavoStyleSheet m_sheet;

    void useStyle(const QString& style) { m_sheet.set(style.toUtf8().constData(), ""); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        IconTest::writePng(m_dir, "Messages", QSize(20, 10), Qt::green);
        IconTest::useIconDir(m_dir);
        CTavoButton::setClickSound(&countSound);
        QVERIFY(!TextTest::dejaVu(12).family().isEmpty());
    }
    void cleanupTestCase()
    {
        CTavoButton::setClickSound(nullptr);
        iconRepository.clear();
    }
    void init() { s_sounds = 0; }

    // --- through a layout widget ---------------------------------------------------

    void theSurfacePaintsButtonLabelAndIcon()
    {
        Surface surface("font: 12px DejaVu Sans; color: #000000; text-align: left top; label-location: 0:20;"
                        " label-size: 100x20; icon-location: 4:4; enable-icon-alignment: false;");
        QVERIFY(QTest::qWaitForWindowExposed(&surface.widget));
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Label", "key:x", QString(), QString(), kMessages);
        button.init(&s);
        const QImage image = surface.widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
        // Icon at the button's corner plus its offset, on the red background.
        QCOMPARE(countColour(image, QRect(14, 14, 20, 10), kGreen), 200);
        QVERIFY(countColour(image, QRect(10, 10, 100, 40), kRed) > 2000);
        QVERIFY(TextTest::inked(image, QRect(10, 30, 100, 20), kRed) > 20);
    }

    // A real pointer on a real surface: tap, hold, cancel by moving out, release
    // outside, and a button that is no direct child of the surface.
    void thePointerThroughTheSurface()
    {
        Surface surface;
        QVERIFY(QTest::qWaitForWindowExposed(&surface.widget));
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("OK", "key:ok", "key:ok-held", "key:ok-down");
        button.init(&s, "tapped");
        connect(&button, &CTavoButton::buttonClicked, &surface.widget, &CTavoLayoutWidget::onWidgetEvent);
        QSignalSpy events(&surface.widget, &CTavoLayoutWidget::layoutWidgetSignal);
        const QPoint on(30, 20), off(300, 250);

        surface.press(on);
        QCOMPARE(surface.widget.pressedButton(), &button);
        surface.release(on + QPoint(2, 2));
        QCOMPARE(events.size(), 2);
        QCOMPARE(events.at(0).mid(0, 2) + events.at(1).mid(0, 2), (Event{"key:ok-down", "pressed", "key:ok", "tapped"}));
        QCOMPARE(s_sounds, 1);

        // Held for a second: the hold URL, and the release adds nothing.
        QElapsedTimer clock;
        clock.start();
        surface.press(on);
        QTest::qWait(800);
        QCOMPARE(events.size(), 3);
        QTRY_COMPARE_WITH_TIMEOUT(events.size(), 4, 3000);
        QVERIFY2(clock.elapsed() >= 950, qPrintable(QString::number(clock.elapsed())));  // coarse timers
        QCOMPARE(events.at(3).mid(0, 2), (Event{"key:ok-held", "held"}));
        surface.release(on);
        QCOMPARE(events.size(), 4);

        // Moving off the button cancels it once; no hold and no click follow.
        surface.press(on);
        surface.move(QPoint(250, 200));
        surface.move(QPoint(260, 210));
        QVERIFY(!button.isDown());
        QCOMPARE(events.size(), 6);
        QCOMPARE(events.at(5).at(0).toString(), QString("button-cancelled"));
        surface.release(QPoint(260, 210));
        QTest::qWait(1100);
        QCOMPARE(events.size(), 6);

        // Released outside without moving: up, no click.
        surface.press(on);
        surface.release(off);
        QVERIFY(!button.isDown() && !surface.widget.pressedButton());
        QCOMPARE(events.size(), 7);

        // Only direct children of the surface are routed.
        CTavoWidget holder(&surface.widget, 2, 0, 0, 400, 300);
        button.setParent(&holder);
        QTest::mouseClick(&surface.widget, Qt::LeftButton, Qt::NoModifier, on);
        QVERIFY(!button.isDown());
        QCOMPARE(events.size(), 7);
        button.setParent(&surface.widget);
    }

    // --- through handleEvent -------------------------------------------------------

    void eventsPressHoldAndRelease()
    {
        CTavoButton button;
        TavoButtonSettings s = settings("A", "key:a", "key:a-hold", "key:a-press");
        button.init(&s, "data");
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        // Disabled or hidden: consumed, nothing happens.
        button.setEnabled(false);
        QVERIFY(button.handleEvent(QEvent::MouseButtonPress, QPoint()));
        button.setEnabled(true);
        button.setVisible(false);
        QVERIFY(button.handleEvent(QEvent::KeyPress, QPoint()));
        button.setVisible(true);
        QVERIFY(!button.isDown());
        // A release without a press is taken, but sends nothing and is silent.
        QVERIFY(button.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QVERIFY(button.handleEvent(QEvent::KeyRelease, QPoint()));
        for (QEvent::Type other : {QEvent::MouseMove, QEvent::Wheel, QEvent::FocusIn})
            QVERIFY(!button.handleEvent(other, QPoint()));
        QVERIFY(spy.isEmpty());
        QCOMPARE(s_sounds, 0);

        // A key press, a hold, a release: the hold replaces the click.
        QVERIFY(button.handleEvent(QEvent::KeyPress, QPoint()));
        QVERIFY(button.isDown());
        button.onHoldTimeout();
        QVERIFY(button.handleEvent(QEvent::KeyRelease, QPoint()));
        QCOMPARE(spy, (QList<Event>{{"key:a-press", "pressed"}, {"key:a-hold", "held"}}));
        QCOMPARE(s_sounds, 1);
        // The next press clears the hold: its release clicks with the data.
        QVERIFY(button.handleEvent(QEvent::MouseButtonDblClick, QPoint()));
        QVERIFY(!button.holdFired());
        QVERIFY(button.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QCOMPARE(spy.last(), (Event{"key:a", "data"}));
        // A hold timeout on a button that is up, or without a hold URL, does nothing.
        button.onHoldTimeout();
        QCOMPARE(spy.size(), 4);
        s.m_holdUrl.clear();
        button.init(&s, "data");
        QVERIFY(button.handleEvent(QEvent::KeyPress, QPoint()));
        button.onHoldTimeout();
        QVERIFY(!button.holdFired());
        QVERIFY(button.handleEvent(QEvent::KeyRelease, QPoint()));
        QCOMPARE(spy.size(), 6);
        QCOMPARE(spy.last(), spy.at(3));
    }

    void urlsAndTextsComeFromTheRecord()
    {
        TavoButtonSettings s = settings("Main", "u:click", "u:hold", "u:press", -1, "Aux");
        CTavoButton button(&s, nullptr);
        QCOMPARE((QStringList{button.url(), button.url(1), button.url(2), button.url(7), button.altText()}),
                 (QStringList{"u:click", "u:press", "u:hold", "u:click", "Aux"}));
        TavoButtonSettings other = s;
        other.m_icon.m_iconIndex = 9;
        QVERIFY(button.isNewDefinition(other));

        QSignalSpy changed(&button, &CTavoButton::labelChanged);
        button.setLabel("Renamed");
        button.setLabel("Renamed");
        QCOMPARE(button.labelWidget()->text(), QString("Renamed"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0).mid(0, 2), (Event{"u:click", "Renamed"}));
        // A null record is refused and changes nothing.
        button.init(nullptr);
        QCOMPARE(button.url(), QString("u:click"));
    }

    // --- look ------------------------------------------------------------------------

    void priorityPicksTheStyleBlock()
    {
        useStyle("CTavoButton { size: 80x30; } CTavoButton:high { size: 90x30; } CTavoButton:urgent { size: 99x30; }"
                 " CTavoButton:mine { size: 50x30; }");
        TavoButtonSettings s = settings("P", "u:p");
        CTavoButton button;
        button.setStyleSheet(&m_sheet, true);
        button.init(&s);
        QCOMPARE(button.width(), 80);
        button.setPriority(ItemPriorityHigh);
        QCOMPARE(button.pseudoState(), QString("high"));
        QCOMPARE(button.width(), 90);
        QCOMPARE(button.icon()->pseudoState(), QString("high"));
        // The record stays as the document gave it.
        QVERIFY(!button.isNewDefinition(s));
        button.changePriority(ItemPriorityUrgent);
        QCOMPARE(button.pseudoState(), QString("urgent"));
        QCOMPARE(button.width(), 99);
        button.setPriority(ItemPriorityNormal);
        QVERIFY(button.pseudoState().isEmpty());
        QCOMPARE(button.width(), 80);
        // A state set by somebody else stays.
        button.setPseudoState("mine");
        button.setPriority(ItemPriorityHigh);
        QCOMPARE(button.pseudoState(), QString("mine"));
        QCOMPARE(button.width(), 50);
    }

    void labelsAndIconArePlacedByTheSkin()
    {
        useStyle("CTavoButton { size: 120x60; location: 20:10; padding: 5; font: 12px DejaVu Sans; color: #000000;"
                 " text-align: left top; alt-label-size: 30x14; label-location: 10:30; label-size: 100x20;"
                 " icon-align: hcenter vcenter; }"
                 "CTavoButton#centred { size: 120x60; location: 20:10; padding: 5; font: 12px DejaVu Sans;"
                 " color: #000000; text-align: left top; alt-label-from-center: -10:2; disable-icon: true; }"
                 "CTavoButton#bare { size: 120x60; location: 20:10; disable-label: true; disable-alt-label: true; }"
                 "CTavoButton#sizeless { icon-location: 0:0; }");
        TavoButtonSettings s = settings("Main", "u", QString(), QString(), kMessages, "9");
        CTavoButton button;
        button.setStyleSheet(&m_sheet, false);
        button.init(&s);
        QCOMPARE(button.contentRect(), QRect(25, 15, 110, 50));
        // The alternative label stands at the top right of the content.
        QCOMPARE(button.altLabelWidget()->rect(), QRect(135 - 30, 15, 30, 14));
        QCOMPARE(button.labelWidget()->rect(), QRect(30, 40, 100, 20));
        QVERIFY(button.altLabelWidget()->isVisible());
        // The icon is centred in the button.
        QCOMPARE(button.icon()->rect(), QRect(20 + 50, 10 + 25, 20, 10));
        QVERIFY(button.icon()->isVisible());
        // Moving the button carries everything along.
        button.move(0, 0);
        QCOMPARE(button.labelWidget()->rect(), QRect(10, 30, 100, 20));
        QCOMPARE(button.icon()->rect(), QRect(50, 25, 20, 10));
        QCOMPARE(button.backgroundRect(), QRect(0, 0, 120, 60));

        const auto styled = [&](const char* name, CTavoButton& b) {
            b.setObjectName(name);
            b.setStyleSheet(&m_sheet, false);
            b.init(&s);
        };
        CTavoButton centred, bare, sizeless;
        styled("centred", centred);
        QCOMPARE(centred.altLabelWidget()->pos(), QPoint(QRect(25, 15, 110, 50).center().x() - 10, 17));
        QVERIFY(!centred.icon()->isVisible());
        styled("bare", bare);
        QVERIFY(!bare.labelWidget()->isVisible());
        QVERIFY(!bare.altLabelWidget()->isVisible());
        // Without a size of its own a button takes the icon's.
        s.m_label.clear();
        styled("sizeless", sizeless);
        QCOMPARE(sizeless.rect().size(), QSize(20, 10));

        // A second text or an icon count that comes later is placed, styled and
        // painted as one there from the start; the labels keep their order.
        TavoButtonSettings plain = settings("Main", "u", QString(), QString(), kMessages, QString());
        CTavoButton late;
        late.setStyleSheet(&m_sheet, false);
        late.init(&plain);
        late.move(0, 0);
        late.setAltLabel("9");
        QCOMPARE(late.altLabelWidget()->rect(), QRect(115 - 30, 5, 30, 14));
        QVERIFY(late.altLabelWidget()->isVisible());
        QCOMPARE(late.altLabelWidget()->font().pixelSize(), 12);
        const QList<CTavoWidget*> parts = late.findChildren<CTavoWidget*>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(parts.indexOf(late.altLabelWidget()) >= 0
                && parts.indexOf(late.altLabelWidget()) < parts.indexOf(late.labelWidget()));
        late.icon()->init(CTavoIconDefinition(QString(), "4", kMessages), true);
        QVERIFY(late.icon()->label()->isVisible() && late.icon()->label()->text() == "4");
        QCOMPARE(late.icon()->label()->pos(), late.icon()->pos());
    }

    void backgroundsFollowTheState()
    {
        const QString red = IconTest::writePng(m_dir, "bg-red", QSize(10, 10), Qt::red);
        const QString blue = IconTest::writePng(m_dir, "bg-blue", QSize(10, 10), Qt::blue);
        const QString green = IconTest::writePng(m_dir, "bg-green", QSize(10, 10), Qt::green);
        useStyle(QString("CTavoButton { size: 40x20; background-image: url(%1); alt-image: url(%2);"
                         " disabled-background-image: url(%3); }")
                     .arg(red, blue, green));
        TavoButtonSettings s = settings(QString(), "u");
        CTavoButton button;
        button.setStyleSheet(&m_sheet, false);
        button.init(&s);
        const auto paints = [&](QRgb colour) { return countColour(render(button), QRect(0, 0, 40, 20), colour); };
        QCOMPARE(paints(kRed), 800);
        // Type 4 selects the alternative picture; focused it falls back to the focused one.
        s.m_buttonType = 4;
        button.init(&s);
        QVERIFY(button.useAlternativeBackground());
        QCOMPARE(paints(kBlue), 800);
        button.setFocused(true);
        QCOMPARE(paints(kRed), 800);
        button.setEnabled(false);
        QCOMPARE(paints(kGreen), 800);
        button.setVisible(false);
        QCOMPARE(paints(kWhite), 800);

        // Without a style a button keeps its size and paints nothing.
        CTavoButton unstyled;
        unstyled.setSize(QSize(30, 30));
        unstyled.init(&s);
        QCOMPARE(unstyled.rect().size(), QSize(30, 30));
        QCOMPARE(countColour(render(unstyled), QRect(0, 0, 300, 200), kWhite), 300 * 200);
    }

    void varWidthButtonFollowsItsText()
    {
        useStyle("CTavoVarWidthButton { size: 10x30; padding: 0 7 0 5; font: 14px DejaVu Sans; color: #000000;"
                 " text-align: left vcenter; background: #ff0000; background-focused: #0000ff; }");
        CTavoVarWidthButton button;
        button.setStyleSheet(&m_sheet, true);
        const QFontMetrics metrics(button.labelWidget()->font());
        for (const QString text : {"Copy", "Copy all of it"}) {
            button.setText(text);
            QCOMPARE(button.width(), metrics.horizontalAdvance(text) + 12);
        }
        QCOMPARE(button.height(), 30);
        button.layout();
        QCOMPARE(button.width(), metrics.horizontalAdvance("Copy all of it") + 12);
        // Focused or down it is a flat box of the focus colour.
        button.setFocused(true);
        QCOMPARE(countColour(render(button), button.rect(), kBlue), button.width() * 30);
    }

    // --- keys and documents -------------------------------------------------------

    void theKeyTableMapsKeysBothWays()
    {
        bool unknown = true;
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(62), &unknown)), QString("Key:SoftKey1-28"));
        QVERIFY(!unknown);
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(152), &unknown)), QString("Key:Unknown-152"));
        QVERIFY(unknown);
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(INT_MIN))), QString("Key:Unknown--2147483648"));
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_7, Qt::KeypadModifier)), 29);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(nullptr)), 152);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_3, Qt::KeypadModifier, "3");
        QVERIFY(CTavoButtonDefs::isDialpadKey(&key) && !CTavoButtonDefs::isDialpadKey(SoKeyFuncT(56)));
        QVERIFY(!CTavoButtonDefs::isGuiKey(SoKeyFuncT(152)));
        QVERIFY(CTavoButtonDefs::isQtKeyDialpadKey("#"));
        for (const char* text : {"a", "12", static_cast<const char*>(nullptr)})
            QVERIFY(!CTavoButtonDefs::isQtKeyDialpadKey(text));
        // Every key's first row maps back to it, and every text to a key.
        for (int i = 0; i < CTavoButtonDefs::KEY_COUNT; ++i) {
            const CTavoButtonDefs::KeyDefT& row = CTavoButtonDefs::table()[i];
            QCOMPARE(int(CTavoButtonDefs::getSoKey(row.qtKey, 0)), int(row.soKey));
            QVERIFY(CTavoButtonDefs::getQtKey(row.uri) != 0);
        }
        QVERIFY(!CTavoButtonDefs::getQtKey("Key:Nothing-1") && !CTavoButtonDefs::getQtKey(SoKeyFuncT(152))
                && !CTavoButtonDefs::getQtKey(static_cast<const char*>(nullptr)));
    }

    void simulatedKeysArrivePosted()
    {
        struct Receiver : QObject
        {
            QList<QKeyEvent> keys;
            bool event(QEvent* e) override
            {
                if (QKeyEvent* key = dynamic_cast<QKeyEvent*>(e))
                    keys.append(*key);
                return QObject::event(e);
            }
        } receiver;
        CTavoButtonDefs::simulateQtKeyEvent(SoKeyFuncT(23), true, &receiver);
        CTavoButtonDefs::simulateQtKeyEvent(SoKeyFuncT(23), false, &receiver);
        CTavoButtonDefs::simulateQtKeyEvent(SoKeyFuncT(152), true, &receiver);
        CTavoButtonDefs::simulateQtKeyEvent(SoKeyFuncT(3), true, nullptr);
        QVERIFY(receiver.keys.isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(receiver.keys.size(), 2);
        const QKeyEvent& press = receiver.keys.at(0);
        QVERIFY(press.type() == QEvent::KeyPress && press.key() == Qt::Key_1 && press.text() == "1");
        QVERIFY(press.modifiers() & Qt::KeypadModifier);
        QCOMPARE(receiver.keys.at(1).type(), QEvent::KeyRelease);
    }

    void documentsBecomeButtonRecords()
    {
        CTXMLSoftkey key;
        key.set("Anrufen \xe2\x98\x8e", "softkey:539-call", 2, CTXMLSoftkey::SoftkeyContextSensitive,
                "softkey:539-hold", "softkey:539-press", nullptr, ItemPriorityUrgent, nullptr, 0, CTXMLIcon::tavoIcon(22));
        key.id = 17;
        key.extent = 1279;
        txml::copyText(key.iconName, sizeof key.iconName, "phone.png");
        TavoButtonSettings expected;
        expected.set("phone.png", QString::fromUtf8("Anrufen \xe2\x98\x8e"), "softkey:539-call", "softkey:539-hold",
                     "softkey:539-press", CTavoIconDefinition(QString(), QString(), 22), QString(), 17,
                     ItemPriorityUrgent);
        expected.m_softkeyType = 2;
        expected.m_buttonType = 3;
        QVERIFY(CTXMLDataConverter::getButtonDefFromXml(&key) == expected);
        key.extent = 1280;
        QCOMPARE(CTXMLDataConverter::getButtonDefFromXml(&key).m_buttonType, 4);
        // A null structure leaves the settings alone.
        TavoButtonSettings untouched = expected;
        CTXMLDataConverter::getButtonDefFromXml(untouched, static_cast<const CTXMLSoftkey*>(nullptr));
        CTXMLDataConverter::getButtonDefFromXml(untouched, static_cast<const CTXMLIcon*>(nullptr));
        QVERIFY(untouched == expected);

        CTXMLIcon icon;
        icon.set(5, 7, "file.png", "Lab", "12, 0,600,521,x,3,,-4");
        QCOMPARE(CTXMLDataConverter::getIconDefFromXml(&icon),
                 CTavoIconDefinition("file.png", "Lab", 5, 7, QList<int>{12, 521, 3}));
        QCOMPARE(CTXMLDataConverter::getIconDefFromXml(nullptr), CTavoIconDefinition());
        // Line key labels travel in Base64.
        CTXMLLineKey line;
        txml::copyText(line.label, sizeof line.label, QByteArray("Line \xc3\xa9").toBase64().constData());
        line.icon.set(35);
        const TavoButtonSettings lineKey = CTXMLDataConverter::getButtonDefFromXml(&line);
        QVERIFY(lineKey.m_label == QString::fromUtf8("Line \xc3\xa9") && lineKey.m_icon.m_iconIndex == 35);
    }
};

TAVO_TEXT_TEST_MAIN(TestButton)
#include "tst_button.moc"
