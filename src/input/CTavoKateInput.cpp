#include "input/CTavoKateInput.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>
#include <cstring>

#include "input/CTavoKateChar.h"
#include "input/CTavoKateMap.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoButtonDefs.h"

const char* const CTavoKateInput::ATTRIBUTE_KATE_CHAR_WIDTH = "kate-char-width";
const char* const CTavoKateInput::ATTRIBUTE_KATE_CHAR_HEIGHT = "kate-char-height";

namespace {
const char* const kModeNames[] = {"Abc", "abc", "ABC", "123", "IP", "URL", "123T",
                                  "Tel", "TelNoNav", "Hex", "XT9 PinYin", "IPv6", "123*"};
const int kModeCount = int(sizeof kModeNames / sizeof kModeNames[0]);
const char* const kEncodingNames[] = {"ASCII", "Latin", "Cyrillic", "Katakana", "Unicode"};
const int kEncodingCount = int(sizeof kEncodingNames / sizeof kEncodingNames[0]);
const int kDefaultCharSize = 24;

// The strings of the fixed keymap of a mode, or null for the letters and the dial map.
QString* fixedKeymap(InputModeT mode)
{
    switch (mode) {
    case InputModeNumeric:
        return CTavoKateMap::digitKeys();
    case InputModeIP:
        return CTavoKateMap::ipKeys();
    case InputModeURL:
        return CTavoKateMap::urlKeys();
    case InputModeNumericStep:
        return CTavoKateMap::steppedKeys();
    case InputModeHex:
    case InputModeIPv6:
        return CTavoKateMap::hexKeys();
    case InputModeNumericStar:
        return CTavoKateMap::starDigitKeys();
    default:
        return nullptr;
    }
}

// A code point that may stand alone in a text.
bool isCharacter(uint code)
{
    return code != 0 && !(code >= 0xD800 && code <= 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
}
}  // namespace

CTavoKateInput::CTavoKateInput(QWidget* parent, bool useInputMethod, QWidget* target)
    : CTavoLayoutWidget(parent)
    , m_currentKey(-1)
    , m_focusedChar(nullptr)
    , m_timer(new QTimer(this))
    , m_candidateIndex(0)
    , m_mode(InputModeCapitalised)
    , m_upperCase(false)
    , m_useInputMethod(useInputMethod)
    , m_encoding(InputEncodingASCII)
    , m_unicodeCount(0)
    , m_target(target)
    , m_activated(false)
    , m_charWidth(kDefaultCharSize)
    , m_charHeight(kDefaultCharSize)
{
    std::memset(m_unicodeBuffer, 0, sizeof m_unicodeBuffer);
    // Made once: no candidate string can ask for more.
    for (int i = 0; i < CellCount; ++i) {
        m_cells[i] = new CTavoKateChar(this);
        m_cells[i]->setVisible(false);
    }
    m_timer->setSingleShot(true);
    m_timer->setInterval(TimeoutMs);
    connect(m_timer, &QTimer::timeout, this, &CTavoKateInput::onTimeout);
    // Shown only by its owner, next to the cursor.
    QWidget::hide();
}

CTavoKateChar* CTavoKateInput::cell(int index) const
{
    return index >= 0 && index < CellCount ? m_cells[index] : nullptr;
}

void CTavoKateInput::activate()
{
    if (m_activated)
        return;
    m_activated = true;
    CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    CTavoStyleSheetFile* skin = mgr ? mgr->styleSheetFile() : nullptr;
    const QString name = objectName();
    if (!skin || !skin->get(name)) {
        guiLog(4, "Tring to activate the Kate input widget but it's not styled");
        return;
    }
    QString style = skin->getStyle(name);
    QString attributes = skin->getAttributes(name);
    updateStyle(style, attributes, true);
}

void CTavoKateInput::layout()
{
    CTavoLayoutWidget::layout();
    m_charWidth = kDefaultCharSize;
    m_charHeight = kDefaultCharSize;
    if (CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState)) {
        m_charWidth = int(style->UInt(QLatin1String(ATTRIBUTE_KATE_CHAR_WIDTH), kDefaultCharSize));
        m_charHeight = int(style->UInt(QLatin1String(ATTRIBUTE_KATE_CHAR_HEIGHT), kDefaultCharSize));
    }
    layoutCells();
}

