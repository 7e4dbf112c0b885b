#include "input/CTavoInput.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDomElement>
#include <QFocusEvent>
#include <QFontMetrics>
#include <QIcon>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMetaType>
#include <QMouseEvent>
#include <QPixmap>
#include <QRegExp>
#include <QResizeEvent>
#include <QStringList>
#include <QTimerEvent>
#include <QToolButton>
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "automation/CTavoUITA.h"
#include "input/CTavoIpAddressValidator.h"
#include "input/CTavoKateInput.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoVarList.h"
#include "log/GuiLog.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/TavoProfile.h"
#include "tools/PhoneNumberUtils.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoMagnifyingGlass.h"

QPointer<CTavoInput> CTavoInput::m_pFocusedInput;

namespace {
const int kIdleMs = 2000;
const int kDefaultMaxLength = 512;
const int kUrlCursorDelayMs = 25;
const char kIpMask[] = "000.000.000.000;_";
const char kEmptyIp[] = "000.000.000.000";
const int kMagnifierStepMs = 50;
// A finger this close to the inline backspace button is on the button.
const int kBackspaceMargin = 3;

// Holds QLineEdit's cursor blink still: the blink is a timer of QLineEdit's
// private line control, and Qt 5 restarts it after every key (Qt 4 stopped it).
class BlinkHold : public QObject
{
public:
    explicit BlinkHold(QObject* parent) : QObject(parent) {}
    bool active = false;

protected:
    bool eventFilter(QObject*, QEvent* event) override { return active && event->type() == QEvent::Timer; }
};

// The names of the modes in mode lists, by number.
const char* const kModeNames[] = {"Abc", "abc", "ABC", "123", "IP", "URL", "123T",
                                  "Tel", "TelNoNav", "Hex", "XT9 PinYin", "IPv6", "123*"};
const int kModeCount = int(sizeof kModeNames / sizeof kModeNames[0]);

// An unknown name is "abc", as for every reader of mode lists.
InputModeT modeFromName(const QString& name)
{
    for (int i = 0; i < kModeCount; ++i) {
        if (name == QLatin1String(kModeNames[i]))
            return InputModeT(i);
    }
    return InputModeLower;
}

QString nameOfMode(int mode)
{
    return mode >= 0 && mode < kModeCount ? QString::fromLatin1(kModeNames[mode]) : QString();
}

QString var(int number)
{
    return QString::fromLatin1(CTXMLUriLib::varname(number));
}

bool isPasswordEcho(int echoMode)
{
    return echoMode == QLineEdit::Password || echoMode == QLineEdit::PasswordEchoOnEdit;
}

// One "%03d" group per part of a dotted text.
QString zeroPadded(const QString& dotted)
{
    const QStringList parts = dotted.split(QLatin1Char('.'));
    QString out;
    out.reserve(parts.size() * 4);
    for (int i = 0; i < parts.size(); ++i) {
        if (i)
            out += QLatin1Char('.');
        out += QStringLiteral("%1").arg(parts.at(i).toInt(), 3, 10, QLatin1Char('0'));
    }
    return out;
}
}  // namespace

CTavoInput::CTavoInput(QWidget* parent)
    : QLineEdit(parent), m_magFilter(0.5f, 1.5f)
{
    // Queued connections and signal spies carry the two enumerations by name.
    static const int modeType = qRegisterMetaType<InputModeT>("InputModeT");
    static const int encodingType = qRegisterMetaType<InputEncodingT>("InputEncodingT");
    Q_UNUSED(modeType);
    Q_UNUSED(encodingType);

    connect(this, &QLineEdit::textEdited, this, &CTavoInput::onTextEdited);
    connect(this, &QLineEdit::selectionChanged, this, &CTavoInput::reportMode);
    connect(this, &QLineEdit::cursorPositionChanged, this, &CTavoInput::reportMode);
    connect(this, &QLineEdit::cursorPositionChanged, this, &CTavoInput::onCursorPositionChanged);
    connect(this, &CTavoInput::modeSelected, this, &CTavoInput::onModeAndEncodingChanged);
    connect(this, &CTavoInput::encodingSelected, this, &CTavoInput::onModeAndEncodingChanged);

    // The multi-tap strip comes with the skin's "kate-input" item; without it
    // every key reaches the text directly. It stands beside the field, on the
    // field's parent, and the field owns it.
    CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    CTavoStyleSheetFile* skin = mgr ? mgr->styleSheetFile() : nullptr;
    if (skin && skin->get(QStringLiteral("kate-input"))) {
        m_kate = new CTavoKateInput(parentWidget(), false, this);
        m_kate->setObjectName(QStringLiteral("kate-input"));
        connect(m_kate, &QObject::destroyed, this, [this] {
            m_kate = nullptr;
            m_useKateInput = false;
        });
        connect(m_kate, &CTavoKateInput::showme, this, &CTavoInput::showKate);
        connect(m_kate, &CTavoKateInput::entered, this, &CTavoInput::onEntered);
        connect(m_kate, &CTavoKateInput::TimeOutEvent, this, &CTavoInput::TimeOutEventSend);
        connect(this, &CTavoInput::modeSelected, m_kate, qOverload<InputModeT>(&CTavoKateInput::onModeSelected));
        connect(this, &CTavoInput::encodingSelected, m_kate,
                qOverload<InputEncodingT>(&CTavoKateInput::onEncodingSelected));
        connect(this, &CTavoInput::deleteUnicodeChar, m_kate, &CTavoKateInput::onDeleteUnicodeChar);
    }
    m_useKateInput = m_kate != nullptr;

    m_ipValidator = new CTavoIpAddressValidator(this);
    // The predictive strip ("xt9-line-editor") likewise stays absent.
    m_xt9 = nullptr;

    // No timer until a finger shows the glass; the owner gives it factor and mask.
    m_magGlass = new CTavoMagnifyingGlass(parentWidget(), this);
    m_magGlass->setObjectName(QStringLiteral("magnifying-glass"));
    connect(m_magGlass, &QObject::destroyed, this, [this] { m_magGlass = nullptr; });
    m_magTimerId = -1;

    m_backspaceButton = new QToolButton(this);
    m_backspaceButton->setObjectName(QStringLiteral("inline-backspace"));
    m_backspaceButton->setFocusPolicy(Qt::NoFocus);
    m_backspaceButton->setAutoRepeat(true);
    m_backspaceButton->setArrowType(Qt::LeftArrow);
    m_backspaceButton->hide();
    connect(m_backspaceButton, &QToolButton::pressed, this, &CTavoInput::onInlineBackspace);

    if (font().family() == QLatin1String("copy08")) {
        QFont f = font();
        f.setWeight(tavoGetActiveProfile(true).contains(QLatin1String("Orbel101")) ? 50 : 75);
        setFont(f);
    }

    setFocusPolicy(Qt::StrongFocus);
    m_idleTimer.setInterval(kIdleMs);
    m_idleTimer.setSingleShot(true);
    setMode(InputModeNumericStar);
}

