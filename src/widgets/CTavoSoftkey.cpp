#include "widgets/CTavoSoftkey.h"

#include <QFontInfo>
#include <QMouseEvent>
#include <QPropertyAnimation>
#include <cstring>

#include "CTXMLUriLib.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoVarList.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "style/TavoProfile.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoPageView.h"

const char* const CTavoSoftkey::ATTRIBUTE_UI_ANALYTICS_ENABLED = "ui-analytics-enabled";

namespace details {
bool isMoreSk(const CTXMLSoftkey& key)
{
    return std::strcmp(key.url, CTXMLUriLib::uri(TxmlUriMore)) == 0;
}

void removeItemWithUri(QList<QPair<QString, QString>>& list, const QString& uri)
{
    for (int i = list.size() - 1; i >= 0; --i)
        if (list.at(i).second == uri)
            list.removeAt(i);
}
}  // namespace details

namespace {

QString uriText(int uri)
{
    return QString::fromLatin1(CTXMLUriLib::uri(TxmlUriType_T(uri)));
}

bool isCtxKey(const CTXMLSoftkey& key)
{
    return key.type == CTXMLSoftkey::SoftkeyContextSensitive;
}

bool keyHasUrl(const CTXMLSoftkey& key, const QByteArray& url)
{
    return std::strcmp(key.url, url.constData()) == 0 || std::strcmp(key.url2, url.constData()) == 0
        || std::strcmp(key.url3, url.constData()) == 0;
}

// Entries of a ";" list; an empty text has none.
QStringList entries(const QString& text)
{
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char(';'));
}

bool validationFlag()
{
    CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    return mgr && mgr->lockScreenDimming();
}

// The icon a flyout entry gets by its URL: exact rows first, then the rows
// matched by their beginning. -1 keeps the icon the entry has.
struct IconRowT {
    const char* url;
    int icon;
};
const IconRowT kExactIcons[] = {
    {"Action::PlaceaCall", 340}, {"directory", 28}, {"recent", 27}, {"calendar", 206},
    {"content", 339}, {"stopHdmiContent", 339}, {"voicemail", 341}, {"layout", 357},
    {"softwareupdate", 242}, {"callscreen", 344}, {"settings", 347}, {"daisychain", 451},
    {"bluetoothUserSettings", 348}, {"cameraControlEnable", 415}, {"startRecording", 362},
    {"stopRecording", 364}, {"pauseRecording", 361}, {"resumeRecording", 363},
    {"AlexaHamburgerSettings", 499},
};
const IconRowT kPrefixIcons[] = {
    {"softkey:3489-", 357}, {"softkey:1046-", 412}, {"softkey:2546-", 336}, {"softkey:2547-", 336},
    {"softkey:1148-", 337}, {"softkey:1149-", 337}, {"softkey:2580-", 338}, {"softkey:11-", 338},
    {"softkey:410-", 319}, {"softkey:29-", 351}, {"softkey:31-", 358}, {"softkey:1619-", 359},
    {"softkey:785-", 346}, {"softkey:539-", 346}, {"softkey:3692-", 96}, {"softkey:3693-", 93},
    {"softkey:3891-", 344}, {"softkey:140-", 410}, {"softkey:251-", 410}, {"softkey:3700-", 410},
    {"softkey:136-", 411}, {"softkey:1006-", 517}, {"softkey:1007-", 517}, {"softkey:1008-", 517},
};

int iconForUrl(const char* url, bool onHome, bool selfView, bool videoMute)
{
    if (std::strcmp(url, "home") == 0)
        return onHome ? 407 : 267;
    if (std::strcmp(url, "selfview") == 0)
        return selfView ? 416 : 417;
    if (std::strcmp(url, "videomute") == 0)
        return videoMute ? 346 : 345;
    for (const IconRowT& row : kExactIcons)
        if (std::strcmp(url, row.url) == 0)
            return row.icon;
    for (const IconRowT& row : kPrefixIcons)
        if (std::strncmp(url, row.url, std::strlen(row.url)) == 0)
            return row.icon;
    return -1;
}

int pixelSizeOf(const CTavoLabelWidget* label)
{
    if (label->currentPixelSize() > 0)
        return label->currentPixelSize();
    const QFont& font = label->font();
    return font.pixelSize() > 0 ? font.pixelSize() : QFontInfo(font).pixelSize();
}

void addDivider(CTXMLFlyoutCluster& cluster)
{
    cluster.add("GROUPDIV", "GROUPDIV", "GROUPDIV", nullptr, true, "GROUPDIV", false, false, "GROUPDIV");
}

}  // namespace

CTavoSoftkey::CTavoSoftkey(QWidget* parent)
    : CTavoLayoutWidget(parent)
    , m_pageView(new CTavoPageView(this))
    , m_badge(new CTavoLabelWidget(this))
    , m_openFlyoutKey(-1)
    , m_renderMoreSk(true)
    , m_putMoreAtPageEnd(false)
    , m_renderMoreAsFlyout(false)
    , m_mirroringActive(false)
    , m_numVoicemailMessages(0)
    , m_voicemailLocation(1)
    , m_isMrPaired(false)
    , m_mrDisplays(0)
    , m_isInCall(false)
    , m_isSoftwareUpdateAvailable(false)
    , m_isCalendarEnabled(false)
    , m_numActiveCalls(0)
    , m_isUsbCall(false)
    , m_isPttCall(false)
    , m_shouldShowStopHdmiContent(false)
    , m_videoMute(false)
    , m_videoUnmuteAllowed(true)
    , m_selfViewEnabled(false)
    , m_selfViewControlOption(5)
    , m_isPhoneLocked(false)
    , m_isPhoneLockedByUser(false)
    , m_isRecentCallsEnabled(true)
    , m_isDirectoryEnabled(true)
    , m_isContactsEnabled(true)
    , m_isLyncDirectoryOverride(true)
    , m_isCorporateDirectoryEnabled(true)
    , m_isSettingsEnabled(true)
    , m_isBluetoothEnabled(true)
    , m_isAlexaEnabled(false)
    , m_canStartRecording(false)
    , m_canStopRecording(false)
    , m_canPauseRecording(false)
    , m_canResumeRecording(false)
    , m_cameraControlEnable(false)
    , m_shouldShowCamera(true)
    , m_shouldShowLayoutWhileInCall(true)
    , m_isInOOBMode(false)
    , m_showDaisyChainIndicator(false)
    , m_uniqueLabelIds(false)
    , m_flyoutMode(0)
    , m_layoutType(SoftkeyLayoutDefault)
    , m_forceHidden(false)
    , m_contentMenuVisible(true)
    , m_dragged(false)
    , m_iconsInverted(false)
    , m_analyticsEnabled(false)
    , m_timerConnected(false)
{
    m_pageView->setObjectName(QStringLiteral("softkey-pageview"));
    m_badge->setObjectName(QStringLiteral("softkey-badge"));
    m_badge->setVisible(false);
    m_visibilityTimer.setSingleShot(true);
    m_visibilityTimer.setInterval(50);
}

CTavoSoftkey::~CTavoSoftkey() = default;

