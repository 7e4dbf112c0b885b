#include "CZedaGui.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QPaintEvent>
#include <QTime>
#include <QVector>
#include <cstring>
#include <iterator>

#include "CTXMLEvent.h"
#include "CZedaCallHistoryScreen.h"
#include "CZedaContactsScreen.h"
#include "CZedaDirectoryScreen.h"
#include "CZedaHomeScreen.h"
#include "CZedaMeetingScreen.h"
#include "CZedaMenuFlyout.h"
#include "CZedaAccountScreen.h"
#include "CZedaNetworkScreen.h"
#include "CZedaSupervisor.h"
#include "data/CTavoDbTable.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoEvent.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoSoftkey.h"
#include "log/GuiLog.h"
#include "style/CTavoStyleSheetFile.h"
#include "tools/TavoToolFlags.h"

namespace {
// The numbers of the strings this host shows; the manager asks the core for
// them again whenever the language changes.
const int kStringIds[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};

// Every item this host asks its skin for; without one of them a screen has no
// size and no press can land.
const char* const kSkinItems[] = {"home", "softkeys", "directory", "flyout", "network",
                                  "account", "call-history", "meeting"};

// What makes the skin unusable, or "" when it is usable.
QString skinProblem(CTavoStyleSheetFile* skin)
{
    if (!skin)
        return QStringLiteral("it cannot be read or has no \"manager\" item");
    QStringList missing;
    for (const char* item : kSkinItems) {
        if (!skin->get(QString::fromLatin1(item)))
            missing << QStringLiteral("\"%1\"").arg(QLatin1String(item));
    }
    return missing.isEmpty() ? QString() : QStringLiteral("it has no item %1").arg(missing.join(QStringLiteral(", ")));
}

QString itemStyle(CTavoStyleSheetFile* skin, const char* item, QString* attributes)
{
    const QString name = QString::fromLatin1(item);
    if (!skin || !skin->get(name)) {
        guiLog(4, "zedagui: the skin has no item \"%s\"", item);
        return QString();
    }
    *attributes = skin->getAttributes(name);
    return skin->getStyle(name);
}
}  // namespace

CZedaGui::CZedaGui()
    : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), false)
{
    setObjectName(QStringLiteral("zedagui"));
    connect(this, &CTavoLayoutMgr::languageChange, this, [](const QString& code) {
        if (!code.isEmpty())
            guiLog(2, "zedagui: language %s", qPrintable(code));
    });
    connect(this, &CTavoLayoutMgr::appConnectionStatusChanged, this, [this](GuiAppsT app, bool up) {
        const char* name = appDefsName(app);
        guiLog(2, "zedagui: peer %s %s", name ? name : "?", up ? "up" : "down");
        // The directory waits until the boot screen is on the screen.
        if (app == GuiAppsDbs && up && m_painted)
            watchContacts();
    });
    // The manager's translator has taken them by now: it was connected first.
    connect(this, &CTavoLayoutMgr::receivedTranslations, this, [this](const QHash<QString, QString>& t) {
        guiLog(2, "zedagui: %d translations", t.size());
        if (m_home)
            m_home->retranslateUi();
        for (CTavoLayoutWidget* screen : qAsConst(m_screens))
            screen->retranslateUi();
    });
    connect(this, &CTavoLayoutMgr::evLayoutMgr, this, [this](int event, int) {
        if (event == 1026)
            refreshClock();
    });
    requestTranslations(QVector<int>(std::begin(kStringIds), std::end(kStringIds)), true);

    m_clockTimer.setInterval(10000);
    connect(&m_clockTimer, &QTimer::timeout, this, &CZedaGui::refreshClock);
    initWidgets();
}

CZedaGui::~CZedaGui()
{
    // The children go first, while their reports can still reach this object.
    delete m_supervisor;
    m_supervisor = nullptr;
}

