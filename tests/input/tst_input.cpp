// The line input through real key events on a real surface: modes, encodings,
// the IPv4 mask, default texts and passwords, and the dialogue with the
// softkey bar (the entry rules and the byte limit: tst_editing).
#include <QtTest>

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QToolButton>

#include "input/CTavoInput.h"
#include "input/CTavoIpAddressValidator.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"

namespace {
// Reaches the flags the owning screens set.
class Field : public CTavoInput
{
public:
    using CTavoInput::CTavoInput;
    void setLockScreenField(bool on) { m_lockScreenField = on; }
    void setReportDialpadKeys(bool on) { m_reportDialpadKeys = on; }
    void setComingFromShiftKey(bool on) { m_comingFromShiftKey = on; }
    void setRightKeyLeavesEmptyField(bool on) { m_rightKeyLeavesEmptyField = on; }
    void setKeepModesOnSameSet(bool on) { m_keepModesOnSameSet = on; }
};

// The key a phone sends for a character: dial pad keys for digits, star and
// pound, the character's own Qt key for the rest.
Qt::Key keyFor(QChar c)
{
    if (c.isDigit())
        return Qt::Key(Qt::Key_0 + c.digitValue());
    if (c == QLatin1Char('*'))
        return Qt::Key_Asterisk;
    if (c == QLatin1Char('#'))
        return Qt::Key_NumberSign;
    if (c.unicode() < 0x80)
        return Qt::Key(c.toUpper().unicode());
    return Qt::Key_unknown;
}

void type(QWidget* w, const QString& text, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, w, keyFor(c), QString(c), modifiers);
}

void key(QWidget* w, Qt::Key k)
{
    QTest::keyClick(w, k);
}

// A surface with two fields; the context keys of the first are recorded as
// "Done+" (show), "Done-" (hide), "Done~" (dim).
struct Screen
{
    QStringList keys;  // first: the fields still talk while the surface goes
    CTavoLayoutWidget surface;
    Field* input;
    Field* other;

    Screen()
    {
        surface.resize(400, 120);
        input = new Field(&surface);
        input->setGeometry(10, 10, 300, 40);
        other = new Field(&surface);
        other->setGeometry(10, 60, 300, 40);
        QObject::connect(input, &CTavoInput::contextSensitiveSk, [this](QString url, QString, int value) {
            keys << url.section(QLatin1Char(':'), 1) + QString(value == 1 ? "+" : value == 0 ? "-" : "~");
        });
    }
    bool show()
    {
        surface.show();
        QApplication::setActiveWindow(&surface);
        if (!QTest::qWaitForWindowActive(&surface))
            return false;
        input->setFocus(Qt::TabFocusReason);
        return input->hasFocus();
    }
    void leave() { other->setFocus(Qt::TabFocusReason); }
    void enter() { input->setFocus(Qt::TabFocusReason); }
};

}  // namespace

class TestInput : public QObject
{
    Q_OBJECT

private slots:
    void constructedField()
    {
        CTavoInput input;
        QCOMPARE(int(input.mode()), int(InputModeNumericStar));
        QCOMPARE(int(input.encoding()), int(InputEncodingASCII));
        QCOMPARE(input.maxLengthInBytes(), 512);
        QCOMPARE(input.minValue(), -1);
        QCOMPARE(input.maxValue(), -1);
        QCOMPARE(input.idleTimer().interval(), 2000);
        // Without a skin's "kate-input" item there is no strip: keys reach the text
        // directly, and the switch cannot turn it on.
        QVERIFY(!input.kateInput() && !input.xt9Input());
        QVERIFY(!input.useKateInput());
        input.setUseKateInput(true);
        QVERIFY(!input.useKateInput());
        QToolButton* button = input.findChild<QToolButton*>("inline-backspace");
        QCOMPARE(button, input.backspaceButton());
        QVERIFY(button->isHidden() && button->autoRepeat() && button->focusPolicy() == Qt::NoFocus);

        input.setProperty("letterSpacing", 120.0);
        QCOMPARE(input.font().letterSpacingType(), QFont::PercentageSpacing);
        QCOMPARE(input.property("letterSpacing").toReal(), 120.0);
    }