void CTavoKateInput::layoutCells()
{
    const int n = qMin(m_candidates.length(), int(CellCount));
    for (int i = 0; i < CellCount; ++i) {
        CTavoKateChar* cell = m_cells[i];
        if (i < n) {
            cell->setgeo(QRect(i * m_charWidth, 0, m_charWidth, m_charHeight));
            cell->setTextRect(cell->rect().adjusted(1, 1, -1, -1));
            cell->setChar(m_candidates.at(i));
            cell->setVisible(true);
        } else {
            cell->setVisible(false);
        }
    }
    if (n > 0)
        setFixedSize(n * m_charWidth, m_charHeight);
}

void CTavoKateInput::initmap()
{
    for (CTavoKateChar* cell : m_cells)
        cell->setFocused(false);
    m_focusedChar = nullptr;
    layoutCells();
    m_candidateIndex = 0;
}

bool CTavoKateInput::handleKeyEvent(int key, bool pressed)
{
    if (!m_activated)
        activate();
    if (key > 11)
        return false;
    if (!pressed)
        return true;

    // A key below 0 (a non-dial-pad key fed by hand) is outside the keymap like
    // an empty one: it restarts the time-out and steps a pending mark below.
    const bool inKeymap = key >= 0 && key < m_keymap.size() && !m_keymap.at(key).isEmpty();
    if (key != m_currentKey && inKeymap) {
        if (m_focusedChar && (m_encoding == InputEncodingUnicode || m_useInputMethod)) {
            // The other key settles the pending character first.
            const QChar settled = m_focusedChar->character();
            simulateInput(settled, false);
            m_currentKey = -1;
            m_focusedChar->setFocused(false);
            m_focusedChar = nullptr;
            m_timer->stop();
            emit showme(this, false);
        }
        const QString candidates = m_keymap.at(key).left(CellCount);
        if (candidates.length() >= 2) {
            m_currentKey = key;
            m_candidates = candidates;
            initmap();
            markChar(0);
            m_timer->start(TimeoutMs);
            emit showme(this, true);
        } else if (candidates.length() == 1) {
            // A key with one candidate types it at once: no strip, no timer.
            simulateInput(candidates.at(0), false);
        }
        update();
        return true;
    }

    // The same key again, or a key without candidates: the mark steps on.
    m_timer->start(TimeoutMs);
    markChar(-1);
    return true;
}

void CTavoKateInput::markChar(int index)
{
    const int n = qMin(m_candidates.length(), int(CellCount));
    if (m_currentKey < 0 || n == 0)
        return;
    int next = index;
    if (index < 0)
        next = m_candidateIndex + 1 >= n ? 0 : m_candidateIndex + 1;
    if (next >= n) {
        guiLog(2, "CTavoKateInput::markChar: no candidate %d of %d", next, n);
        return;
    }
    CTavoKateChar* cell = m_cells[next];
    cell->setFocused(true);
    cell->update();
    if (m_focusedChar && m_focusedChar != cell) {
        m_focusedChar->setFocused(false);
        m_focusedChar->update();
    }
    m_focusedChar = cell;
    m_candidateIndex = next;
    const bool attempt = m_useInputMethod || index < 0 || m_encoding == InputEncodingUnicode;
    simulateInput(cell->character(), attempt);
}

void CTavoKateInput::simulateInput(QChar c, bool attempt)
{
    if (m_encoding == InputEncodingUnicode) {
        handleUnicodeEditing(c, attempt);
        return;
    }
    clearUnicodeContext();
    if (!m_useInputMethod)
        emit entered(c, attempt);
    else
        sendInputMethodEvent(QString(c), attempt);
}

void CTavoKateInput::sendInputMethodEvent(const QString& text, bool preedit)
{
    QWidget* receiver = m_target ? m_target : QApplication::focusWidget();
    if (!receiver)
        return;
    if (preedit) {
        QInputMethodEvent event(text, QList<QInputMethodEvent::Attribute>());
        QApplication::sendEvent(receiver, &event);
    } else {
        QInputMethodEvent event;
        event.setCommitString(text);
        QApplication::sendEvent(receiver, &event);
    }
}

void CTavoKateInput::forgetKey()
{
    if (m_focusedChar) {
        m_focusedChar->setFocused(false);
        m_focusedChar = nullptr;
    }
    m_currentKey = -1;
}

void CTavoKateInput::onTimeout()
{
    if (!m_focusedChar || !isVisible())
        return;
    const QChar marked = m_focusedChar->character();
    if (m_mode == InputModeTel || m_mode == InputModeTelNoNav)
        emit TimeOutEvent(marked);
    // Without the input method the character already stands in the field.
    if (m_useInputMethod || m_encoding == InputEncodingUnicode)
        simulateInput(marked, false);
    forgetKey();
    emit showme(this, false);
}

bool CTavoKateInput::event(QEvent* e)
{
    if (e && e->type() == QEvent::Hide) {
        m_timer->stop();
        forgetKey();
    }
    return CTavoLayoutWidget::event(e);
}