QString CZedaGui::clockText(const QTime& time, bool hours24)
{
    return time.toString(hours24 ? QStringLiteral("HH:mm") : QStringLiteral("h:mm AP"));
}

void CZedaGui::initWidgets()
{
    CTavoStyleSheetFile* skin = styleSheetFile();
    // A missing or broken skin would leave every screen without a size. The
    // library stays silent about it; the sample host says so plainly and
    // takes the sample skin built into it instead.
    const QString problem = skinProblem(skin);
    if (!problem.isEmpty()) {
        guiLog(5, "zedagui: the skin %s is unusable (%s); using the sample skin built into zedagui",
               qPrintable(skinFile()), qPrintable(problem));
        QString builtIn = QString::fromLatin1(kBuiltInSkin);
        setManagerStyle(builtIn, true);
        skin = styleSheetFile();
    }
    m_home = new CZedaHomeScreen(this);
    // The boot screen comes first; the home screen's web paragraph after it.
    m_home->holdBackIntro(true);
    m_softkeys = new CTavoSoftkey(this);
    m_softkeys->setObjectName(QStringLiteral("softkeys"));
    // Not over the boot screen.
    m_softkeys->forceHiding(true);
    m_childWidgets.insert(HomeScreen, m_home);
    m_childWidgets.insert(SoftkeyBar, m_softkeys);
    m_directory = new CZedaDirectoryScreen(this);
    m_childWidgets.insert(DirectoryScreen, m_directory);
    connect(m_directory, &CZedaDirectoryScreen::finished, this, [this](const QString& step, const QString& summary) {
        onWidgetEvent(QStringLiteral("Directory:Result"), summary, 0);
        emit documentHandled(step);
    });

    QString attributes;
    QString style = itemStyle(skin, "home", &attributes);
    if (!style.isEmpty())
        m_home->applySkin(style, attributes);
    attributes.clear();
    style = itemStyle(skin, "softkeys", &attributes);
    // Laid out before its first document: the bar keeps none without a size.
    if (!style.isEmpty())
        m_softkeys->updateStyle(style, attributes, true);
    // A change of the phone's state asks for the document again.
    connect(m_softkeys, &CTavoSoftkey::softkeyChanged, this,
            [this] { showSoftkeys(m_softkeys->getXMLSoftKeyData(), true); });
    attributes.clear();
    style = itemStyle(skin, "directory", &attributes);
    if (!style.isEmpty())
        m_directory->applySkin(style, attributes);
    m_menu = new CZedaMenuFlyout(this);
    m_childWidgets.insert(MenuFlyout, m_menu);
    attributes.clear();
    style = itemStyle(skin, "flyout", &attributes);
    if (!style.isEmpty())
        m_menu->applySkin(style, attributes);
    m_keyFlyout = new CZedaMenuFlyout(this);
    m_keyFlyout->setObjectName(QStringLiteral("softkey-flyout"));
    if (!style.isEmpty())
        m_keyFlyout->applySkin(style, attributes);
    m_softkeys->setFlyout(m_keyFlyout);

    m_network = new CZedaNetworkScreen(this);
    attributes.clear();
    style = itemStyle(skin, "network", &attributes);
    if (!style.isEmpty())
        m_network->applySkin(style, attributes);
    addScreen(QStringLiteral("Home:Settings"), m_network);
    // The text fields' context keys reach the bar through the manager's signal.
    connect(m_network, &CZedaNetworkScreen::contextSensitiveSk, this, &CTavoLayoutMgr::contextSensitiveSk);
    connect(this, &CTavoLayoutMgr::contextSensitiveSk, this,
            [this](const QString& url, const QString& data, int value) {
                m_ctxRequests.insert(url, qMakePair(data, value));
            });
    connect(this, &CTavoLayoutMgr::contextSensitiveSk, m_softkeys, &CTavoSoftkey::onCtxSensitiveSkReq);
    connect(m_softkeys, &CTavoLayoutWidget::layoutWidgetSignal, m_network, &CZedaNetworkScreen::onSoftkey);

    // The Account screen has no tile: the demo shows it by name.
    auto* account = new CZedaAccountScreen(this);
    attributes.clear();
    style = itemStyle(skin, "account", &attributes);
    if (!style.isEmpty())
        account->applySkin(style, attributes);
    addScreen(QStringLiteral("Demo:Account"), account);
    connect(account, &CZedaAccountScreen::contextSensitiveSk, this, &CTavoLayoutMgr::contextSensitiveSk);
    connect(m_softkeys, &CTavoLayoutWidget::layoutWidgetSignal, account, &CZedaAccountScreen::onSoftkey);

    initSupervision(skin);
    auto* calls = new CZedaCallHistoryScreen(this);
    attributes.clear();
    style = itemStyle(skin, "call-history", &attributes);
    if (!style.isEmpty())
        calls->applySkin(style, attributes);
    addScreen(QStringLiteral("Home:CallHistory"), calls);
    auto* contacts = new CZedaContactsScreen(this);
    attributes.clear();
    style = itemStyle(skin, "contacts", &attributes);
    if (!style.isEmpty())
        contacts->applySkin(style, attributes);
    addScreen(QStringLiteral("Home:Contacts"), contacts);

    refreshClock();
    refreshPhoneState();
    m_clockTimer.start();
    // The phone boots until the core has told it its configuration.
    setBootingText(tr("Starting", "Starting"));
    setUseBootingBackground(true);
}

