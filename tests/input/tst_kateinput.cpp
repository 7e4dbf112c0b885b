// Multi-tap entry: every keymap and encoded table as data rows, the strip's
// taps, marks and time-out on real timers, the input method events a
// QLineEdit receives, code points typed as four hexadecimal digits, and the
// strip inside a field of the sample skin, placed by the cursor and drawn with
// the fonts the setup installs.
#include <QtTest>

#include <QApplication>
#include <QFontDatabase>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

#include "input/CTavoInput.h"
#include "input/CTavoKateChar.h"
#include "input/CTavoKateInput.h"
#include "input/CTavoKateMap.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoResourceRepository.h"
#include "style/CTavoWidgetStyle.h"

namespace {
// A line edit that writes down every input method event: "pre:x" for preedit
// text, "commit:x" otherwise.
class ImeEdit : public QLineEdit
{
public:
    QStringList log;

protected:
    void inputMethodEvent(QInputMethodEvent* e) override
    {
        log << (e->preeditString().isEmpty() ? "commit:" + e->commitString() : "pre:" + e->preeditString());
        QLineEdit::inputMethodEvent(e);
    }
};

// A strip on its own, shown and hidden as its owner would; entered() recorded
// as "a" (first candidate) or "~b" (a candidate replacing the former one).
struct Strip
{
    ImeEdit edit;
    CTavoKateInput kate;
    QStringList typed;

