#pragma once
#include "tgui_export.h"
// The one-line text field of the toolkit, one of the few real QWidgets in it:
// a QLineEdit on a CTavoLayoutWidget. A compact description of the field
// (modes, default text, limits in UTF-8 bytes, echo mode and a parameter
// string) turns it into a phone field with thirteen input modes and five
// encodings, an inline backspace button, and a running dialogue with the
// softkey bar through contextSensitiveSk about which keys make sense now.
//
// Dial pad keys go through the multi-tap strip (CTavoKateInput) when the skin
// has the item "kate-input"; without it they reach the text directly and
// useKateInput is false. The predictive strip (CTavoXt9Input) is not built
// yet. A finger held on the text shows the magnifying glass above the field,
// once its owner has given the glass a factor and a mask.
#include <QList>
#include <QLineEdit>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QVariant>

#include "CTXMLUriLib.h"
#include "input/CTavoInputParameters.h"
#include "input/TavoInputTypes.h"
#include "widgets/CKalmanFilter.h"
#include "widgets/CTavoButtonDefs.h"

Q_DECLARE_METATYPE(InputModeT)
Q_DECLARE_METATYPE(InputEncodingT)

class QDomNode;
class QMouseEvent;
class QToolButton;
class CTavoIpAddressValidator;
class CTavoKateInput;
class CTavoXt9Input;
class CTavoMagnifyingGlass;

class TGUI_EXPORT CTavoInput : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(qreal letterSpacing READ letterSpacing WRITE setLetterSpacing)
    Q_PROPERTY(bool showDoneWhenNoText READ showDoneWhenNoText WRITE setShowDoneWhenNoText)
    Q_PROPERTY(bool useInlineBackspace READ useInlineBackspace WRITE setUseInlineBackspace)
    Q_PROPERTY(bool inlineBackspaceClears READ inlineBackspaceClears WRITE setInlineBackspaceClears)
    Q_PROPERTY(bool inlineBackspaceHidesOnClear READ inlineBackspaceHidesOnClear WRITE
                   setInlineBackspaceHidesOnClear)
    Q_PROPERTY(bool useKateInput READ useKateInput WRITE setUseKateInput)
    Q_PROPERTY(int backspaceMinWidth READ backspaceMinWidth WRITE setBackspaceMinWidth)
    Q_PROPERTY(int backspaceMinHeight READ backspaceMinHeight WRITE setBackspaceMinHeight)

