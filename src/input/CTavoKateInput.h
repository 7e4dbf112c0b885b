#pragma once
#include "tgui_export.h"
// Multi-tap entry on a twelve-key dial pad: the first press of a key shows a
// strip of its candidate characters beside the text cursor with the first one
// marked, each further press of the same key moves the mark, and a pause of
// 800 ms or another key settles the character. The first candidate goes into
// the field at once (entered(c, false)); a further press replaces it
// (entered(c2, true)). With the input method flag set, candidates travel as
// preedit text and the settled character as commit text instead.
//
// In the Unicode encoding four hexadecimal digits make one code point: the
// digits show as preedit text and the fourth commits the character.
#include <QChar>
#include <QString>
#include <QStringList>

#include "input/TavoInputTypes.h"
#include "layout/CTavoLayoutWidget.h"

class QKeyEvent;
class QTimer;
class CTavoKateChar;

class TGUI_EXPORT CTavoKateInput : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    enum { CellCount = 64, TimeoutMs = 800 };
    static const char* const ATTRIBUTE_KATE_CHAR_WIDTH;
    static const char* const ATTRIBUTE_KATE_CHAR_HEIGHT;

    CTavoKateInput(QWidget* parent, bool useInputMethod, QWidget* target);

    // Takes the skin's item of the strip's object name, once.
    void activate();
    // key: 0 to 9 the digits, 10 star, 11 pound. False for keys the strip has no use for.
    bool handleKeyEvent(int key, bool pressed);
    bool isTimerRunning() const;
    QChar getCurrentlyFocusedCharacter();
    void loadKeymap(QString* twelveStrings);
    // Loads the dial map (after its "+" key changed).
    void updateKeymapAsPerIntlPrefix();

    void layout() override;

    // 0 to 12 by name, 13 for an unknown name.
    static InputModeT getInputMode(const QString& name);
    // The name of a mode, "" beyond 12.
    static QString getInputMode(InputModeT mode);
    // 0 to 4 by name, 5 for an unknown name.
    static InputEncodingT getInputEncoding(const QString& name);
    // The dial map's key has two candidates or more.
    static bool isMultiCharacter(int key);
    // The first key of the mode's table whose candidates hold text, case
    // insensitive; -1 for none.
    static int getSimulateKeyFromChar(QString& text, InputModeT mode);
    // All characters an encoding adds, in key order.
    static QString encodingCharacters(InputEncodingT encoding);

    // State, for owners and tests.
    const QStringList& keymap() const { return m_keymap; }
    int currentKey() const { return m_currentKey; }
    QString candidates() const { return m_candidates; }
    int candidateIndex() const { return m_candidateIndex; }
    InputModeT mode() const { return m_mode; }
    InputEncodingT encoding() const { return m_encoding; }
    bool isUpperCase() const { return m_upperCase; }
    bool usesInputMethod() const { return m_useInputMethod; }
    bool isActivated() const { return m_activated; }
    int charWidth() const { return m_charWidth; }
    int charHeight() const { return m_charHeight; }
    CTavoKateChar* cell(int index) const;
    CTavoKateChar* focusedCell() const { return m_focusedChar; }
    QString unicodeBuffer() const { return QString::fromLatin1(m_unicodeBuffer); }
    int unicodeCount() const { return m_unicodeCount; }
    QWidget* target() const { return m_target; }
    QTimer* timer() const { return m_timer; }

signals:
    void entered(QChar character, bool attempt);
    void showme(QWidget* pWidget, bool show);
    void ModeChanged(InputModeT mode);
    void TimeOutEvent(QChar e);

public slots:
    void onTimeout();
    void onModeSelected(InputModeT mode);
    void onModeSelected(QString name);
    void onModeSelected(const char* name);
    void onEncodingSelected(InputEncodingT encoding);
    void onEncodingSelected(QString name);
    void onEncodingSelected(const char* name);
    void onInputKeyEventReceived(QKeyEvent* pEvent);
    void onDeleteUnicodeChar();

protected:
    bool event(QEvent* event) override;

    void initmap();
    void layoutCells();
    void markChar(int index);
    void simulateInput(QChar c, bool attempt);
    void sendInputMethodEvent(const QString& text, bool preedit);
    void handleUnicodeEditing(QChar c, bool attempt);
    void clearUnicodeContext();
    void resetUnicodeBuffer();
    // Forgets the marked cell and the key being tapped.
    void forgetKey();

    QStringList m_keymap;
    CTavoKateChar* m_cells[CellCount];
    int m_currentKey;
    QString m_candidates;
    CTavoKateChar* m_focusedChar;
    QTimer* m_timer;
    int m_candidateIndex;
    InputModeT m_mode;
    bool m_upperCase;
    bool m_useInputMethod;
    InputEncodingT m_encoding;
    char m_unicodeBuffer[5];
    int m_unicodeCount;
    QWidget* m_target;
    bool m_activated;
    int m_charWidth;
    int m_charHeight;
};