    explicit Strip(bool inputMethod = false)
        : kate(nullptr, inputMethod, &edit)
    {
        QObject::connect(&kate, &CTavoKateInput::showme, [](QWidget* w, bool show) { w->setVisible(show); });
        QObject::connect(&kate, &CTavoKateInput::entered,
                         [this](QChar c, bool attempt) { typed << (attempt ? "~" : "") + QString(c); });
        kate.onEncodingSelected(InputEncodingASCII);
    }
    ~Strip() { kate.onEncodingSelected(InputEncodingASCII); }
    void taps(const QList<int>& keys)
    {
        for (int k : keys) {
            kate.handleKeyEvent(k, true);
            kate.handleKeyEvent(k, false);
        }
    }
};

QStringList rows(std::initializer_list<const char*> texts)
{
    QStringList out;
    for (const char* t : texts)
        out << QString::fromUtf8(t);
    return out;
}

// Pixels of a cell painted on a plain background.
QImage paintCell(CTavoKateChar& cell)
{
    QImage image(cell.width(), cell.height(), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.translate(-cell.topLeft());
    cell.paint(&painter);
    return image;
}
}  // namespace

class TestKateInput : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qRegisterMetaType<InputModeT>("InputModeT");
        qRegisterMetaType<InputEncodingT>("InputEncodingT");
    }

    // Spot checks of the keymaps: keys 2, 10 and 11 of each kind of mode.
    void keymapsOfTheModes_data()
    {
        QTest::addColumn<InputModeT>("mode");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<bool>("upper");
        QTest::addColumn<int>("encodingAfter");
        QTest::newRow("Abc") << InputModeCapitalised << rows({"ABC2", ".*-&%+;()", "#><{}[]\"`"}) << true
                             << int(InputEncodingASCII);
        QTest::newRow("abc") << InputModeLower << rows({"abc2", ".*-&%+;()", "#><{}[]\"`"}) << false
                             << int(InputEncodingASCII);
        QTest::newRow("123") << InputModeNumeric << rows({"2", "", ""}) << false << int(InputEncodingNone);
        QTest::newRow("IP") << InputModeIP << rows({"2", ".", ""}) << false << int(InputEncodingNone);
        QTest::newRow("URL") << InputModeURL << rows({"2abcABC", ".*@:~-?%", "/#[]"}) << false
                             << int(InputEncodingNone);
        QTest::newRow("123T") << InputModeNumericStep << rows({"2", "-", ""}) << false << int(InputEncodingNone);
        QTest::newRow("IPv6") << InputModeIPv6 << rows({"2abcABC", ":.", "/[]"}) << false << int(InputEncodingNone);
        QTest::newRow("unknown 13") << InputModeCount << rows({"abc2", ".*-&%+;()", "#><{}[]\"`"}) << false
                                    << int(InputEncodingASCII);
        // The dial map with "+" on the star key, as updateDialPad(true) makes it.
        QTest::newRow("TelNoNav") << InputModeTelNoNav << rows({"2", "*+", "#"}) << false << int(InputEncodingNone);
    }
    void keymapsOfTheModes()
    {
        QFETCH(InputModeT, mode);
        CTavoKateMap::dialMap().updateDialPad(true);
        Strip s;
        QSignalSpy changed(&s.kate, &CTavoKateInput::ModeChanged);
        s.kate.onModeSelected(mode);
        const QStringList map = s.kate.keymap();
        QCOMPARE(map.size(), 12);
        QTEST(QStringList({map[2], map[10], map[11]}), "keys");
        QTEST(s.kate.isUpperCase(), "upper");
        QTEST(int(s.kate.encoding()), "encodingAfter");
        QCOMPARE(int(s.kate.mode()), int(mode));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().value<InputModeT>(), mode);
        CTavoKateMap::dialMap().updateDialPad(false);
    }

    // Spot checks of the encoded tables: an empty key, key 2 in both cases, and
    // the characters of the whole table by their first and last.
    void encodedTables_data()
    {
        QTest::addColumn<InputEncodingT>("encoding");
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("firstAndLast");
        QTest::addColumn<int>("count");
        // The thorn turns into a capital, "ß" stays.
        QTest::newRow("Latin") << InputEncodingLatin << rows({"", "þß", "Þß", "àáâãäåæç", "ÀÁÂÃÄÅÆÇ"})
                               << QString::fromUtf8("þÿ") << 32;
        QTest::newRow("Cyrillic") << InputEncodingCyrillic << rows({"лмно", "", "", "абвгґ", "АБВГҐ"})
                                  << QString::fromUtf8("ая") << 37;
        QTest::newRow("Katakana") << InputEncodingKatakana
                                  << rows({"ナニヌネノピポプヵヶ", "アイウエオァィゥェォ", "アイウエオァィゥェォ",
                                           "カキクケコボブダデヂ", "カキクケコボブダデヂ"})
                                  << QString::fromUtf8("ワ゛") << 92;
        QTest::newRow("Unicode") << InputEncodingUnicode << rows({"5", "1", "1", "2ABC", "2ABC"}) << "0F" << 16;
        QTest::newRow("ASCII") << InputEncodingASCII << rows({"jkl5", "!|'^@:1", "!|'^@:1", "abc2", "ABC2"})
                               << QString() << 0;
        // An unknown value takes the ASCII letters and is kept as the encoding.
        QTest::newRow("value 9") << InputEncodingT(9) << rows({"jkl5", "!|'^@:1", "!|'^@:1", "abc2", "ABC2"})
                                 << QString() << 0;
    }
    void encodedTables()
    {
        QFETCH(InputEncodingT, encoding);
        QFETCH(QStringList, keys);
        QFETCH(int, count);
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        s.kate.onEncodingSelected(encoding);
        const QStringList lower = s.kate.keymap();
        QCOMPARE(QStringList({lower[5], lower[1]}), keys.mid(0, 2));
        QCOMPARE(lower[2], keys[3]);
        QCOMPARE(s.kate.encoding(), encoding);
        s.kate.onModeSelected(InputModeCapitalised);
        QCOMPARE(s.kate.keymap()[1], keys[2]);
        QCOMPARE(s.kate.keymap()[2], keys[4]);
        // The map is the process's: a second strip loads the same letters.
        CTavoKateInput other(nullptr, false, nullptr);
        other.onModeSelected(InputModeLower);
        QCOMPARE(other.keymap(), lower);
        const QString all = CTavoKateInput::encodingCharacters(encoding);
        QCOMPARE(all.size(), count);
        if (count)
            QTEST(QString(all.front()) + all.back(), "firstAndLast");
    }

    void staticsByName_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("encoding");
        QTest::newRow("Abc") << "Abc" << 0 << 5;
        QTest::newRow("XT9 PinYin") << "XT9 PinYin" << 10 << 5;
        QTest::newRow("123*") << "123*" << 12 << 5;
        QTest::newRow("ASCII") << "ASCII" << 13 << 0;
        QTest::newRow("Unicode") << "Unicode" << 13 << 4;
        QTest::newRow("lower case") << "abc" << 1 << 5;
        QTest::newRow("wrong case") << "cyrillic" << 13 << 5;
        QTest::newRow("empty") << "" << 13 << 5;
    }
    void staticsByName()
    {
        QFETCH(QString, name);
        QFETCH(int, mode);
        QFETCH(int, encoding);
        QCOMPARE(int(CTavoKateInput::getInputMode(name)), mode);
        QCOMPARE(int(CTavoKateInput::getInputEncoding(name)), encoding);
        if (mode < 13)
            QCOMPARE(CTavoKateInput::getInputMode(InputModeT(mode)), name);
        QCOMPARE(CTavoKateInput::getInputMode(InputModeT(13)), QString());
        QCOMPARE(CTavoKateInput::getInputMode(InputModeT(-1)), QString());

        // Name forms of the slots ignore unknown names.
        Strip s;
        s.kate.onModeSelected(InputModeNumeric);
        s.kate.onModeSelected(name);
        QCOMPARE(int(s.kate.mode()), mode < 13 ? mode : 3);
        s.kate.onModeSelected(InputModeLower);
        s.kate.onEncodingSelected(InputEncodingASCII);
        s.kate.onEncodingSelected(name.toUtf8().constData());
        QCOMPARE(int(s.kate.encoding()), encoding < 5 ? encoding : 0);
    }

    void keyOfACharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<InputModeT>("mode");
        QTest::addColumn<int>("key");
        QTest::newRow("letter") << "B" << InputModeLower << 2;
        QTest::newRow("at sign") << "@" << InputModeCapitalised << 1;
        QTest::newRow("URL star") << "*" << InputModeURL << 10;
        QTest::newRow("IPv6 bracket") << "]" << InputModeIPv6 << 11;
        QTest::newRow("digits have no dot") << "." << InputModeNumeric << -1;
        QTest::newRow("stepped minus") << "-" << InputModeNumericStep << 10;
        QTest::newRow("dial plus") << "+" << InputModeTel << 10;
        QTest::newRow("dial pound") << "#" << InputModeTelNoNav << 11;
        QTest::newRow("not on any key") << QString::fromUtf8("é") << InputModeLower << -1;
        QTest::newRow("empty") << "" << InputModeLower << -1;
    }
    void keyOfACharacter()
    {
        QFETCH(QString, text);
        QFETCH(InputModeT, mode);
        CTavoKateMap::dialMap().updateDialPad(true);
        QTEST(CTavoKateInput::getSimulateKeyFromChar(text, mode), "key");
        CTavoKateMap::dialMap().updateDialPad(false);
    }

    void dialPadTables()
    {
        CTavoKateMap& dial = CTavoKateMap::dialMap();
        dial.updateDialPad(false);
        QCOMPARE(dial.lower[10], QString("*"));
        QVERIFY(!CTavoKateInput::isMultiCharacter(10) && !CTavoKateInput::isMultiCharacter(0));
        dial.updateDialPad(true);
        QCOMPARE(dial.lower[10], QString("*+"));
        QVERIFY(CTavoKateInput::isMultiCharacter(10));
        dial.updateDialPadAsPerInternationalPrefix(true, true);
        QCOMPARE(dial.lower[0], QString("0+"));
        QCOMPARE(dial.lower[10], QString("*"));
        QVERIFY(CTavoKateInput::isMultiCharacter(0) && !CTavoKateInput::isMultiCharacter(10));
        dial.updateDialPadAsPerInternationalPrefix(false, true);
        QCOMPARE(dial.lower[10], QString("*+"));
        dial.updateDialPadAsPerInternationalPrefix(true, false);
        QCOMPARE(dial.lower[0], QString("0"));
        QCOMPARE(dial.lower[10], QString("*"));
        QCOMPARE(dial.lower[11], QString("#"));
        QVERIFY(!CTavoKateInput::isMultiCharacter(12) && !CTavoKateInput::isMultiCharacter(-1));

        // A strip loads the dial map again after a change of the "+" key.
        Strip s;
        s.kate.onModeSelected(InputModeTel);
        dial.updateDialPadAsPerInternationalPrefix(true, true);
        QCOMPARE(s.kate.keymap().at(0), QString("0"));
        s.kate.updateKeymapAsPerIntlPrefix();
        QCOMPARE(s.kate.keymap().at(0), QString("0+"));
        dial.updateDialPad(false);
    }

    void lettersOfTheKeysReplaced()
    {
        CTavoKateMap& map = CTavoKateMap::alphanumericMap();
        QStringList mine = rows({"0", "1", "xyz2"});
        map.updateAlphanumericMap(mine);
        QCOMPARE(map.lower[2], QString("xyz2"));
        QCOMPARE(map.upper[2], QString("XYZ2"));
        QCOMPARE(map.lower[3], QString("def3"));
        QString y("y");
        QCOMPARE(CTavoKateInput::getSimulateKeyFromChar(y, InputModeLower), 2);
        // Beyond twelve entries nothing is read.
        QStringList many;
        for (int i = 0; i < 14; ++i)
            many << QString("k%1").arg(i);
        map.updateAlphanumericMap(many);
        QCOMPARE(map.lower[11], QString("k11"));
        QStringList none;
        map.updateAlphanumericMap(none);
        QCOMPARE(map.lower[2], QString("abc2"));
        QCOMPARE(CTavoKateMap::alphanumericKeys()[2], QString("abc2"));
    }

    // Key 2 of the letters, five times: the mark walks a, b, c, 2 and wraps to a.
    void tapsMarkAndReplace()
    {
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        QVERIFY(!s.kate.isVisible());
        s.taps({2});
        QVERIFY(s.kate.isVisible());
        QVERIFY(s.kate.isTimerRunning());
        QCOMPARE(s.kate.currentKey(), 2);
        QCOMPARE(s.kate.candidates(), QString("abc2"));
        QCOMPARE(s.kate.getCurrentlyFocusedCharacter(), QChar('a'));
        s.taps({2, 2, 2, 2});
        QCOMPARE(s.typed, QStringList({"a", "~b", "~c", "~2", "~a"}));
        QCOMPARE(s.kate.candidateIndex(), 0);
        // Four cells of 24 pixels: the strip's size; the marked cell is focused.
        QCOMPARE(s.kate.size(), QSize(4 * 24, 24));
        for (int i = 0; i < 4; ++i) {
            QVERIFY(s.kate.cell(i)->isVisible());
            QCOMPARE(s.kate.cell(i)->rect(), QRect(24 * i, 0, 24, 24));
            QCOMPARE(s.kate.cell(i)->textRect(), QRect(24 * i + 1, 1, 22, 22));
            QCOMPARE(s.kate.cell(i)->isFocused(), i == 0);
        }
        QVERIFY(!s.kate.cell(4)->isVisible());
        // Another key settles nothing (the character stands) and starts its own strip.
        s.taps({3});
        QCOMPARE(s.typed.last(), QString("d"));
        QCOMPARE(s.kate.candidates(), QString("def3"));
        QVERIFY(s.kate.cell(0)->isFocused() && !s.kate.cell(1)->isFocused());
    }

    void badKeys_data()
    {
        QTest::addColumn<InputModeT>("mode");
        QTest::addColumn<InputEncodingT>("encoding");
        QTest::addColumn<QList<int>>("before");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<bool>("timer");
        QTest::newRow("key 12") << InputModeLower << InputEncodingASCII << QList<int>() << 12 << false << QStringList()
                                << false;
        QTest::newRow("key 99 while tapping") << InputModeLower << InputEncodingASCII << QList<int>{2} << 99 << false
                                              << QStringList({"a"}) << true;
        // Below 0 is outside the keymap, not refused.
        QTest::newRow("negative key") << InputModeLower << InputEncodingASCII << QList<int>() << -3 << true
                                      << QStringList() << true;
        QTest::newRow("negative key while tapping") << InputModeLower << InputEncodingASCII << QList<int>{2} << -1
                                                    << true << QStringList({"a", "~b"}) << true;
        // Keys without candidates restart the time-out and step a pending mark.
        QTest::newRow("key 11 in 123") << InputModeNumeric << InputEncodingASCII << QList<int>() << 11 << true
                                       << QStringList() << true;
        QTest::newRow("empty Latin key while tapping") << InputModeLower << InputEncodingLatin << QList<int>{2} << 5
                                                       << true << rows({"à", "~á"}) << true;
        QTest::newRow("one candidate: typed, no strip") << InputModeNumeric << InputEncodingASCII << QList<int>() << 7
                                                        << true << QStringList({"7"}) << false;
    }
    void badKeys()
    {
        QFETCH(InputModeT, mode);
        QFETCH(InputEncodingT, encoding);
        QFETCH(QList<int>, before);
        QFETCH(int, key);
        QFETCH(QStringList, typed);
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        s.kate.onEncodingSelected(encoding);
        s.kate.onModeSelected(mode);
        s.taps(before);
        QTEST(s.kate.handleKeyEvent(key, true), "result");
        QCOMPARE(s.typed, typed);
        QTEST(s.kate.isTimerRunning(), "timer");
        QCOMPARE(s.kate.isVisible(), !before.isEmpty());
        // A release only answers.
        QCOMPARE(s.kate.handleKeyEvent(qBound(0, key, 11), false), true);
        QCOMPARE(s.typed, typed);
    }

    // The time-out on real timers: 800 ms after the last press, restarted by each.
    void timeoutRestartsWithEachPress()
    {
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        QCOMPARE(s.kate.timer()->interval(), 800);
        QVERIFY(s.kate.timer()->isSingleShot());
        QElapsedTimer clock;
        s.taps({5});
        clock.start();
        QTest::qWait(500);
        QVERIFY(s.kate.isVisible());
        const qint64 second = clock.elapsed();
        s.taps({5});
        QSignalSpy shown(&s.kate, &CTavoKateInput::showme);
        QTest::qWait(500);
        // 1000 ms after the first press the second one still holds it up.
        QVERIFY(s.kate.isVisible() && s.kate.isTimerRunning());
        QTRY_VERIFY_WITH_TIMEOUT(!s.kate.isVisible(), 2000);
        // Qt's default (coarse) timers may fire up to 5% early.
        QVERIFY2(clock.elapsed() >= second + 760, qPrintable(QString::number(clock.elapsed() - second)));
        QCOMPARE(shown.count(), 1);
        QCOMPARE(shown.first().at(1).toBool(), false);
        QCOMPARE(s.typed, QStringList({"j", "~k"}));
        QCOMPARE(s.kate.currentKey(), -1);
        QVERIFY(!s.kate.focusedCell());
        // After the time-out the same key starts anew.
        s.taps({5});
        QCOMPARE(s.typed.last(), QString("j"));
    }

    // With the input method flag, a QLineEdit sees preedit text for each tap and
    // a commit when another key or the time-out settles the character.
    void inputMethodEventsReachALineEdit()
    {
        Strip s(true);
        s.kate.onModeSelected(InputModeLower);
        s.taps({2, 2, 3});
        QCOMPARE(s.edit.log, QStringList({"pre:a", "pre:b", "commit:b", "pre:d"}));
        QCOMPARE(s.edit.text(), QString("b"));
        QVERIFY(s.typed.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(s.edit.log.size(), 5, 2000);
        QCOMPARE(s.edit.log.last(), QString("commit:d"));
        QCOMPARE(s.edit.text(), QString("bd"));
        // Without a target the focus widget receives them.
        CTavoKateInput loose(nullptr, true, nullptr);
        loose.onModeSelected(InputModeLower);
        s.edit.show();
        s.edit.activateWindow();
        s.edit.setFocus();
        QTRY_VERIFY(s.edit.hasFocus());
        loose.handleKeyEvent(4, true);
        QCOMPARE(s.edit.log.last(), QString("pre:g"));
    }

    // Code points by four hexadecimal digits, shown as preedit text.
    void unicodeByFourDigits()
    {
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        s.kate.onEncodingSelected(InputEncodingUnicode);
        QCOMPARE(s.kate.keymap().at(2), QString("2ABC"));
        s.taps({0, 4});
        QCOMPARE(s.edit.log, QStringList({"pre:0", "pre:04"}));
        QCOMPARE(s.kate.unicodeCount(), 2);
        // A key with candidates: each tap shows, the time-out counts the marked one.
        s.taps({3, 3});
        QCOMPARE(s.edit.log.mid(2), QStringList({"pre:043", "pre:04D"}));
        QCOMPARE(s.kate.unicodeCount(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(s.kate.unicodeCount(), 3, 2000);
        // Backspace takes the last digit away and leaves the field alone.
        s.edit.setText("x");
        s.kate.onDeleteUnicodeChar();
        QCOMPARE(s.edit.log.last(), QString("pre:04"));
        QCOMPARE(s.kate.unicodeCount(), 2);
        QCOMPARE(s.edit.text(), QString("x"));
        s.taps({1, 0});
        QCOMPARE(s.edit.log.last(), QString("commit:" + QString(QChar(0x0410))));
        QCOMPARE(s.edit.text(), QString("x") + QChar(0x0410));
        QCOMPARE(s.kate.unicodeCount(), 0);
        QVERIFY(s.typed.isEmpty());
        // With nothing typed, Backspace is the line edit's own.
        s.kate.onDeleteUnicodeChar();
        QCOMPARE(s.edit.text(), QString("x"));
    }

    // Operations: a digit taps that key, "t" is the time-out, "L" and "C"
    // switch to Latin and Cyrillic.
    void unicodeCodePoints_data()
    {
        QTest::addColumn<QString>("ops");
        QTest::addColumn<QString>("lastEvent");
        QTest::addColumn<QString>("text");
        QTest::newRow("0041") << "0041" << "commit:A" << "A";
        QTest::newRow("key 3 twice is D: 00D0") << "0033t0" << QString("commit:") + QChar(0xD0) << QString(QChar(0xD0));
        // A surrogate, zero and a noncharacter cannot stand alone: nothing is committed.
        QTest::newRow("surrogate D800") << "33800" << "commit:" << "";
        QTest::newRow("code point 0") << "0000" << "commit:" << "";
        QTest::newRow("noncharacter FFFF") << "3333t3333t3333t3333t" << "commit:" << "";
        // Switching the encoding in the middle drops the digits typed so far.
        QTest::newRow("switch after two digits") << "41L" << "commit:" << "";
        QTest::newRow("switch after a tap") << "022C" << "commit:" << "";
    }
    void unicodeCodePoints()
    {
        QFETCH(QString, ops);
        QFETCH(QString, text);
        Strip s;
        s.kate.onModeSelected(InputModeUpper);
        s.kate.onEncodingSelected(InputEncodingUnicode);
        for (const QChar op : ops) {
            if (op.isDigit())
                s.kate.handleKeyEvent(op.digitValue(), true);
            else if (op == 't')
                s.kate.onTimeout();
            else
                s.kate.onEncodingSelected(op == 'L' ? InputEncodingLatin : InputEncodingCyrillic);
        }
        QTEST(s.edit.log.last(), "lastEvent");
        QCOMPARE(s.edit.text(), text);
        QCOMPARE(s.kate.unicodeCount(), 0);
        QVERIFY(s.kate.unicodeBuffer().isEmpty());
    }

    void cellsAreMadeOnceAndCapTheCandidates()
    {
        Strip s;
        const QList<CTavoKateChar*> cells = s.kate.findChildren<CTavoKateChar*>();
        QCOMPARE(cells.size(), 64);
        QStringList keys = rows({"0", "1"});
        keys << QString(70, QChar('x'));
        CTavoKateMap::alphanumericMap().updateAlphanumericMap(keys);
        s.kate.onEncodingSelected(InputEncodingASCII);
        s.kate.onModeSelected(InputModeLower);
        s.taps({2});
        QCOMPARE(s.kate.candidates().size(), 64);
        QCOMPARE(s.kate.size(), QSize(64 * 24, 24));
        QCOMPARE(s.kate.findChildren<CTavoKateChar*>(), cells);
        for (int i = 0; i < 63; ++i)
            s.taps({2});
        QCOMPARE(s.kate.candidateIndex(), 63);
        s.taps({2});
        QCOMPARE(s.kate.candidateIndex(), 0);
        QStringList none;
        CTavoKateMap::alphanumericMap().updateAlphanumericMap(none);
    }

    void deleteKeyAndKeyEventsByHand()
    {
        Strip s;
        s.kate.onModeSelected(InputModeLower);
        QKeyEvent two(QEvent::KeyPress, Qt::Key_2, Qt::KeypadModifier, "2");
        s.kate.onInputKeyEventReceived(&two);
        s.kate.onInputKeyEventReceived(&two);
        QCOMPARE(s.typed, QStringList({"a", "~b"}));
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_2, Qt::KeypadModifier, "2");
        s.kate.onInputKeyEventReceived(&release);
        // A key off the dial pad steps the pending mark like any key outside the keymap.
        QKeyEvent left(QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier);
        s.kate.onInputKeyEventReceived(&left);
        QCOMPARE(s.typed, QStringList({"a", "~b", "~c"}));
        QKeyEvent other(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        s.kate.onInputKeyEventReceived(&other);
        QCOMPARE(s.typed.size(), 3);
        QKeyEvent del(QEvent::KeyPress, Qt::Key_Backspace, Qt::NoModifier);
        s.kate.onInputKeyEventReceived(&del);
        QVERIFY(!s.kate.isVisible());
        QCOMPARE(s.kate.currentKey(), -1);
        QVERIFY(!s.kate.isTimerRunning());
        QFocusEvent notAKey(QEvent::FocusIn);
        s.kate.onInputKeyEventReceived(reinterpret_cast<QKeyEvent*>(&notAKey));
        s.kate.onInputKeyEventReceived(nullptr);
    }

    void unstyledStripSaysSoAndWorks()
    {
        Strip s;
        QTest::ignoreMessage(QtDebugMsg, "Tring to activate the Kate input widget but it's not styled");
        s.kate.setObjectName("kate-input");
        s.kate.onModeSelected(InputModeLower);
        s.taps({9});
        QVERIFY(s.kate.isActivated());
        QCOMPARE(s.typed, QStringList({"w"}));
        QCOMPARE(s.kate.charWidth(), 24);
        // Navy cells, the marked one as readable as the others.
        const QImage cell = paintCell(*s.kate.cell(0));
        QCOMPARE(qRed(cell.pixel(0, 0)), 0);
        QVERIFY(qAbs(qBlue(cell.pixel(0, 0)) - 128 * 200 / 255) <= 2);
        int light = 0;
        for (int y = 0; y < cell.height(); ++y)
            for (int x = 0; x < cell.width(); ++x)
                light += qGray(cell.pixel(x, y)) > 128;
        QVERIFY(light > 5);
    }

    // In a field of the sample skin: keys through the field, the strip placed by
    // the cursor, the skin's cells, and glyphs of every script drawn.
    void stripInAFieldOfTheSampleSkin()
    {
        const QString old = QDir::currentPath();
        QVERIFY(QDir::setCurrent(qEnvironmentVariable("TGUI_RUN_DIR", TGUI_SOURCE_DIR "/run")));
        QCoreApplication::setApplicationName("zedagui");
        {
            CTavoLayoutMgr mgr(nullptr, Qt::WindowFlags(), true);
            CTavoLayoutWidget surface;
            surface.setGeometry(0, 0, 800, 480);
            CTavoInput field(&surface);
            field.setGeometry(100, 100, 300, 40);
            CTavoInput low(&surface);
            low.setGeometry(100, 420, 300, 40);
            QVERIFY(field.kateInput() && field.useKateInput());
            QCOMPARE(field.kateInput()->objectName(), QString("kate-input"));
            QCOMPARE(field.kateInput()->parentWidget(), &surface);
            QCOMPARE(field.kateInput()->target(), &field);
            QVERIFY(!field.kateInput()->usesInputMethod());
            QSignalSpy relay(&field, &CTavoInput::TimeOutEventSend);
            field.set("abc;Tel", QString(), 64, QLineEdit::Normal, "");
            surface.show();
            QVERIFY(QTest::qWaitForWindowExposed(&surface));
            field.setFocus(Qt::TabFocusReason);

            auto dial = [](QWidget* w, const QString& keys) {
                for (const QChar c : keys) {
                    const Qt::Key k = c == '*' ? Qt::Key_Asterisk : c == '#' ? Qt::Key_NumberSign
                                                                              : Qt::Key(Qt::Key_0 + c.digitValue());
                    QTest::sendKeyEvent(QTest::Click, w, k, QString(c), Qt::KeypadModifier);
                }
            };
            CTavoKateInput* kate = field.kateInput();
            dial(&field, "2");
            // Placed once, below the cursor of its first candidate.
            const QPoint cursor = field.mapToParent(field.inputMethodQuery(Qt::ImCursorRectangle).toRect().topLeft());
            QCOMPARE(kate->pos(), QPoint(cursor.x(), cursor.y() + 40 * 4 / 5));
            dial(&field, "2");
            QCOMPARE(field.text(), QString("b"));
            QVERIFY(kate->isVisible());
            QVERIFY(kate->isActivated());
            QCOMPARE(kate->getCurrentlyFocusedCharacter(), QChar('b'));
            // The skin's cells.
            QCOMPARE(kate->charWidth(), 32);
            QCOMPARE(kate->charHeight(), 40);
            QCOMPARE(kate->size(), QSize(4 * 32, 40));
            dial(&field, "33");
            QCOMPARE(field.text(), QString("be"));
            QTRY_VERIFY_WITH_TIMEOUT(!kate->isVisible(), 2000);
            QCOMPARE(field.text(), QString("be"));

            // Backspace of the field hides a pending strip.
            dial(&field, "4");
            QVERIFY(kate->isVisible());
            QTest::keyClick(&field, Qt::Key_Backspace);
            QVERIFY(!kate->isVisible());
            QCOMPARE(field.text(), QString("be"));

            // Glyphs: Latin, Cyrillic and Katakana candidates are drawn, none as
            // the box of a missing glyph.
            for (const char* name : {"Latin", "Cyrillic", "Katakana"}) {
                field.switchToEncoding(name);
                dial(&field, "2");
                QVERIFY(kate->isVisible());
                for (int i = 0; i < 3; ++i) {
                    CTavoKateChar& cell = *kate->cell(i);
                    const QChar c = cell.character();
                    const QImage glyph = paintCell(cell);
                    cell.setChar(QChar(0x0378));  // unassigned: drawn as the box of a missing glyph
                    const QImage missing = paintCell(cell);
                    cell.setChar(QChar(' '));
                    const QImage blank = paintCell(cell);
                    cell.setChar(c);
                    const QString what = QString("%1 cell %2").arg(name).arg(i);
                    QVERIFY2(glyph != missing && glyph != blank, qPrintable(what));
                    QVERIFY2(glyph != paintCell(*kate->cell(i + 1)), qPrintable(what));
                }
                kate->onTimeout();
            }
            QCOMPARE(field.text().right(3), QString::fromUtf8("àаカ"));
            field.switchToEncoding("ASCII");

            // Telephone keys: the time-out is relayed by the field.
            field.switchToMode("Tel");
            CTavoKateMap::dialMap().updateDialPad(true);
            field.updateKeymap();
            dial(&field, "**");
            QVERIFY(relay.wait(2000));
            QCOMPARE(relay.first().first().value<QChar>(), QChar('+'));
            QVERIFY(field.text().endsWith('+'));
            CTavoKateMap::dialMap().updateDialPad(false);

            // Near the bottom the strip goes above the line.
            low.set("abc", QString(), 64, QLineEdit::Normal, "");
            low.setFocus(Qt::TabFocusReason);
            dial(&low, "7");
            CTavoKateInput* lowKate = low.kateInput();
            QVERIFY(lowKate->isVisible());
            const QPoint p = low.mapToParent(low.inputMethodQuery(Qt::ImCursorRectangle).toRect().topLeft());
            QCOMPARE(lowKate->y(), qMax(p.y() - lowKate->height() - 6, 0));
            // Focus leaving the field takes its strip along.
            field.setFocus(Qt::TabFocusReason);
            QVERIFY(!lowKate->isVisible());
            QCOMPARE(low.text(), QString("p"));
        }
        iconRepository.clear();
        StyleResourceContainer.reset();
        CTavoWidgetStyle::resetScaling();
        QDir::setCurrent(old);
    }

};

QTEST_MAIN(TestKateInput)
#include "tst_kateinput.moc"