CTavoInput::~CTavoInput()
{
    if (m_pFocusedInput == this)
        m_pFocusedInput = nullptr;
    // The strip and the glass stand on the parent but belong to the field.
    if (m_kate) {
        disconnect(m_kate, nullptr, this, nullptr);
        delete m_kate;
    }
    if (m_magGlass) {
        disconnect(m_magGlass, nullptr, this, nullptr);
        delete m_magGlass;
    }
}

void CTavoInput::ctxKey(int uri, int value)
{
    emit contextSensitiveSk(QString::fromLatin1(CTXMLUriLib::uri(uri)), QString(), value);
}

// ---------------------------------------------------------------------------
// Configuration

void CTavoInput::set(const char* modes, const QString& text, int maxLength, int echoMode, const char* uriParams,
                     bool applyText, int minLength, bool startWithKey, bool showDefault)
{
    const QByteArray encodingBefore(m_uri.value(TxmlVarEncoding));
    QString firstMode = QStringLiteral("Abc");
    m_uri.parse(uriParams);
    if (m_uri.parser().remaining() > 0)
        guiLog(3, "CTavoInput::set: %d bytes of parameters beyond the last pair kept", m_uri.parser().remaining());

    const QString modeList = QString::fromUtf8(modes ? modes : "");
    // A caller that keeps its modes across identical sets skips the encoding
    // and mode set-up; the URL set-up still runs.
    const bool repeat = m_keepModesOnSameSet && modeList == m_modes &&
                        encodingBefore == QByteArray(m_uri.value(TxmlVarEncoding));

    m_allowLeadingZero = std::strtol(m_uri.value(TxmlVarLeadingZero), nullptr, 10) != 0;
    if (maxLength < 0) {
        guiLog(3, "CTavoInput::set: maximum length %d, using %d", maxLength, kDefaultMaxLength);
        maxLength = kDefaultMaxLength;
    }
    if (minLength < 0) {
        guiLog(3, "CTavoInput::set: minimum length %d, using 0", minLength);
        minLength = 0;
    }
    setMaxLength(maxLength);
    m_maxLength = maxLength;
    m_minLength = minLength;
    m_modes = modeList;

    const QStringList list = m_modes.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    m_preeditText.clear();
    if (!list.isEmpty())
        firstMode = list.first();
    else
        guiLog(2, "CTavoInput::set: no modes given, using \"Abc\"");

    QString rest = m_modes;
    rest.remove(QLatin1Char(';')).remove(QLatin1String("123T")).remove(QLatin1String("123"));
    m_numericOnly = rest.isEmpty();

    m_defaultText = text;
    if (!repeat)
        switchToEncoding(QString::fromUtf8(m_uri.value(TxmlVarEncoding)));
    setMinMaxValue();
    if (repeat)
        setupUrlMode();
    else
        switchToMode(firstMode);

    if (echoMode < QLineEdit::Normal || echoMode > QLineEdit::PasswordEchoOnEdit) {
        guiLog(3, "CTavoInput::set: echo mode %d unknown, using Normal", echoMode);
        echoMode = QLineEdit::Normal;
    }
    m_echoMode = echoMode;
    QLineEdit::setEchoMode(QLineEdit::EchoMode(echoMode));

    if (applyText) {
        if (m_echoMode == QLineEdit::Password) {
            if (!m_defaultText.isEmpty()) {
                setText(showDefault ? m_defaultText : QStringLiteral("****"));
                m_edited = false;
            } else {
                setText(QString());
            }
        } else if (startWithKey && m_useKateInput && m_kate) {
            // The strip takes the first key: star when the text holds one.
            m_kate->handleKeyEvent(text.contains(QLatin1Char('*')) ? 10 : 0, true);
        } else {
            setText(m_defaultText);
        }
    }

    ctxKey(TxmlUriDone, 0);
    ctxKey(TxmlUriReset, 0);

    bool prevent = false;
    if (std::strcmp(m_uri.value(TxmlVarEditPolicy), "replaceonly") == 0) {
        const QByteArray::FromBase64Result decoded = QByteArray::fromBase64Encoding(
            QByteArray(m_uri.value(TxmlVarData)), QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            guiLog(3, "CTavoInput::set: replaceonly text is not Base64");
        else if (QString::fromUtf8(*decoded) == m_defaultText)
            prevent = true;
    }
    if (!prevent)
        prevent = m_echoMode == QLineEdit::Password && !showDefault;
    setPreventEditingDefaultContents(prevent);

    saveCursorPosition(this->text().length());
    if (m_lockScreenField)
        onModified();
}

void CTavoInput::set(const CTavoInputParameters& p)
{
    const QByteArray modes = p.m_modes.toUtf8();
    const QByteArray params = p.m_uriParams.toUtf8();
    set(modes.constData(), p.m_defaultText, p.m_maxLength, p.m_echoMode, params.constData(), p.m_applyText,
        p.m_minLength, p.m_startWithKey, p.m_showDefaultText);
    if (p.m_encoding < 0)
        guiLog(3, "CTavoInput::set: encoding %d unknown", p.m_encoding);
    else if (p.m_encoding < InputEncodingNone) {
        m_encoding = InputEncodingT(p.m_encoding);
        m_encodingName = var(TxmlVarAscii + p.m_encoding);
        emit encodingSelected(m_encoding);
    }
    if (p.m_mode >= 0 && p.m_mode < kModeCount)
        m_modeName = nameOfMode(p.m_mode);
}

void CTavoInput::setMinMaxValue()
{
    const QString minText = QString::fromUtf8(m_uri.value(TxmlVarMin));
    const QString maxText = QString::fromUtf8(m_uri.value(TxmlVarMax));
    bool ok = true;
    m_minValue = minText.isEmpty() ? -1 : minText.toInt(&ok);
    if (!ok)
        guiLog(3, "CTavoInput::set: minimum \"%s\" is not a number", qPrintable(minText));
    ok = true;
    m_maxValue = maxText.isEmpty() ? -1 : maxText.toInt(&ok);
    if (!ok)
        guiLog(3, "CTavoInput::set: maximum \"%s\" is not a number", qPrintable(maxText));
    // Room for the longest limit the field may be set to.
    const QString& last = !maxText.isEmpty() ? maxText : minText;
    if (!last.isEmpty() && last.length() > m_maxLength) {
        m_maxLength = last.length();
        setMaxLength(m_maxLength);
    }
}

void CTavoInput::setMode(InputModeT mode)
{
    saveCursorPosition(cursorPosition());
    const int formerCursor = cursorPosition();
    QString local = m_defaultText;
    if (m_mode == InputModeIP && text() == QLatin1String(kEmptyIp))
        local.clear();

    m_mode = mode;
    reportMode();
    setValidator(nullptr);
    Qt::InputMethodHints hints = inputMethodHints() & Qt::ImhHiddenText;

    const QString mask = QString::fromUtf8(m_uri.value(TxmlVarMask));
    if (!mask.isEmpty()) {
        setInputMask(mask);
        hints |= Qt::ImhNoPredictiveText;
    } else {
        switch (mode) {
        case InputModeCapitalised:
        case InputModeUpper:
            hints |= Qt::ImhPreferUppercase | Qt::ImhNoPredictiveText;
            break;
        case InputModeLower:
            hints |= Qt::ImhLowercaseOnly | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase;
            break;
        case InputModeNumeric:
        case InputModeTel:
        case InputModeTelNoNav:
            hints |= Qt::ImhPreferNumbers | Qt::ImhNoPredictiveText;
            break;
        case InputModeIP:
            setValidator(m_ipValidator);
            hints |= Qt::ImhDigitsOnly | Qt::ImhNoPredictiveText;
            break;
        case InputModeURL:
            m_defaultText = local;
            setupUrlMode();
            setText(local);
            saveCursorPosition(formerCursor + getProtocolLength());
            if (m_echoMode != QLineEdit::Normal)
                hints |= Qt::ImhNoPredictiveText;
            else
                hints |= Qt::ImhLowercaseOnly | Qt::ImhNoPredictiveText | Qt::ImhNoAutoUppercase;
            break;
        case InputModeNumericStep:
            hints |= Qt::ImhDigitsOnly | Qt::ImhNoPredictiveText;
            break;
        case InputModeHex:
        case InputModePinYin:
            hints |= Qt::ImhNoPredictiveText;
            break;
        case InputModeIPv6:
            setInputMask(QString());
            setMaxLength(m_maxLength);
            hints |= Qt::ImhPreferLowercase | Qt::ImhNoPredictiveText;
            break;
        default:
            setMaxLength(m_maxLength);
            hints |= Qt::ImhNoPredictiveText;
            break;
        }
    }
    setInputMethodHints(hints);

    // The mode's own mask wins over one given by the parameters.
    setInputMask(mode == InputModeIP ? QString::fromLatin1(kIpMask) : QString());

    if (isAlphabeticalEditMode())
        ctxKey(TxmlUriToggleEditMode, 1);
    else if (mode == InputModeNumeric)
        ctxKey(TxmlUriToggleEditMode, 0);

    if (mode == InputModeIP) {
        setText(text());
        selectNextIPField(0);
    } else if (mode == InputModeIPv6) {
        if (!isValidIPAddress(local, 2, QString()))
            selectAll();
    } else {
        restoreSavedCursorPosition();
    }
}

void CTavoInput::switchToMode(const QString& spec)
{
    const bool wasAlphabetical = isAlphabeticalEditMode();
    const QString selected = selectedText();
    const CTavoVarList vars(spec);
    const QString value = vars[var(TxmlVarValue)];
    if (value != QLatin1String("More"))
        m_modeName = value.isEmpty() ? spec : value;
    if (modeFromName(m_modeName) == InputModeLower && m_modeName != QLatin1String("abc"))
        guiLog(2, "CTavoInput: unknown mode \"%s\", using \"abc\"", qPrintable(m_modeName));
    setMode(modeFromName(m_modeName));
    if (m_encodingFollowsMode && isAlphabeticalEditMode() && !wasAlphabetical)
        switchToEncoding(var(TxmlVarAscii));
    if (m_mode == InputModePinYin && m_encoding != InputEncodingASCII) {
        switchToEncoding(var(TxmlVarAscii));
        if (m_kate)
            m_kate->onEncodingSelected(InputEncodingASCII);
    }
    setFocus(Qt::OtherFocusReason);
    if (!selected.isEmpty()) {
        const int at = QLineEdit::text().indexOf(selected);
        if (at >= 0)
            setSelection(at, selected.length());
    }
}

void CTavoInput::switchToEncoding(const QString& spec)
{
    const QString selected = selectedText();
    const QString former = m_encodingName;
    m_encodingName = var(TxmlVarAscii);
    if (m_encodingFollowsMode && !isAlphabeticalEditMode()) {
        m_encoding = InputEncodingASCII;
    } else {
        const CTavoVarList vars(spec);
        const QString value = vars[var(TxmlVarValue)];
        QString name;
        if (value == QLatin1String("More"))
            name = !former.isEmpty() ? former : value;
        else
            name = !value.isEmpty() ? value : spec;
        if (name.isEmpty()) {
            m_encoding = InputEncodingASCII;
        } else {
            bool known = false;
            for (int i = 0; i < InputEncodingNone; ++i) {
                if (name == var(TxmlVarAscii + i)) {
                    m_encoding = InputEncodingT(i);
                    m_encodingName = name;
                    known = true;
                    break;
                }
            }
            if (!known)
                guiLog(2, "CTavoInput: unknown encoding \"%s\", keeping %d", qPrintable(name), int(m_encoding));
        }
        emit encodingSelected(m_encoding);
    }
    setFocus(Qt::OtherFocusReason);
    if (!selected.isEmpty()) {
        const int at = QLineEdit::text().indexOf(selected);
        if (at >= 0)
            setSelection(at, selected.length());
    }
}

void CTavoInput::setupUrlMode()
{
    // The protocol is read but, compared with both "sip:" and "h323:" at once,
    // never keeps a prefix.
    const QByteArray protocol(m_uri.value(TxmlVarProtocol));
    const bool keepsPrefix = protocol == "sip:" && protocol == "h323:";
    m_urlPrefix = keepsPrefix ? QString::fromLatin1(protocol) : QString();

    setInputMask(QString());
    setText(m_defaultText);
    setMaxLength(m_maxLength);

    const QString number = PhoneNumberUtils::removePunctuation(m_defaultText);
    static const QRegExp digits(QStringLiteral("\\d+"));
    QRegExp matcher(digits);
    if (matcher.exactMatch(number))
        m_defaultText = number;
}

void CTavoInput::setupTelNumberMode()
{
    QString number = m_defaultText;
    bool stripped = false;
    for (const char* prefix : {"sip:", "h323:"}) {
        if (number.startsWith(QLatin1String(prefix))) {
            number.remove(0, int(std::strlen(prefix)));
            stripped = true;
            break;
        }
    }
    setInputMask(QString());
    if (stripped)
        setText(number);
    setMaxLength(m_maxLength);
    m_defaultText = number;
}

void CTavoInput::setPreventEditingDefaultContents(bool on)
{
    m_preventEditingDefaultContents = on;
    if (on)
        selectAll();
}

void CTavoInput::setUseKateInput(bool on)
{
    if (m_kate)
        m_useKateInput = on;
}

// ---------------------------------------------------------------------------
// Reading

QString CTavoInput::text() const
{
    QString result;
    if (!isModified() && isPasswordEcho(m_echoMode))
        result = m_defaultText;
    else if (m_mode == InputModeIP)
        result = zeroPadded(QLineEdit::text());
    if (result.isEmpty())
        return QLineEdit::text();
    return result;
}

QLineEdit::EchoMode CTavoInput::echoMode() const
{
    return QLineEdit::EchoMode(m_echoMode);
}

bool CTavoInput::isValidInput()
{
    const QString value = text().trimmed();
    const long selector = std::strtol(m_uri.value(TxmlVarCheck), nullptr, 10);
    const QString argument = QString::fromUtf8(m_uri.value(TxmlVarArg));
    bool valid = true;
    if (m_mode == InputModeNumeric || m_mode == InputModeNumericStep) {
        if (m_minValue != -1 || m_maxValue != -1) {
            const int n = value.toInt();
            valid = (m_minValue == -1 || n >= m_minValue) && (m_maxValue == -1 || n <= m_maxValue);
        }
    } else if (m_mode == InputModeIPv6) {
        valid = isValidIPAddress(argument, 2, value);
    } else if (m_mode == InputModeHex && selector == 1) {
        valid = isValidIPAddress(argument, 3, value);
    }
    if (!valid) {
        setText(m_defaultText);
        selectAll();
    }
    return valid;
}

bool CTavoInput::isCurrentEditBufferEmpty() const
{
    return text().isEmpty() && m_preeditText.isEmpty();
}

int CTavoInput::minWidthHint() const
{
    return fontMetrics().horizontalAdvance(QLineEdit::text()) + 6;
}

int CTavoInput::getToolBarWidth()
{
    return m_useInlineBackspace ? m_backspaceButton->width() : 0;
}

void CTavoInput::updateKeymap()
{
    if (m_kate)
        m_kate->updateKeymapAsPerIntlPrefix();
}

qreal CTavoInput::letterSpacing() const
{
    return font().letterSpacing();
}

void CTavoInput::setLetterSpacing(qreal spacing)
{
    QFont f = font();
    f.setLetterSpacing(QFont::PercentageSpacing, spacing);
    setFont(f);
}

QVariant CTavoInput::inputMethodQuery(Qt::InputMethodQuery query, QVariant v) const
{
    const QVariant answer = QLineEdit::inputMethodQuery(query);
    v = answer;
    return answer;
}

// ---------------------------------------------------------------------------
// Slots

void CTavoInput::setText(QString text)
{
    QLineEdit::setText(text);
}

void CTavoInput::reportMode()
{
    if (m_mode != InputModeCapitalised) {
        emit modeSelected(m_mode);
        return;
    }
    const QString shown = QLineEdit::text();
    const int cursor = cursorPosition();
    if (cursor == 0) {
        emit modeSelected(InputModeCapitalised);
    } else if (cursor <= shown.length()) {
        const QChar before = shown.at(cursor - 1);
        if (before == QLatin1Char('.') || before == QLatin1Char(' ') || (selectedText() == shown))
            emit modeSelected(InputModeUpper);
        else
            emit modeSelected(InputModeLower);
    }
}

void CTavoInput::onModeAndEncodingChanged()
{
    if (!hasFocus())
        return;
    QString identifier;
    if (isAlphabeticalEditMode())
        identifier = QStringLiteral(" (%1/%2)").arg(m_modeName, m_encodingName);
    else
        identifier = QStringLiteral(" (%1)").arg(m_modeName);
    emit modeAndEncodingIdentifierUpdated(identifier);
}

void CTavoInput::updateValidateCtxKey()
{
    guiLog(3, "updateValidateCtxKey: Set and update lock-screen ctx key %d", int(m_lockScreenField));
    if (!m_lockScreenField)
        return;
    const CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    if (QLineEdit::text().length() >= m_minLength)
        ctxKey(TxmlUriValidate, 1);
    else if (mgr && mgr->lockScreenDimming())
        ctxKey(TxmlUriValidate, 2);
}

void CTavoInput::onXT9PhraseSelected(QString xt9Phase)
{
    insert(xt9Phase);
}

void CTavoInput::onTextEdited(QString)
{
    saveCursorPosition(cursorPosition());
    onModified();
}

void CTavoInput::onModified()
{
    // A masked default and a new character were both present: the new one wins.
    if (QLineEdit::echoMode() == QLineEdit::NoEcho) {
        const QString now = text();
        if (now.length() >= m_defaultText.length() && !now.isEmpty())
            QLineEdit::setText(now.right(1));
        else
            clear();
        QLineEdit::setEchoMode(QLineEdit::Password);
    }
    m_idleTimer.start();
    saveCursorPosition(cursorPosition());

    bool selectAllAtEnd = false;
    if (m_mode == InputModeCapitalised) {
        reportMode();
    } else if (m_mode == InputModeNumericStep) {
        const QString shown = QLineEdit::text();
        if (shown.isEmpty() || selectedText() == shown) {
            QLineEdit::setText(QStringLiteral("%1").arg(m_minValue));
            saveCursorPosition(cursorPosition());
            selectAllAtEnd = true;
        }
    }

    const QString shown = QLineEdit::text();
    if (m_showDoneWhenNoText || !shown.isEmpty())
        ctxKey(TxmlUriDone, 1);
    ctxKey(TxmlUriReset, 1);

    if (m_lockScreenField) {
        guiLog(3, "updateValidateCtxKey: Set and update lock-screen ctx key %d", int(m_lockScreenField));
        const CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
        if (shown.length() >= m_minLength)
            ctxKey(TxmlUriValidate, 1);
        else if (mgr && mgr->lockScreenDimming())
            ctxKey(TxmlUriValidate, 2);
        else
            ctxKey(TxmlUriValidate, 0);
    }

    // The limit counts UTF-8 bytes while QLineEdit counts characters: retune
    // QLineEdit's limit so that the bytes never pass m_maxLength.
    int bytes = shown.toUtf8().size();
    const int limit = m_maxLength;
    bool done = false;
    if (m_mode == InputModeIP) {
        --bytes;
        if (bytes > limit) {
            setMaxLength(shown.length() - 1);
            done = true;
        }
    } else if (m_mode == InputModeURL && limit == 2 && bytes >= 2 && bytes <= 4) {
        setMaxLength(2);
        done = true;
    }
    if (!done) {
        if (bytes > limit) {
            setMaxLength(shown.length());
            // Whole characters go, never half a UTF-8 sequence or a surrogate
            // pair, until the text fits (a paste may be over by more than one).
            QString cut = shown;
            while (!cut.isEmpty() && cut.toUtf8().size() > limit) {
                const int n = cut.length() >= 2 && cut.at(cut.length() - 1).isLowSurrogate() &&
                                      cut.at(cut.length() - 2).isHighSurrogate()
                                  ? 2
                                  : 1;
                cut.chop(n);
            }
            QLineEdit::setText(cut);
        } else if (bytes == limit) {
            setMaxLength(shown.length());
        } else if (maxLength() != limit) {
            // QLineEdit sets its whole text again on every setMaxLength: only
            // when the limit really changes.
            setMaxLength(limit);
        }
    }

    setModified(true);
    restoreSavedCursorPosition();
    if (selectAllAtEnd)
        selectAll();

    showBackspaceKey();

    m_preventEditingDefaultContents = false;
    if (QLineEdit::text().isEmpty())
        onModeAndEncodingChanged();
}

void CTavoInput::showBackspaceKey()
{
    const bool show = shouldShowBackspaceSk();
    if (m_useInlineBackspace)
        showBackspaceButton(show);
    else
        ctxKey(TxmlUriBackspace, show ? 1 : 0);
}

void CTavoInput::backspace()
{
    saveCursorPosition(cursorPosition());
    emit hideFlyout(true);
    if (m_mode == InputModeURL) {
        const QString head = QLineEdit::text().left(cursorPosition());
        if (head != QLatin1String("sip:") && head != QLatin1String("h323:"))
            QLineEdit::backspace();
        else if (m_allowUrlPrefixEditing || hasSelectedText())
            QLineEdit::backspace();
    } else if (m_encoding == InputEncodingUnicode) {
        emit deleteUnicodeChar();
    } else {
        QLineEdit::backspace();
    }
    restoreSavedCursorPosition();
    QTimer::singleShot(kUrlCursorDelayMs, this, [this] { update(); });
    if (m_kate)
        m_kate->hide();
}

void CTavoInput::onBackspaceKeyEvent()
{
    backspace();
    emit deleteChar();
}

void CTavoInput::onInlineBackspace()
{
    if (m_inlineBackspaceClears) {
        clear();
        onModified();
        emit clearChars();
    } else {
        onBackspaceKeyEvent();
    }
}

void CTavoInput::onCursorPositionChanged(int oldPos, int newPos)
{
    if (!hasFocus())
        return;
    if (m_mode == InputModeIP) {
        if (newPos % 4 == 0) {
            m_ipField = newPos / 4;
            selectNextIPField(0);
        }
    } else if (m_mode == InputModeURL && !m_allowUrlPrefixEditing) {
        const QString shown = QLineEdit::text();
        // The two protocols differ by one place here, as they always have.
        if ((shown.startsWith(QLatin1String("sip:")) && newPos < 4) ||
            (shown.startsWith(QLatin1String("h323:")) && newPos <= 4)) {
            setCursorPosition(0);
            QTimer::singleShot(kUrlCursorDelayMs, this, &CTavoInput::resetUneditableUrlStringCursorPos);
        }
    } else if (m_mode == InputModeTelNoNav && oldPos != newPos) {
        setCursorPosition(QLineEdit::text().length());
    }
    showBackspaceKey();
    if (m_magGlass && m_magGlass->isVisible()) {
        // A finger low over the field drags the cursor; it does not select.
        if (m_mode != InputModeIP && m_magRawPos[1] < 1.5f * float(height()))
            deselect();
        m_magGlass->updateMagnifiedView();
    }
}

void CTavoInput::resetUneditableUrlStringCursorPos()
{
    setCursorPosition(getProtocolLength());
}

void CTavoInput::showKate(QWidget* widget, bool show)
{
    if (!widget)
        return;
    if (auto* kate = qobject_cast<CTavoKateInput*>(widget))
        kate->activate();
    widget->setVisible(show);
    widget->raise();
    QWidget* parent = parentWidget();
    if (!show || !parent)
        return;

    // Below the cursor, or above the line where it would pass the bottom.
    const QPoint p = mapToParent(cursorRect().topLeft());
    const int x = std::max(p.x(), 0);
    const QRect bound = tavoGetActiveProfile(true).contains(QLatin1String("Orbel1500")) ? parent->contentsRect()
                                                                                       : parent->geometry();
    QRect place(QPoint(x, p.y() + height() * 4 / 5), widget->size());
    const int aboveTop = std::max(p.y() - widget->height() - 6, 0);
    if (bound.contains(place)) {
        if (place.bottom() > bound.bottom() - height())
            place.moveTop(aboveTop);
    } else {
        if (place.right() > bound.right())
            place.moveLeft(std::max(place.left() - (place.right() - bound.right()) - 6, 0));
        if (place.bottom() > bound.bottom() - height())
            place.moveTop(aboveTop);
    }
    widget->move(place.topLeft());
}

// ---------------------------------------------------------------------------
// Entry

void CTavoInput::onEntered(QChar c, bool attempt)
{
    if (QLineEdit::echoMode() == QLineEdit::NoEcho) {
        clear();
        QLineEdit::setEchoMode(QLineEdit::Password);
    }
    m_edited = true;
    m_preeditText.clear();
    if ((m_mode != InputModeIP || c.isDigit()) && hasSelectedText())
        del();
    if (!attempt) {
        m_attemptCursorPos = cursorPosition();
    } else if (m_attemptCursorPos != m_maxLength) {
        // The coming insert replaces the earlier candidate.
        setSelection(std::max(cursorPosition() - 1, 0), 1);
    }
    if (c.isNull())
        return;

    switch (m_mode) {
    case InputModeCapitalised: {
        const int cursor = cursorPosition();
        const QString shown = QLineEdit::text();
        if (cursor > 0 && cursor <= shown.length() && shown.at(cursor - 1) != QLatin1Char('.') &&
            shown.at(cursor - 1) != QLatin1Char(' ') && c.category() == QChar::Letter_Uppercase &&
            !hasSelectedText())
            c = c.toLower();
        insert(QString(c));
        break;
    }
    case InputModeNumeric:
    case InputModeNumericStep:
        handleInputForNumericEditing(c);
        break;
    case InputModeIP:
        handleInputForIPEditing(c);
        break;
    case InputModeTel:
    case InputModeTelNoNav:
        commitPendingCandidate(c);
        insert(QString(c));
        break;
    case InputModeHex:
    case InputModeIPv6:
        commitPendingCandidate(c);
        handleInputForHexEditing(c);
        break;
    default:
        insert(QString(c));
        break;
    }
}

void CTavoInput::commitPendingCandidate(QChar c)
{
    // A character from elsewhere settles the strip's pending one first.
    if (m_kate && m_kate->isTimerRunning() && c != m_kate->getCurrentlyFocusedCharacter())
        m_kate->onTimeout();
}

void CTavoInput::handleInputForHexEditing(QChar c)
{
    const ushort u = c.unicode();
    if ((u >= '.' && u <= ':') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F') || u == '[' || u == ']')
        insert(QString(c));
}

void CTavoInput::handleInputForIPEditing(QChar c)
{
    if (!c.isDigit()) {
        selectNextIPField(1);
        return;
    }
    const int cursor = cursorPosition();
    m_ipField = cursor / 4;
    QString candidate;
    if (cursor % 4 == 2)
        candidate = QLineEdit::text().section(QLatin1Char('.'), m_ipField, m_ipField) + c;
    if (candidate.toInt() > 255)
        selectNextIPField(0);
    else
        insert(QString(c));
}

void CTavoInput::selectNextIPField(int step)
{
    if (m_ipField < 0 || m_ipField > 3)
        m_ipField = 0;
    const QString current = text();
    const int value = current.section(QLatin1Char('.'), m_ipField, m_ipField).toInt();
    if (value >= 256)
        return;
    QString updated = current;
    updated.replace(m_ipField * 4, 3, QStringLiteral("%1").arg(value, 3, 10, QLatin1Char('0')));
    setText(updated);
    m_ipField += step;
    if (m_ipField > 3)
        m_ipField = 0;
    else if (m_ipField < 0)
        m_ipField = 3;
    setSelection(m_ipField * 4, 3);
}

void CTavoInput::handleInputForNumericEditing(QChar c)
{
    const QString shown = QLineEdit::text();
    if (m_numericOnly && (c == QLatin1Char(' ') || c == QLatin1Char(',') || c == QLatin1Char('.')))
        return;
    QString result = shown;
    int at = cursorPosition();
    if (hasSelectedText()) {
        at = selectionStart();
        result.remove(at, selectedText().length());
    }
    result.insert(std::min(at, result.length()), c);
    if (c == QLatin1Char('-') && m_minValue >= 0)
        return;
    if (result == QLatin1String("-0"))
        return;
    if (!result.isEmpty() && result != QLatin1String("-")) {
        bool ok = false;
        result.toDouble(&ok);
        if (!ok)
            return;
    }

    if (m_minValue == -1 && m_maxValue == -1) {
        insert(QString(c));
    } else {
        QString candidate = selectedText() == shown ? QString() : shown;
        candidate.insert(std::min(cursorPosition(), candidate.length()), c);
        const int v = candidate.toInt();
        if (m_maxValue == -1 || v <= m_maxValue) {
            if (v < m_minValue && m_minValue < -1) {
                setText(QString::number(m_minValue));
                selectAll();
            } else {
                insert(QString(c));
            }
        } else {
            setText(QString::number(v < m_minValue ? m_minValue : m_maxValue));
            selectAll();
        }
    }

    if (m_numericOnly && !isPasswordEcho(m_echoMode) && !m_allowLeadingZero) {
        const QString now = QLineEdit::text();
        if (now.startsWith(QLatin1Char('0')) &&
            (now.length() > 1 || !(m_minValue < 1 && m_maxValue >= 0)))
            setText(now.mid(1));
    }
}

int CTavoInput::getProtocolLength() const
{
    const QString shown = QLineEdit::text();
    if (shown.startsWith(QLatin1String("sip:")))
        return 4;
    if (shown.startsWith(QLatin1String("h323:")))
        return 5;
    return 0;
}

bool CTavoInput::shouldShowBackspaceSk() const
{
    const int cursor = cursorPosition();
    if (cursor < 0 || m_hideBackspace)
        return false;
    if (m_useInlineBackspace) {
        if (m_inlineBackspaceHidesOnClear && QLineEdit::text().isEmpty())
            return false;
    } else if (cursor == 0) {
        return false;
    }
    if (m_mode != InputModeURL)
        return true;
    const QString shown = QLineEdit::text();
    if ((cursor == 4 && shown.startsWith(QLatin1String("sip:"))) ||
        (cursor == 5 && shown.startsWith(QLatin1String("h323:"))))
        return m_allowUrlPrefixEditing;
    return true;
}

void CTavoInput::showBackspaceButton(bool show)
{
    const int h = height();
    const int w = std::max(h + 10, m_backspaceMinWidth);
    const int bh = std::max(h - 6, m_backspaceMinHeight);
    guiLog(0, "adjustedFieldWidth=%d, adjustedFieldHeight=%d, m_backspaceMinWidth=%d, m_backspaceMinHeight=%d", w,
           bh, m_backspaceMinWidth, m_backspaceMinHeight);
    if (!show) {
        m_backspaceButton->setDown(false);
        m_backspaceButton->hide();
        return;
    }
    m_backspaceButton->setGeometry(width() - w, h / 2 - bh / 2, w, bh);
    setTextMargins(0, 0, w, 0);
    m_backspaceButton->show();
}

void CTavoInput::reportDialpadKeyEvent(int key, int eventType)
{
    if (eventType != QEvent::KeyPress && eventType != QEvent::KeyRelease)
        return;
    const QString uri = QString::fromLatin1(CTavoButtonDefs::getKeyUri(SoKeyFuncT(key)));
    const QString data = var(TxmlVarState) + QLatin1Char('=') +
                         var(eventType == QEvent::KeyPress ? TxmlVarPress : TxmlVarRelease);
    emit dialpadKeyEvent(uri, data);
}

void CTavoInput::setTextCursorBlinking(bool on)
{
    if (!on) {
        // A cursor key through the press handler shows the cursor and restarts
        // its blink; the cursor goes back to where it was. Qt 4 stopped the
        // blink there, Qt 5 does not: the hold keeps the blink timer's events
        // from QLineEdit's line control until blinking is turned on again.
        const int pos = cursorPosition();
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Left, Qt::NoModifier);
        QLineEdit::keyPressEvent(&press);
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Left, Qt::NoModifier);
        QLineEdit::keyPressEvent(&release);
        setCursorPosition(pos);
        if (!m_blinkHold) {
            QObject* control = nullptr;
            for (QObject* child : children()) {
                if (std::strcmp(child->metaObject()->className(), "QWidgetLineControl") == 0)
                    control = child;
            }
            if (control) {
                auto* hold = new BlinkHold(this);
                control->installEventFilter(hold);
                m_blinkHold = hold;
            } else {
                guiLog(1, "CTavoInput: no line control found, the cursor keeps blinking");
            }
        }
        if (m_blinkHold)
            static_cast<BlinkHold*>(m_blinkHold)->active = true;
    } else {
        if (m_blinkHold)
            static_cast<BlinkHold*>(m_blinkHold)->active = false;
        QFocusEvent focus(QEvent::FocusIn, Qt::FocusReason(0));
        QLineEdit::focusInEvent(&focus);
    }
}

