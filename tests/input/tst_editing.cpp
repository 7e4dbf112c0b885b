// What keys and fingers do to a field: the entry rules and refused input per
// mode as data rows, the byte limit on whole characters typed or inserted, the backspace key and button, and the
// magnifier under a held finger, smoothed on its 50 ms timer, with the text
// cursor held still while it shows.
#include <QtTest>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QToolButton>

#include "input/CTavoInput.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoMagnifyingGlass.h"

namespace {
// Dial pad keys for digits, star and pound, with the keypad modifier; other
// characters go in as a multi-tap strip would hand them over.
void enter(CTavoInput* field, const QString& text)
{
    for (const QChar c : text) {
        if (c.isDigit() || c == '*' || c == '#') {
            const Qt::Key k = c == '*' ? Qt::Key_Asterisk : c == '#' ? Qt::Key_NumberSign
                                                                      : Qt::Key(Qt::Key_0 + c.digitValue());
            QTest::sendKeyEvent(QTest::Click, field, k, QString(c), Qt::KeypadModifier);
        } else {
            field->onEntered(c, false);
        }
    }
}

// Characters as key events: the dial pad key for a digit, the character's own
// Qt key for the rest.
void type(QWidget* w, const QString& text)
{
    for (const QChar c : text) {
        const Qt::Key k = c.isDigit() ? Qt::Key(Qt::Key_0 + c.digitValue())
            : c.unicode() < 0x80      ? Qt::Key(c.toUpper().unicode())
                                      : Qt::Key_unknown;
        QTest::sendKeyEvent(QTest::Click, w, k, QString(c), Qt::NoModifier);
    }
}

// Counts the blink timer's events of QLineEdit's line control.
struct BlinkCounter : QObject
{
    int ticks = 0;
    bool eventFilter(QObject*, QEvent* e) override
    {
        if (e->type() == QEvent::Timer)
            ++ticks;
        return false;
    }
};

QObject* lineControl(QLineEdit* edit)
{
    for (QObject* child : edit->children()) {
        if (QByteArray(child->metaObject()->className()) == "QWidgetLineControl")
            return child;
    }
    return nullptr;
}

struct Screen
{
    QStringList keys;  // first: the field still talks while the surface goes
    CTavoLayoutWidget surface;
    CTavoInput* field;

    Screen()
    {
        surface.resize(480, 240);
        field = new CTavoInput(&surface);
        field->setGeometry(20, 120, 300, 40);
        QObject::connect(field, &CTavoInput::contextSensitiveSk, [this](QString url, QString, int value) {
            keys << url.section(':', 1) + QString(value == 1 ? "+" : value == 0 ? "-" : "~");
        });
    }
    bool show()
    {
        surface.show();
        QApplication::setActiveWindow(&surface);
        if (!QTest::qWaitForWindowActive(&surface))
            return false;
        field->setFocus(Qt::TabFocusReason);
        return field->hasFocus();
    }
    // A glass of factor 2 with a full mask.
    CTavoMagnifyingGlass* glass()
    {
        CTavoMagnifyingGlass* g = field->magnifyingGlass();
        QImage mask(6, 2, QImage::Format_ARGB32);
        mask.fill(Qt::white);
        g->setMagGlassMask(mask);
        g->setMagFactor(2.0f);
        return g;
    }
    void mouse(QEvent::Type type, QPointF at, Qt::MouseButtons buttons = Qt::LeftButton)
    {
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, at, field->mapToGlobal(at.toPoint()), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(field, &e);
    }
};
}  // namespace