    void modeLists_data()
    {
        QTest::addColumn<QString>("modes");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("numericOnly");
        QTest::addColumn<QString>("mask");

        QTest::newRow("empty list") << "" << 0 << "Abc" << true << "";
        QTest::newRow("abc first") << "abc;ABC;123" << 1 << "abc" << false << "";
        QTest::newRow("numbers only") << "123;123T" << 3 << "123" << true << "";
        QTest::newRow("stepped only") << "123T" << 6 << "123T" << true << "";
        QTest::newRow("star is not numeric only") << "123*" << 12 << "123*" << false << "";
        QTest::newRow("ip after empty entries") << ";;IP;123" << 4 << "IP" << false << "000.000.000.000;_";
        QTest::newRow("unknown name is abc") << "Klingon;ABC" << 1 << "Klingon" << false << "";
        QTest::newRow("names are case sensitive") << "ip" << 1 << "ip" << false << "";
        QTest::newRow("hex") << "Hex" << 9 << "Hex" << false << "";
        QTest::newRow("ipv6") << "IPv6" << 11 << "IPv6" << false << "";
    }

    void modeLists()
    {
        QFETCH(QString, modes);
        QFETCH(int, mode);
        QFETCH(QString, mask);
        CTavoInput input;
        input.set(modes.toUtf8().constData(), QString(), 64, QLineEdit::Normal, "");
        QCOMPARE(int(input.mode()), mode);
        QTEST(input.modeName(), "name");
        QCOMPARE(input.modes(), modes);
        QTEST(input.isNumericOnly(), "numericOnly");
        QCOMPARE(input.inputMask(), mask);
        QCOMPARE(input.isAlphabeticalEditMode(), mode < 3);
        // A mask given by the parameters is applied and then replaced by the mode's.
        input.set(modes.toUtf8().constData(), QString(), 64, QLineEdit::Normal, "mask=AAA-999");
        QCOMPARE(input.inputMask(), mask);
    }

    void encodingsFollowTheModeAndTheirNames()
    {
        CTavoInput input;
        QSignalSpy selected(&input, &CTavoInput::encodingSelected);
        // The encoding is switched before the mode: out of the constructor's
        // numeric mode it stays ASCII, and entering "abc" makes it ASCII again.
        input.set("abc", QString(), 64, 0, "encoding=Cyrillic");
        QCOMPARE(int(input.encoding()), 0);
        QCOMPARE(input.encodingName(), QString("ASCII"));
        // From an alphabetical mode the parameter takes.
        input.set("abc", QString(), 64, 0, "encoding=Cyrillic");
        QCOMPARE(int(input.encoding()), 2);
        QCOMPARE(input.encodingName(), QString("Cyrillic"));
        QCOMPARE(selected.last().at(0).value<InputEncodingT>(), InputEncodingCyrillic);

        // An unknown name keeps the number; the name falls back to ASCII's.
        selected.clear();
        input.switchToEncoding("Klingon");
        QCOMPARE(int(input.encoding()), 2);
        QCOMPARE(input.encodingName(), QString("ASCII"));
        QCOMPARE(selected.count(), 1);
        input.switchToEncoding("value=Latin");
        QCOMPARE(int(input.encoding()), 1);
        // "More" keeps the present encoding.
        input.switchToEncoding("value=More");
        QCOMPARE(int(input.encoding()), 1);
        QCOMPARE(input.encodingName(), QString("Latin"));
        input.switchToEncoding("Unicode");
        QCOMPARE(int(input.encoding()), 4);
        input.switchToEncoding("");
        QCOMPARE(int(input.encoding()), 0);

        // A non-alphabetical mode forces ASCII and announces nothing.
        input.switchToEncoding("Katakana");
        input.switchToMode("123");
        selected.clear();
        input.switchToEncoding("Katakana");
        QCOMPARE(int(input.encoding()), 0);
        QCOMPARE(selected.count(), 0);
        // Entering an alphabetical mode from it announces ASCII.
        input.switchToMode("value=ABC");
        QCOMPARE(int(input.mode()), 2);
        QCOMPARE(input.modeName(), QString("ABC"));
        QCOMPARE(selected.count(), 1);
        QCOMPARE(int(input.encoding()), 0);
        // "More" keeps the mode name; an empty value takes the whole text as the name.
        input.switchToMode("value=More");
        QCOMPARE(input.modeName(), QString("ABC"));
        QCOMPARE(int(input.mode()), 2);
    }