template <typename T> void CTavoSoftkey::store(T& field, const T& value)
{
    if (field == value)
        return;
    field = value;
    emit softkeyChanged();
}

// --- style -------------------------------------------------------------------

void CTavoSoftkey::layout()
{
    CTavoLayoutWidget::layout();
    CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState);
    if (style) {
        const QSize size = style->Size(QStringLiteral("size"), QSize(-1, -1));
        if (size != QSize(-1, -1) && size != this->size())
            resize(size);
        const QPoint location = style->Location(QStringLiteral("location"), QPoint(0, 0));
        if (location != pos())
            move(location);
        m_renderMoreSk = style->Bool(QStringLiteral("render-more-sk"), true);
        m_putMoreAtPageEnd = style->Bool(QStringLiteral("put-more-sk-at-page-end"), false);
        m_renderMoreAsFlyout = style->Bool(QStringLiteral("render-more-as-flyout"), false);
        m_iconsInverted = style->Bool(QStringLiteral("icons-inverted"), false);
        m_uniqueLabelIds = style->Bool(QStringLiteral("unique-label-ids"), false);
        m_analyticsEnabled = style->Bool(QString::fromLatin1(ATTRIBUTE_UI_ANALYTICS_ENABLED), false);
        m_permanent.clear();
        const QString permanent = style->String(QStringLiteral("permanent-softkeys"), QString());
        for (const QString& entry : permanent.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const int eq = entry.indexOf(QLatin1Char('='));
            if (eq < 0) {
                guiLog(3, "CTavoSoftkey: permanent softkey '%s' has no uri", qPrintable(entry));
                continue;
            }
            m_permanent.append(qMakePair(entry.left(eq).trimmed(), entry.mid(eq + 1).trimmed()));
        }
    }
    m_badge->layout();
    m_pageView->format(Qt::Horizontal, -1);
}

void CTavoSoftkey::Hide(bool bForceAnimation)
{
    m_visibilityTimer.stop();
    CTavoLayoutWidget::Hide(bForceAnimation);
}

int CTavoSoftkey::getItemsPerPageView() const
{
    return m_pageView->itemsPerPage();
}

// --- the document ------------------------------------------------------------

void CTavoSoftkey::set(const CTXMLSoftkeys& keys, QList<int>& excluded, SoftkeyLayoutTypeT type, bool force)
{
    // 1. Out-of-box look.
    if (m_isInOOBMode)
        setPseudoState(QStringLiteral("oob"));
    else if (pseudoState() == QLatin1String("oob"))
        setPseudoState(QString());

    // 2. The core may repeat itself freely.
    if (isVisible() && m_permanent.isEmpty() && keys == m_sourceSoftkeys && excluded == m_excluded && !force)
        return;

    const int capacity = qMax(1, getItemsPerPageView());
    if (rect().isValid()) {
        // 4.
        if (&keys != &m_sourceSoftkeys)
            m_sourceSoftkeys = keys;
        m_excluded = excluded;
        if (!m_timerConnected) {
            m_timerConnected = true;
            connect(&m_visibilityTimer, &QTimer::timeout, this, &CTavoSoftkey::determineVisibility);
            m_visibilityTimer.setSingleShot(true);
            m_visibilityTimer.setInterval(50);
        }
        // 5. A held talk key survives the change of document.
        for (CTavoButton* button : qAsConst(m_buttons)) {
            if (button->isDown() && !button->url().contains(QLatin1String("pttsoftkey:Talk:")))
                button->setDown(false);
        }
        // 6, 7.
        updateSoftKeyLayout(type);
        if (flyoutOpen()) {
            m_openFlyoutKey = -1;
            closeFlyout(false);
        }
        // 8. Permanent keys.
        QList<QPair<QString, QString>> permanent = m_permanent;
        bool badge = m_numVoicemailMessages >= 1 && !m_isPhoneLocked && m_voicemailLocation != 3;
        if (!permanent.isEmpty())
            evaluatePermanentSoftkeyVisibilities(keys, permanent);
        // 9. Badge.
        if (m_isSoftwareUpdateAvailable && !m_isPhoneLocked)
            badge = true;
        if (keys.count > 0 && keys.findItemByUrl("softkey:411-") >= 0)
            badge = true;
        setButtonBadgeLabel(badge ? QStringLiteral(" ") : QString());

        // 10. Keys that share a place are folded.
        if (!m_renderMoreAsFlyout) {
            mocSoftkeys(keys, excluded);
        } else {
            if (!m_merged)
                m_merged.reset(new CTXMLSoftkeys);
            CTXMLSoftkeys& merged = *m_merged;
            merged.reset(keys.elementType);
            for (const QPair<QString, QString>& entry : qAsConst(permanent)) {
                const QByteArray label = tr(entry.first.toUtf8().constData()).toUtf8();
                const QByteArray uri = entry.second.toUtf8();
                merged.add(label.constData(), uri.constData(), 0);
            }
            bool overflowStart = false;
            for (int i = 0; i < keys.count && i < TXML_MAX_SOFTKEYS; ++i) {
                const CTXMLSoftkey& k = keys[i];
                if (excluded.contains(i) || details::isMoreSk(k) || k.position == -1)
                    continue;
                CTXMLSoftkey copy = k;
                if (copy.position + 1 >= capacity) {
                    // Every key past the page shares its last place, and so one flyout.
                    copy.position = capacity - 1;
                    if (!overflowStart) {
                        std::strcpy(copy.groupLabel, " ");
                        overflowStart = true;
                    } else if (merged.count > 0) {
                        std::strcpy(merged[merged.count - 1].groupLabel, " ");
                    }
                }
                merged.add(copy);
            }
            mocSoftkeys(merged, QList<int>());
        }

        // 11. Keys to buttons.
        const int count = qMin(m_softkeys.count, int(TXML_MAX_SOFTKEYS));
        bool overflow = false;
        if (!m_renderMoreSk) {
            int largest = -1;
            for (int i = 0; i < count; ++i)
                largest = qMax(largest, m_softkeys[i].position);
            overflow = capacity <= largest;
        }
        QMap<int, int> remap;
        int next = 0;
        bool moreAdded = false;
        for (int i = 0; i < count; ++i) {
            CTXMLSoftkey& key = m_softkeys[i];
            if (!m_renderMoreSk && details::isMoreSk(key))
                continue;
            if (overflow) {
                if (key.position >= 0) {
                    const auto found = remap.constFind(key.position);
                    if (found != remap.constEnd()) {
                        key.position = found.value();
                    } else {
                        remap.insert(key.position, next);
                        key.position = next;
                    }
                }
            } else if (m_putMoreAtPageEnd && key.position >= 0) {
                if (details::isMoreSk(key)) {
                    key.reset();
                    continue;
                }
                bool followed = false;
                for (int j = i + 1; j < count && !followed; ++j)
                    followed = m_softkeys[j].position >= 0 && !details::isMoreSk(m_softkeys[j]);
                if (next != 0 && (next + 1) % capacity == 0 && i != count - 1 && followed
                    && m_softkeys.count < TXML_MAX_SOFTKEYS) {
                    // More closes the page; the key itself comes again after it.
                    const QByteArray more = tr("More").toUtf8();
                    const int index = m_softkeys.add(more.constData(), CTXMLUriLib::uri(TxmlUriMore), next);
                    createButtons(next + 1);
                    TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(&m_softkeys[index]);
                    if (next < m_buttons.size())
                        initButton(m_buttons[next], settings, getPseudostateForUrl(uriText(TxmlUriMore)), QString());
                    moreAdded = true;
                    ++next;
                    --i;
                    continue;
                }
                key.position = next;
            }
            if (key.position >= 0)
                createButtons(key.position + 1);
            if (isCtxKey(key) && !m_ctxKeys.contains(QString::fromUtf8(key.url))) {
                ++next;
                continue;
            }
            if (key.position < 0 || key.position >= m_buttons.size())
                continue;
            TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(&key);
            const QString url = QString::fromUtf8(key.url);
            const QString state = (url.startsWith(QLatin1String("softkey:4027-")) || url.startsWith(QLatin1String("softkey:4034-")))
                ? QStringLiteral("enabled")
                : getPseudostateForUrl(url);
            initButton(m_buttons[key.position], settings, state,
                       isCtxKey(key) ? m_ctxKeys.value(url) : QString());
            ++next;
        }
        // 12. More at the end of the last page.
        if (m_renderMoreSk && m_putMoreAtPageEnd && moreAdded) {
            const int last = capacity * (next / capacity) + capacity - 1;
            createButtons(last + 1);
            const QByteArray more = tr("More").toUtf8();
            const int index = m_softkeys.add(more.constData(), CTXMLUriLib::uri(TxmlUriMore), last);
            TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(&m_softkeys[index]);
            if (last < m_buttons.size())
                initButton(m_buttons[last], settings, QString(), QString());
        }
        // 13.
        m_pageView->format(Qt::Horizontal, -1);
        determineVisibility();
        resyncCtxSensitiveSks();
        setInverted(m_iconsInverted);
    }
    // 14, 15.
    equaliseLabelFonts();
}