class TestEditing : public QObject
{
    Q_OBJECT

private slots:
    // Characters a mode refuses are dropped silently; the rest as typed.
    void refusedInputPerMode_data()
    {
        QTest::addColumn<QString>("modes");
        QTest::addColumn<QString>("params");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<QString>("selected");
        QTest::newRow("123: letters") << "123;abc" << "" << "4x2" << "42" << "";
        QTest::newRow("123: minus where the minimum is 0") << "123" << "min=0;max=90" << "-7" << "7" << "";
        QTest::newRow("123: minus where the minimum is 5") << "123" << "min=5;max=90" << "-" << "" << "";
        QTest::newRow("123: minus with a negative minimum") << "123" << "min=-9;max=90" << "-" << "-" << "";
        QTest::newRow("123: clamped to the maximum") << "123" << "min=10;max=20" << "99" << "20" << "20";
        QTest::newRow("123: comma, point and space") << "123" << "" << "1,2. 3" << "123" << "";
        QTest::newRow("123T: above the maximum") << "123T" << "max=50" << "71" << "50" << "50";
        QTest::newRow("Hex: punctuation but . / : [ ]") << "Hex" << "" << "a-b_c.d/e" << "abc.d/e" << "";
        QTest::newRow("IPv6: plus and letters") << "IPv6" << "" << "fe+80::z1" << "fe80::1" << "";
        QTest::newRow("IP: 255") << "IP" << "" << "255" << "255.000.000.000" << "000";
        QTest::newRow("IP: a letter closes the group") << "IP" << "" << "1x7" << "001.007.000.000" << "";
        QTest::newRow("IP: short group") << "IP" << "" << "30" << "030.000.000.000" << "";
        // "-": nothing selected; a clamped value is selected whole.
        QTest::newRow("123: minus alone") << "123" << "" << "-" << "-" << "-";
        QTest::newRow("123: minus zero refused") << "123" << "" << "-0" << "-" << "-";
        QTest::newRow("123: leading zero removed") << "123" << "" << "07" << "7" << "-";
        QTest::newRow("123: single zero removed without range") << "123" << "" << "0" << "" << "-";
        QTest::newRow("123: single zero kept in 0..9") << "123" << "min=0;max=9" << "0" << "0" << "-";
        QTest::newRow("123: leading zeros allowed") << "123" << "leadingZero=1" << "007" << "007" << "-";
        QTest::newRow("123: point dropped when numeric only") << "123" << "" << "1.5" << "15" << "-";
        QTest::newRow("123;abc: point kept") << "123;abc" << "" << "1.5" << "1.5" << "-";
        QTest::newRow("123;abc: second point refused") << "123;abc" << "" << "1.." << "1." << "-";
        QTest::newRow("123: low value allowed while typing") << "123" << "min=10;max=20" << "1" << "1" << "-";
        QTest::newRow("123: below a negative minimum") << "123" << "min=-50;max=20" << "-60" << "-50" << "-50";
    }
    void refusedInputPerMode()
    {
        QFETCH(QString, modes);
        QFETCH(QString, params);
        QFETCH(QString, typed);
        QFETCH(QString, selected);
        Screen s;
        s.field->set(modes.toUtf8().constData(), QString(), 32, 0, params.toUtf8().constData());
        QVERIFY(s.show());
        enter(s.field, typed);
        QTEST(s.field->text(), "expected");
        if (selected == QLatin1String("-"))
            QVERIFY(!s.field->hasSelectedText());
        else if (!selected.isEmpty())
            QCOMPARE(s.field->selectedText(), selected);
    }