public:
    explicit CTavoInput(QWidget* parent = nullptr);
    ~CTavoInput() override;

    // Configures the field anew; see the class comment. The last form takes the
    // record's fields, then applies its encoding (below 5) and names its mode.
    void set(const char* modes, const QString& text, int maxLength, int echoMode, const char* uriParams,
             bool applyText = true, int minLength = 0, bool startWithKey = false, bool showDefault = true);
    void set(const CTavoInputParameters& parameters);

    void setMode(InputModeT mode);
    // A mode or encoding name, or pairs whose "value" names it ("More" keeps the current one).
    void switchToMode(const QString& spec);
    void switchToEncoding(const QString& spec);

    // An untouched password field answers its default text, never the "****" it
    // shows; an IPv4 field answers its four groups zero padded.
    QString text() const;
    // The echo mode given to set, which the shown one may differ from.
    QLineEdit::EchoMode echoMode() const;
    bool isValidInput();
    bool isCurrentEditBufferEmpty() const;
    bool isAlphabeticalEditMode() const { return m_mode < InputModeNumeric; }
    int minWidthHint() const;
    int getToolBarWidth();
    void updateKeymap();

    void setAutoSelect(bool on) { m_autoSelect = on; }
    void setIgnoreNavigationKeys(bool on) { m_ignoreNavigationKeys = on; }
    void setIgnoreDeleteKey(bool on) { m_ignoreDeleteKey = on; }
    void setIgnoreSelectKey(bool on) { m_ignoreSelectKey = on; }
    void setIgnorePundStarKeys(bool on) { m_ignorePundStarKeys = on; }
    void setIgnoreMagnifierEvents(bool on) { m_ignoreMagnifierEvents = on; }
    void setAllowUrlPrefixEditing(bool on) { m_allowUrlPrefixEditing = on; }
    void setPreventEditingDefaultContents(bool on);
    void setUseKateInput(bool on);
    void saveCursorPosition(int position) { m_savedCursorPos = position; }
    void restoreSavedCursorPosition() { setCursorPosition(m_savedCursorPos); }
    void setupTelNumberMode();

    // Editing rules of the modes.
    void reportDialpadKeyEvent(int key, int eventType);
    void selectNextIPField(int step);
    void handleInputForNumericEditing(QChar c);
    void handleInputForIPEditing(QChar c);
    void handleInputForHexEditing(QChar c);
    // 4 behind "sip:", 5 behind "h323:", else 0.
    int getProtocolLength() const;
    bool shouldShowBackspaceSk() const;
    void showBackspaceButton(bool show);
    void setTextCursorBlinking(bool on);
    void showMagGlass(const QPoint& pos);
    void hideMagGlass();
    // The blink of the text cursor is held still (the magnifier is up).
    bool isCursorBlinkHeld() const;

    // State read by owners and tests.
    InputModeT mode() const { return m_mode; }
    InputEncodingT encoding() const { return m_encoding; }
    QString modes() const { return m_modes; }
    QString modeName() const { return m_modeName; }
    QString encodingName() const { return m_encodingName; }
    QString defaultText() const { return m_defaultText; }
    QString urlPrefix() const { return m_urlPrefix; }
    int maxLengthInBytes() const { return m_maxLength; }
    int minLength() const { return m_minLength; }
    int minValue() const { return m_minValue; }
    int maxValue() const { return m_maxValue; }
    int ipField() const { return m_ipField; }
    bool isEdited() const { return m_edited; }
    bool isNumericOnly() const { return m_numericOnly; }
    bool allowsLeadingZero() const { return m_allowLeadingZero; }
    bool preventsEditingDefaultContents() const { return m_preventEditingDefaultContents; }
    CTavoKateInput* kateInput() const { return m_kate; }
    CTavoXt9Input* xt9Input() const { return m_xt9; }
    CTavoIpAddressValidator* ipValidator() const { return m_ipValidator; }
    QToolButton* backspaceButton() const { return m_backspaceButton; }
    CTavoMagnifyingGlass* magnifyingGlass() const { return m_magGlass; }
    bool isMagnifierTimerRunning() const { return m_magTimerId != -1; }
    // The position last handed to QLineEdit for the magnifier, after smoothing.
    QPointF magnifierPointer() const { return QPointF(m_magPointerX, m_magPointerY); }
    const QTimer& idleTimer() const { return m_idleTimer; }

    qreal letterSpacing() const;
    void setLetterSpacing(qreal spacing);
    bool showDoneWhenNoText() const { return m_showDoneWhenNoText; }
    void setShowDoneWhenNoText(bool on) { m_showDoneWhenNoText = on; }
    bool useInlineBackspace() const { return m_useInlineBackspace; }
    void setUseInlineBackspace(bool on) { m_useInlineBackspace = on; }
    bool inlineBackspaceClears() const { return m_inlineBackspaceClears; }
    void setInlineBackspaceClears(bool on) { m_inlineBackspaceClears = on; }
    bool inlineBackspaceHidesOnClear() const { return m_inlineBackspaceHidesOnClear; }
    void setInlineBackspaceHidesOnClear(bool on) { m_inlineBackspaceHidesOnClear = on; }
    bool useKateInput() const { return m_useKateInput; }
    int backspaceMinWidth() const { return m_backspaceMinWidth; }
    void setBackspaceMinWidth(int width) { m_backspaceMinWidth = width; }
    int backspaceMinHeight() const { return m_backspaceMinHeight; }
    void setBackspaceMinHeight(int height) { m_backspaceMinHeight = height; }

    // The field that last gained focus.
    static QPointer<CTavoInput> m_pFocusedInput;

signals:
    // Show (1), hide (0) or dim (2) the softkey bound to keyUrl.
    void contextSensitiveSk(QString keyUrl, QString data, int value);
    // The mode the entry methods are to use (a capitalised field asks for upper
    // case after ". " and at the start, lower case elsewhere).
    void modeSelected(InputModeT mode);
    void editDone(QString event, QString data);
    void encodingSelected(InputEncodingT encodingType);
    // " (mode/encoding)" or " (mode)" while focused; "" when focus goes.
    void modeAndEncodingIdentifierUpdated(const QString& identifier);
    void deleteUnicodeChar();
    void deleteChar();
    void clearChars();
    void dialpadKeyEvent(QString keyUri, QString data);
    void textPreedited(const QString& text);
    void TimeOutEventSend(QChar c);
    void hideFlyout(bool isDeselectText);