void CTavoSoftkey::initButton(CTavoButton* button, TavoButtonSettings& settings, const QString& pseudoState,
                              const QString& data)
{
    settings.m_name = button->objectName();
    const bool changed = button->isNewDefinition(settings) || button->data() != data;
    if (button->isDown() && changed)
        button->setDown(false);
    if (button->pseudoState() != pseudoState)
        button->setPseudoState(pseudoState);
    if (changed) {
        button->init(&settings, data, -1, true);
        // A press fading out belonged to the key this one replaces.
        if (!button->isDown()) {
            if (QPropertyAnimation* fade = button->pressAnimation())
                fade->stop();
            button->setPressedBackgroundOpacity(0.0f);
        }
    }
    button->setVisible(true);
}

void CTavoSoftkey::applyOobState(CTavoButton* button)
{
    CTavoLabelWidget* label = button->labelWidget();
    if (m_isInOOBMode) {
        button->setPseudoState(QStringLiteral("oob"));
        if (label)
            label->setPseudoState(QStringLiteral("oob"));
    } else if (button->pseudoState() == QLatin1String("oob")) {
        button->setPseudoState(QString());
        if (label && label->pseudoState() == QLatin1String("oob"))
            label->setPseudoState(QString());
    }
}

void CTavoSoftkey::equaliseLabelFonts()
{
    // Labels made smaller for an earlier row get their own size back first:
    // buttons are reused, and a short label must not keep a long one's size.
    for (auto it = m_resizedLabels.constBegin(); it != m_resizedLabels.constEnd(); ++it) {
        if (it.key())
            it.key()->resizeText(it.value());
    }
    m_resizedLabels.clear();
    int smallest = -1;
    for (CTavoButton* button : qAsConst(m_buttons)) {
        CTavoLabelWidget* label = button->labelWidget();
        if (!button->isVisible() || !label || button->label().isEmpty())
            continue;
        if (m_isInOOBMode || button->pseudoState() == QLatin1String("oob"))
            applyOobState(button);
        const int size = pixelSizeOf(label);
        if (size > 0 && (smallest < 0 || size < smallest))
            smallest = size;
    }
    if (smallest < 2)
        return;
    // Labels on one row stay within two points of each other.
    for (CTavoButton* button : qAsConst(m_buttons)) {
        CTavoLabelWidget* label = button->labelWidget();
        if (button->isVisible() && label && !button->label().isEmpty() && pixelSizeOf(label) >= smallest + 3) {
            m_resizedLabels.insert(label, pixelSizeOf(label));
            label->resizeText(smallest + 2);
        }
    }
}

void CTavoSoftkey::clearSelectedDefaultIndex(const CTXMLSoftkeys& keys)
{
    for (auto it = m_selectedIndex.begin(); it != m_selectedIndex.end();) {
        int position = -1;
        Q_UNUSED(position);
        const QByteArray url = it.key().toUtf8();
        bool found = false;
        for (int i = 0; i < keys.count && i < TXML_MAX_SOFTKEYS && !found; ++i)
            found = keyHasUrl(keys[i], url);
        it = found ? it + 1 : m_selectedIndex.erase(it);
    }
}

void CTavoSoftkey::clearVisibleCtxSensitiveSks(const CTXMLSoftkeys& keys)
{
    for (auto it = m_ctxKeys.begin(); it != m_ctxKeys.end();) {
        const QByteArray url = it.key().toUtf8();
        bool found = false;
        for (int i = 0; i < keys.count && i < TXML_MAX_SOFTKEYS && !found; ++i)
            found = keyHasUrl(keys[i], url);
        it = found ? it + 1 : m_ctxKeys.erase(it);
    }
}

void CTavoSoftkey::findOverlappedNonCtxSensitiveSks(const CTXMLSoftkeys& keys, const QList<int>& excluded)
{
    const int count = qMin(keys.count, int(TXML_MAX_SOFTKEYS));
    const int capacity = getItemsPerPageView();
    for (int i = 0; i < count; ++i) {
        const CTXMLSoftkey& k = keys[i];
        // A context key takes its place over another key; it is never folded.
        if (excluded.contains(i) || k.hasFlyout() || k.valueList[0] || isCtxKey(k))
            continue;
        if (m_renderMoreAsFlyout && capacity == 1) {
            m_overlapMap[k.position] = i;
            continue;
        }
        for (int j = i + 1; j < count; ++j) {
            if (keys[j].position == k.position && !keys[j].valueList[0] && !isCtxKey(keys[j]) && !excluded.contains(j)) {
                m_overlapMap[k.position] = i;
                break;
            }
        }
    }
}

