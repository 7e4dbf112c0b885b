#pragma once
#include "tgui_export.h"
// The row of soft buttons along the edge of the screen. The core's softkey
// document arrives through set(); the bar merges it with its own permanent
// keys, folds keys that share a place into one key with a flyout, gives each
// key a button in a horizontal page view and adds a More key when the keys do
// not fit on one page. Text fields ask for their context sensitive keys
// through onCtxSensitiveSkReq while a document stays on screen. Buttons are
// made once and reused; an identical document costs one comparison.
#include <QList>
#include <QMap>
#include <QPair>
#include <QPointer>
#include <QRegExp>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <memory>

#include "CTXMLSoftkeys.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoFlyoutCluster.h"
#include "widgets/TavoButtonSettings.h"

class CTavoButton;
class CTavoLabelWidget;
class CTavoPageView;

namespace details {
// The key is the More key of a document.
TGUI_EXPORT bool isMoreSk(const CTXMLSoftkey& key);
// Removes every (label, URI) pair whose URI is uri.
TGUI_EXPORT void removeItemWithUri(QList<QPair<QString, QString>>& list, const QString& uri);
}

class TGUI_EXPORT CTavoSoftkey : public CTavoLayoutWidget
{
    Q_OBJECT

public:
    // The style key that switches the report of softkey presses for analytics on.
    static const char* const ATTRIBUTE_UI_ANALYTICS_ENABLED;

    explicit CTavoSoftkey(QWidget* parent = nullptr);
    ~CTavoSoftkey() override;

    // The entry of the layout manager: a document, the indices not to show,
    // the layout (0 labels, 1 icons) and whether an unchanged document is
    // applied again all the same.
    void set(const CTXMLSoftkeys& keys, QList<int>& excluded, SoftkeyLayoutTypeT type, bool force);
    void mocSoftkeys(const CTXMLSoftkeys& keys, const QList<int>& excluded);
    void createButtons(int count);
    void updateSoftKeyLayout(SoftkeyLayoutTypeT type);
    void formatAsObjectName(const QString& name);
    void setFlyout(CTavoFlyoutCluster* flyout);
    void setInverted(bool inverted);
    void setButtonBadgeLabel(const QString& text);
    void touchVoicemailButtonBadge();
    int getItemsPerPageView() const;
    // Document index of the key whose URL (or second or third URL) is url; its
    // position goes to position. -1 if none.
    int getKeyFromUrl(const QString& url, int& position) const;
    QString getPseudostateForUrl(const QString& url) const;
    void setCallStateColorStyles();
    void refreshPermanentSoftkeys();
    void setShowDaisyChainIndicator(bool show);
    void forceHiding(bool hide);
    void setVisibilityOfContentMenu(bool visible);
    void hideContextualKey(int position);
    void setDefaultIndex(int key, const QStringList& entries, const QString& url);
    void resyncCtxSensitiveSks();
    CTXMLSoftkeys getXMLSoftKeyData() const { return m_sourceSoftkeys; }
    // Which of the permanent keys show in the phone's present state; list
    // holds (label, URI) pairs and loses the keys that do not apply.
    void evaluatePermanentSoftkeyVisibilities(const CTXMLSoftkeys& keys, QList<QPair<QString, QString>>& list);
    // Fills the bar's flyout with the entries of the key at position and
    // places it beside button, on the side where it fits.
    void autoSoftKeySnap(CTavoButton* button, int position);

    void layout() override;
    void Hide(bool bForceAnimation = false) override;

    // State read by hosts and tests.
    CTavoPageView* pageView() const { return m_pageView; }
    CTavoLabelWidget* badge() const { return m_badge; }
    const QVector<CTavoButton*>& buttons() const { return m_buttons; }
    CTavoButton* button(int index) const { return m_buttons.value(index); }
    const CTXMLSoftkeys& softkeys() const { return m_softkeys; }
    const QMap<QString, QString>& ctxKeys() const { return m_ctxKeys; }
    const QMap<QString, int>& selectedIndices() const { return m_selectedIndex; }
    const QMap<int, int>& overlapMap() const { return m_overlapMap; }
    const QList<QPair<QString, QString>>& permanentSoftkeys() const { return m_permanent; }
    CTavoFlyoutCluster* flyout() const { return m_flyout; }
    int openFlyoutKey() const { return m_openFlyoutKey; }
    QTimer& visibilityTimer() { return m_visibilityTimer; }
    bool renderMoreSk() const { return m_renderMoreSk; }
    bool putMoreAtPageEnd() const { return m_putMoreAtPageEnd; }
    bool renderMoreAsFlyout() const { return m_renderMoreAsFlyout; }
    bool iconsInverted() const { return m_iconsInverted; }
    bool uniqueLabelIds() const { return m_uniqueLabelIds; }
    bool analyticsEnabled() const { return m_analyticsEnabled; }
    bool mirroringActive() const { return m_mirroringActive; }
    int flyoutMode() const { return m_flyoutMode; }
    const QString& menuTitle() const { return m_menuTitle; }
    bool isForceHidden() const { return m_forceHidden; }
    int numVoicemailMessages() const { return m_numVoicemailMessages; }
    int numActiveCalls() const { return m_numActiveCalls; }
    bool isPhoneLocked() const { return m_isPhoneLocked; }
    bool isInOOBMode() const { return m_isInOOBMode; }

signals:
    void softkeyChanged();
    void validateCtxKeyUpdate();

public slots:
    void setNumVoicemailMessages(int count);
    void setVoicemailLocation(int location);
    void setIsMrPaired(bool paired, int displays);
    void setIsMrPaired(bool paired);
    void setIsInCall(bool inCall);
    void setIsSoftwareUpdateAvailable(bool available);
    void setIsCalendarEnabled(bool enabled);
    void setNumActiveCalls(int count);
    void setIsUsbCall(bool usb);
    void setIsPttCall(bool ptt);
    void setShouldShowStopHdmiContent(bool show);
    void setVideoMute(bool mute);
    void setVideoUnmuteAllowed(bool allowed);
    void setSelfViewEnabled(bool enabled);
    void setSelfViewControlOption(int option);
    void setIsPhoneLocked(bool locked, bool lockedByUser);
    void setIsPhoneLocked(bool locked);
    void setIsRecentCallsEnabled(bool enabled);
    void setIsDirectoryEnabled(bool enabled);
    void setIsContactsEnabled(bool enabled);
    void setIsLyncDirectoryOverride(bool on);
    void setIsCorporateDirectoryEnabled(bool enabled);
    void setIsSettingsEnabled(bool enabled);
    void setIsBluetoothEnabled(bool enabled);
    void setIsAlexaEnabled(bool enabled);
    void setMenuTitle(QString title);
    void setCanStartRecording(bool can);
    void setCanStopRecording(bool can);
    void setCanPauseRecording(bool can);
    void setCanResumeRecording(bool can);
    void setCameraControlEnable(bool enabled);
    void setShouldShowCamera(bool show);
    void setShouldShowLayoutWhileInCall(bool show);
    void setIsInOOBMode(bool on);
    void setSystemInfoChanged();

