#pragma once
#include "tgui_export.h"
// The central object of a GUI process. It owns the link to the core, the
// database link, the translator and the shared document root, and turns every
// frame from the core into a state change, a signal or a virtual call. A host
// derives from it, builds its screens in initWidgets and handles the documents
// of its screens in an override of handleTXmlMsg.
#include <QByteArray>
#include <QDomDocument>
#include <QFont>
#include <QHash>
#include <QList>
#include <QMap>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QTcpSocket>
#include <QTimer>
#include <QVector>
#include <QWidget>
#include <memory>

#include "core/AppDefs.h"
#include "core/CTavoCoreCommunicator.h"
#include "data/CTavoDb.h"
#include "layout/CTavoSettings.h"
#include "layout/CTavoTranslator.h"
#include "style/CTavoImage.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoStyleSheetFile.h"
#include "style/CTavoWidgetStyle.h"

#include "CTXMLQws.h"
#include "CTXMLRoot.h"

class CTavoLayoutWidget;
class QDomNode;
class QPropertyAnimation;

class TGUI_EXPORT CTavoLayoutMgr : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(qreal spinnerRotationAngle READ spinnerRotationAngle WRITE setSpinnerRotationAngle)
public:
    CTavoLayoutMgr(QWidget* parent = nullptr, Qt::WindowFlags flags = Qt::WindowFlags(),
                   bool noCoreLink = false);
    ~CTavoLayoutMgr() override;

    static CTavoLayoutMgr* instance();

    virtual void showLayoutMgr(bool sendEvent);
    virtual void hideLayoutMgr();
    virtual void requestTranslations(const QVector<int>& ids, bool storeOnly);
    virtual void setCoreComIP(const QString& address);
    virtual void setCoreComTlsForRemote(bool secure);
    virtual void setIsUpdating(bool updating);
    virtual void collectAndDumpUiXml(bool send);
    virtual void handleTAReportMemshowCommand();
    virtual void reportForSpecificWidgets(QList<QObject*>& done, QDomNode& parent);
    virtual QString systemName() const;
    virtual QString systemIp(bool ipv6) const;
    virtual QString systemNumber() const;
    virtual QString contentPIN() const;
    virtual bool isNetworkUp() const;
    virtual bool wasPairedWithHub() const;
    virtual QString title() const;
    virtual bool isFlyoutOpen() const;
    virtual bool isGlobalMenuLimited() const;
    virtual bool isCallInputVisible() const;
    virtual bool isCallStatusHidden() const;
    virtual void updateCallSoftkeys();

    void setDefaultLineView(bool on) { m_defaultLineView = on; }
    bool isDefaultLineViewSet() const { return m_defaultLineView; }
    static QPoint getSoftkeyPos(int index);
    CTavoLayoutWidget* getChildWgt(int id);
    bool isAppConnected(GuiAppsT app) const { return (m_connectedApps & int(app)) != 0; }
    int connectedApps() const { return m_connectedApps; }
    void setDaisyChainedIP(const QString& address) { m_daisyChainedIP = address; }
    const QString& daisyChainedIP() const { return m_daisyChainedIP; }
    QString defaultCoreComIP() const;
    bool setShowDaisyChainedScreen(bool show);
    bool isDaisyChainedScreenShown() const { return m_showDaisyChainedScreen; }
    // The last UI report built (test automation only).
    const QDomDocument& uiDocument() const { return m_uiDocument; }
    void showPopup(const QString& text);
    CTavoLayoutWidget* whoIsOnTopAndVisible(const QList<CTavoLayoutWidget*>& exclude);
    QRect styledRect() const { return m_styledRect; }
    qreal spinnerRotationAngle() const { return m_spinnerAngle; }
    int isFontLoadRequired(const QString& language);

    // State read by hosts and tests.
    QString language() const { return m_language; }
    bool languageChanged() const { return m_languageChanged; }
    int layoutType() const { return m_layoutType; }
    int configDigit() const { return m_configDigit; }
    int japaneseFontConfig() const { return m_japaneseFontConfig; }
    QVector<int> translationIds() const { return m_translationIds; }
    QString configFile() const { return m_configFile; }
    QString skinFile() const { return m_skinFile; }
    QString managerStyleFile() const { return m_managerStyleFile; }
    QString coreComIP() const { return m_coreComIP; }
    int coreComPort() const { return m_coreComPort; }
    QString tavosimServerIP() const { return m_tavosimIP; }
    int tavosimServerPort() const { return m_tavosimPort; }
    CTavoCoreCommunicator* coreCom() const { return m_coreCom; }
    CTavoCoreCommunicator* localCom() const { return m_localCom; }
    CTavoDb& db() { return m_db; }
    CTavoTranslator& translator() { return m_translator; }
    QTimer& shutdownTimer() { return m_shutdownTimer; }
    static CTXMLRoot& xmlRoot() { return m_xmlRoot; }

    // The skin: the file last applied, the manager's sheet and its block.
    CTavoStyleSheetFile* styleSheetFile() const { return m_skin.get(); }
    CTavoStyleSheet& styleSheet() { return m_styleSheet; }
    const CTavoWidgetStyle& managerStyle() const { return m_managerStyle; }
    QString fontPath() const { return m_fontPath; }
    QString iconPath() const { return m_iconPath; }
    QBrush* backgroundBrush() const { return m_backgroundBrush; }
    const CTavoImage& backgroundImage() const { return m_backgroundImage; }
    const CTavoImage& statusBackgroundImage() const { return m_statusBackgroundImage; }
    const CTavoImage& fadedBackgroundImage() const { return m_fadedBackgroundImage; }
    const CTavoImage& bootingImage() const { return m_bootingImage; }
    const CTavoImage& spinnerImage() const { return m_spinnerImage; }
    QPoint bootingImageLocation() const { return m_bootingImgLocation; }
    QSize bootingImageSize() const { return m_bootingImgSize; }
    QPropertyAnimation* spinnerAnimation() const { return m_spinnerAnimation; }
    unsigned firstMenuDelay() const { return m_firstMenuDelay; }
    QString mainAppName() const { return m_mainAppName; }
    QTimer* refreshTimer() const { return m_refreshTimer; }
    bool usePaneSwitching() const { return m_usePaneSwitching; }
    bool cjkFontSupport() const { return m_cjkFontSupport; }
    bool nextGenUI() const { return m_nextGenUI; }
    bool navBarSticky() const { return m_navBarSticky; }
    bool customDirectoriesRequired() const { return m_customDirectoriesRequired; }
    unsigned customDirectories() const { return m_customDirectories; }
    bool useZenithIcons() const { return m_useZenithIcons; }
    bool useOneBitIcons() const { return m_useOneBitIcons; }
    bool isTransparent() const { return m_transparent; }
    bool isBackgroundFaded() const { return m_backgroundFaded; }
    bool useBootingBackground() const { return m_useBootingBackground; }
    bool showSpinner() const { return m_showSpinner; }
    int spinnerTicks() const { return m_spinnerTicks; }
    QString bootingText() const { return m_bootingText; }
    void setBootingText(const QString& text);
    void setUseBootingBackground(bool on);
    int japaneseNewFontId() const { return m_JapaneseNewFontId; }
    // The lock screen's validate key is dimmed, not hidden, while its field is too short.
    bool lockScreenDimming() const { return m_lockScreenDimming; }
    void setLockScreenDimming(bool on) { m_lockScreenDimming = on; }
    int japaneseOldFontId() const { return m_JapaneseOldFontId; }

    // Stop order: Quit (or QuitBrow) first, then handleShutdown.
    void QuitBrow();