void CTavoSoftkey::mocSoftkeys(const CTXMLSoftkeys& keys, const QList<int>& excluded)
{
    m_overlapMap.clear();
    m_softkeys.reset(tavoElementMenu);
    const int count = qBound(0, keys.count, int(TXML_MAX_SOFTKEYS));
    m_softkeys.count = count;
    clearSelectedDefaultIndex(keys);
    clearVisibleCtxSensitiveSks(keys);
    findOverlappedNonCtxSensitiveSks(keys, excluded);

    const int capacity = qMax(1, getItemsPerPageView());
    for (int i = 0; i < count; ++i) {
        if (excluded.contains(i))
            continue;
        const CTXMLSoftkey& k = keys[i];
        if (k.hasFlyout()) {
            m_softkeys[i] = k;
        } else if (k.valueList[0]) {
            CTXMLSoftkey& slot = m_softkeys[i];
            slot = k;
            slot.flyout.reset();
            // A choice key is named by its group; its own label lists the choices.
            txml::copyText(slot.label, sizeof slot.label, k.groupLabel);
            const QStringList values = QString::fromUtf8(k.valueList).split(QLatin1Char(';'));
            const QStringList labels = QString::fromUtf8(k.label).split(QLatin1Char(';'));
            if (values.size() == labels.size() && !values.isEmpty()) {
                for (int v = 0; v < values.size(); ++v) {
                    const QByteArray label = labels.at(v).toUtf8();
                    const QByteArray value = values.at(v).toUtf8();
                    slot.flyout.add(label.constData(), k.url, "", nullptr, true, value.constData(),
                                    v == k.defaultIndex, true);
                }
            } else {
                guiLog(3, "CTavoSoftkey: key %s has %d values for %d labels", k.url, int(values.size()),
                       int(labels.size()));
            }
        } else if (m_overlapMap.contains(k.position)) {
            CTXMLSoftkey& target = m_softkeys[m_overlapMap.value(k.position)];
            CTXMLIcon icon;
            const bool lastOfPage = k.position >= 0 && (k.position + 1) % capacity == 0;
            if (m_renderMoreAsFlyout && lastOfPage)
                icon.set(m_mirroringActive ? 452 : 312);
            else
                icon.set(k.icon);
            QByteArray badge;
            if (std::strcmp(k.url, "voicemail") == 0 && m_numVoicemailMessages > 0)
                badge = QByteArray::number(m_numVoicemailMessages);
            else if (std::strcmp(k.url, "callscreen") == 0)
                badge = QByteArray::number(m_numActiveCalls);
            target.flyout.add(k.label, k.url, badge.constData(), icon.isEmpty() ? nullptr : &icon, true, k.url,
                              false, true);
            if (!target.label[0] && k.groupLabel[0]) {
                txml::copyText(target.label, sizeof target.label, k.groupLabel);
                // Only a marker: the beginning of the first key's URL.
                char marker[7] = {};
                std::strncpy(marker, k.url, 6);
                txml::copyText(target.url, sizeof target.url, marker);
                target.position = k.position;
                target.icon = k.icon;
            }
        } else {
            m_softkeys[i] = k;
        }
    }
    createButtons(count);
    for (CTavoButton* button : qAsConst(m_buttons))
        button->setVisible(false);
}

void CTavoSoftkey::createButtons(int count)
{
    count = qMin(count, int(TXML_MAX_SOFTKEYS));
    const bool nativeUi = objectName() == QLatin1String("native-ui");
    while (m_buttons.size() < count) {
        const int index = m_buttons.size();
        TavoButtonSettings blank;
        auto* button = new CTavoButton(&blank, this);
        QString labelName;
        if (nativeUi) {
            button->setObjectName(QStringLiteral("softkey-button-native-ui"));
            labelName = QStringLiteral("softkey-button-label-native-ui");
        } else if (m_uniqueLabelIds) {
            button->setObjectName(QStringLiteral("softkey-button"));
            labelName = QStringLiteral("softkey-button-label-%1").arg(index);
        } else if (m_layoutType == SoftkeyLayoutCompact) {
            button->setObjectName(QStringLiteral("softkey-button-icon"));
            labelName = QStringLiteral("softkey-button-label");
        } else {
            button->setObjectName(QStringLiteral("softkey-button"));
            labelName = QStringLiteral("softkey-button-label");
        }
        if (CTavoLabelWidget* label = button->labelWidget())
            label->setObjectName(labelName);
        // By name, so that the slot sees which button sent the press.
        connect(button, SIGNAL(buttonClicked(QString, QString)), this, SLOT(onWidgetEvent(QString, QString)));
        m_buttons.append(button);
        button->layout();
        m_pageView->append(button);
        button->setVisible(false);
    }
}

void CTavoSoftkey::updateSoftKeyLayout(SoftkeyLayoutTypeT type)
{
    if (type == m_layoutType)
        return;
    m_layoutType = type;
    const bool icons = type == SoftkeyLayoutCompact;
    setObjectName(icons ? QStringLiteral("icon") : QString());
    m_pageView->setObjectName(icons ? QStringLiteral("softkey-pageview-icon") : QStringLiteral("softkey-pageview"));
    for (CTavoButton* button : qAsConst(m_buttons)) {
        QString name = button->objectName();
        if (name.endsWith(QLatin1String("-icon")))
            name.chop(5);
        button->setObjectName(icons ? name + QStringLiteral("-icon") : name);
        if (CTavoIcon* icon = button->icon()) {
            icon->setObjectName(QStringLiteral("buttonIcon"));
            if (icons) {
                icon->layout();
                icon->setVisible(true);
                if (CTavoLabelWidget* label = button->labelWidget())
                    label->setObjectName(QStringLiteral("softkey-button-label"));
            } else {
                icon->setVisible(false);
            }
        }
    }
    layout();
}

void CTavoSoftkey::formatAsObjectName(const QString& name)
{
    const QString suffix = name == QLatin1String("native-ui") ? QStringLiteral("-") + name : name;
    setObjectName(name);
    m_pageView->setObjectName(QStringLiteral("softkey-pageview") + suffix);
    for (CTavoButton* button : qAsConst(m_buttons)) {
        button->setObjectName(QStringLiteral("softkey-button") + suffix);
        if (CTavoLabelWidget* label = button->labelWidget())
            label->setObjectName(QStringLiteral("softkey-button-label") + suffix);
    }
    layout();
}

// --- visibility and badge ----------------------------------------------------

void CTavoSoftkey::determineVisibility()
{
    bool any = false;
    for (CTavoButton* button : qAsConst(m_buttons))
        any = any || button->isVisible();
    if (any && !m_forceHidden)
        Show(true);
    else
        Hide(true);
}

void CTavoSoftkey::forceHiding(bool hide)
{
    m_forceHidden = hide;
    determineVisibility();
}

void CTavoSoftkey::setVisibilityOfContentMenu(bool visible)
{
    store(m_contentMenuVisible, visible);
}

void CTavoSoftkey::setButtonBadgeLabel(const QString& text)
{
    if (m_badge->text() != text)
        m_badge->setText(text);
    m_badge->setVisible(!text.isEmpty());
    m_badge->update();
}

void CTavoSoftkey::touchVoicemailButtonBadge()
{
    const bool show = m_numVoicemailMessages > 0 && !m_isPhoneLocked && m_voicemailLocation != 3;
    setButtonBadgeLabel(show ? QStringLiteral(" ") : QString());
}

void CTavoSoftkey::setInverted(bool inverted)
{
    for (CTavoButton* button : qAsConst(m_buttons)) {
        if (CTavoIcon* icon = button->icon())
            icon->setInverted(inverted);
    }
}

