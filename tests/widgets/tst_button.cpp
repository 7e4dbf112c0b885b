// Buttons: press, hold and release through a real layout widget and through
// handleEvent, the URL and data they report, their look from the skin, the
// key table and the button records made from documents.
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QtTest>

#include "CTXMLIcon.h"
#include "CTXMLLineKey.h"
#include "CTXMLListMenu.h"
#include "CTXMLSoftkey.h"
#include "IconTestSupport.h"
#include "TextTestSupport.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoLayoutWidget.h"
#include "style/CTavoStyleSheet.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoButtonDefs.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoVarWidthButton.h"

using IconTest::countColour;

namespace {

const QRgb kWhite = qRgb(255, 255, 255);
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

QString buttonBlock(const QString& selector, int x, int y)
{
    return QString("%1 { size: 100x40; location: %2:%3; background: #ff0000; background-pressed-image: none;"
                   " font: 12px DejaVu Sans; color: #000000; text-align: left top; }")
        .arg(selector)
        .arg(x)
        .arg(y);
}

// A shown surface with the given style text behind its own block.
struct Surface
{
    CTavoLayoutWidget widget;

    explicit Surface(const QString& style)
    {
        QByteArray text = ("CTavoLayoutWidget { size: 400x300; location: 0:0; } " + style).toUtf8();
        QByteArray attributes;
        widget.updateStyle(text.data(), attributes.data(), true);
        widget.show();
    }
    bool exposed() { return QTest::qWaitForWindowExposed(&widget); }
    void move(const QPoint& at)
    {
        QMouseEvent event(QEvent::MouseMove, at, widget.mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
};

QImage render(CTavoWidget& widget, const QSize& size = QSize(300, 200))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(kWhite);
    QPainter painter(&image);
    widget.paint(&painter);
    return image;
}

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

    void aTapOnTheSurfaceReportsPressThenClick()
    {
        Surface surface(buttonBlock("CTavoButton#ok", 10, 10));
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        button.setObjectName("ok");
        TavoButtonSettings s = settings("OK", "softkey:1-ok", QString(), "softkey:1-down");
        button.init(&s, "tapped");
        QCOMPARE(button.rect(), QRect(10, 10, 100, 40));
        connect(&button, &CTavoButton::buttonClicked, &surface.widget, &CTavoLayoutWidget::onWidgetEvent);
        QSignalSpy events(&surface.widget, &CTavoLayoutWidget::layoutWidgetSignal);

        QTest::mousePress(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(30, 20));
        QVERIFY(button.isDown());
        QCOMPARE(surface.widget.pressedButton(), &button);
        QTest::mouseRelease(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(32, 22));
        QVERIFY(!button.isDown());
        QCOMPARE(events.size(), 2);
        QCOMPARE(events.at(0).mid(0, 2), (QList<QVariant>{"softkey:1-down", "pressed"}));
        QCOMPARE(events.at(1).mid(0, 2), (QList<QVariant>{"softkey:1-ok", "tapped"}));
        QCOMPARE(s_sounds, 1);
    }