void CZedaGui::initSupervision(CTavoStyleSheetFile* skin)
{
    auto* meeting = new CZedaMeetingScreen(this);
    QString attributes;
    const QString style = itemStyle(skin, "meeting", &attributes);
    if (!style.isEmpty())
        meeting->applySkin(style, attributes);
    addScreen(QStringLiteral("Home:Meeting"), meeting);

    // The children of the "AutoStart" list start with the GUI. While the
    // meeting details show, the core hears of every change of their state.
    m_supervisor = new CZedaSupervisor(this, configFile());
    meeting->setSupervisor(m_supervisor);
    connect(m_supervisor, &CZedaSupervisor::childStateChanged, meeting,
            [meeting](const QString& name, const QString& state, int run, const QString&) {
                if (!meeting->isVisible())
                    return;
                const CTavoEvent event(CTavoEvent::NoEvent, QStringLiteral("Demo:Child"),
                                       QStringLiteral("name=%1;state=%2;run=%3").arg(name, state).arg(run));
                tavoToolSendAppMsg(event.serialize().toUtf8().constData(), GuiAppsTavoapp, GuiAppsMsgTxml, false);
            });
    // Once the boot screen is up: starting a child blocks until it runs.
    connect(this, &CZedaGui::firstFramePainted, m_supervisor, [this] { m_supervisor->onStartRequested(true); },
            Qt::QueuedConnection);
}

void CZedaGui::leaveBootScreen()
{
    if (m_booted)
        return;
    m_booted = true;
    m_home->holdBackIntro(false);
    setUseBootingBackground(false);
    m_current = m_home;
    m_home->Show(false);
    m_softkeys->forceHiding(false);
    guiLog(2, "zedagui: home screen shown");
}

void CZedaGui::refreshClock()
{
    if (m_home)
        m_home->setClock(clockText(QTime::currentTime(), tavoToolGet24HrsFormat()));
}

void CZedaGui::refreshPhoneState()
{
    if (m_home)
        m_home->setPhoneState(isAppConnected(GuiAppsTavoapp), isAppConnected(GuiAppsDbs));
}

void CZedaGui::watchContacts()
{
    if (m_contacts)
        return;
    m_contacts = db().subscribeToTable(QStringLiteral("contacts"));
    if (!m_contacts)
        return;
    // At once, not later: a document right behind a notification must find
    // the new count on the screen.
    connect(m_contacts, &QAbstractItemModel::rowsInserted, this, &CZedaGui::refreshContactCount);
    connect(m_contacts, &QAbstractItemModel::rowsRemoved, this, &CZedaGui::refreshContactCount);
    connect(m_contacts, &QAbstractItemModel::modelReset, this, &CZedaGui::refreshContactCount);
}