void CTavoSoftkey::setFlyout(CTavoFlyoutCluster* flyout)
{
    if (m_flyout)
        disconnect(m_flyout, &CTavoFlyoutCluster::closed, this, &CTavoSoftkey::onFlyoutClosed);
    m_flyout = flyout;
    if (flyout)
        connect(flyout, &CTavoFlyoutCluster::closed, this, &CTavoSoftkey::onFlyoutClosed);
}

bool CTavoSoftkey::flyoutOpen() const
{
    return m_flyout && m_flyout->isOpen();
}

void CTavoSoftkey::closeFlyout(bool animated)
{
    if (m_flyout && m_flyout->isOpen())
        m_flyout->flyIn(animated, CTavoFlyoutCluster::FlyinByOwner);
}

void CTavoSoftkey::onFlyoutClosed()
{
    m_openFlyoutKey = -1;
    if (!m_renderMoreAsFlyout)
        setInverted(m_iconsInverted);
}

// --- keys by URL ---------------------------------------------------------------

int CTavoSoftkey::getKeyFromUrl(const QString& url, int& position) const
{
    if (url.isEmpty())
        return -1;
    const QByteArray wanted = url.toUtf8();
    for (int i = 0; i < TXML_MAX_SOFTKEYS; ++i) {
        const CTXMLSoftkey& key = m_softkeys[i];
        if (keyHasUrl(key, wanted)) {
            position = key.position;
            return i;
        }
    }
    return -1;
}

QString CTavoSoftkey::getPseudostateForUrl(const QString& url) const
{
    for (auto it = m_pseudoStateMap.constBegin(); it != m_pseudoStateMap.constEnd(); ++it) {
        if (url.indexOf(it.value()) == 0)
            return it.key();
    }
    return QString();
}

void CTavoSoftkey::setCallStateColorStyles()
{
    // As the phone has always had it: the trailing "|" of the first pattern
    // matches every URL.
    m_pseudoStateMap.insert(QStringLiteral("green"),
                            QRegExp(QStringLiteral("softkey:1-|softkey:12-|softkey:21-|softkey:26-|softkey:429-|"
                                                   "softkey:146-softkey:465-|")));
    m_pseudoStateMap.insert(QStringLiteral("red"),
                            QRegExp(QStringLiteral("softkey:14-|softkey:3072-|softkey:37-|softkey:250-|softkey:1180-")));
}

void CTavoSoftkey::refreshPermanentSoftkeys()
{
    if (m_permanent.isEmpty())
        return;
    QList<int> excluded = m_excluded;
    set(m_sourceSoftkeys, excluded, SoftkeyLayoutDefault, false);
}

void CTavoSoftkey::setShowDaisyChainIndicator(bool show)
{
    if (show == m_showDaisyChainIndicator)
        return;
    m_showDaisyChainIndicator = show;
    refreshPermanentSoftkeys();
}

// --- presses -------------------------------------------------------------------

bool CTavoSoftkey::onWidgetEvent(QString url, QString data)
{
    // 1. Analytics: the press and the button's index.
    if (m_analyticsEnabled && !url.isEmpty()) {
        const int index = m_buttons.indexOf(qobject_cast<CTavoButton*>(sender()));
        emit layoutWidgetSignal(uriText(TxmlUriAnalytics),
                                QStringLiteral("%1=%2;index=%3")
                                    .arg(QString::fromLatin1(CTXMLUriLib::varname(TxmlVarData)), url)
                                    .arg(index));
    }
    // 2. More turns the page, round to the first.
    if (url == uriText(TxmlUriMore)) {
        if (m_pageView->currentPage() >= m_pageView->pageCount() - 1)
            m_pageView->scrollToPage(0, false);
        else
            m_pageView->scrollToNextPage(1, false);
        emit layoutWidgetSignal(uriText(TxmlUriSoftkeyPage), QString::number(m_pageView->currentPage()));
        return true;
    }
    // 4. A key with choices opens or closes its flyout.
    int position = -1;
    const int key = getKeyFromUrl(url, position);
    if (key >= 0 && m_softkeys[key].hasFlyout() && position >= 0 && m_flyout) {
        if (m_flyout->isOpen()) {
            const bool own = m_openFlyoutKey == position;
            m_openFlyoutKey = -1;
            m_flyout->flyIn(own, CTavoFlyoutCluster::FlyinByOwner);
            if (own)
                return true;
        }
        if (!m_permanent.isEmpty()) {
            QList<int> excluded = m_excluded;
            set(m_sourceSoftkeys, excluded, m_layoutType, true);
        }
        autoSoftKeySnap(m_buttons.value(position), position);
        m_flyout->flyOut();
        m_openFlyoutKey = position;
        if (!m_renderMoreAsFlyout)
            setInverted(m_iconsInverted);
        return true;
    }
    // 3, 5. Any other key closes an open flyout and goes to the core.
    if (!url.isEmpty()) {
        if (flyoutOpen()) {
            m_openFlyoutKey = -1;
            closeFlyout(true);
        }
        emit layoutWidgetSignal(url, data);
        if (!m_renderMoreAsFlyout)
            setInverted(m_iconsInverted);
    }
    return true;
}

void CTavoSoftkey::onLocalEvent(QString url, QString data)
{
    if (!isVisible() || m_softkeys.count <= 0)
        return;
    const QByteArray wanted = url.toUtf8();
    for (int i = 0; i < m_softkeys.count && i < TXML_MAX_SOFTKEYS; ++i) {
        CTXMLSoftkey& key = m_softkeys[i];
        if (std::strcmp(key.url, wanted.constData()) != 0 || !key.valueList[0])
            continue;
        const QStringList values = QString::fromUtf8(key.valueList).split(QLatin1Char(';'));
        CTavoVarList vars(data);
        const QString value = vars[QString::fromLatin1(CTXMLUriLib::varname(TxmlVarValue))];
        if (m_flyout && m_flyout->isMoreEnabled() && value == QLatin1String("More")) {
            if (url == QLatin1String("SoftKey:ToggleEditMode"))
                m_flyoutMode = 1;
            else if (url == QLatin1String("SoftKey:Encoding"))
                m_flyoutMode = 2;
            onWidgetEvent(url, data);
            return;
        }
        const int index = values.indexOf(value);
        if (index >= 0) {
            key.defaultIndex = index;
            m_selectedIndex[url] = index;
        }
    }
}

void CTavoSoftkey::setDefaultIndex(int key, const QStringList& list, const QString& url)
{
    if (key < 0 || key >= TXML_MAX_SOFTKEYS)
        return;
    CTXMLSoftkey& k = m_softkeys[key];
    if (list.size() < 2) {
        k.defaultIndex = m_selectedIndex.value(url, 0);
        return;
    }
    const QStringList values = QString::fromUtf8(k.valueList).split(QLatin1Char(';'));
    const auto stored = m_selectedIndex.constFind(url);
    if (stored != m_selectedIndex.constEnd() && !list.contains(values.value(stored.value())))
        m_selectedIndex.remove(url);
    for (const QString& entry : list) {
        const int index = values.indexOf(entry);
        if (index >= 0) {
            k.defaultIndex = index;
            m_selectedIndex[url] = index;
            return;
        }
    }
}

// --- context sensitive keys ---------------------------------------------------