    void holdingForASecondSendsTheHoldUrlAndNoClick()
    {
        Surface surface(buttonBlock("CTavoButton", 10, 10));
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Vol", "key:vol", "key:vol-repeat");
        button.init(&s);
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        QElapsedTimer clock;
        clock.start();
        QTest::mousePress(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::qWait(800);
        QCOMPARE(spy.size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(spy.size(), 2, 3000);
        // Qt's coarse timers may fire up to 5% early.
        QVERIFY2(clock.elapsed() >= 950, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(spy.at(1), (QList<QVariant>{"key:vol-repeat", "held"}));
        QVERIFY(button.holdFired());
        QTest::mouseRelease(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(spy.size(), 2);
        QVERIFY(!button.isDown());
    }

    void holdingWithoutAHoldUrlStillClicks()
    {
        Surface surface(buttonBlock("CTavoButton", 10, 10));
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Plain", "key:plain");
        button.init(&s);
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        QTest::mousePress(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::qWait(1150);
        QCOMPARE(spy.size(), 1);
        QVERIFY(!button.holdFired());
        QTest::mouseRelease(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(spy.size(), 2);
        QCOMPARE(spy.at(1).at(0).toString(), QString("key:plain"));
    }

    void leavingThePressedButtonCancelsIt()
    {
        Surface surface(buttonBlock("CTavoButton", 10, 10));
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Go", "key:go", "key:go-held");
        button.init(&s);
        QSignalSpy clicks(&button, &CTavoButton::buttonClicked);
        QSignalSpy events(&surface.widget, &CTavoLayoutWidget::layoutWidgetSignal);
        QTest::mousePress(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        surface.move(QPoint(60, 30));
        QVERIFY(button.isDown());
        surface.move(QPoint(250, 200));
        surface.move(QPoint(260, 210));
        QVERIFY(!button.isDown());
        QCOMPARE(events.size(), 1);
        QCOMPARE(events.at(0).at(0).toString(), QString("button-cancelled"));
        QTest::mouseRelease(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(260, 210));
        // Only the press was told; neither the hold nor a click follow.
        QTest::qWait(1100);
        QCOMPARE(clicks.size(), 1);
        QCOMPARE(s_sounds, 0);
    }

    void aReleaseOutsideSendsNoClick()
    {
        Surface surface(buttonBlock("CTavoButton", 10, 10));
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Go", "key:go");
        button.init(&s);
        QSignalSpy clicks(&button, &CTavoButton::buttonClicked);
        QTest::mousePress(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::mouseRelease(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(300, 250));
        QVERIFY(!button.isDown());
        QCOMPARE(clicks.size(), 1);
        QCOMPARE(surface.widget.pressedButton(), static_cast<CTavoButton*>(nullptr));
    }

    void onlyDirectChildrenOfTheSurfaceAreRouted()
    {
        Surface surface(buttonBlock("CTavoButton", 10, 10));
        QVERIFY(surface.exposed());
        CTavoWidget holder(&surface.widget, 2, 0, 0, 400, 300);
        CTavoButton nested(&surface.widget);
        nested.setParent(&holder);
        TavoButtonSettings s = settings("Nested", "key:nested");
        nested.init(&s);
        QCOMPARE(nested.rect(), QRect(10, 10, 100, 40));
        QSignalSpy spy(&nested, &CTavoButton::buttonClicked);
        QTest::mouseClick(&surface.widget, Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(spy.isEmpty());
        QVERIFY(!nested.isDown());
    }

    void theSurfacePaintsButtonLabelAndIcon()
    {
        Surface surface("CTavoButton { size: 100x40; location: 10:10; background: #ff0000; font: 12px DejaVu Sans;"
                        " color: #000000; text-align: left top; label-location: 0:20; label-size: 100x20;"
                        " icon-location: 4:4; enable-icon-alignment: false; }");
        QVERIFY(surface.exposed());
        CTavoButton button(&surface.widget);
        TavoButtonSettings s = settings("Label", "key:x", QString(), QString(), kMessages);
        button.init(&s);
        const QImage image = surface.widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
        // Icon at the button's corner plus its offset, on the red background.
        QCOMPARE(countColour(image, QRect(14, 14, 20, 10), kGreen), 200);
        QVERIFY(countColour(image, QRect(10, 10, 100, 40), kRed) > 2000);
        QVERIFY(TextTest::inked(image, QRect(10, 30, 100, 20), kRed) > 20);
    }

    // --- through handleEvent -------------------------------------------------------

    void disabledOrHiddenButtonsSwallowPresses()
    {
        CTavoButton button;
        TavoButtonSettings s = settings("A", "key:a", QString(), "key:a-press");
        button.init(&s);
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        button.setEnabled(false);
        QVERIFY(button.handleEvent(QEvent::MouseButtonPress, QPoint()));
        QVERIFY(!button.isDown());
        button.setEnabled(true);
        button.setVisible(false);
        QVERIFY(button.handleEvent(QEvent::KeyPress, QPoint()));
        QVERIFY(spy.isEmpty());
        button.setVisible(true);
        QVERIFY(!button.handleEvent(QEvent::MouseMove, QPoint()));
        QVERIFY(!button.handleEvent(QEvent::Wheel, QPoint()));
        QVERIFY(!button.handleEvent(QEvent::FocusIn, QPoint()));
    }

    void aReleaseWithoutPressIsSilent()
    {
        CTavoButton button;
        TavoButtonSettings s = settings("A", "key:a");
        button.init(&s);
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        QVERIFY(button.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QVERIFY(button.handleEvent(QEvent::KeyRelease, QPoint()));
        QVERIFY(spy.isEmpty());
        QCOMPARE(s_sounds, 0);
    }

    void keysPressAndReleaseLikeTheMouse()
    {
        CTavoButton button;
        TavoButtonSettings s = settings("A", "key:a", "key:a-hold", "key:a-press");
        button.init(&s, "data");
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        QVERIFY(button.handleEvent(QEvent::KeyPress, QPoint()));
        QVERIFY(button.isDown());
        button.onHoldTimeout();
        QVERIFY(button.handleEvent(QEvent::KeyRelease, QPoint()));
        QCOMPARE(spy.size(), 2);
        QCOMPARE(spy.at(0), (QList<QVariant>{"key:a-press", "pressed"}));
        QCOMPARE(spy.at(1), (QList<QVariant>{"key:a-hold", "held"}));
        // The next press clears the hold: its release clicks.
        QVERIFY(button.handleEvent(QEvent::MouseButtonDblClick, QPoint()));
        QVERIFY(!button.holdFired());
        QVERIFY(button.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QCOMPARE(spy.last(), (QList<QVariant>{"key:a", "data"}));
        // A hold timeout on a button that is up does nothing.
        button.onHoldTimeout();
        QCOMPARE(spy.size(), 4);
    }

    void urlsAndTextsComeFromTheRecord()
    {
        TavoButtonSettings s = settings("Main", "u:click", "u:hold", "u:press", -1, "Aux");
        CTavoButton button(&s, nullptr);
        QCOMPARE(button.url(), QString("u:click"));
        QCOMPARE(button.url(1), QString("u:press"));
        QCOMPARE(button.url(2), QString("u:hold"));
        QCOMPARE(button.url(7), QString("u:click"));
        QCOMPARE(button.label(), QString("Main"));
        QCOMPARE(button.text(), QString("Main"));
        QCOMPARE(button.altText(), QString("Aux"));
        QCOMPARE(button.name(), QString("name"));
        QVERIFY(!button.isNewDefinition(s));
        TavoButtonSettings other = s;
        other.m_holdUrl = "u:other";
        QVERIFY(button.isNewDefinition(other));
        other = s;
        other.m_icon.m_iconIndex = 9;
        QVERIFY(button.isNewDefinition(other));

        QSignalSpy changed(&button, &CTavoButton::labelChanged);
        button.setLabel("Renamed");
        QCOMPARE(button.labelWidget()->text(), QString("Renamed"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0).at(0).toString(), QString("u:click"));
        button.setLabel("Renamed");
        QCOMPARE(changed.size(), 1);
        button.disableMainLabel();
        QVERIFY(!button.labelWidget()->isVisible());
        button.enableMainLabel();
        QVERIFY(button.labelWidget()->isVisible());

        // A null record is refused and changes nothing.
        button.init(nullptr);
        QCOMPARE(button.url(), QString("u:click"));
        TavoButtonSettings cleared = s;
        cleared.reset(4);
        QCOMPARE(cleared.m_buttonType, 4);
        QVERIFY(cleared.m_clickUrl.isEmpty());
        QCOMPARE(cleared.m_priority, ItemPriorityNormal);
    }

    void ledHooksLeaveThePlainButtonAlone()
    {
        CTavoButton button;
        TavoButtonSettings s = settings("Line 1", "line:1");
        button.init(&s);
        const QRect before = button.rect();
        button.setLedIndicator(Qt::green);
        button.setLedIndicator(Qt::red, 500);
        button.setReferenceTime(1000);
        button.onBaseTimerTimeout(250);
        QVERIFY(!button.isCadenceStarted());
        QCOMPARE(button.getCadenceTime(), 0);
        QCOMPARE(button.rect(), before);
        button.setEnabled(false);
        QMetaObject::invokeMethod(&button, "enable");
        QVERIFY(button.isEnabled());
    }

    // --- look ------------------------------------------------------------------------

    void priorityPicksTheStyleBlock()
    {
        useStyle("CTavoButton { size: 80x30; } CTavoButton:high { size: 90x30; } CTavoButton:urgent { size: 99x30; }"
                 " CTavoButton:mine { size: 50x30; }");
        CTavoButton button;
        button.setStyleSheet(&m_sheet, true);
        QCOMPARE(button.width(), 80);
        button.setPriority(ItemPriorityHigh);
        QCOMPARE(button.pseudoState(), QString("high"));
        QCOMPARE(button.width(), 90);
        QCOMPARE(button.icon()->pseudoState(), QString("high"));
        button.changePriority(ItemPriorityUrgent);
        QCOMPARE(button.pseudoState(), QString("urgent"));
        QCOMPARE(button.width(), 99);
        button.setPriority(ItemPriorityNormal);
        QVERIFY(button.pseudoState().isEmpty());
        QCOMPARE(button.width(), 80);
        // A state set by somebody else stays.
        button.setPseudoState("mine");
        QCOMPARE(button.width(), 50);
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
                 "CTavoButton#bare { size: 120x60; location: 20:10; disable-label: true; disable-alt-label: true; }");
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

        CTavoButton centred;
        centred.setObjectName("centred");
        centred.setStyleSheet(&m_sheet, false);
        centred.init(&s);
        QCOMPARE(centred.altLabelWidget()->pos(), QPoint(QRect(25, 15, 110, 50).center().x() - 10, 17));
        QVERIFY(!centred.icon()->isVisible());

        CTavoButton bare;
        bare.setObjectName("bare");
        bare.setStyleSheet(&m_sheet, false);
        bare.init(&s);
        QVERIFY(!bare.labelWidget()->isVisible());
        QVERIFY(!bare.altLabelWidget()->isVisible());
    }

    void aButtonWithoutSizeTakesTheIcons()
    {
        useStyle("CTavoButton { icon-location: 0:0; }");
        TavoButtonSettings s = settings(QString(), "u", QString(), QString(), kMessages);
        CTavoButton button;
        button.setStyleSheet(&m_sheet, false);
        button.init(&s);
        QCOMPARE(button.rect().size(), QSize(20, 10));
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
        QCOMPARE(countColour(render(button), QRect(0, 0, 40, 20), kRed), 800);
        // Type 4 selects the alternative picture; focused it falls back to the focused one.
        s.m_buttonType = 4;
        button.init(&s);
        QVERIFY(button.useAlternativeBackground());
        QCOMPARE(countColour(render(button), QRect(0, 0, 40, 20), kBlue), 800);
        button.setFocused(true);
        QCOMPARE(countColour(render(button), QRect(0, 0, 40, 20), kRed), 800);
        button.setEnabled(false);
        QCOMPARE(countColour(render(button), QRect(0, 0, 40, 20), kGreen), 800);
        button.setVisible(false);
        QCOMPARE(countColour(render(button), QRect(0, 0, 40, 20), kWhite), 800);
    }

    void anUnstyledButtonKeepsItsSizeAndPaintsNothing()
    {
        CTavoButton button;
        button.setSize(QSize(30, 30));
        TavoButtonSettings s = settings("x", "u");
        button.init(&s);
        QCOMPARE(button.rect().size(), QSize(30, 30));
        QCOMPARE(countColour(render(button), QRect(0, 0, 300, 200), kWhite), 300 * 200);
    }

    void varWidthButtonFollowsItsText()
    {
        useStyle("CTavoVarWidthButton { size: 10x30; padding: 0 7 0 5; font: 14px DejaVu Sans; color: #000000;"
                 " text-align: left vcenter; background: #ff0000; background-focused: #0000ff; }");
        CTavoVarWidthButton button;
        button.setStyleSheet(&m_sheet, true);
        button.setText("Copy");
        const QFontMetrics metrics(button.labelWidget()->font());
        QCOMPARE(button.width(), metrics.horizontalAdvance("Copy") + 12);
        const int shortWidth = button.width();
        button.setText("Copy all of it");
        QCOMPARE(button.width(), metrics.horizontalAdvance("Copy all of it") + 12);
        QVERIFY(button.width() > shortWidth);
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
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(0))), QString("Key:ArrowDown-5"));
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(20))), QString("Key:Delete-6"));
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(22))), QString("Key:Dialpad0-14"));
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(33))), QString("Key:DialpadPound-13"));
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(56))), QString("Key:Select-3"));
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(152), &unknown)), QString("Key:Unknown-152"));
        QVERIFY(unknown);
        QCOMPARE(QString(CTavoButtonDefs::getKeyUri(SoKeyFuncT(-2147483647 - 1))), QString("Key:Unknown--2147483648"));

        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Down, 0)), 0);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Up, 0)), 3);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Backspace, 0)), 20);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_7, Qt::KeypadModifier)), 29);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Asterisk, 0)), 32);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Return, 0)), 56);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(Qt::Key_Z, 0)), 152);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_3, Qt::KeypadModifier, "3");
        QCOMPARE(int(CTavoButtonDefs::getSoKey(&key)), 25);
        QCOMPARE(int(CTavoButtonDefs::getSoKey(nullptr)), 152);
        QVERIFY(CTavoButtonDefs::isDialpadKey(&key));
        QVERIFY(!CTavoButtonDefs::isDialpadKey(SoKeyFuncT(56)));
        QVERIFY(CTavoButtonDefs::isNavigationKey(SoKeyFuncT(1)));
        QVERIFY(CTavoButtonDefs::isSoftKey(SoKeyFuncT(62)));
        QVERIFY(CTavoButtonDefs::isLineKey(SoKeyFuncT(34)));
        QVERIFY(CTavoButtonDefs::isGuiKey(SoKeyFuncT(20)));
        QVERIFY(!CTavoButtonDefs::isGuiKey(SoKeyFuncT(152)));
        QVERIFY(CTavoButtonDefs::isQtKeyDialpadKey("#"));
        QVERIFY(!CTavoButtonDefs::isQtKeyDialpadKey("a"));
        QVERIFY(!CTavoButtonDefs::isQtKeyDialpadKey("12"));
        QVERIFY(!CTavoButtonDefs::isQtKeyDialpadKey(nullptr));

        // Every row is a "Key:name-number" text, and every key's first row maps back to it.
        QRegExp shape("^Key:[A-Za-z0-9]+-[0-9]+$");
        for (int i = 0; i < CTavoButtonDefs::KEY_COUNT; ++i) {
            const CTavoButtonDefs::KeyDefT& row = CTavoButtonDefs::table()[i];
            QVERIFY2(shape.exactMatch(row.uri), row.uri);
            QCOMPARE(int(CTavoButtonDefs::getSoKey(row.qtKey, 0)), int(row.soKey));
            QVERIFY(CTavoButtonDefs::getQtKey(row.uri) != 0);
        }
        QCOMPARE(CTavoButtonDefs::getQtKey(SoKeyFuncT(2)), int(Qt::Key_Right));
        QCOMPARE(CTavoButtonDefs::getQtKey("Key:Select-3"), int(Qt::Key_Return));
        QCOMPARE(CTavoButtonDefs::getQtKey("Key:Nothing-1"), 0);
        QCOMPARE(CTavoButtonDefs::getQtKey(static_cast<const char*>(nullptr)), 0);
        QCOMPARE(CTavoButtonDefs::getQtKey(SoKeyFuncT(152)), 0);
    }

    void simulatedKeysArrivePosted()
    {
        struct Receiver : QObject
        {
            QList<QKeyEvent> keys;
            bool event(QEvent* e) override
            {
                if (e->type() == QEvent::KeyPress || e->type() == QEvent::KeyRelease)
                    keys.append(*static_cast<QKeyEvent*>(e));
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
        QCOMPARE(receiver.keys.at(0).type(), QEvent::KeyPress);
        QCOMPARE(receiver.keys.at(0).key(), int(Qt::Key_1));
        QCOMPARE(receiver.keys.at(0).text(), QString("1"));
        QVERIFY(receiver.keys.at(0).modifiers() & Qt::KeypadModifier);
        QCOMPARE(receiver.keys.at(1).type(), QEvent::KeyRelease);
    }

    void documentsBecomeButtonRecords()
    {
        CTXMLSoftkey key;
        key.set("Anrufen \xe2\x98\x8e", "softkey:539-call", 2, CTXMLSoftkey::SoftkeyContextSensitive, "softkey:539-hold",
                "softkey:539-press", nullptr, ItemPriorityUrgent, nullptr, 0, CTXMLIcon::tavoIcon(22));
        key.id = 17;
        key.extent = 100;
        txml::copyText(key.iconName, sizeof key.iconName, "phone.png");
        TavoButtonSettings s = CTXMLDataConverter::getButtonDefFromXml(&key);
        QCOMPARE(s.m_label, QString::fromUtf8("Anrufen \xe2\x98\x8e"));
        QCOMPARE(s.m_clickUrl, QString("softkey:539-call"));
        QCOMPARE(s.m_holdUrl, QString("softkey:539-hold"));
        QCOMPARE(s.m_pressUrl, QString("softkey:539-press"));
        QCOMPARE(s.m_softkeyType, 2);
        QCOMPARE(s.m_buttonType, 3);
        QCOMPARE(s.m_name, QString("phone.png"));
        QCOMPARE(s.m_icon.m_iconIndex, 22);
        QCOMPARE(s.m_id, 17);
        QCOMPARE(s.m_priority, ItemPriorityUrgent);
        QVERIFY(s.m_auxText.isEmpty());
        key.extent = 1280;
        QCOMPARE(CTXMLDataConverter::getButtonDefFromXml(&key).m_buttonType, 4);

        TavoButtonSettings untouched = settings("keep", "keep:url");
        CTXMLDataConverter::getButtonDefFromXml(untouched, static_cast<const CTXMLSoftkey*>(nullptr));
        CTXMLDataConverter::getButtonDefFromXml(untouched, static_cast<const CTXMLIcon*>(nullptr));
        QCOMPARE(untouched.m_clickUrl, QString("keep:url"));

        CTXMLIcon icon;
        icon.set(5, 7, "file.png", "Lab", "12, 0,600,521,x,3,,-4");
        const CTavoIconDefinition def = CTXMLDataConverter::getIconDefFromXml(&icon);
        QCOMPARE(def.m_label, QString("Lab"));
        QCOMPARE(def.m_iconIndex, 5);
        QCOMPARE(def.m_pressedIconIndex, 7);
        QCOMPARE(def.m_url, QString("file.png"));
        QCOMPARE(def.m_iconIndexes, (QList<int>{12, 521, 3}));
        QCOMPARE(CTXMLDataConverter::getIconDefFromXml(nullptr), CTavoIconDefinition());

        CTXMLLineKey line;
        line.kind = 1;
        line.id = 4;
        txml::copyText(line.label, sizeof line.label, QByteArray("Line \xc3\xa9").toBase64().constData());
        txml::copyText(line.url, sizeof line.url, "line:4");
        line.icon.set(35);
        const TavoButtonSettings fromLine = CTXMLDataConverter::getButtonDefFromXml(&line);
        QCOMPARE(fromLine.m_label, QString::fromUtf8("Line \xc3\xa9"));
        QCOMPARE(fromLine.m_clickUrl, QString("line:4"));
        QCOMPARE(fromLine.m_icon.m_iconIndex, 35);

        CTXMLListMenu item;
        txml::copyText(item.label, sizeof item.label, "Row");
        txml::copyText(item.url, sizeof item.url, "menu:1");
        item.extent = 5000;
        const TavoButtonSettings fromItem = CTXMLDataConverter::getButtonDefFromXml(&item);
        QCOMPARE(fromItem.m_label, QString("Row"));
        QCOMPARE(fromItem.m_buttonType, 4);

        // A record from a document drives a real button.
        CTavoButton button;
        button.init(&s);
        QSignalSpy spy(&button, &CTavoButton::buttonClicked);
        button.handleEvent(QEvent::MouseButtonPress, QPoint());
        button.onHoldTimeout();
        QCOMPARE(spy.last(), (QList<QVariant>{"softkey:539-hold", "held"}));
    }
};

TAVO_TEXT_TEST_MAIN(TestButton)
#include "tst_button.moc"
