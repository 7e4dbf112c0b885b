#pragma once
// zedagui, the sample phone host. It boots on the manager's boot screen, shows
// the home screen once the core has sent its configuration, turns presses into
// events for the core and reacts to the core's documents: configuration,
// translations, application status and softkeys.
//
// Besides the documents of a real core it understands the demo's own, so that a
// scenario can drive it as test automation would (README, "The main job"):
//   <Event uri="Demo:Press">key=NAME</Event>    press and release the button NAME
//   <Event uri="Demo:Drag">from=X,Y;to=X,Y;ms=N;hold=MS</Event>   a finger drag in window
//                                               pixels; with hold, shot while still held
//   <Event uri="Demo:Key">key=NAME;keypad=1;hold=MS</Event>   a key press and release
//   <Event uri="Demo:Wait">ms=N</Event>        a screenshot N ms later
//   <Event uri="Demo:Show">screen=NAME</Event> show the screen NAME ("home" ...)
//   <Event uri="Demo:End"/>                     the scenario is over
//   <Event uri="Demo:Directory">[user=U;password=P]</Event>  ask the directory
//       over SOAP; the step's screenshot waits for the answer, and the core
//       gets an event "Directory:Result" with the outcome as its data
//   <Event uri="Demo:Kill">app=NAME</Event>    kill the supervised child NAME
//   <Event uri="Demo:CtxKey">url=URL;value=1</Event>  ask the softkey bar for a
//       context sensitive key, as a text field does (1 show, 0 hide, 2 dim)
// and, besides the configuration pairs, "voicemail=N" sets the number of new
// voicemail messages the softkey bar's badge tells of. The demo presses a
// softkey by the name "softkey-N": the bar's N-th button, where it stands now.
// and a pair "step=NAME" in any document's event names what it shows. While
// the meeting details (screen "meeting") show, each change of a supervised
// child's state goes to the core as
// <Event uri="Demo:Child">name=NAME;state=running|stopped|failed;run=N</Event>.
//
// Screens: the home screen and the softkey bar are always there; every other
// screen registers under the URL of the button that opens it ("Home:CallHistory")
// and is built when it is first shown; "SoftKey:Back" returns home. A flyout document of
// the core fills the softkey flyout (CZedaMenuFlyout), which the softkey at the
// document's "keyIndex" opens; the configuration pairs "systemName" and
// "systemNumber" name the phone on its banner. The softkey bar (CTavoSoftkey)
// opens a flyout of its own for keys that share a place or carry choices.
#include <QHash>
#include <QPair>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QTimer>

#include "layout/CTavoLayoutMgr.h"

class CTavoStyleSheetFile;
class CTavoDbTable;
class CZedaDirectoryScreen;
class CZedaHomeScreen;
class CZedaMenuFlyout;
class CZedaNetworkScreen;
class CTavoSoftkey;
class CTXMLSoftkeys;
class CZedaSupervisor;

class CZedaGui : public CTavoLayoutMgr
{
    Q_OBJECT
public:
    // Keys of the manager's registry of surfaces.
    enum { HomeScreen = 1, SoftkeyBar = 2, DirectoryScreen = 3, MenuFlyout = 100 };

    CZedaGui();
    ~CZedaGui() override;

    // The sample skin, a resource of the program: used when the configured one is unusable.
    static constexpr const char* kBuiltInSkin = ":/rc/skin/default.xml";

    bool isBooted() const { return m_booted; }
    CZedaHomeScreen* homeScreen() const { return m_home; }
    CTavoSoftkey* softkeyBar() const { return m_softkeys; }
    CZedaMenuFlyout* softkeyFlyout() const { return m_keyFlyout; }
    CZedaSupervisor* supervisor() const { return m_supervisor; }
    CZedaDirectoryScreen* directoryScreen() const { return m_directory; }
    CZedaMenuFlyout* menuFlyout() const { return m_menu; }
    CZedaNetworkScreen* networkScreen() const { return m_network; }
    // A screen shown when a button sends openUrl; the manager owns it.
    void addScreen(const QString& openUrl, CTavoLayoutWidget* screen);
    // Shows the screen of that object name ("home" or a registered one) instead of
    // the current one; false if there is none.
    bool showScreen(const QString& name);
    CTavoLayoutWidget* currentScreen() const { return m_current; }
    // The time as the status strip shows it: 24-hour or 12-hour clock.
    static QString clockText(const QTime& time, bool hours24);

    // What the flyout's banner shows.
    QString systemName() const override { return m_systemName; }
    QString systemNumber() const override { return m_systemNumber; }
    QString systemIp(bool ipv6) const override;
    bool isNetworkUp() const override;
    bool isFlyoutOpen() const override;

signals:
    // A document from the core has taken effect; step is its name for a screenshot.
    void documentHandled(const QString& step);
    // A document from the core is about to take effect.
    void documentArriving();
    void pressRequested(const QString& buttonName);
    // Demo documents whose screenshot waits until their action has ended.
    void dragRequested(const QPoint& from, const QPoint& to, int ms, const QString& step, int holdMs = 0);
    void keyRequested(const QString& key, bool keypad, int holdMs, const QString& step);
    void waitRequested(int ms, const QString& step);
    void scenarioEnded();
    // The first time anything reached the screen.
    void firstFramePainted();

public slots:
    void onWidgetEvent(QString url, QString data, int type) override;

protected:
    void initWidgets() override;
    void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void leaveBootScreen();
    void refreshClock();
    void refreshPhoneState();
    void initSupervision();
    // A screen opened by openUrl and named name, built by buildScreen when first shown.
    void addLazyScreen(const QString& openUrl, const QString& name);
    CTavoLayoutWidget* buildScreen(const QString& openUrl);
    // The home screen counts the rows of the directory's "contacts" table.
    void watchContacts();
    void refreshContactCount();
    void switchTo(CTavoLayoutWidget* screen);
    // A document for the bar; force applies an unchanged one again (the phone's state changed).
    void showSoftkeys(const CTXMLSoftkeys& keys, bool force);
    bool handleDemoDocument(const CTXMLRoot& root);
    // The name of a document for its screenshot: its "step" pair, else what it held.
    static QString stepName(const CTXMLRoot& root);

    CZedaHomeScreen* m_home = nullptr;
    CTavoSoftkey* m_softkeys = nullptr;
    CZedaMenuFlyout* m_keyFlyout = nullptr;  // the bar's own flyout
    // The last request of each context key: a field asks when it takes the
    // focus, which may be before the document with its keys arrives.
    QHash<QString, QPair<QString, int>> m_ctxRequests;
    CZedaSupervisor* m_supervisor = nullptr;
    CZedaDirectoryScreen* m_directory = nullptr;
    CZedaMenuFlyout* m_menu = nullptr;
    QString m_menuOwnerUrl;  // the URL of the key the flyout came for
    QString m_systemName;
    QString m_systemNumber;
    CZedaNetworkScreen* m_network = nullptr;
    CTavoLayoutWidget* m_current = nullptr;
    QHash<QString, CTavoLayoutWidget*> m_screens;  // by the URL that opens them; null until built
    QStringList m_screenOrder;                     // those URLs in the order the screens were added
    QHash<QString, QString> m_screenNames;         // the object names of the screens not built yet
    QStringList m_lastChildState;                  // name, state, run, detail
    QTimer m_clockTimer;
    CTavoDbTable* m_contacts = nullptr;
    int m_contactCount = -1;
    QString m_lastAction;
    bool m_booted = false;
    bool m_painted = false;
};