void CZedaGui::refreshContactCount()
{
    if (!m_contacts || !m_home || m_contacts->rowCount() == m_contactCount)
        return;
    m_contactCount = m_contacts->rowCount();
    guiLog(2, "zedagui: %d contacts", m_contactCount);
    m_home->setContactCount(m_contactCount);
}

void CZedaGui::addScreen(const QString& openUrl, CTavoLayoutWidget* screen)
{
    m_screens.insert(openUrl, screen);
    m_childWidgets.insert(HomeScreen + SoftkeyBar + m_screens.size(), screen);
    screen->hide();
}

bool CZedaGui::showScreen(const QString& name)
{
    if (m_home && m_home->objectName() == name) {
        switchTo(m_home);
        return true;
    }
    for (CTavoLayoutWidget* screen : qAsConst(m_screens)) {
        if (screen->objectName() == name) {
            switchTo(screen);
            return true;
        }
    }
    guiLog(4, "zedagui: no screen \"%s\"", qPrintable(name));
    return false;
}

void CZedaGui::switchTo(CTavoLayoutWidget* screen)
{
    if (!m_booted || screen == m_current)
        return;
    if (m_current)
        m_current->Hide(false);
    m_current = screen;
    screen->Show(false);
    // The directory line belongs to the home screen.
    m_directory->followScreen(screen == m_home);
    guiLog(2, "zedagui: screen %s", qPrintable(screen->objectName()));
}

void CZedaGui::onWidgetEvent(QString url, QString data, int type)
{
    Q_UNUSED(type);
    // A press with no press URL, or a finger that slid off a key: nothing to tell.
    if (url.isEmpty() || url == QLatin1String("button-cancelled"))
        return;
    // Opening a screen is the GUI's own business; the core still hears of the press.
    if (CTavoLayoutWidget* screen = m_screens.value(url))
        switchTo(screen);
    else if (url == QLatin1String("SoftKey:Back"))
        switchTo(m_home);
    // The softkey that owns the flyout opens and closes it; another key that comes
    // to stand in its place later does not.
    if (m_menu && m_menu->hasContent() && url == m_menuOwnerUrl) {
        CTavoButton* key = m_softkeys->button(m_menu->keyIndex());
        if (key && key->isVisible() && key->url() == url)
            m_menu->toggleFrom(key);
    }
    // The data travels as one "data" pair, whatever its own syntax.
    QString pairs;
    if (!data.isEmpty())
        pairs = QString::fromLatin1(CTXMLUriLib::varname(TxmlVarData)) + QLatin1Char('=')
            + CTXMLDataConverter::encodeEntities(data);
    const CTavoEvent event(CTavoEvent::NoEvent, url, pairs);
    const QByteArray text = event.serialize().toUtf8();
    guiLog(2, "zedagui: sending %s", text.constData());
    tavoToolSendAppMsg(text.constData(), GuiAppsTavoapp, GuiAppsMsgTxml, false);
}

QString CZedaGui::systemIp(bool ipv6) const
{
    // The address this phone has towards its core.
    const QHostAddress core(coreComIP());
    if (core.isLoopback())
        return ipv6 ? QStringLiteral("::1") : QStringLiteral("127.0.0.1");
    const QAbstractSocket::NetworkLayerProtocol wanted = ipv6 ? QAbstractSocket::IPv6Protocol
                                                              : QAbstractSocket::IPv4Protocol;
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (!address.isLoopback() && address.protocol() == wanted)
            return address.toString();
    }
    // Not known yet, as the banner understands it.
    return QStringLiteral("...");
}

bool CZedaGui::isNetworkUp() const
{
    return isAppConnected(GuiAppsTavoapp);
}