    // QLineEdit counts characters; the field holds the UTF-8 bytes to the
    // limit, whole characters, whether typed or inserted.
    void byteLimitCutsWholeCharacters_data()
    {
        QTest::addColumn<bool>("keys");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QString>("inserted");
        QTest::addColumn<QString>("expected");
        const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");  // four bytes, two QChars
        QTest::newRow("pasted two-byte text") << false << 5 << QString::fromUtf8("ääää") << QString::fromUtf8("ää");
        QTest::newRow("a surrogate pair is not split") << false << 6 << "ab" + face + "c" << "ab" + face;
        QTest::newRow("a pair that does not fit goes whole") << false << 5 << "ab" + face << "ab";
        QTest::newRow("three-byte after ascii") << false << 4 << QString::fromUtf8("a€€") << QString::fromUtf8("a€");
        QTest::newRow("keys: two-byte characters freeze at the limit")
            << true << 4 << QString::fromUtf8("éééé") << QString::fromUtf8("éé");
        QTest::newRow("keys: mixed, exactly full") << true << 5 << QString::fromUtf8("aéé") << QString::fromUtf8("aéé");
        QTest::newRow("keys: a character that would cross is cut") << true << 5 << QString::fromUtf8("aaaaé") << "aaaa";
        QTest::newRow("keys: three-byte characters") << true << 7 << QString::fromUtf8("€€€€") << QString::fromUtf8("€€");
        QTest::newRow("keys: maximum length 0 takes nothing") << true << 0 << "ab" << "";
    }
    void byteLimitCutsWholeCharacters()
    {
        QFETCH(bool, keys);
        QFETCH(int, limit);
        QFETCH(QString, inserted);
        QFETCH(QString, expected);
        Screen s;
        s.field->set("abc", QString(), limit, 0, "");
        QVERIFY(s.show());
        if (keys)
            type(s.field, inserted);
        else
            s.field->insert(inserted);
        QCOMPARE(s.field->text(), expected);
        QVERIFY(s.field->text().toUtf8().size() <= limit);
        QVERIFY(expected.isEmpty() || !QChar(s.field->text().back()).isHighSurrogate());
        // Deleting gives room again.
        if (keys && !expected.isEmpty()) {
            QTest::keyClick(s.field, Qt::Key_Backspace);
            type(s.field, "z");
            QCOMPARE(s.field->text(), expected.left(expected.size() - 1) + "z");
        }
    }

    // A dial pad digit without a strip types the event's own text, whatever
    // its modifier; Qt's later event types go to QLineEdit untouched.
    void dialPadDigitsAndLaterEvents()
    {
        Screen s;
        s.field->set("abc", QString(), 32, 0, "");
        QVERIFY(s.show());
        QVERIFY(!s.field->kateInput());
        QTest::sendKeyEvent(QTest::Click, s.field, Qt::Key_5, "5", Qt::KeypadModifier);
        QTest::sendKeyEvent(QTest::Click, s.field, Qt::Key_6, "6", Qt::NoModifier);
        QTest::sendKeyEvent(QTest::Click, s.field, Qt::Key_Asterisk, "*", Qt::KeypadModifier);
        QCOMPARE(s.field->text(), QString("56*"));
        // Above InputMethod (83): a touch and a font change, both QLineEdit's own.
        QTouchEvent touch(QEvent::TouchBegin);
        static_cast<QObject*>(s.field)->event(&touch);
        QEvent fontChange(QEvent::FontChange);
        QVERIFY(static_cast<QObject*>(s.field)->event(&fontChange));
        QVERIFY(!static_cast<QObject*>(s.field)->event(nullptr));
        QCOMPARE(s.field->text(), QString("56*"));
    }

    void backspaceShownWhenItMakesSense_data()
    {
        QTest::addColumn<bool>("inlineButton");
        QTest::addColumn<bool>("hidesOnClear");
        QTest::addColumn<QString>("modes");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("cursor");
        QTest::addColumn<bool>("allowPrefix");
        QTest::addColumn<bool>("shown");
        QTest::newRow("key: cursor at 0") << false << false << "abc" << "ab" << 0 << true << false;
        QTest::newRow("key: cursor after text") << false << false << "abc" << "ab" << 2 << true << true;
        QTest::newRow("button: cursor at 0") << true << false << "abc" << "ab" << 0 << true << true;
        QTest::newRow("button: empty and hides on clear") << true << true << "abc" << "" << 0 << true << false;
        QTest::newRow("button: empty") << true << false << "abc" << "" << 0 << true << true;
        QTest::newRow("URL behind a protected sip:") << false << false << "URL" << "sip:1" << 4 << false << false;
        QTest::newRow("URL behind an editable sip:") << false << false << "URL" << "sip:1" << 4 << true << true;
        QTest::newRow("URL behind a protected h323:") << false << false << "URL" << "h323:1" << 5 << false << false;
        QTest::newRow("URL further on") << false << false << "URL" << "sip:1" << 5 << false << true;
    }
    void backspaceShownWhenItMakesSense()
    {
        QFETCH(bool, inlineButton);
        QFETCH(bool, hidesOnClear);
        QFETCH(QString, modes);
        QFETCH(QString, text);
        QFETCH(int, cursor);
        QFETCH(bool, allowPrefix);
        Screen s;
        s.field->setUseInlineBackspace(inlineButton);
        s.field->setInlineBackspaceHidesOnClear(hidesOnClear);
        s.field->set(modes.toUtf8().constData(), text, 32, 0, "");
        s.field->setAllowUrlPrefixEditing(allowPrefix);
        s.field->setCursorPosition(cursor);
        QTEST(s.field->shouldShowBackspaceSk(), "shown");
    }