void CTavoKateInput::loadKeymap(QString* twelveStrings)
{
    m_keymap.clear();
    if (!twelveStrings) {
        guiLog(3, "CTavoKateInput::loadKeymap: no keymap");
        return;
    }
    m_keymap.reserve(CTavoKateMap::KeyCount);
    for (int i = 0; i < CTavoKateMap::KeyCount; ++i)
        m_keymap.append(twelveStrings[i]);
}

void CTavoKateInput::updateKeymapAsPerIntlPrefix()
{
    loadKeymap(CTavoKateMap::dialMap().lower);
}

void CTavoKateInput::onModeSelected(InputModeT mode)
{
    m_upperCase = false;
    if (mode != m_mode)
        clearUnicodeContext();
    CTavoKateMap& letters = CTavoKateMap::alphanumericMap();
    switch (mode) {
    case InputModeCapitalised:
    case InputModeUpper:
        loadKeymap(letters.upper);
        m_upperCase = true;
        break;
    case InputModeTel:
    case InputModeTelNoNav:
        loadKeymap(CTavoKateMap::dialMap().lower);
        m_encoding = InputEncodingNone;
        break;
    default:
        if (QString* fixed = fixedKeymap(mode)) {
            loadKeymap(fixed);
            m_encoding = InputEncodingNone;
        } else {
            // "abc", predictive entry and any unknown mode.
            loadKeymap(letters.lower);
        }
        break;
    }
    m_mode = mode;
    emit ModeChanged(mode);
}

void CTavoKateInput::onModeSelected(QString name)
{
    const InputModeT mode = getInputMode(name);
    if (mode == InputModeCount)
        return;
    onModeSelected(mode);
}

void CTavoKateInput::onModeSelected(const char* name)
{
    onModeSelected(QString::fromUtf8(name ? name : ""));
}

void CTavoKateInput::onEncodingSelected(InputEncodingT encoding)
{
    // An unknown number takes the ASCII letters but is kept as the encoding.
    if (encoding < InputEncodingASCII || encoding > InputEncodingNone)
        guiLog(2, "CTavoKateInput: encoding %d unknown, using the ASCII letters", int(encoding));
    CTavoKateMap& letters = CTavoKateMap::alphanumericMap();
    switch (encoding) {
    case InputEncodingLatin:
        letters.setAlphanumeric(&CTavoKateMap::latinCharacters, QStringLiteral("english"));
        break;
    case InputEncodingCyrillic:
        letters.setAlphanumeric(&CTavoKateMap::cyrillicCharacters, QStringLiteral("english"));
        break;
    case InputEncodingKatakana:
        letters.setAlphanumeric(&CTavoKateMap::katakanaCharacters, QStringLiteral("english"));
        break;
    case InputEncodingUnicode:
        if (m_encoding == InputEncodingUnicode) {
            loadKeymap(m_upperCase ? letters.upper : letters.lower);
            return;
        }
        m_unicodeCount = 0;
        letters.setAlphanumeric(&CTavoKateMap::unicodeCharacters, QStringLiteral("english"));
        break;
    case InputEncodingNone:
        break;
    default:
        letters.setAlphanumeric(CTavoKateMap::alphanumericKeys(), QStringLiteral("english"));
        break;
    }
    if (encoding != m_encoding) {
        clearUnicodeContext();
        m_encoding = encoding;
        m_currentKey = -1;
        emit showme(this, false);
    }
    loadKeymap(m_upperCase ? letters.upper : letters.lower);
}

void CTavoKateInput::onEncodingSelected(QString name)
{
    const InputEncodingT encoding = getInputEncoding(name);
    if (encoding == InputEncodingNone)
        return;
    onEncodingSelected(encoding);
}

void CTavoKateInput::onEncodingSelected(const char* name)
{
    onEncodingSelected(QString::fromUtf8(name ? name : ""));
}

void CTavoKateInput::onInputKeyEventReceived(QKeyEvent* pEvent)
{
    if (!pEvent || (pEvent->type() != QEvent::KeyPress && pEvent->type() != QEvent::KeyRelease))
        return;
    const bool pressed = pEvent->type() == QEvent::KeyPress;
    const SoKeyFuncT key = CTavoButtonDefs::getSoKey(pEvent);
    if (key != SoKeyDelete) {
        handleKeyEvent(int(key) - SoKeyDialpad0, pressed);
        return;
    }
    if (pressed) {
        forgetKey();
        emit showme(this, false);
        hide();
    }
}