bool CZedaGui::isFlyoutOpen() const
{
    return (m_menu && m_menu->isOpen()) || (m_keyFlyout && m_keyFlyout->isOpen());
}

void CZedaGui::handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type)
{
    emit documentArriving();
    CTavoLayoutMgr::handleTXmlMsg(data, source, type);
    const CTXMLRoot& root = xmlRoot();
    if (root.flags & TXML_FLAG_EVENT) {
        guiLog(2, "zedagui: event %s with %d pairs", root.uri, root.pairCount());
        const int uriType = CTXMLUriLib::type(root.uri);
        if (uriType == TxmlUriConfig) {
            if (*root.value("systemName"))
                m_systemName = QString::fromUtf8(root.value("systemName"));
            if (*root.value("systemNumber"))
                m_systemNumber = QString::fromUtf8(root.value("systemNumber"));
            if (*root.value("voicemail"))
                m_softkeys->setNumVoicemailMessages(QByteArray(root.value("voicemail")).toInt());
            // The bar's permanent keys follow the lock: it lays itself out again.
            if (*root.value("locked"))
                m_softkeys->setIsPhoneLocked(QByteArray(root.value("locked")) == "1");
            leaveBootScreen();
            refreshClock();
        } else if (uriType == TxmlUriAppStatus) {
            refreshPhoneState();
        } else if (uriType == TxmlUriUiReport || uriType == TxmlUriMemshow) {
            // Test automation looks at the screen; no picture of its own.
            return;
        } else if (handleDemoDocument(root)) {
            return;
        }
    }
    if (root.flags & TXML_FLAG_SOFTKEYS) {
        // The key that owned an open flyout may be gone.
        if (m_menu->isOpen())
            m_menu->flyIn(false, CTavoFlyoutCluster::FlyinByOwner);
        showSoftkeys(root.softkeys, false);
    }
    if (root.flags & TXML_FLAG_FLYOUT) {
        const char* keyIndex = root.value(CTXMLUriLib::varname(TxmlVarKeyIndex));
        m_menu->setContent(root.flyout, *keyIndex ? QByteArray(keyIndex).toInt() : -1);
        CTavoButton* owner = m_softkeys->button(m_menu->keyIndex());
        m_menuOwnerUrl = owner ? owner->url() : QString();
    }
    emit documentHandled(stepName(root));
}

void CZedaGui::showSoftkeys(const CTXMLSoftkeys& keys, bool force)
{
    QList<int> excluded;
    m_softkeys->set(keys, excluded, SoftkeyLayoutDefault, force);
    // The fields asked for their keys before the keys were there.
    for (auto it = m_ctxRequests.constBegin(); it != m_ctxRequests.constEnd(); ++it) {
        if (it.value().second != 0)
            m_softkeys->onCtxSensitiveSkReq(it.key(), it.value().first, it.value().second);
    }
    QStringList labels;
    for (CTavoButton* button : m_softkeys->buttons()) {
        if (button->isVisible())
            labels << button->label();
    }
    guiLog(2, "zedagui: %d softkeys: %s", int(labels.size()), qPrintable(labels.join(QLatin1String(" | "))));
}

namespace {
// "X,Y" in window pixels; false if it is not two integers.
bool parsePoint(const char* text, QPoint* point)
{
    const QList<QByteArray> xy = QByteArray(text).split(',');
    bool okX = false;
    bool okY = false;
    if (xy.size() == 2)
        *point = QPoint(xy[0].trimmed().toInt(&okX), xy[1].trimmed().toInt(&okY));
    return okX && okY;
}
}  // namespace