    void recordFormAppliesEncodingAndNamesTheMode()
    {
        Field input;
        QSignalSpy selected(&input, &CTavoInput::encodingSelected);
        CTavoInputParameters p;
        p.m_modes = "123;abc";
        p.m_defaultText = "42";
        p.m_maxLength = 8;
        p.m_uriParams = "min=1;max=100";
        p.m_mode = 7;
        p.m_encoding = 3;
        input.set(p);
        QCOMPARE(int(input.mode()), 3);
        QCOMPARE(input.modeName(), QString("Tel"));
        QCOMPARE(int(input.encoding()), 3);
        QCOMPARE(input.encodingName(), QString("Katakana"));
        QCOMPARE(selected.last().at(0).value<InputEncodingT>(), InputEncodingKatakana);
        QCOMPARE(input.text(), QString("42"));
        QCOMPARE(input.minValue(), 1);
        QCOMPARE(input.maxValue(), 100);

        // Out-of-range numbers in the record leave mode name and encoding alone.
        selected.clear();
        p.m_mode = 13;
        p.m_encoding = 5;
        input.set(p);
        QCOMPARE(input.modeName(), QString("123"));
        QCOMPARE(selected.count(), 0);
        p.m_encoding = -1;
        p.m_mode = -4;
        p.m_maxLength = -7;
        input.set(p);
        QCOMPARE(selected.count(), 0);
        QCOMPARE(input.maxLengthInBytes(), 512);
    }

    void limitsFromParameters_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<int>("maxLength");
        QTest::addColumn<int>("min");
        QTest::addColumn<int>("max");
        QTest::addColumn<int>("bytes");