bool CTavoInput::isCursorBlinkHeld() const
{
    return m_blinkHold && static_cast<BlinkHold*>(m_blinkHold)->active;
}

bool CTavoInput::handleMagnifierPointer(QMouseEvent* e)
{
    const bool leftHeld = e->type() == QEvent::MouseButtonPress ? e->button() == Qt::LeftButton
                                                                 : bool(e->buttons() & Qt::LeftButton);
    if (m_ignoreMagnifierEvents || !leftHeld || QLineEdit::text().isEmpty() || !m_magGlass ||
        !(m_magGlass->magFactor() > 0.0f)) {
        hideMagGlass();
        return QLineEdit::event(e);
    }
    const QPointF pos = e->localPos();
    m_magRawPos[0] = float(pos.x());
    m_magRawPos[1] = float(pos.y());
    bool overButton = false;
    if (m_backspaceButton->isVisible()) {
        const QRect around = m_backspaceButton->geometry().adjusted(-kBackspaceMargin, -kBackspaceMargin,
                                                                    kBackspaceMargin, kBackspaceMargin);
        overButton = around.contains(pos.toPoint());
    }
    if (!m_magGlass->isVisible() && !overButton) {
        m_magFilter.estimate = m_magFilter.lastEstimate = m_magRawPos[0];
        showMagGlass(pos.toPoint());
    }
    // The cursor follows the smoothed position, handed over before the real event.
    sendSyntheticMove(QPointF(int(m_magFilter.estimate), m_magRawPos[1]));
    return QLineEdit::event(e);
}