// The demo's own actions; true when the document was one of them.
bool CZedaGui::handleDemoDocument(const CTXMLRoot& root)
{
    const char* uri = root.uri;
    if (std::strncmp(uri, "Demo:", 5) != 0)
        return false;
    const QString step = stepName(root);
    if (std::strcmp(uri, "Demo:Press") == 0) {
        emit pressRequested(QString::fromUtf8(root.value("key")));
    } else if (std::strcmp(uri, "Demo:Drag") == 0) {
        QPoint from;
        QPoint to;
        const int ms = QByteArray(root.value("ms")).toInt();
        const int hold = QByteArray(root.value("hold")).toInt();
        if (parsePoint(root.value("from"), &from) && parsePoint(root.value("to"), &to))
            emit dragRequested(from, to, qBound(0, ms, 10000), step, qBound(0, hold, 10000));
        else
            guiLog(4, "zedagui: Demo:Drag needs from=X,Y;to=X,Y");
    } else if (std::strcmp(uri, "Demo:Key") == 0) {
        const QByteArray hold = root.value("hold");
        emit keyRequested(QString::fromUtf8(root.value("key")),
                          QByteArray(root.value("keypad")) == "1", qBound(0, hold.toInt(), 10000), step);
    } else if (std::strcmp(uri, "Demo:Wait") == 0) {
        emit waitRequested(qBound(0, QByteArray(root.value("ms")).toInt(), 60000), step);
    } else if (std::strcmp(uri, "Demo:Show") == 0) {
        showScreen(QString::fromUtf8(root.value("screen")));
        emit documentHandled(step);
    } else if (std::strcmp(uri, "Demo:End") == 0) {
        emit scenarioEnded();
    } else if (std::strcmp(uri, "Demo:Directory") == 0) {
        // The step is shot when the call has ended.
        m_directory->request(QString::fromUtf8(root.value("user")), QString::fromUtf8(root.value("password")), step);
    } else if (std::strcmp(uri, "Demo:CtxKey") == 0) {
        emit contextSensitiveSk(QString::fromUtf8(root.value("url")), QString::fromUtf8(root.value("data")),
                                QByteArray(root.value("value")).toInt());
        emit documentHandled(step);
    } else if (std::strcmp(uri, "Demo:Kill") == 0) {
        m_supervisor->kill(QString::fromUtf8(root.value("app")));
    } else if (std::strcmp(uri, "Demo:SoftkeyLook") == 0) {
        // A look of the bar's own block ("CTavoSoftkey:menu" holds the skin's
        // permanent keys); the keys of the same document follow.
        m_softkeys->setPseudoState(QString::fromUtf8(root.value("look")));
        return false;
    } else {
        // "Demo:Step" and the like only name what the rest of the document shows.
        return false;
    }
    return true;
}

QString CZedaGui::stepName(const CTXMLRoot& root)
{
    if (root.flags & TXML_FLAG_EVENT) {
        const QString step = QString::fromUtf8(root.value("step"));
        if (!step.isEmpty())
            return step;
    }
    if (root.flags & TXML_FLAG_SOFTKEYS)
        return QStringLiteral("softkeys");
    if (root.flags & TXML_FLAG_FLYOUT)
        return QStringLiteral("flyout");
    if (root.flags & TXML_FLAG_TRANSLATIONS)
        return QStringLiteral("translations");
    if (root.flags & TXML_FLAG_EVENT) {
        switch (CTXMLUriLib::type(root.uri)) {
        case TxmlUriConfig:
            return QStringLiteral("config");
        case TxmlUriAppStatus:
            return QStringLiteral("status");
        default:
            break;
        }
    }
    return QStringLiteral("document");
}

void CZedaGui::paintEvent(QPaintEvent* event)
{
    CTavoLayoutMgr::paintEvent(event);
    if (!m_painted) {
        m_painted = true;
        emit firstFramePainted();
        // What the first frame did not need is done once it is out.
        QTimer::singleShot(0, this, [this] {
            if (m_home)
                m_home->holdBackIntro(false);
        });
        if (isAppConnected(GuiAppsDbs))
            QTimer::singleShot(0, this, &CZedaGui::watchContacts);
    }
}