void CTavoKateInput::resetUnicodeBuffer()
{
    std::memset(m_unicodeBuffer, 0, sizeof m_unicodeBuffer);
    m_unicodeCount = 0;
}

void CTavoKateInput::handleUnicodeEditing(QChar c, bool attempt)
{
    if (m_unicodeCount > 4 || m_unicodeCount < 0)
        resetUnicodeBuffer();
    m_unicodeBuffer[m_unicodeCount] = c.unicode() < 0x100 ? char(c.unicode()) : '\0';
    if (!attempt)
        ++m_unicodeCount;
    if (m_unicodeCount == 4) {
        bool ok = false;
        const uint code = QString::fromLatin1(m_unicodeBuffer).toUInt(&ok, 16);
        resetUnicodeBuffer();
        if (ok && isCharacter(code)) {
            sendInputMethodEvent(QString(QChar(ushort(code))), false);
        } else {
            guiLog(2, "CTavoKateInput: no character for the code point typed");
            sendInputMethodEvent(QString(), false);
        }
        return;
    }
    sendInputMethodEvent(QString::fromLatin1(m_unicodeBuffer), true);
}

void CTavoKateInput::clearUnicodeContext()
{
    if (m_unicodeCount >= 1 && m_unicodeBuffer[0] != '\0') {
        sendInputMethodEvent(QString(), false);
        resetUnicodeBuffer();
    }
}

void CTavoKateInput::onDeleteUnicodeChar()
{
    const int length = int(qstrnlen(m_unicodeBuffer, sizeof m_unicodeBuffer));
    if (length > 0) {
        m_unicodeBuffer[length - 1] = '\0';
        m_unicodeCount = qMin(length - 1, 3);
        sendInputMethodEvent(QString::fromLatin1(m_unicodeBuffer), true);
        forgetKey();
        m_timer->stop();
        emit showme(this, false);
        return;
    }
    if (!m_useInputMethod) {
        if (auto* edit = qobject_cast<QLineEdit*>(m_target))
            edit->QLineEdit::backspace();
    }
}

bool CTavoKateInput::isTimerRunning() const
{
    return m_timer->isActive();
}

QChar CTavoKateInput::getCurrentlyFocusedCharacter()
{
    return m_focusedChar ? m_focusedChar->character() : QChar();
}

InputModeT CTavoKateInput::getInputMode(const QString& name)
{
    for (int i = 0; i < kModeCount; ++i) {
        if (name == QLatin1String(kModeNames[i]))
            return InputModeT(i);
    }
    return InputModeCount;
}

QString CTavoKateInput::getInputMode(InputModeT mode)
{
    return mode >= 0 && mode < kModeCount ? QString::fromLatin1(kModeNames[mode]) : QString();
}

InputEncodingT CTavoKateInput::getInputEncoding(const QString& name)
{
    for (int i = 0; i < kEncodingCount; ++i) {
        if (name == QLatin1String(kEncodingNames[i]))
            return InputEncodingT(i);
    }
    return InputEncodingNone;
}

bool CTavoKateInput::isMultiCharacter(int key)
{
    if (key < 0 || key >= CTavoKateMap::KeyCount)
        return false;
    return CTavoKateMap::dialMap().lower[key].length() >= 2;
}

int CTavoKateInput::getSimulateKeyFromChar(QString& text, InputModeT mode)
{
    if (text.isEmpty())
        return -1;
    const QString* table = nullptr;
    if (mode == InputModeTel || mode == InputModeTelNoNav)
        table = CTavoKateMap::dialMap().lower;
    else if (QString* fixed = fixedKeymap(mode))
        table = fixed;
    else
        table = CTavoKateMap::alphanumericKeys();
    for (int i = 0; i < CTavoKateMap::KeyCount; ++i) {
        if (table[i].contains(text, Qt::CaseInsensitive))
            return i;
    }
    return -1;
}

QString CTavoKateInput::encodingCharacters(InputEncodingT encoding)
{
    encodedCharactersT* table = nullptr;
    switch (encoding) {
    case InputEncodingLatin:
        table = &CTavoKateMap::latinCharacters;
        break;
    case InputEncodingCyrillic:
        table = &CTavoKateMap::cyrillicCharacters;
        break;
    case InputEncodingKatakana:
        table = &CTavoKateMap::katakanaCharacters;
        break;
    case InputEncodingUnicode:
        return QStringLiteral("0123456789ABCDEF");
    default:
        return QString();
    }
    QString all;
    for (int i = 0; i < CTavoKateMap::KeyCount; ++i)
        all += QString::fromUtf8((*table)[i], int(qstrnlen((*table)[i], sizeof((*table)[i]))));
    return all;
}