void CTavoInput::sendSyntheticMove(const QPointF& position)
{
    m_magPointerX = float(position.x());
    m_magPointerY = float(position.y());
    QMouseEvent move(QEvent::MouseMove, position, mapToGlobal(position.toPoint()), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QLineEdit::event(&move);
}

void CTavoInput::magnifierStep()
{
    if (!m_magGlass || !m_magGlass->isVisible())
        return;
    m_magFilter.addMeasurment(m_magRawPos[0]);
    const int x = int(m_magFilter.estimate);
    if (x != int(m_magPointerX) || m_magRawPos[1] != m_magPointerY) {
        sendSyntheticMove(QPointF(x, m_magRawPos[1]));
        m_magGlass->show(QPoint(x, int(m_magRawPos[1])));
    }
}

void CTavoInput::showMagGlass(const QPoint& pos)
{
    if (!m_magGlass)
        return;
    if (!m_magGlass->isVisible())
        setTextCursorBlinking(false);
    // Over the text only, not over the inline backspace button.
    if (m_backspaceButton->isVisible())
        m_magGlass->setClip(QRect(QPoint(0, 0), QPoint(m_backspaceButton->x() - 1, height())));
    else
        m_magGlass->setClip(QRect());
    m_magGlass->show(pos);
    m_magGlass->raise();
    if (m_magTimerId == -1)
        m_magTimerId = startTimer(kMagnifierStepMs);
}

void CTavoInput::hideMagGlass()
{
    if (m_magTimerId != -1) {
        killTimer(m_magTimerId);
        m_magTimerId = -1;
    }
    if (!m_magGlass || !m_magGlass->isVisible())
        return;
    m_magGlass->hide();
    // Only a glass that was up had stopped the blink.
    setTextCursorBlinking(true);
}

// ---------------------------------------------------------------------------
// Keys, focus and other events

bool CTavoInput::handleNavigationKey(SoKeyFuncT key, QEvent::Type type)
{
    const bool press = type == QEvent::KeyPress;
    const bool sideways = key == SoKeyArrowLeft || key == SoKeyArrowRight;
    if (m_ignoreNavigationKeys || m_preventEditingDefaultContents)
        return !QLineEdit::text().isEmpty() && sideways;

    if (m_mode == InputModeIP) {
        if (press) {
            if (key == SoKeyArrowDown || key == SoKeyArrowRight)
                selectNextIPField(1);
            else
                selectNextIPField(-1);
        }
        return true;
    }

    if (m_mode == InputModeNumericStep) {
        if (press) {
            const int n = text().toInt();
            bool changed = false;
            int next = n;
            if (key == SoKeyArrowDown && n != m_minValue) {
                next = m_minValue;
                changed = true;
            } else if (key == SoKeyArrowUp && n != m_maxValue) {
                next = m_maxValue;
                changed = true;
            } else if (key == SoKeyArrowLeft && !(m_minValue != -1 && n <= m_minValue)) {
                next = n - 1;
                changed = true;
            } else if (key == SoKeyArrowRight && !(m_maxValue != -1 && n >= m_maxValue)) {
                next = n + 1;
                changed = true;
            }
            if (changed) {
                setText(QString::number(next));
                selectAll();
                ctxKey(TxmlUriDone, 1);
            }
        }
        return true;
    }

    bool consumed = false;
    if (hasSelectedText()) {
        if (press && sideways) {
            if (m_echoMode == QLineEdit::PasswordEchoOnEdit) {
                m_defaultText.clear();
                setText(m_defaultText);
            }
            deselect();
            if (key == SoKeyArrowLeft)
                home(false);
            else
                end(true);
            ctxKey(TxmlUriReset, 1);
            consumed = true;
        }
    } else if (m_mode != InputModeTelNoNav && sideways) {
        if (press) {
            if (key == SoKeyArrowLeft)
                cursorBackward(false, 1);
            else
                cursorForward(false, 1);
        }
        consumed = true;
    }
    if (QLineEdit::text().isEmpty()) {
        if (key == SoKeyArrowLeft)
            consumed = false;
        else if (key == SoKeyArrowRight && m_rightKeyLeavesEmptyField)
            consumed = false;
    }
    return consumed;
}

void CTavoInput::handleSelectionKey()
{
    ctxKey(TxmlUriReset, 0);
    emit editDone(QString::fromLatin1(CTXMLUriLib::uri(TxmlUriDone)), text());
}

bool CTavoInput::dispatchKey(QKeyEvent* e)
{
    const SoKeyFuncT k = CTavoButtonDefs::getSoKey(e);
    const bool press = e->type() == QEvent::KeyPress;
    const bool useKate = m_useKateInput || (e->modifiers() & Qt::KeypadModifier);
    const QString lockUri = QString::fromLatin1(CTXMLUriLib::uri(TxmlUriLockEdit));

    if (k >= SoKeyArrowDown && k <= SoKeyArrowUp)
        return handleNavigationKey(k, e->type());

    if (k == SoKeyDelete)
        return !m_ignoreDeleteKey;

    if (k == SoKeySelect) {
        if (m_ignoreNavigationKeys || m_ignoreSelectKey || m_preventEditingDefaultContents)
            return false;
        if (!press)
            return true;
        emit returnPressed();
        handleSelectionKey();
        if (parentWidget() && !(isVisible() && QApplication::focusWidget() == this))
            parentWidget()->setFocus();
        return true;
    }

    if (k >= SoKeyDialpad0 && k <= SoKeyDialpadPound) {
        const bool star = k == SoKeyDialpadStar;
        if (!press) {
            if (m_reportDialpadKeys && !(star && useKate))
                reportDialpadKeyEvent(k, e->type());
        } else if ((star || k == SoKeyDialpadPound) && m_ignorePundStarKeys) {
            const bool telMode = m_mode == InputModeTel || m_mode == InputModeTelNoNav;
            const bool stripShown = m_kate && m_kate->isVisible();
            if (m_reportDialpadKeys && (!telMode || !stripShown))
                reportDialpadKeyEvent(k, e->type());
            hideMagGlass();
            if (m_lockScreenField)
                emit editDone(lockUri, text());
            return false;
        } else {
            // A field without a strip takes the key's text as it is.
            if (useKate && m_kate) {
                m_kate->handleKeyEvent(k - SoKeyDialpad0, true);
            } else {
                const QString typed = e->text();
                for (const QChar c : typed)
                    onEntered(c, false);
            }
            if (m_reportDialpadKeys && !(star && useKate))
                reportDialpadKeyEvent(k, e->type());
        }
        hideMagGlass();
        if (m_lockScreenField)
            emit editDone(lockUri, text());
        return true;
    }

    if (k == SoKeyUnknown) {
        if (!press || e->text().isEmpty()) {
            hideMagGlass();
            return QLineEdit::event(e);
        }
        if (m_lockScreenField)
            emit editDone(lockUri, text());
        if (m_reportDialpadKeys)
            reportDialpadKeyEvent(SoKeyDialpad0, QEvent::KeyPress);
        if (m_numericOnly && m_mode == InputModeNumeric && e->text() == QLatin1String("+"))
            return true;
        hideMagGlass();
        return QLineEdit::event(e);
    }

    if (press && m_numericOnly) {
        static const char* const punctuation[] = {" ", "-", "+", ",", "."};
        for (const char* p : punctuation) {
            if (e->text() == QLatin1String(p)) {
                for (const QChar c : e->text())
                    onEntered(c, false);
                return true;
            }
        }
    }
    hideMagGlass();
    return QLineEdit::event(e);
}

void CTavoInput::handleFocus(bool in, Qt::FocusReason reason)
{
    if (!in) {
        if (reason == Qt::ActiveWindowFocusReason)
            return;
        if (m_encoding == InputEncodingUnicode) {
            QInputMethodEvent commit;
            commit.setCommitString(QString());
            QApplication::sendEvent(this, &commit);
        }
        // Predictive entry in mode 10 is deactivated and its strip hidden once it exists.
        const int start = selectionStart();
        const int length = selectedText().length();
        clearFocus();
        if (start >= 0)
            setSelection(start, length);
        // Deliberate: an IPv4 field that lost focus has no mode name until the
        // next setMode, and pads nothing in text().
        if (m_mode == InputModeIP)
            m_mode = InputModeCount;
        emit modeAndEncodingIdentifierUpdated(QString());
        // A pending multi-tap candidate settles and its strip goes with the focus.
        if (m_kate)
            m_kate->onTimeout();
        ctxKey(TxmlUriDone, 0);
        ctxKey(TxmlUriEncoding, 0);
        ctxKey(TxmlUriBackspace, 0);
        ctxKey(TxmlUriToggleEditMode, 0);
        ctxKey(TxmlUriReset, 0);
        if (m_useInlineBackspace)
            showBackspaceButton(shouldShowBackspaceSk());
        else
            m_backspaceButton->hide();
        hideMagGlass();
        return;
    }

    if (reason != Qt::ActiveWindowFocusReason) {
        if (m_mode == InputModeIP) {
            m_ipField = 0;
            selectNextIPField(0);
        } else if (m_autoSelect && reason != Qt::OtherFocusReason) {
            selectAll();
        }
    }
    ctxKey(TxmlUriDone, 1);
    ctxKey(TxmlUriReset, 1);
    showBackspaceKey();
    if (isAlphabeticalEditMode())
        ctxKey(TxmlUriToggleEditMode, 1);
    setFocus(Qt::PopupFocusReason);
    m_pFocusedInput = this;
    onModeAndEncodingChanged();
}

bool CTavoInput::event(QEvent* e)
{
    if (!e)
        return false;
    // Gestures, touch and the rest of Qt's later events are QLineEdit's.
    if (e->type() > QEvent::InputMethod)
        return QLineEdit::event(e);

    switch (e->type()) {
    case QEvent::Timer:
        if (static_cast<QTimerEvent*>(e)->timerId() == m_magTimerId && m_magTimerId != -1)
            magnifierStep();
        return QLineEdit::event(e);
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
        if (m_preventEditingDefaultContents)
            return true;
        return handleMagnifierPointer(static_cast<QMouseEvent*>(e));
    case QEvent::MouseButtonRelease:
    case QEvent::Leave:
        hideMagGlass();
        return QLineEdit::event(e);
    case QEvent::KeyPress: {
        auto* key = static_cast<QKeyEvent*>(e);
        if (key->key() == Qt::Key_Backspace) {
            guiLog(3, "CTavoInput::event:Key_Backspace m_comingFromShiftKey: %d", int(m_comingFromShiftKey));
            if (m_comingFromShiftKey) {
                m_comingFromShiftKey = false;
                return true;
            }
            onBackspaceKeyEvent();
            return true;
        }
        return dispatchKey(key);
    }
    case QEvent::KeyRelease:
        return dispatchKey(static_cast<QKeyEvent*>(e));
    case QEvent::FocusIn:
        m_idleTimer.start();
        handleFocus(true, static_cast<QFocusEvent*>(e)->reason());
        if (!m_autoSelect)
            setTextCursorBlinking(true);
        return true;
    case QEvent::FocusOut:
        handleFocus(false, static_cast<QFocusEvent*>(e)->reason());
        hideMagGlass();
        return QLineEdit::event(e);
    case QEvent::Show:
        m_idleTimer.start();
        handleFocus(true, Qt::OtherFocusReason);
        setTextCursorBlinking(true);
        return true;
    case QEvent::Hide:
        handleFocus(false, Qt::OtherFocusReason);
        // A pending multi-tap candidate is settled before the field goes.
        if (m_kate)
            m_kate->onTimeout();
        hideMagGlass();
        return QLineEdit::event(e);
    case QEvent::InputMethod: {
        auto* ime = static_cast<QInputMethodEvent*>(e);
        const QString preedit = ime->preeditString();
        if (!preedit.isEmpty()) {
            if (m_useInlineBackspace)
                showBackspaceButton(true);
            else
                ctxKey(TxmlUriBackspace, 1);
        } else {
            showBackspaceKey();
        }
        if (text().isEmpty() && preedit != m_preeditText) {
            m_preeditText = preedit;
            emit textPreedited(m_preeditText);
        }
        return QLineEdit::event(e);
    }
    default:
        return QLineEdit::event(e);
    }
}

void CTavoInput::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    if (!m_useInlineBackspace)
        return;
    const int h = height();
    m_backspaceButton->setGeometry(width() - (h + 10), 3, h + 10, h - 6);
    setTextMargins(0, 0, h + 10, 0);
}