    // Two layouts of the button: shown by the field's rule, and on a resize.
    void inlineBackspaceButton()
    {
        Screen s;
        s.field->setUseInlineBackspace(true);
        s.field->setBackspaceMinWidth(70);
        s.field->setBackspaceMinHeight(20);
        s.field->set("abc", "hello", 32, 0, "");
        QVERIFY(s.show());
        s.field->end(false);
        s.field->showBackspaceButton(true);
        QToolButton* button = s.field->backspaceButton();
        QVERIFY(button->isVisible());
        // max(40 + 10, 70) by max(40 - 6, 20), centred, at the right edge.
        QCOMPARE(button->geometry(), QRect(300 - 70, 20 - 17, 70, 34));
        QCOMPARE(s.field->textMargins().right(), 70);
        QCOMPARE(s.field->getToolBarWidth(), 70);
        // A resize lays it out without the minimums, 3 from the top.
        s.field->resize(200, 30);
        QCOMPARE(button->geometry(), QRect(200 - 40, 3, 40, 24));
        QCOMPARE(s.field->textMargins().right(), 40);

        // A press on the button deletes one character; with "clears" all of them.
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(s.field->text(), QString("hell"));
        QSignalSpy cleared(s.field, &CTavoInput::clearChars);
        s.field->setInlineBackspaceClears(true);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(s.field->text(), QString());
        QCOMPARE(cleared.count(), 1);
        // Hiding releases the button first.
        button->setDown(true);
        s.field->showBackspaceButton(false);
        QVERIFY(!button->isVisible() && !button->isDown());
    }

    // The glass under a held finger: smoothed by the filter on a 50 ms timer,
    // the cursor following the smoothed place, its blink held still.
    void magnifierFollowsAHeldFinger()
    {
        Screen s;
        s.field->set("abc", "magnifying glass", 32, 0, "");
        QVERIFY(s.show());
        CTavoMagnifyingGlass* glass = s.field->magnifyingGlass();
        QVERIFY(glass && glass->parentWidget() == &s.surface && glass->source() == s.field);
        QCOMPARE(glass->objectName(), QString("magnifying-glass"));

        // Without a factor the finger only places the cursor.
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(!glass->isVisible() && !s.field->isMagnifierTimerRunning());
        s.mouse(QEvent::MouseButtonRelease, QPointF(30, 20), Qt::NoButton);

        s.glass();
        BlinkCounter blinks;
        QObject* control = lineControl(s.field);
        QVERIFY(control);
        control->installEventFilter(&blinks);

        s.mouse(QEvent::MouseButtonPress, QPointF(40, 20));
        QVERIFY(glass->isVisible());
        QVERIFY(s.field->isMagnifierTimerRunning());
        QVERIFY(s.field->isCursorBlinkHeld());
        QCOMPARE(glass->size(), QSize(240, 80));
        QCOMPARE(glass->y(), 120 - 80 - 10);
        QCOMPARE(s.field->magnifierPointer(), QPointF(40, 20));
        const int atPress = s.field->cursorPosition();

        // A quick move: the pointer handed over trails the finger, then catches up.
        s.mouse(QEvent::MouseMove, QPointF(200, 22));
        QVERIFY(s.field->magnifierPointer().x() < 100);
        QTest::qWait(120);
        const qreal early = s.field->magnifierPointer().x();
        QVERIFY2(early > 40 && early < 200, qPrintable(QString::number(early)));
        QTRY_VERIFY_WITH_TIMEOUT(s.field->magnifierPointer().x() >= 198, 3000);
        QCOMPARE(s.field->magnifierPointer().y(), 22.0);
        QVERIFY(s.field->cursorPosition() > atPress);
        // Dragging low over the field moves the cursor without selecting.
        QVERIFY(!s.field->hasSelectedText());
        // The glass follows the smoothed place; its cache is the text as it stands.
        QVERIFY(qAbs(glass->x() + glass->width() / 2 - (20 + 198)) <= 3);
        QVERIFY(glass->cachedImage());

        // While it shows the cursor does not blink: the blink timer's events
        // never reach QLineEdit's line control.
        blinks.ticks = 0;
        QTest::qWait(1200);
        QCOMPARE(blinks.ticks, 0);

        s.mouse(QEvent::MouseButtonRelease, QPointF(200, 22), Qt::NoButton);
        QVERIFY(!glass->isVisible());
        QVERIFY(!s.field->isMagnifierTimerRunning());
        QVERIFY(!s.field->isCursorBlinkHeld());
        QTRY_VERIFY_WITH_TIMEOUT(blinks.ticks > 0, 3000);
        control->removeEventFilter(&blinks);
    }