void CTavoSoftkey::hideContextualKey(int position)
{
    if (position < 0 || position >= TXML_MAX_SOFTKEYS || position >= m_buttons.size())
        return;
    TavoButtonSettings settings;
    for (int i = 0; i < m_softkeys.count && i < TXML_MAX_SOFTKEYS; ++i) {
        const CTXMLSoftkey& key = m_softkeys[i];
        if (key.position == position && !isCtxKey(key)) {
            CTXMLDataConverter::getButtonDefFromXml(settings, &key);
            break;
        }
    }
    initButton(m_buttons[position], settings, m_buttons[position]->pseudoState(), QString());
    if (settings.m_label.isEmpty() && settings.m_clickUrl.isEmpty())
        m_buttons[position]->setVisible(false);
}

void CTavoSoftkey::onCtxSensitiveSkReq(QString url, QString data, int value)
{
    if (!rect().isValid())
        return;
    guiLog(0, "context sensitive sk %s [%s] %s", qPrintable(url), qPrintable(data),
           value == 1 ? "show" : value == 0 ? "hide" : "disable");
    int position = -1;
    const int key = getKeyFromUrl(url, position);
    const QStringList list = entries(data);
    if (key >= 0 && key <= 19 && position >= 0 && position < m_buttons.size()) {
        CTavoButton* button = m_buttons[position];
        if (value == 0) {
            m_ctxKeys.remove(url);
            m_selectedIndex.remove(url);
            hideContextualKey(position);
        } else if (value == 2) {
            if (data.isEmpty() || list.size() >= 2) {
                m_ctxKeys[url] = data;
                setDefaultIndex(key, list, url);
                TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(&m_softkeys[key]);
                initButton(button, settings, button->pseudoState(), data);
                if (validationFlag()) {
                    button->setOpacity(0.4f);
                    button->blockSignals(true);
                }
            }
        } else if (data.isEmpty() || list.size() > 1) {
            TavoButtonSettings settings = CTXMLDataConverter::getButtonDefFromXml(&m_softkeys[key]);
            settings.m_name = button->objectName();
            bool positive = false;
            for (int index : qAsConst(m_selectedIndex))
                positive = positive || index > 0;
            if (!button->isNewDefinition(settings) && button->isVisible() && !positive
                && url != uriText(TxmlUriValidate)) {
                if (list.size() >= 2)
                    setDefaultIndex(key, list, url);
            } else {
                m_ctxKeys[url] = data;
                setDefaultIndex(key, list, url);
                initButton(button, settings, button->pseudoState(), data);
                button->setDown(false);
                applyOobState(button);
                if ((url == uriText(TxmlUriValidate) && validationFlag()) || button->signalsBlocked()) {
                    button->setOpacity(1.0f);
                    button->blockSignals(false);
                }
            }
        }
        // 6.
        if (flyoutOpen()) {
            m_openFlyoutKey = -1;
            closeFlyout(false);
        }
        m_pageView->format(Qt::Horizontal, -1);
    }
    // 7.
    showMoreKeys();
    // 8.
    if (m_visibilityTimer.interval() > 0)
        m_visibilityTimer.start();
}

void CTavoSoftkey::showMoreKeys()
{
    // A More key is shown only if it has something to lead to.
    bool laterVisible = false;
    bool changed = false;
    for (int i = m_buttons.size() - 1; i >= 0; --i) {
        CTavoButton* button = m_buttons[i];
        if (button->url() == uriText(TxmlUriMore)) {
            const bool show = laterVisible || (i == m_buttons.size() - 1 && m_pageView->pageCount() > 1);
            if (button->isVisible() != show) {
                button->setVisible(show);
                changed = true;
            }
        } else if (button->isVisible()) {
            laterVisible = true;
        }
    }
    if (changed)
        m_pageView->format(Qt::Horizontal, -1);
}

void CTavoSoftkey::resyncCtxSensitiveSks()
{
    QStringList done;
    const QMap<QString, QString> keys = m_ctxKeys;
    for (int uri : {int(TxmlUriEncoding), int(TxmlUriToggleEditMode)}) {
        const QString url = uriText(uri);
        const auto it = keys.constFind(url);
        if (it != keys.constEnd()) {
            onCtxSensitiveSkReq(url, it.value(), 1);
            done << url;
        }
    }
    for (auto it = keys.constBegin(); it != keys.constEnd(); ++it) {
        if (done.contains(it.key()))
            continue;
        if (it.key() == QLatin1String("Softkey:ValidationRequired") && validationFlag()) {
            emit validateCtxKeyUpdate();
            continue;
        }
        onCtxSensitiveSkReq(it.key(), it.value(), 1);
    }
}

// --- mouse -----------------------------------------------------------------------

void CTavoSoftkey::mousePressEvent(QMouseEvent* event)
{
    m_dragged = false;
    CTavoLayoutWidget::mousePressEvent(event);
}

void CTavoSoftkey::mouseMoveEvent(QMouseEvent* event)
{
    m_dragged = true;
    CTavoLayoutWidget::mouseMoveEvent(event);
}

void CTavoSoftkey::mouseReleaseEvent(QMouseEvent* event)
{
    // A swipe that leaves the bar above or below turns a page.
    if (m_dragged && (event->pos().y() < 0 || event->pos().y() >= height())) {
        m_pageView->onScrollControlled(QEvent::KeyRelease, CTavoScrollBar::ScrollTenthForward);
        m_dragged = false;
    }
    CTavoLayoutWidget::mouseReleaseEvent(event);
}

// --- the flyout of a key -------------------------------------------------------