public slots:
    // All character entry meets here; attempt replaces the candidate before the cursor.
    void onEntered(QChar character, bool attempt);
    void onXT9PhraseSelected(QString xt9Phase);
    void setText(QString text);
    void onTextEdited(QString text);
    // Runs after every change: the byte limit, the context keys, the backspace key.
    void onModified();
    void updateValidateCtxKey();
    void backspace();
    void onBackspaceKeyEvent();
    void onCursorPositionChanged(int oldPos, int newPos);
    void onModeAndEncodingChanged();
    void onInlineBackspace();
    void resetUneditableUrlStringCursorPos();
    void showKate(QWidget* widget, bool show);
    void reportMode();

public:
    using QLineEdit::inputMethodQuery;
    // QLineEdit's answer, also copied into v.
    Q_INVOKABLE QVariant inputMethodQuery(Qt::InputMethodQuery query, QVariant v) const;

    virtual bool handleNavigationKey(SoKeyFuncT key, QEvent::Type type);
    virtual void handleSelectionKey();

    // Adds the field's element to the UI report (test automation only).
    void report(QList<QObject*>& done, QDomNode& parent);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

    void handleFocus(bool in, Qt::FocusReason reason);
    void setupUrlMode();
    void setMinMaxValue();
    bool dispatchKey(QKeyEvent* event);
    // contextSensitiveSk for a URI number of the document library.
    void ctxKey(int uri, int value);
    void showBackspaceKey();
    // Press and move of the finger: smoothing, the glass, then QLineEdit.
    bool handleMagnifierPointer(QMouseEvent* event);
    void magnifierStep();
    void sendSyntheticMove(const QPointF& position);
    void commitPendingCandidate(QChar c);

    bool m_edited = false;
    bool m_encodingFollowsMode = true;
    bool m_lockScreenField = false;
    InputModeT m_mode = InputModeNumericStar;
    InputEncodingT m_encoding = InputEncodingASCII;
    QString m_modes;
    int m_maxLength = 512;
    int m_minLength = 0;
    int m_ipField = 0;
    int m_minValue = -1;
    int m_maxValue = -1;
    int m_savedCursorPos = 0;
    QString m_urlPrefix;
    QString m_reserved1;
    QString m_reserved2;
    CTXMLUriLib m_uri;
    QString m_defaultText;
    bool m_comingFromShiftKey = false;
    bool m_autoSelect = false;
    bool m_ignoreNavigationKeys = false;
    bool m_ignoreDeleteKey = false;
    bool m_ignoreSelectKey = false;
    bool m_ignorePundStarKeys = false;
    bool m_preventEditingDefaultContents = false;
    bool m_numericOnly = false;
    bool m_rightKeyLeavesEmptyField = false;
    int m_echoMode = 0;
    bool m_allowUrlPrefixEditing = true;
    QString m_encodingName;
    QString m_modeName;
    bool m_reportDialpadKeys = false;
    bool m_keepModesOnSameSet = false;
    QString m_preeditText;
    bool m_allowLeadingZero = false;
    int m_attemptCursorPos = 0;
    CTavoKateInput* m_kate = nullptr;
    CTavoXt9Input* m_xt9 = nullptr;
    CTavoIpAddressValidator* m_ipValidator = nullptr;
    bool m_useInlineBackspace = false;
    bool m_inlineBackspaceClears = false;
    bool m_inlineBackspaceHidesOnClear = false;
    bool m_useKateInput = true;
    QToolButton* m_backspaceButton = nullptr;
    int m_backspaceMinWidth = 0;
    int m_backspaceMinHeight = 0;
    bool m_hideBackspace = false;
    QTimer m_idleTimer;
    bool m_showDoneWhenNoText = true;
    // The text magnifier and the smoothing of the pointer under it.
    CTavoMagnifyingGlass* m_magGlass = nullptr;
    float m_magPointerX = 0;
    float m_magPointerY = 0;
    float m_magRawPos[2] = {0, 0};
    int m_magTimerId = -1;
    CKalmanFilter m_magFilter;
    bool m_ignoreMagnifierEvents = false;

private:
    // Qt 5's QLineEdit keeps blinking after a cursor key; this holds its blink still.
    QObject* m_blinkHold = nullptr;
};