void CTavoInput::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("qt_edit_menu"));
    menu.setStyleSheet(QStringLiteral("QMenu { selection-color:white;} \nQMenu::item:selected { background-color: black; }"));
    auto icon = [](int number) {
        const QPixmap* pixmap = getIconPixmap(number);
        return pixmap ? QIcon(*pixmap) : QIcon();
    };
    QAction* cutAction = menu.addAction(icon(149), QStringLiteral("\tCTRL+X"), this, &QLineEdit::cut);
    QAction* copyAction = menu.addAction(icon(150), QStringLiteral("\tCTRL+C"), this, &QLineEdit::copy);
    QAction* pasteAction = menu.addAction(icon(151), QStringLiteral("\tCTRL+V"), this, &QLineEdit::paste);
    const bool writable = !isReadOnly();
    cutAction->setEnabled(writable && hasSelectedText());
    copyAction->setEnabled(hasSelectedText());
    const QClipboard* clipboard = QApplication::clipboard();
    pasteAction->setEnabled(writable && clipboard && !clipboard->text().isEmpty());
    // Qt 4's input context added its own actions here; Qt 5 has none to add.
    menu.exec(event->globalPos());
}

void CTavoInput::report(QList<QObject*>& done, QDomNode& parent)
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    if (done.lastIndexOf(this) >= 0 || parent.isNull() || !isVisible() || pos() == QPoint(-9999, -9999))
        return;
    // A real widget with no report document of its own: the element is made in the report's.
    using UITA::CTavoUITA;
    QDomElement element = parent.ownerDocument().createElement(CTavoUITA::name(UITA::Component));
    element.setAttribute(CTavoUITA::name(UITA::Type), QString::fromLatin1(metaObject()->className()));
    element.setAttribute(CTavoUITA::name(UITA::Size), QStringLiteral("%1x%2").arg(width()).arg(height()));
    const QPoint global = mapToGlobal(QPoint(0, 0));
    element.setAttribute(CTavoUITA::name(UITA::Pos), QStringLiteral("%1:%2").arg(global.x()).arg(global.y()));
    if (!objectName().isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::Name), objectName());
    if (hasFocus())
        element.setAttribute(CTavoUITA::name(UITA::Focused), QStringLiteral("true"));
    if (!isEnabled())
        element.setAttribute(CTavoUITA::name(UITA::Enabled), QStringLiteral("false"));
    element.setAttribute(CTavoUITA::name(UITA::Visible), QStringLiteral("true"));
    parent.appendChild(element);
    done.append(this);
}