void CTavoSoftkey::autoSoftKeySnap(CTavoButton* button, int position)
{
    if (position < 0 || !button || !m_flyout)
        return;
    CTavoFlyoutCluster* flyout = m_flyout;
    // The button on the screen: its place in the bar, less the page view's offset.
    QPoint anchor = button->topLeft() + pos();
    if (CTavoView* view = CTavoView::holderOf(button))
        anchor = view->mapToPointInParent(button->topLeft()) + pos();
    const QWidget* screen = CTavoLayoutMgr::instance();
    const int screenW = screen ? screen->width() : -1;
    const int screenH = screen ? screen->height() : -1;
    const bool skype = tavoGetActiveProfile(false) == QLatin1String("SkypeForBusiness");

    CTXMLFlyoutCluster cluster;
    const bool moreEnabled = flyout->isMoreEnabled();
    const int groupSize = flyout->groupSize();
    int inGroup = 0;
    int groups = 0;
    bool moreAdded = false;
    auto addMore = [&](const CTXMLSoftkey& key) {
        if (key.flyout.isEmpty())
            return;
        CTXMLFlyoutItem more = key.flyout[0];
        txml::copyText(more.label, sizeof more.label, "More");
        txml::copyText(more.url, sizeof more.url, "More");
        txml::copyText(more.data, sizeof more.data, more.value[0] ? more.value : key.url);
        cluster.add(more);
        moreAdded = true;
    };
    bool firstKey = true;
    for (int k = 0; k < m_softkeys.count && k < TXML_MAX_SOFTKEYS; ++k) {
        const CTXMLSoftkey& key = m_softkeys[k];
        if (key.position != position || !key.hasFlyout())
            continue;
        const QString url = QString::fromUtf8(key.url);
        if (isCtxKey(key) && !m_ctxKeys.contains(url))
            continue;
        if (moreEnabled) {
            const bool own = (m_flyoutMode == 1 && url == QLatin1String("SoftKey:ToggleEditMode"))
                || (m_flyoutMode == 2 && url == QLatin1String("SoftKey:Encoding"));
            if (!own && !cluster.isEmpty()) {
                if (!firstKey && groups > 0 && !moreAdded)
                    addMore(key);
                firstKey = false;
                continue;
            }
        } else if (!cluster.isEmpty()) {
            addDivider(cluster);
        }
        firstKey = false;
        const QStringList allowed = m_ctxKeys.contains(url) ? entries(m_ctxKeys.value(url)) : QStringList();
        for (int i = 0; i < key.flyout.count(); ++i) {
            const CTXMLFlyoutItem& source = key.flyout[i];
            if (!allowed.isEmpty() && !allowed.contains(QString::fromUtf8(source.url)))
                continue;
            if (std::strncmp(source.url, "softkey:24-", 11) == 0)
                continue;
            if (groupSize > 0 && inGroup >= groupSize) {
                addDivider(cluster);
                ++groups;
                inGroup = 0;
            }
            CTXMLFlyoutItem item = source;
            txml::copyText(item.data, sizeof item.data, source.value[0] ? source.value : key.url);
            item.selected = i == key.defaultIndex;
            const int icon = iconForUrl(item.url, flyout->isOnHome(), m_selfViewEnabled, m_videoMute);
            if (icon >= 0)
                item.icon.set(icon);
            if (skype && std::strncmp(item.url, "softkey:31-", 11) == 0)
                txml::copyText(item.label, sizeof item.label, tr("Consult").toUtf8().constData());
            else if (skype && std::strncmp(item.url, "softkey:1619-", 13) == 0)
                txml::copyText(item.label, sizeof item.label, tr("Transfer").toUtf8().constData());
            cluster.add(item);
            ++inGroup;
        }
        if (moreEnabled && groups > 0 && !moreAdded && m_flyoutMode != 0)
            addMore(key);
    }
    flyout->setKeyIndex(position);
    if (m_isInOOBMode)
        flyout->setShowInfoBanner(false);
    flyout->init(&cluster);

    // Beside the key, on the side where it fits.
    const QString none;
    flyout->snapToParent(button, CTavoFlyoutCluster::TopLeft, CTavoFlyoutCluster::BottomLeft, Qt::DownArrow, none, 0);
    m_flyoutMode = 0;
    const int w = flyout->width();
    if (anchor.y() >= screenH / 2) {
        if (anchor.x() >= screenW)
            anchor.rx() -= screenW;
        if (anchor.x() + w > screenW)
            flyout->snapToParent(button, CTavoFlyoutCluster::TopRight, CTavoFlyoutCluster::BottomRight, Qt::UpArrow,
                                 none, 0);
        else
            flyout->snapToParent(button, CTavoFlyoutCluster::TopLeft, CTavoFlyoutCluster::BottomLeft, Qt::UpArrow,
                                 none, 0);
    } else if (anchor.x() + w > screenW) {
        flyout->snapToParent(button, CTavoFlyoutCluster::BottomRight, CTavoFlyoutCluster::TopRight, Qt::DownArrow,
                             none, 0);
    } else {
        flyout->snapToParent(button, CTavoFlyoutCluster::BottomLeft, CTavoFlyoutCluster::TopLeft, Qt::DownArrow,
                             none, 0);
    }
}

// --- permanent keys ------------------------------------------------------------

void CTavoSoftkey::evaluatePermanentSoftkeyVisibilities(const CTXMLSoftkeys& keys,
                                                        QList<QPair<QString, QString>>& list)
{
    using details::removeItemWithUri;
    CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    const bool paired = m_isMrPaired;
    const bool locked = m_isPhoneLocked;
    auto strike = [&list](std::initializer_list<const char*> uris) {
        for (const char* uri : uris)
            removeItemWithUri(list, QString::fromLatin1(uri));
    };
    // With a URI listed twice, the later entry is the one relabelled.
    auto indexOf = [&list](const char* uri) {
        for (int i = list.size() - 1; i >= 0; --i)
            if (list.at(i).second == QLatin1String(uri))
                return i;
        return -1;
    };

    if (m_voicemailLocation == 3 || (m_voicemailLocation == 1 && m_numVoicemailMessages <= 0))
        strike({"voicemail"});
    if (!paired)
        strike({"selfview", "layout", "videomute", "cameraControlEnable", "stopHdmiContent"});
    if (paired && m_mrDisplays < 1)
        strike({"layout"});
    if (m_selfViewControlOption >= 3)
        strike({"selfview"});
    if (m_selfViewControlOption > 3)
        strike({"videomute", "cameraControlEnable"});
    if (!m_canStartRecording)
        strike({"startRecording"});
    if (!m_canStopRecording)
        strike({"stopRecording"});
    if (!m_canPauseRecording)
        strike({"pauseRecording"});
    if (!m_canResumeRecording)
        strike({"resumeRecording"});
    if (!m_shouldShowStopHdmiContent)
        strike({"stopHdmiContent"});
    if (!m_cameraControlEnable || (m_numActiveCalls >= 1 && !m_shouldShowCamera))
        strike({"cameraControlEnable"});
    if (!(paired && m_mrDisplays > 0 && !locked))
        strike({"content"});
    if (!m_isCalendarEnabled || locked)
        strike({"calendar"});
    if (!m_isRecentCallsEnabled)
        strike({"recent"});
    if ((m_isDirectoryEnabled && !m_isContactsEnabled && !m_isCorporateDirectoryEnabled)
        || (!m_isDirectoryEnabled && !(m_isLyncDirectoryOverride && m_isContactsEnabled)))
        strike({"directory"});
    if (!m_isSettingsEnabled)
        strike({"settings"});
    if (locked || !m_isBluetoothEnabled)
        strike({"bluetoothUserSettings"});
    if (!m_isAlexaEnabled)
        strike({"AlexaHamburgerSettings"});

    const bool chainedScreen = mgr && mgr->isDaisyChainedScreenShown();
    bool hadSelfView = false;
    bool hadVideoMute = false;
    if (list.isEmpty()) {
        m_mirroringActive = m_showDaisyChainIndicator ? chainedScreen : false;
    } else {
        const int videoMute = indexOf("videomute");
        const int selfView = indexOf("selfview");
        const int daisyChain = indexOf("daisychain");
        hadSelfView = selfView >= 0;
        hadVideoMute = videoMute >= 0;
        m_mirroringActive = m_showDaisyChainIndicator && chainedScreen;
        if (daisyChain >= 0)
            list[daisyChain].first = chainedScreen ? tr("Stop Mirroring") : tr("Start Mirroring");
        if (selfView >= 0)
            list[selfView].first = m_selfViewEnabled ? tr("Disable Self View") : tr("Enable Self View");
        if (videoMute >= 0 && paired)
            list[videoMute].first = m_videoMute ? tr("Start My Video") : tr("Stop My Video");
    }

    const QString chainedIp = mgr ? mgr->daisyChainedIP() : QString();
    if (chainedIp.isEmpty() || chainedIp == QLatin1String("127.0.0.1") || chainedScreen)
        strike({"daisychain"});
    if (mgr && mgr->isGlobalMenuLimited()) {
        strike({"Action::PlaceaCall", "directory", "recent", "calendar", "cameraControlEnable", "content", "callscreen",
                "bluetoothUserSettings", "videomute", "selfview", "layout", "softwareupdate", "voicemail",
                "startRecording", "stopRecording", "pauseRecording", "resumeRecording"});
        if (!m_isAlexaEnabled)
            strike({"AlexaHamburgerSettings"});
    }
    if (hadSelfView && !paired)
        strike({"selfview"});
    const bool callStatusHidden = mgr && mgr->isCallStatusHidden();
    const bool callInputVisible = mgr && mgr->isCallInputVisible();
    if (hadVideoMute && !callStatusHidden
        && !(paired && !m_isUsbCall && (m_numActiveCalls < 1 || callInputVisible))
        && keys.findItemByUrl("softkey:539-") == -1)
        strike({"videomute"});
    if (!m_isSoftwareUpdateAvailable || locked)
        strike({"softwareupdate"});
    if (!m_contentMenuVisible)
        strike({"content"});
    if (m_numActiveCalls < 1 || locked)
        strike({"callscreen"});
    if (locked)
        strike({"layout"});
    const bool layoutKey = keys.findItemByUrl("softkey:3489-") >= 0;
    if (layoutKey && !m_shouldShowLayoutWhileInCall)
        strike({"layout"});
    if (layoutKey && m_shouldShowLayoutWhileInCall && keys.findItemByUrl("softkey:4130-") < 0
        && keys.findItemByUrl("softkey:4131-") < 0)
        strike({"layout"});
    const QString title = mgr ? mgr->title() : QString();
    m_menuTitle = title;
    if (!title.isEmpty() && (title == tr("Layout") || title == tr("Video Settings")))
        strike({"layout"});
    if (locked)
        strike({"directory", "recent", "voicemail", "settings", "cameraControlEnable"});
    if (m_isPhoneLockedByUser)
        strike({"Action::PlaceaCall"});
}