        QTest::newRow("none") << "" << 2 << -1 << -1 << 2;
        QTest::newRow("max raises the length") << "min=5;max=1000" << 2 << 5 << 1000 << 4;
        QTest::newRow("min alone raises it") << "min=-100" << 2 << -100 << -1 << 4;
        QTest::newRow("max is the last given") << "min=-100000;max=5" << 2 << -100000 << 5 << 2;
        QTest::newRow("never lowered") << "max=5" << 10 << -1 << 5 << 10;
        QTest::newRow("malformed reads as 0") << "min=abc;max=" << 2 << 0 << -1 << 3;
        QTest::newRow("length 0") << "" << 0 << -1 << -1 << 0;
    }

    void limitsFromParameters()
    {
        QFETCH(QString, params);
        QFETCH(int, maxLength);
        QFETCH(int, bytes);
        CTavoInput input;
        input.set("123", QString(), maxLength, 0, params.toUtf8().constData());
        QTEST(input.minValue(), "min");
        QTEST(input.maxValue(), "max");
        QCOMPARE(input.maxLengthInBytes(), bytes);
        QCOMPARE(input.maxLength(), bytes);
    }

    void ipFieldWithMaskAndGroups()
    {
        Screen s;
        s.input->set("IP", QString(), 15, 0, "");
        QVERIFY(s.show());
        // The mask shows four groups and the first one is selected.
        QCOMPARE(s.input->displayText(), QString("000.000.000.000"));
        QCOMPARE(s.input->selectionStart(), 0);
        QCOMPARE(s.input->selectedText(), QString("000"));
        QVERIFY(s.input->validator() == s.input->ipValidator());

        type(s.input, "192");
        QCOMPARE(s.input->text(), QString("192.000.000.000"));
        QCOMPARE(s.input->selectionStart(), 4);
        QCOMPARE(s.input->ipField(), 1);
        // 256 does not fit a group: the field is selected again, "6" goes nowhere.
        type(s.input, "256");
        QCOMPARE(s.input->text(), QString("192.025.000.000"));
        QCOMPARE(s.input->selectedText(), QString("025"));
        key(s.input, Qt::Key_Right);
        QCOMPARE(s.input->selectionStart(), 8);
        key(s.input, Qt::Key_Up);
        QCOMPARE(s.input->selectionStart(), 4);
        key(s.input, Qt::Key_Down);
        type(s.input, "7");
        QCOMPARE(s.input->text(), QString("192.025.007.000"));
        QVERIFY(s.input->isValidInput());
        // Arrows wrap round the four groups.
        key(s.input, Qt::Key_Down);
        key(s.input, Qt::Key_Down);
        QCOMPARE(s.input->selectionStart(), 0);
        key(s.input, Qt::Key_Left);
        QCOMPARE(s.input->selectionStart(), 12);
        // A non-digit moves on to the next group.
        s.input->onEntered(QLatin1Char('.'), false);
        QCOMPARE(s.input->selectionStart(), 0);

        // Leaving the field ends IP mode for good: value 13, no padding, no
        // group selected on the way back, until the next setMode.
        s.leave();
        QCOMPARE(int(s.input->mode()), 13);
        QCOMPARE(s.input->modeName(), QString("IP"));
        s.enter();
        QVERIFY(!s.input->hasSelectedText());
        QCOMPARE(int(s.input->mode()), 13);
        s.input->setMode(InputModeIP);
        QCOMPARE(int(s.input->mode()), 4);
        QCOMPARE(s.input->selectedText(), QString("192"));
    }

    void passwordKeepsItsDefaultText()
    {
        Screen s;
        QVERIFY(s.show());
        s.input->set("abc", "secret", 32, QLineEdit::Password, "", true, 0, false, false);
        QCOMPARE(s.input->QLineEdit::text(), QString("****"));
        QCOMPARE(s.input->text(), QString("secret"));
        QCOMPARE(s.input->echoMode(), QLineEdit::Password);
        QVERIFY(s.input->preventsEditingDefaultContents());
        QCOMPARE(s.input->selectedText(), QString("****"));
        QVERIFY(!s.input->isEdited());
        // The first key replaces the whole masked text.
        type(s.input, "x");
        QCOMPARE(s.input->text(), QString("x"));
        QVERIFY(!s.input->preventsEditingDefaultContents());

        s.input->set("abc", "secret", 32, QLineEdit::Password, "", true, 0, false, true);
        QCOMPARE(s.input->QLineEdit::text(), QString("secret"));
        QVERIFY(!s.input->preventsEditingDefaultContents());
        s.input->set("abc", QString(), 32, QLineEdit::Password, "", true, 0, false, false);
        QCOMPARE(s.input->text(), QString());
        // An unknown echo mode is a normal field.
        s.input->set("abc", "x", 32, 9, "");
        QCOMPARE(s.input->echoMode(), QLineEdit::Normal);
        QCOMPARE(s.input->QLineEdit::echoMode(), QLineEdit::Normal);
    }

    void replaceOnly_data()
    {
        QTest::addColumn<QString>("params");
        QTest::addColumn<int>("echoMode");
        QTest::addColumn<bool>("showDefault");
        QTest::addColumn<bool>("prevent");
        const QString text = QString::fromUtf8("Grüße");
        const QString base64 = QString::fromLatin1(text.toUtf8().toBase64());
        QTest::newRow("matching") << "editPolicy=replaceonly;data=" + base64 << 0 << true << true;
        QTest::newRow("other text") << "editPolicy=replaceonly;data=" + QString("b3RoZXI=") << 0 << true << false;
        QTest::newRow("not base64") << "editPolicy=replaceonly;data=@@@" << 0 << true << false;
        QTest::newRow("no data") << "editPolicy=replaceonly" << 0 << true << false;
        QTest::newRow("other policy") << "editPolicy=free;data=" + base64 << 0 << true << false;
        QTest::newRow("masked password without match") << "editPolicy=replaceonly;data=eA==" << 2 << false << true;
    }

    void replaceOnly()
    {
        QFETCH(QString, params);
        QFETCH(int, echoMode);
        QFETCH(bool, showDefault);
        QFETCH(bool, prevent);
        Screen s;
        QVERIFY(s.show());
        s.input->set("abc", QString::fromUtf8("Grüße"), 64, echoMode, params.toUtf8().constData(), true, 0, false,
                     showDefault);
        QCOMPARE(s.input->preventsEditingDefaultContents(), prevent);
        if (prevent) {
            // Arrows do not move into the text; the first key replaces all of it.
            key(s.input, Qt::Key_Left);
            QVERIFY(s.input->hasSelectedText());
            type(s.input, "a");
            QCOMPARE(s.input->text(), QString("a"));
        } else {
            key(s.input, Qt::Key_End);
            type(s.input, "a");
            QCOMPARE(s.input->QLineEdit::text(), QString::fromUtf8(echoMode ? "****a" : "Grüßea"));
        }
    }

    void validInput_data()
    {
        QTest::addColumn<QString>("modes");
        QTest::addColumn<QString>("params");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");

        QTest::newRow("number in range") << "123" << "min=10;max=20" << "15" << true;
        QTest::newRow("number below") << "123" << "min=10;max=20" << "5" << false;
        QTest::newRow("number above") << "123T" << "max=20" << "21" << false;
        QTest::newRow("text") << "abc" << "min=10" << "5" << true;
        // IPv6 and checked hex fields test the parameter "arg" as the address
        // and give the field's text as the kind, in that order.
        QTest::newRow("ipv6: arg is the address, empty text the kind") << "IPv6" << "arg=2001:db8::1" << "" << true;
        QTest::newRow("ipv6: text as kind") << "IPv6" << "arg=fe80::1/64" << "LLA" << true;
        QTest::newRow("ipv6: an address typed is no kind") << "IPv6" << "" << "2001:db8::1" << false;
        QTest::newRow("hex check 1, ipv4 arg") << "Hex" << "check=1;arg=10.0.0.1" << "abc" << true;
        QTest::newRow("hex check 1, bad arg") << "Hex" << "check=1;arg=10.0.0.300" << "abc" << false;
        QTest::newRow("hex without check") << "Hex" << "check=0;arg=bogus" << "abc" << true;
    }

    void validInput()
    {
        QFETCH(QString, modes);
        QFETCH(QString, params);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        CTavoInput input;
        input.set(modes.toUtf8().constData(), "17", 64, 0, params.toUtf8().constData());
        input.setText(text);
        QCOMPARE(input.isValidInput(), valid);
        // A refused text gives way to the default text, all selected.
        QCOMPARE(input.text(), valid ? text : QString("17"));
        QCOMPARE(input.selectedText(), valid ? QString() : QString("17"));
    }

    void capitalisedModeAsksForCapitals()
    {
        Screen s;
        s.input->set("Abc", QString(), 64, 0, "");
        QVERIFY(s.show());
        QSignalSpy selected(s.input, &CTavoInput::modeSelected);
        auto last = [&] { return int(selected.last().at(0).value<InputModeT>()); };
        type(s.input, "H");
        QCOMPARE(last(), 1);
        type(s.input, ".");
        QCOMPARE(last(), 2);
        type(s.input, " ");
        QCOMPARE(last(), 2);
        type(s.input, "w");
        QCOMPARE(last(), 1);
        key(s.input, Qt::Key_Home);
        QCOMPARE(last(), 0);
        s.input->selectAll();
        QCOMPARE(last(), 2);
        // The field stays in mode 0; only the entry method's keymap follows.
        QCOMPARE(int(s.input->mode()), 0);
        // Upper-case letters from the entry method go in lower case after a letter.
        s.input->end(false);
        s.input->onEntered(QLatin1Char('X'), false);
        QCOMPARE(s.input->text(), QString("H. wx"));
    }

    void identifierWhileFocused()
    {
        Screen s;
        QSignalSpy ids(s.input, &CTavoInput::modeAndEncodingIdentifierUpdated);
        s.input->set("abc;123", QString(), 64, 0, "");
        QVERIFY(s.show());
        QCOMPARE(ids.last().at(0).toString(), QString(" (abc/ASCII)"));
        s.input->switchToMode("123");
        QCOMPARE(ids.last().at(0).toString(), QString(" (123)"));
        s.leave();
        QCOMPARE(ids.last().at(0).toString(), QString());
        // Unfocused, the field says nothing...
        ids.clear();
        s.input->reportMode();
        s.input->onModeAndEncodingChanged();
        QCOMPARE(ids.count(), 0);
        // ...and switching its encoding takes the focus back.
        s.input->switchToMode("abc");
        s.input->switchToEncoding("Latin");
        QVERIFY(s.input->hasFocus());
        QCOMPARE(ids.last().at(0).toString(), QString(" (abc/Latin)"));
    }

    // The field tells the softkey bar which context keys make sense, in a fixed order.
    void softkeyDialogue()
    {
        Screen s;
        s.input->set("abc", QString(), 64, 0, "");
        QVERIFY(s.keys.indexOf("Done-") >= 0 && s.keys.indexOf("Done-") < s.keys.indexOf("Reset-"));
        QVERIFY(s.show());
        s.leave();
        s.keys.clear();
        s.enter();
        QCOMPARE(s.keys.mid(0, 4), QStringList({"Done+", "Reset+", "Backspace-", "ToggleEditMode+"}));
        s.keys.clear();
        s.leave();
        QCOMPARE(s.keys, QStringList({"Done-", "Encoding-", "Backspace-", "ToggleEditMode-", "Reset-"}));

        s.enter();
        s.keys.clear();
        type(s.input, "a");
        QCOMPARE(s.keys.mid(0, 3), QStringList({"Done+", "Reset+", "Backspace+"}));
        QCOMPARE(s.keys.last(), QString("Backspace+"));
        // With "showDoneWhenNoText" off, an empty field offers no commit key.
        s.input->setShowDoneWhenNoText(false);
        s.keys.clear();
        key(s.input, Qt::Key_Backspace);
        QVERIFY(!s.keys.contains("Done+"));
        QVERIFY(s.keys.contains("Reset+"));
        QCOMPARE(s.keys.last(), QString("Backspace-"));
        // A numeric mode takes the mode key away, other non-alphabetical ones leave it.
        s.keys.clear();
        s.input->setMode(InputModeNumeric);
        QVERIFY(s.keys.contains("ToggleEditMode-"));
        s.keys.clear();
        s.input->setMode(InputModeHex);
        QVERIFY(!s.keys.contains("ToggleEditMode-") && !s.keys.contains("ToggleEditMode+"));
    }

    void selectKeyCommits()
    {
        Screen s;
        s.input->set("abc", "hello", 64, 0, "");
        QVERIFY(s.show());
        QSignalSpy done(s.input, &CTavoInput::editDone);
        QSignalSpy returned(s.input, &QLineEdit::returnPressed);
        s.keys.clear();
        key(s.input, Qt::Key_Return);
        QCOMPARE(done.count(), 1);
        QCOMPARE(done.at(0).at(0).toString(), QString("SoftKey:Done"));
        QCOMPARE(done.at(0).at(1).toString(), QString("hello"));
        QCOMPARE(returned.count(), 1);
        QCOMPARE(s.keys.first(), QString("Reset-"));
        s.input->setIgnoreSelectKey(true);
        key(s.input, Qt::Key_Return);
        QCOMPARE(done.count(), 1);
    }

    void cursorKeysAndTheOwner()
    {
        Screen s;
        s.input->set("abc", QString(), 64, 0, "");
        QVERIFY(s.show());
        // Keys the field does not take go on to the surface.
        int reachedSurface = 0;
        struct Filter : QObject {
            int* count;
            bool eventFilter(QObject*, QEvent* e) override
            {
                if (e->type() == QEvent::KeyPress)
                    ++*count;
                return false;
            }
        } filter;
        filter.count = &reachedSurface;
        s.surface.installEventFilter(&filter);
        key(s.input, Qt::Key_Left);
        QCOMPARE(reachedSurface, 1);
        key(s.input, Qt::Key_Right);
        QCOMPARE(reachedSurface, 1);
        s.input->setRightKeyLeavesEmptyField(true);
        key(s.input, Qt::Key_Right);
        QCOMPARE(reachedSurface, 2);

        type(s.input, "abc");
        key(s.input, Qt::Key_Left);
        QCOMPARE(s.input->cursorPosition(), 2);
        key(s.input, Qt::Key_Up);
        QCOMPARE(reachedSurface, 3);
        // With a selection, Left goes to the start and offers Reset.
        s.input->selectAll();
        s.keys.clear();
        key(s.input, Qt::Key_Left);
        QCOMPARE(s.input->cursorPosition(), 0);
        QVERIFY(!s.input->hasSelectedText());
        QVERIFY(s.keys.contains("Reset+"));
        s.input->setIgnoreNavigationKeys(true);
        key(s.input, Qt::Key_Right);
        QCOMPARE(s.input->cursorPosition(), 0);
        QCOMPARE(reachedSurface, 3);
        // TelNoNav keeps the cursor at the end.
        s.input->setIgnoreNavigationKeys(false);
        s.input->set("TelNoNav", "5551234", 64, 0, "");
        s.input->setCursorPosition(2);
        QCOMPARE(s.input->cursorPosition(), 7);
        key(s.input, Qt::Key_Left);
        QCOMPARE(reachedSurface, 4);
    }

    void steppedNumbers()
    {
        Screen s;
        s.input->set("123T", "5", 8, 0, "min=1;max=7");
        QVERIFY(s.show());
        key(s.input, Qt::Key_Up);
        QCOMPARE(s.input->text(), QString("7"));
        QCOMPARE(s.input->selectedText(), QString("7"));
        key(s.input, Qt::Key_Right);
        QCOMPARE(s.input->text(), QString("7"));
        key(s.input, Qt::Key_Left);
        QCOMPARE(s.input->text(), QString("6"));
        key(s.input, Qt::Key_Down);
        QCOMPARE(s.input->text(), QString("1"));
        key(s.input, Qt::Key_Left);
        QCOMPARE(s.input->text(), QString("1"));
        // An unset maximum is copied as it is.
        s.input->set("123T", "3", 8, 0, "");
        key(s.input, Qt::Key_Up);
        QCOMPARE(s.input->text(), QString("-1"));
        // Emptied, the field shows its minimum, all selected.
        s.input->set("123T", "3", 8, 0, "min=2");
        s.input->selectAll();
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("2"));
    }

    void hexAndAddressCharacters()
    {
        Screen s;
        s.input->set("Hex", QString(), 64, 0, "");
        QVERIFY(s.show());
        for (const QChar c : QString("fe80::1g/64 [Z]-ab"))
            s.input->onEntered(c, false);
        QCOMPARE(s.input->text(), QString("fe80::1/64[]ab"));
        // Entering IPv6 mode selects a default text that is no address.
        s.input->set("IPv6", "fe80::1", 64, 0, "");
        s.input->setMode(InputModeIPv6);
        QVERIFY(!s.input->hasSelectedText());
        s.input->set("IPv6", "bogus", 64, 0, "");
        s.input->setMode(InputModeIPv6);
        QCOMPARE(s.input->selectedText(), QString("bogus"));
    }

    void urlAndTelephoneTexts()
    {
        Screen s;
        // The prefix is never kept, whatever the protocol says. A number keeps
        // its punctuation on screen and is stored without it...
        s.input->set("URL", "(555) 123-4567", 64, 0, "protocol=sip:", false);
        QCOMPARE(s.input->urlPrefix(), QString());
        QCOMPARE(s.input->QLineEdit::text(), QString("(555) 123-4567"));
        QCOMPARE(s.input->defaultText(), QString("5551234567"));
        // ...until the set applies the stored text.
        s.input->set("URL", "(555) 123-4567", 64, 0, "protocol=sip:");
        QCOMPARE(s.input->QLineEdit::text(), QString("5551234567"));
        s.input->set("URL", "sip:bob@example.com", 64, 0, "protocol=h323:");
        QCOMPARE(s.input->defaultText(), QString("sip:bob@example.com"));
        QCOMPARE(s.input->urlPrefix(), QString());

        // A protected prefix: backspace behind it deletes nothing, the cursor
        // is kept out of it.
        s.input->set("URL", "sip:12", 64, 0, "");
        s.input->setAllowUrlPrefixEditing(false);
        QVERIFY(s.show());
        QCOMPARE(s.input->getProtocolLength(), 4);
        s.input->setCursorPosition(4);
        QVERIFY(!s.input->shouldShowBackspaceSk());
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("sip:12"));
        s.input->setCursorPosition(2);
        QCOMPARE(s.input->cursorPosition(), 0);
        QTRY_COMPARE(s.input->cursorPosition(), 4);
        s.input->setSelection(0, 4);
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("12"));

        s.input->set("Tel", "sip:5551234", 64, 0, "");
        s.input->setupTelNumberMode();
        QCOMPARE(s.input->defaultText(), QString("5551234"));
        QCOMPARE(s.input->QLineEdit::text(), QString("5551234"));
    }

    void backspaceKeyAndInlineButton()
    {
        Screen s;
        s.input->set("abc", "abc", 64, 0, "");
        QVERIFY(s.show());
        QSignalSpy deleted(s.input, &CTavoInput::deleteChar);
        QSignalSpy flyout(s.input, &CTavoInput::hideFlyout);
        s.input->end(false);
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("ab"));
        QCOMPARE(deleted.count(), 1);
        QCOMPARE(flyout.last().at(0).toBool(), true);
        // Right after the keyboard's shift key the next Backspace is swallowed once.
        s.input->setComingFromShiftKey(true);
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("ab"));
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.input->text(), QString("a"));
        // In encoding 4 the entry method deletes.
        QSignalSpy unicode(s.input, &CTavoInput::deleteUnicodeChar);
        s.input->switchToEncoding("Unicode");
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(unicode.count(), 1);
        QCOMPARE(s.input->text(), QString("a"));
        s.input->switchToEncoding("ASCII");

        // The inline button that clears hides with the text (one press and
        // geometry: tst_input_editing).
        s.input->setUseInlineBackspace(true);
        s.input->setInlineBackspaceHidesOnClear(true);
        s.input->setInlineBackspaceClears(true);
        type(s.input, "bc");
        QToolButton* button = s.input->backspaceButton();
        QVERIFY(button->isVisible());
        QSignalSpy cleared(s.input, &CTavoInput::clearChars);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(s.input->text(), QString());
        QCOMPARE(cleared.count(), 1);
        QVERIFY(!button->isVisible());
    }

    void dialPadReportsAndStarPound()
    {
        Screen s;
        s.input->set("Tel", QString(), 64, 0, "");
        s.input->setReportDialpadKeys(true);
        QVERIFY(s.show());
        QSignalSpy reports(s.input, &CTavoInput::dialpadKeyEvent);
        type(s.input, "5");
        QCOMPARE(reports.count(), 2);
        QCOMPARE(reports.at(0).at(0).toString(), QString("Key:Dialpad5-20"));
        QCOMPARE(reports.at(0).at(1).toString(), QString("state=pressed"));
        QCOMPARE(reports.at(1).at(1).toString(), QString("state=released"));
        // A keypad star is the entry method's to report; without a strip it is typed.
        type(s.input, "*", Qt::KeypadModifier);
        QCOMPARE(reports.count(), 2);
        QCOMPARE(s.input->text(), QString("5*"));
        // Star and pound left to the owner: reported, not typed, passed on.
        s.input->setIgnorePundStarKeys(true);
        type(s.input, "#");
        QCOMPARE(s.input->text(), QString("5*"));
        QCOMPARE(reports.count(), 4);
        QCOMPARE(reports.at(2).at(0).toString(), QString("Key:DialpadPound-13"));
    }

    void lockScreenField()
    {
        Screen s;
        s.input->setLockScreenField(true);
        s.input->set("123", QString(), 16, QLineEdit::Password, "", true, 4);
        QVERIFY(s.keys.contains("ValidationRequired-"));
        QVERIFY(s.show());
        QSignalSpy done(s.input, &CTavoInput::editDone);
        s.keys.clear();
        // Every dial pad event of a lock-screen field tells the owner: press and release.
        type(s.input, "12");
        QCOMPARE(done.count(), 4);
        QCOMPARE(done.last().at(0).toString(), QString("Gui:LockScreenEdit"));
        QCOMPARE(done.last().at(1).toString(), QString("12"));
        QCOMPARE(s.keys.filter("Validation").last(), QString("ValidationRequired-"));
        type(s.input, "34");
        QCOMPARE(s.keys.filter("Validation").last(), QString("ValidationRequired+"));

        // With the manager's dimming flag a short text dims the key instead.
        CTavoLayoutMgr mgr(nullptr, Qt::WindowFlags(), true);
        mgr.setLockScreenDimming(true);
        key(s.input, Qt::Key_Backspace);
        QCOMPARE(s.keys.filter("Validation").last(), QString("ValidationRequired~"));
        s.keys.clear();
        s.input->updateValidateCtxKey();
        QCOMPARE(s.keys, QStringList({"ValidationRequired~"}));
        mgr.setLockScreenDimming(false);
        s.keys.clear();
        s.input->updateValidateCtxKey();
        QVERIFY(s.keys.isEmpty());
    }

    void focusedFieldPointer()
    {
        Screen s;
        QVERIFY(s.show());
        QCOMPARE(CTavoInput::m_pFocusedInput.data(), static_cast<CTavoInput*>(s.input));
        s.leave();
        QCOMPARE(CTavoInput::m_pFocusedInput.data(), static_cast<CTavoInput*>(s.other));
        delete s.other;
        QVERIFY(CTavoInput::m_pFocusedInput.isNull());
    }

    void repeatedSetKeepsModeAndEncoding()
    {
        Field input;
        input.setKeepModesOnSameSet(true);
        input.set("abc;ABC", QString(), 64, 0, "encoding=Latin");
        input.switchToEncoding("Latin");
        input.switchToMode("ABC");
        // Same modes, same encoding: the mode and encoding set-up is skipped.
        input.set("abc;ABC", "x", 64, 0, "encoding=Latin");
        QCOMPARE(int(input.mode()), 2);
        QCOMPARE(int(input.encoding()), 1);
        // A different encoding is a new field.
        input.set("abc;ABC", "x", 64, 0, "encoding=Cyrillic");
        QCOMPARE(int(input.mode()), 1);
        QCOMPARE(int(input.encoding()), 2);
    }
};

QTEST_MAIN(TestInput)
#include "tst_input.moc"