signals:
    void evLayoutMgr(int eventType, int data);
    void contextSensitiveSk(QString keyUrl, QString data, int value);
    void shutDown(int exitCode = 0);
    void receivedTranslations(const QHash<QString, QString>& translations);
    void appConnectionStatusChanged(GuiAppsT app, bool bConnected);
    void evSimulateEvent(const QString& keyValue);
    void languageChange(QString locale);

public slots:
    virtual void onNewDocument(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type);
    virtual void onNewLocalDocument(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type);
    virtual void onWidgetEvent(QString url, QString data, int type);
    virtual void onNewQWSDocument(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type);
    virtual void handleShutdown(int exitCode = 0);
    void fadeOutBackground();
    void focusInBackground();
    virtual void onSimConnected();
    virtual void sendDbRequest(const QString& text);
    void onLanguageChange(QString locale);
    virtual void Quit();
    virtual void onDaisyChainPortOpenOnHub();
    virtual void onDaisyChainPortClosedOnHub();
    void setSpinnerRotationAngle(qreal angle);
    void setTransparent(bool transparent);

protected:
    virtual void removeJapaneseFontFile(bool newFont);
    virtual void initWidgets();
    virtual void setManagerStyle(QString& skinFile, bool announce);
    virtual void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type);
    virtual void processCoreLocalConfiguration();
    virtual void processLocalPopup();

    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    void initializeSettings();
    void applyManagerStyle(CTavoWidgetStyle* style);
    void loadFonts();
    void handleConfiguration();
    void handleLanguage(const char* code);
    void handleAppConnectionStatusChange(int mask);
    void handleUpdateTextEvent();
    virtual void sendShowQWSEvent();

    QString m_language;
    bool m_languageChanged = false;
    int m_layoutType = -1;
    QString m_fontPath;
    QList<int> m_loadedFonts;
    int m_configDigit = 0;
    QString m_iconPath;
    QMap<int, CTavoLayoutWidget*> m_childWidgets;
    CTavoStyleSheet m_styleSheet;
    CTavoDb m_db;
    CTXMLQws m_qwsDocument;
    CTavoWidgetStyle m_managerStyle;
    CTavoSettings m_settings;
    CTavoCoreCommunicator* m_coreCom = nullptr;
    CTavoCoreCommunicator* m_localCom = nullptr;
    bool m_showDaisyChainedScreen = false;
    QString m_daisyChainedIP;
    QString m_coreComIP;
    int m_coreComPort = 10010;
    QTcpSocket m_daisySocket;
    CTavoTranslator m_translator;
    QVector<int> m_translationIds;
    QDomDocument m_uiDocument;
    QTimer m_shutdownTimer;
    int m_connectedApps = 0;
    QString m_configFile;
    QString m_skinFile;
    int m_japaneseFontConfig = 0;

    QString m_tavosimIP;
    int m_tavosimPort = 10020;
    QString m_managerStyleFile;   // the skin last handed to setManagerStyle
    QRect m_styledRect;
    bool m_defaultLineView = false;
    // Kept for the life of the process: surfaces fetch their items from it.
    std::unique_ptr<CTavoStyleSheetFile> m_skin;
    QBrush* m_backgroundBrush = nullptr;
    CTavoImage m_backgroundImage;
    CTavoImage m_statusBackgroundImage;
    CTavoImage m_fadedBackgroundImage;
    CTavoImage m_bootingImage;
    QPoint m_bootingImgLocation;
    QSize m_bootingImgSize = QSize(-1, -1);
    CTavoImage m_spinnerImage;
    QPropertyAnimation* m_spinnerAnimation = nullptr;
    unsigned m_firstMenuDelay = 0;
    QString m_mainAppName;
    QTimer* m_refreshTimer = nullptr;
    bool m_usePaneSwitching = false;
    bool m_cjkFontSupport = true;
    bool m_nextGenUI = false;
    bool m_navBarSticky = false;
    bool m_customDirectoriesRequired = true;
    unsigned m_customDirectories = 0;
    bool m_useZenithIcons = false;
    bool m_useOneBitIcons = false;
    bool m_transparent = false;
    bool m_useBootingBackground = false;
    bool m_showSpinner = false;
    bool m_backgroundFaded = false;
    qreal m_spinnerAngle = 0;
    int m_spinnerTicks = 0;
    QString m_bootingText;
    // Built once, so that a frame of the boot screen allocates nothing.
    QFont m_bootingFont = QFont(QStringLiteral("Droid"), 18, 75);
    int m_JapaneseNewFontId = -1;
    int m_JapaneseOldFontId = -1;
    bool m_lockScreenDimming = false;

    static CTXMLRoot m_xmlRoot;
    static QPoint m_softkeyPos[5];

private:
    static CTavoLayoutMgr* s_instance;
};

// Sends text through the manager's link: the local link when asked for and a
// daisy-chained screen is shown, the core link otherwise.
TGUI_EXPORT void tavoToolSendAppMsg(const char* text, GuiAppsT destination, GuiAppsMsgTypeT type,
                        bool useLocal = false);