// --- state inputs --------------------------------------------------------------

void CTavoSoftkey::setNumVoicemailMessages(int count) { store(m_numVoicemailMessages, count); }
void CTavoSoftkey::setVoicemailLocation(int location) { store(m_voicemailLocation, location); }

void CTavoSoftkey::setIsMrPaired(bool paired, int displays)
{
    const int newDisplays = !paired ? 0 : displays == -1 ? m_mrDisplays : displays;
    if (paired == m_isMrPaired && newDisplays == m_mrDisplays)
        return;
    m_isMrPaired = paired;
    m_mrDisplays = newDisplays;
    emit softkeyChanged();
}

void CTavoSoftkey::setIsMrPaired(bool paired) { setIsMrPaired(paired, -1); }
void CTavoSoftkey::setIsInCall(bool inCall) { store(m_isInCall, inCall); }
void CTavoSoftkey::setIsSoftwareUpdateAvailable(bool available) { store(m_isSoftwareUpdateAvailable, available); }
void CTavoSoftkey::setIsCalendarEnabled(bool enabled) { store(m_isCalendarEnabled, enabled); }

void CTavoSoftkey::setNumActiveCalls(int count)
{
    guiLog(3, "CTavoSoftkey::setNumActiveCalls '%d'", count);
    store(m_numActiveCalls, count);
}

void CTavoSoftkey::setIsUsbCall(bool usb)
{
    guiLog(3, "CTavoSoftkey::setIsUsbCall '%s'", usb ? "true" : "false");
    store(m_isUsbCall, usb);
}

void CTavoSoftkey::setIsPttCall(bool ptt) { store(m_isPttCall, ptt); }
void CTavoSoftkey::setShouldShowStopHdmiContent(bool show) { store(m_shouldShowStopHdmiContent, show); }
void CTavoSoftkey::setVideoMute(bool mute) { store(m_videoMute, mute); }
void CTavoSoftkey::setVideoUnmuteAllowed(bool allowed) { store(m_videoUnmuteAllowed, allowed); }
void CTavoSoftkey::setSelfViewEnabled(bool enabled) { store(m_selfViewEnabled, enabled); }
void CTavoSoftkey::setSelfViewControlOption(int option) { store(m_selfViewControlOption, option); }

void CTavoSoftkey::setIsPhoneLocked(bool locked, bool lockedByUser)
{
    if (locked == m_isPhoneLocked && lockedByUser == m_isPhoneLockedByUser)
        return;
    m_isPhoneLocked = locked;
    m_isPhoneLockedByUser = lockedByUser;
    emit softkeyChanged();
}

void CTavoSoftkey::setIsPhoneLocked(bool locked) { setIsPhoneLocked(locked, m_isPhoneLockedByUser); }
void CTavoSoftkey::setIsRecentCallsEnabled(bool enabled) { store(m_isRecentCallsEnabled, enabled); }
void CTavoSoftkey::setIsDirectoryEnabled(bool enabled) { store(m_isDirectoryEnabled, enabled); }
void CTavoSoftkey::setIsContactsEnabled(bool enabled) { store(m_isContactsEnabled, enabled); }
void CTavoSoftkey::setIsLyncDirectoryOverride(bool on) { store(m_isLyncDirectoryOverride, on); }
void CTavoSoftkey::setIsCorporateDirectoryEnabled(bool enabled) { store(m_isCorporateDirectoryEnabled, enabled); }
void CTavoSoftkey::setIsSettingsEnabled(bool enabled) { store(m_isSettingsEnabled, enabled); }
void CTavoSoftkey::setIsBluetoothEnabled(bool enabled) { store(m_isBluetoothEnabled, enabled); }
void CTavoSoftkey::setIsAlexaEnabled(bool enabled) { store(m_isAlexaEnabled, enabled); }
void CTavoSoftkey::setMenuTitle(QString title) { store(m_menuTitle, title); }
void CTavoSoftkey::setCanStartRecording(bool can) { store(m_canStartRecording, can); }
void CTavoSoftkey::setCanStopRecording(bool can) { store(m_canStopRecording, can); }
void CTavoSoftkey::setCanPauseRecording(bool can) { store(m_canPauseRecording, can); }
void CTavoSoftkey::setCanResumeRecording(bool can) { store(m_canResumeRecording, can); }
void CTavoSoftkey::setCameraControlEnable(bool enabled) { store(m_cameraControlEnable, enabled); }
void CTavoSoftkey::setShouldShowCamera(bool show) { store(m_shouldShowCamera, show); }
void CTavoSoftkey::setShouldShowLayoutWhileInCall(bool show) { store(m_shouldShowLayoutWhileInCall, show); }
void CTavoSoftkey::setIsInOOBMode(bool on) { store(m_isInOOBMode, on); }
void CTavoSoftkey::setSystemInfoChanged() { emit softkeyChanged(); }