    // value 1 shows, 0 hides and 2 disables the context sensitive key url.
    void onCtxSensitiveSkReq(QString url, QString data, int value);
    void determineVisibility();
    void onLocalEvent(QString url, QString data);
    void onFlyoutClosed();

protected slots:
    bool onWidgetEvent(QString url, QString data) override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    void clearSelectedDefaultIndex(const CTXMLSoftkeys& keys);
    void clearVisibleCtxSensitiveSks(const CTXMLSoftkeys& keys);
    void findOverlappedNonCtxSensitiveSks(const CTXMLSoftkeys& keys, const QList<int>& excluded);
    // Gives a button its key; a new key drops the fading press of the old one.
    void initButton(CTavoButton* button, TavoButtonSettings& settings, const QString& pseudoState,
                    const QString& data);
    void applyOobState(CTavoButton* button);
    void closeFlyout(bool animated);
    bool flyoutOpen() const;
    void equaliseLabelFonts();
    void showMoreKeys();
    // Stores a state input and asks for the document again when it changed.
    template <typename T> void store(T& field, const T& value);

    CTavoPageView* m_pageView;
    CTavoLabelWidget* m_badge;
    QVector<CTavoButton*> m_buttons;
    CTXMLSoftkeys m_softkeys;
    QTimer m_visibilityTimer;
    int m_openFlyoutKey;
    bool m_renderMoreSk;
    bool m_putMoreAtPageEnd;
    bool m_renderMoreAsFlyout;
    bool m_mirroringActive;

    // State inputs of the permanent keys' rules.
    int m_numVoicemailMessages;
    int m_voicemailLocation;
    bool m_isMrPaired;
    int m_mrDisplays;
    bool m_isInCall;
    bool m_isSoftwareUpdateAvailable;
    bool m_isCalendarEnabled;
    int m_numActiveCalls;
    bool m_isUsbCall;
    bool m_isPttCall;
    bool m_shouldShowStopHdmiContent;
    bool m_videoMute;
    bool m_videoUnmuteAllowed;
    bool m_selfViewEnabled;
    int m_selfViewControlOption;
    bool m_isPhoneLocked;
    bool m_isPhoneLockedByUser;
    bool m_isRecentCallsEnabled;
    bool m_isDirectoryEnabled;
    bool m_isContactsEnabled;
    bool m_isLyncDirectoryOverride;
    bool m_isCorporateDirectoryEnabled;
    bool m_isSettingsEnabled;
    bool m_isBluetoothEnabled;
    bool m_isAlexaEnabled;
    bool m_canStartRecording;
    bool m_canStopRecording;
    bool m_canPauseRecording;
    bool m_canResumeRecording;
    bool m_cameraControlEnable;
    bool m_shouldShowCamera;
    bool m_shouldShowLayoutWhileInCall;
    bool m_isInOOBMode;
    bool m_showDaisyChainIndicator;

    bool m_uniqueLabelIds;
    int m_flyoutMode;
    QString m_menuTitle;
    CTXMLSoftkeys m_sourceSoftkeys;
    SoftkeyLayoutTypeT m_layoutType;
    QList<int> m_excluded;
    bool m_forceHidden;
    bool m_contentMenuVisible;
    bool m_dragged;
    QMap<QString, QString> m_ctxKeys;
    QMap<QString, int> m_selectedIndex;
    QPointer<CTavoFlyoutCluster> m_flyout;
    QMap<int, int> m_overlapMap;
    QMap<QString, QRegExp> m_pseudoStateMap;
    QList<QPair<QString, QString>> m_permanent;
    bool m_iconsInverted;
    bool m_analyticsEnabled;
    bool m_timerConnected;
    // Scratch of the permanent keys' merge (48 kB): made by the first merge, kept
    // to spare the stack; bars without permanent keys never make it.
    std::unique_ptr<CTXMLSoftkeys> m_merged;
    QMap<CTavoLabelWidget*, int> m_resizedLabels;  // labels made smaller, with their own size
};