    void magnifierStaysAwayWhereItShould()
    {
        Screen s;
        s.field->setUseInlineBackspace(true);
        s.field->set("abc", "some text", 32, 0, "");
        QVERIFY(s.show());
        CTavoMagnifyingGlass* glass = s.glass();
        s.field->end(false);
        s.field->showBackspaceButton(true);
        QToolButton* button = s.field->backspaceButton();
        QVERIFY(button->isVisible());

        // On the button (or 3 pixels from it) no glass starts.
        s.mouse(QEvent::MouseButtonPress, QPointF(button->x() - 2, 20));
        QVERIFY(!glass->isVisible());
        s.mouse(QEvent::MouseButtonRelease, QPointF(button->x() - 2, 20), Qt::NoButton);
        // Elsewhere it does, clipped to the text left of the button.
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(glass->isVisible());
        QCOMPARE(glass->clip(), QRect(0, 0, button->x(), 41));
        // A move without the button held hides it; so does leaving the field.
        s.mouse(QEvent::MouseMove, QPointF(40, 20), Qt::NoButton);
        QVERIFY(!glass->isVisible());
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(glass->isVisible());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(s.field, &leave);
        QVERIFY(!glass->isVisible() && !s.field->isMagnifierTimerRunning());
        // A key hides it too.
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(glass->isVisible());
        QTest::keyClick(s.field, Qt::Key_X);
        QVERIFY(!glass->isVisible());

        // Fields that ignore it, and empty fields, show none.
        s.field->setIgnoreMagnifierEvents(true);
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(!glass->isVisible());
        s.field->setIgnoreMagnifierEvents(false);
        s.field->setText(QString());
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(!glass->isVisible());

        // A default text that may only be replaced swallows the finger.
        s.field->setText("keep");
        s.field->setPreventEditingDefaultContents(true);
        s.mouse(QEvent::MouseButtonPress, QPointF(5, 20));
        QVERIFY(!glass->isVisible());
        QCOMPARE(s.field->selectedText(), QString("keep"));
        // Focus going hides a glass that shows.
        s.field->setPreventEditingDefaultContents(false);
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(glass->isVisible());
        s.field->clearFocus();
        QVERIFY(!glass->isVisible());
    }

    // A field that changes under the glass: the selection of a low finger goes
    // and the glass renders the new text.
    void cursorMovesUnderTheGlass()
    {
        Screen s;
        s.field->set("abc", "abcdefgh", 32, 0, "");
        QVERIFY(s.show());
        CTavoMagnifyingGlass* glass = s.glass();
        s.mouse(QEvent::MouseButtonPress, QPointF(30, 20));
        QVERIFY(glass->isVisible());
        // The press moved the cursor: the next show renders the text anew.
        QVERIFY(!glass->cachedImage());
        s.field->showMagGlass(QPoint(30, 20));
        QVERIFY(glass->cachedImage());
        s.field->setSelection(0, 3);
        s.field->setCursorPosition(5);
        QVERIFY(!s.field->hasSelectedText());
        QVERIFY(!glass->cachedImage());
        s.mouse(QEvent::MouseButtonRelease, QPointF(30, 20), Qt::NoButton);
    }
};

QTEST_MAIN(TestEditing)
#include "tst_editing.moc"
