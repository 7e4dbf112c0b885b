#include "layout/CTavoLayoutMgr.h"

#include <QApplication>
#include <QClipboard>
#include <QDomElement>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMoveEvent>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QPropertyAnimation>
#include <QScreen>
#include <QSettings>
#include <QStringList>
#include <cstdlib>
#include <cstring>

#include "automation/CTavoUITA.h"
#include "automation/TavoUiReport.h"
#include "core/TavoGlobals.h"
#include "layout/CTXMLDataConverter.h"
#include "layout/CTavoEvent.h"
#include "layout/CTavoLayoutWidget.h"
#include "layout/CTavoLocale.h"
#include "log/GuiLog.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoResourceRepository.h"
#include "style/TavoProfile.h"
#include "style/TavoSkinConfig.h"
#include "widgets/KineticScroll.h"
#include "tools/TavoToolFlags.h"

#include "CTXMLEvent.h"
#include "CTXMLUriLib.h"

CTXMLRoot CTavoLayoutMgr::m_xmlRoot;
QPoint CTavoLayoutMgr::m_softkeyPos[5];
CTavoLayoutMgr* CTavoLayoutMgr::s_instance = nullptr;

namespace {
const int kMaxConfigPairs = 64;

// A fixed text record may fill its buffer without a terminator.
QString fromRecord(const char* text, std::size_t size)
{
    return QString::fromUtf8(text, int(strnlen(text, size)));
}

const char* nameOrEmpty(GuiAppsT app)
{
    const char* name = appDefsName(app);
    return name ? name : "";
}

void sendThrough(CTavoCoreCommunicator* com, const char* text, GuiAppsT destination,
                 GuiAppsMsgTypeT type)
{
    if (!com) {
        guiLog(5, "Error sending message to %s", nameOrEmpty(destination));
        return;
    }
    com->send(text, destination, type);
}
}  // namespace

CTavoLayoutMgr::CTavoLayoutMgr(QWidget* parent, Qt::WindowFlags flags, bool noCoreLink)
    : QWidget(parent, flags)
{
    // Queued listeners of receivedTranslations need the type by name.
    qRegisterMetaType<QHash<QString, QString>>("QHash<QString,QString>");
    initializeSettings();
    setManagerStyle(m_skinFile, true);
    qputenv("DAISY_CHAINED_DEVICE", "0");

    connect(this, &CTavoLayoutMgr::shutDown, this, &CTavoLayoutMgr::handleShutdown);
    m_shutdownTimer.setSingleShot(true);
    m_shutdownTimer.setInterval(20000);
    // The slot itself, with its default code 0, so that a host's override ends the loop.
    connect(&m_shutdownTimer, SIGNAL(timeout()), this, SLOT(handleShutdown()));

    if (QCoreApplication::instance()) {
        QCoreApplication::installTranslator(&m_translator);
        connect(this, &CTavoLayoutMgr::receivedTranslations, &m_translator,
                &CTavoTranslator::acceptTranslations);
    }

    if (!noCoreLink) {
        m_coreCom = new CTavoCoreCommunicator(m_coreComIP, m_coreComPort, QString(), false);
        // The queued connection starts the socket thread and keeps every
        // document on the GUI thread, where m_xmlRoot is read.
        connect(m_coreCom, &CTavoCoreCommunicator::messageReceived, this,
                &CTavoLayoutMgr::onNewDocument, Qt::QueuedConnection);
    }

    connect(&m_db, &CTavoDb::tjdbRequest, this, &CTavoLayoutMgr::sendDbRequest);
    connect(&m_daisySocket, &QAbstractSocket::connected, this,
            &CTavoLayoutMgr::onDaisyChainPortOpenOnHub);
    connect(&m_daisySocket, &QAbstractSocket::errorOccurred, this,
            &CTavoLayoutMgr::onDaisyChainPortClosedOnHub);
    CTavoEvent::registerTavoEvents();

    // Set last: nothing above may reach the manager through instance().
    s_instance = this;
}

CTavoLayoutMgr::~CTavoLayoutMgr()
{
    if (QCoreApplication::instance())
        QCoreApplication::removeTranslator(&m_translator);
    if (s_instance == this)
        s_instance = nullptr;
    // m_coreCom outlives the manager by design; its owner ends it.
    delete m_localCom;
}

CTavoLayoutMgr* CTavoLayoutMgr::instance()
{
    return s_instance;
}

namespace {
// A port of the INI file as the link will use it: the number (0 when it is not
// one), taken as 16 bits. Anything but a whole number from 0 to 65535 is kept
// that way, but the log says what was written and what is used.
int configuredPort(QSettings& ini, const QString& file, const QString& key, int fallback)
{
    const QVariant value = ini.value(key, fallback);
    const int port = value.toInt();
    bool ok = false;
    const int exact = value.toString().trimmed().toInt(&ok);
    if (!ok || exact != port || port < 0 || port > 65535)
        guiLog(4, "%s: %s \"%s\" is not a port from 0 to 65535; using port %d", qPrintable(file),
               qPrintable(key), qPrintable(value.toString()), int(quint16(port)));
    return port;
}
}  // namespace

void CTavoLayoutMgr::initializeSettings()
{
    const QString profile = tavoGetActiveProfile(true);
    const QString defaultConfig = tavoGetDefaultConfigFile();
    if (profile.isEmpty())
        m_configFile = defaultConfig;
    else
        m_configFile = QString::asprintf("Skins/%s.conf", qPrintable(profile));
    guiLog(0, "Active profile: %s", qPrintable(m_configFile));

    QSettings ini(m_configFile, QSettings::IniFormat);
    const QString app = QCoreApplication::applicationName();
    ini.beginGroup(app);
    m_skinFile = ini.value(QStringLiteral("SkinFile"), tavoGetDefaultSkinFile(app)).toString();
    m_coreComIP = ini.value(QStringLiteral("ComServerIP"), QStringLiteral("127.0.0.1")).toString();
    m_coreComPort = configuredPort(ini, m_configFile, QStringLiteral("ComServerPort"), 10010);
    m_tavosimIP =
        ini.value(QStringLiteral("tavosimServerIP"), QStringLiteral("127.0.0.1")).toString();
    m_tavosimPort = configuredPort(ini, m_configFile, QStringLiteral("tavosimServerPort"), 10020);
    ini.endGroup();
}

void CTavoLayoutMgr::setManagerStyle(QString& skinFile, bool announce)
{
    m_managerStyleFile = skinFile;
    std::unique_ptr<CTavoStyleSheetFile> skin(new CTavoStyleSheetFile);
    skin->parse(skinFile);
    CTavoStyleItem* item = skin->get(QStringLiteral("manager"));
    if (!item) {
        guiLog(3, "CTavoLayoutMgr::setManagerStyle - no manager item in %s", qPrintable(skinFile));
        return;
    }
    const QByteArray style = item->m_style.toLatin1();
    const QByteArray attributes = item->m_attributes.toLatin1();
    m_skin = std::move(skin);

    // Everything the old skin named is gone with the repository: no handle may
    // keep pointing into it, whatever the new skin provides.
    StyleResourceContainer.reset();
    m_backgroundBrush = nullptr;
    m_backgroundImage = CTavoImage();
    m_statusBackgroundImage = CTavoImage();
    m_bootingImage = CTavoImage();
    m_spinnerImage = CTavoImage();
    m_styleSheet.set(style.constData(), attributes.constData());

    CTavoWidgetStyle* managerStyle = m_styleSheet.get(this, QString());
    if (managerStyle && managerStyle->isValid())
        applyManagerStyle(managerStyle);
    if (announce)
        emit evLayoutMgr(1021, 0);
}

namespace {
// The device's navigation bar belongs to the platform; these are its hooks.
void navigationBar(const char* action)
{
    guiLog(1, "CTavoLayoutMgr navigation bar: %s", action);
}
}  // namespace

void CTavoLayoutMgr::applyManagerStyle(CTavoWidgetStyle* style)
{
    m_managerStyle = *style;
    const CTavoImage noImage(QMetaType::QImage, nullptr);

    CTavoImage::s_removeVideoKey = style->Bool(QStringLiteral("remove-video-key"), false);

    bool found = false;
    QPoint location = style->Location(QStringLiteral("location"), QPoint(), &found);
    if (found) {
        if (location == QPoint(-1, -1)) {
            QScreen* screen = QGuiApplication::primaryScreen();
            const QRect available = screen ? screen->availableGeometry() : QRect();
            location = QPoint(available.x() + (available.width() - width()) / 2,
                              available.y() + (available.height() - height()) / 2);
        }
        move(location);
        m_styledRect.moveTopLeft(location);
    }
    const QSize size = style->Size(QStringLiteral("size"), QSize(), &found);
    if (found) {
        setFixedSize(size);
        m_styledRect.setSize(size);
    }

    m_fontPath = style->String(QStringLiteral("font-path"), QStringLiteral("droid"));
    loadFonts();
    const QString family = style->String(QStringLiteral("default-font-family"), QStringLiteral("Droid Sans"));
    const unsigned pixels = style->UInt(QStringLiteral("default-font-px"), 13);
    if (!family.isEmpty() && pixels != 0 && qobject_cast<QApplication*>(QCoreApplication::instance())) {
        QFont font(family);
        font.setPixelSize(int(qMin(pixels, 4096u)));
        QApplication::setFont(font);
    }

    m_backgroundBrush = style->BrushPtr(QStringLiteral("background"), nullptr);
    m_backgroundImage = style->Image(QStringLiteral("background-image"), noImage);
    m_statusBackgroundImage = style->Image(QStringLiteral("status-background-image"), noImage);
    m_statusBackgroundImage.append(m_backgroundImage);
    m_bootingImage = style->Image(QStringLiteral("booting-image"), noImage);
    m_spinnerImage = style->Image(QStringLiteral("booting-spinner-image"), noImage);
    m_bootingImgLocation = style->Location(QStringLiteral("booting-img-location"), QPoint(0, 0));
    m_bootingImgSize = style->Size(QStringLiteral("booting-img-size"), QSize(-1, -1));
    m_firstMenuDelay = style->UInt(QStringLiteral("delay-first-menu-show"), 0);
    m_mainAppName = style->String(QStringLiteral("main-app-apk-name"), QString());

    const unsigned period = style->UInt(QStringLiteral("forced-refresh-period"), 0);
    if (period > 0) {
        if (!m_refreshTimer) {
            m_refreshTimer = new QTimer(this);
            connect(m_refreshTimer, &QTimer::timeout, this, [this] { update(); });
        }
        m_refreshTimer->start(int(qMin(period, 86400000u)));
    }

    // Read a second time, as the skins have always been read: the plain
    // background goes over the status background once more.
    m_statusBackgroundImage = style->Image(QStringLiteral("status-background-image"), noImage);
    m_statusBackgroundImage.append(m_backgroundImage);
    m_customDirectoriesRequired = style->Bool(QStringLiteral("custom-directories-required"), true);

    const CTavoImage layer = style->Image(QStringLiteral("background-fadeout-layer-image"), noImage);
    if (!layer.isNull()) {
        // A copy of its own, so that fading leaves the status background as it is.
        m_fadedBackgroundImage << m_statusBackgroundImage;
        m_fadedBackgroundImage.append(layer);
    }

    m_iconPath = style->String(QStringLiteral("icon-path"), QString()).remove(QLatin1Char('"'));
    for (int i = 1; i <= 5; ++i)
        m_softkeyPos[i - 1] = style->Location(QString::asprintf("softkey-%d-location", i), QPoint(0, 0));

    // Changing the flags hides a window; a skin change must not.
    const bool wasVisible = isVisible();
    setWindowFlags(Qt::FramelessWindowHint);
    if (wasVisible)
        show();
    KineticScroll::s_bShowFrameRate = style->Bool(QStringLiteral("show-frame-rate"), false);
    m_usePaneSwitching = style->Bool(QStringLiteral("use-pane-switching"), false);
    if (style->Bool(QStringLiteral("use-greyscale-icons"), false))
        iconRepository.useGreyscaleIcons();
    if (style->Bool(QStringLiteral("use-onebit-icons"), false))
        iconRepository.useOneBitIcons();
    m_useZenithIcons = style->Bool(QStringLiteral("use-zenith-icons"), false);
    if (m_useZenithIcons)
        iconRepository.useZenithIcons();
    m_cjkFontSupport = style->Bool(QStringLiteral("cjk-font-support"), true);
    m_nextGenUI = style->Bool(QStringLiteral("nextgenUI-enabled"), false);
    if (!style->Bool(QStringLiteral("show-navigation-bar"), true)) {
        if (style->Bool(QStringLiteral("make-nav-bar-sticky"), false)) {
            m_navBarSticky = true;
            navigationBar("disableNavigationStickyKeepStatusbar");
        } else {
            navigationBar("disableNavigationBar");
        }
    }
    m_useOneBitIcons = style->Bool(QStringLiteral("use-onebit-icons"), false);
    // The same key serves as a flag and as a number.
    m_customDirectories = style->UInt(QStringLiteral("custom-directories-required"), 0);

    if (!m_bootingImage.isNull() && !m_spinnerAnimation) {
        m_spinnerAnimation = new QPropertyAnimation(this, "spinnerRotationAngle", this);
        m_spinnerAnimation->setDuration(1000);
        m_spinnerAnimation->setStartValue(0.0);
        m_spinnerAnimation->setEndValue(45.0);
        m_spinnerAnimation->setLoopCount(-1);
    }
}

void CTavoLayoutMgr::loadFonts()
{
    QString root = QString::fromLocal8Bit(qgetenv("QT_QWS_FONTDIR"));
    if (root.isEmpty())
        root = QLibraryInfo::location(QLibraryInfo::LibrariesPath) + QStringLiteral("/fonts");
    const QDir dir(root + QLatin1Char('/') + m_fontPath);
    const QFileInfoList files = dir.entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo& file : files) {
        const int id = QFontDatabase::addApplicationFont(file.filePath());
        if (id < 0) {
            guiLog(4, "Failed to add font: %s", qPrintable(file.filePath()));
            continue;
        }
        const QString name = file.fileName();
        if (name == QLatin1String("DroidFallbackSansJapanese.ttf") || name == QLatin1String("DroidSansJapanese.ttf"))
            m_JapaneseNewFontId = id;
        else if (name == QLatin1String("DroidSansFallback.ttf"))
            m_JapaneseOldFontId = id;
    }
    static const char* const fixed[] = {"MTLmr3m.ttf", "DroidSansFallback.ttf", "DroidSansJapanese.ttf",
                                        "DroidNaskh-Regular.ttf", "DroidNaskh-Bold.ttf"};
    for (const char* name : fixed) {
        const QString path = QStringLiteral("./Skins/leaf/fonts/") + QLatin1String(name);
        if (QFontDatabase::addApplicationFont(path) < 0)
            guiLog(4, "Failed to add font: %s", qPrintable(path));
        else
            guiLog(0, "Added font: %s", qPrintable(path));
    }
    emit languageChange(QString());
}

void CTavoLayoutMgr::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    if (m_transparent) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.fillRect(rect(), Qt::transparent);
        return;
    }
    painter.setClipRegion(event->region());

    if (m_useBootingBackground && !m_bootingImage.isNull()) {
        if (m_bootingImgSize.width() >= 0 && m_bootingImgSize.height() >= 0) {
            painter.fillRect(rect(), Qt::black);
            m_bootingImage.paint(&painter, QRect(m_bootingImgLocation, m_bootingImgSize));
        } else {
            m_bootingImage.paint(&painter, rect());
        }
        if (m_showSpinner && !m_spinnerImage.isNull()) {
            const QPointF centre(width() / 2, (height() / 2) * 1.5);
            const QSize spinner = m_spinnerImage.size();
            const int top = int(centre.y()) - spinner.height() / 2;
            painter.save();
            painter.translate(centre);
            painter.rotate(m_spinnerAngle);
            painter.translate(-centre);
            m_spinnerImage.paint(&painter, QRect(int(centre.x()) - spinner.width() / 2, top,
                                                 spinner.width(), spinner.height()));
            painter.restore();
            painter.setPen(Qt::white);
            painter.setFont(m_bootingFont);
            painter.drawText(QRect(0, top - 200, width(), 49), Qt::AlignCenter, m_bootingText);
        }
        return;
    }

    if (m_backgroundBrush && m_backgroundBrush->style() != Qt::NoBrush) {
        painter.fillRect(rect(), *m_backgroundBrush);
        return;
    }

    const CTavoImage& image = m_backgroundFaded ? m_fadedBackgroundImage : m_statusBackgroundImage;
    if (image.isNull())
        return;
    const QSize status = m_statusBackgroundImage.size();
    if (status.width() > width() && status.height() > height()) {
        image.paint(&painter, rect());
    } else {
        const QPoint offset((width() - status.width()) / 2, (height() - status.height()) / 2);
        image.paint(&painter, QRect(offset, image.size()));
    }
}

// --- documents from the core ------------------------------------------------

void CTavoLayoutMgr::onNewDocument(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type)
{
    if (data.isEmpty())
        return;
    if (type == GuiAppsMsgTxml)
        handleTXmlMsg(data, source, type);
    else if (type == GuiAppsMsgDb)
        m_db.tjdbResponse(QString::fromUtf8(data));
}

void CTavoLayoutMgr::handleTXmlMsg(QByteArray& data, GuiAppsT, GuiAppsMsgTypeT)
{
    m_xmlRoot.parse(data);
    m_languageChanged = false;

    if ((m_xmlRoot.flags & TXML_FLAG_TRANSLATIONS) && !m_xmlRoot.translations.empty()) {
        QHash<QString, QString> translations;
        translations.reserve(int(m_xmlRoot.translations.size()));
        for (const TranslationT& t : m_xmlRoot.translations) {
            translations.insert(
                CTXMLDataConverter::decodeEntities(fromRecord(t.key, sizeof t.key)),
                CTXMLDataConverter::decodeEntities(fromRecord(t.value, sizeof t.value)));
        }
        guiLog(2, "handleTXmlMsg received %d translated strings", int(m_xmlRoot.translations.size()));
        emit receivedTranslations(translations);
        // The vector can be large; give its memory back.
        std::vector<TranslationT>().swap(m_xmlRoot.translations);
    }

    if (!(m_xmlRoot.flags & TXML_FLAG_EVENT))
        return;
    if (m_xmlRoot.remaining() > 0) {
        guiLog(5, "handleTXmlMsg TVNT_XML_EVENT processed %d pairs but had %d bytes left",
               m_xmlRoot.pairCount(), m_xmlRoot.remaining());
    }

    switch (CTXMLUriLib::type(m_xmlRoot.uri)) {
    case TxmlUriConfig:
        if (m_xmlRoot.pairCount() >= 1)
            handleConfiguration();
        break;
    case TxmlUriAppStatus:
        handleAppConnectionStatusChange(int(m_xmlRoot.appStatus));
        break;
    case TxmlUriUiReport:
        if (tavoToolGetTestAutomationFlag() && !m_showDaisyChainedScreen)
            collectAndDumpUiXml(true);
        break;
    case TxmlUriUpdateText:
        handleUpdateTextEvent();
        break;
    case TxmlUriMemshow:
        if (tavoToolGetTestAutomationFlag() && !m_showDaisyChainedScreen)
            handleTAReportMemshowCommand();
        break;
    default:
        break;
    }
}

void CTavoLayoutMgr::handleConfiguration()
{
    const int count = qMin(kMaxConfigPairs, m_xmlRoot.pairCount());
    for (int i = 0; i < count; ++i) {
        const char* value = m_xmlRoot.pairValue(i);
        switch (CTXMLUriLib::vartype(m_xmlRoot.pairName(i))) {
        case TxmlVarLanguage:
            handleLanguage(value);
            break;
        case TxmlVarTestAutomation:
            guiLog(2, "Test Automation Flag is set to %s", value);
            tavoToolSetTestAutomationFlag(std::atoi(value) != 0);
            break;
        case TxmlVarDatabase:
            guiLog(2, "Database is set to '%s'", value);
            m_db.setDbName(QByteArray(value));
            break;
        case TxmlVar24Hours: {
            const bool on = std::atoi(value) != 0;
            if (on != tavoToolGet24HrsFormat()) {
                guiLog(2, "24hrs format is set to %d", int(on));
                tavoToolSet24HrsFormat(on);
                emit evLayoutMgr(1026, 0);
            }
            break;
        }
        case TxmlVarXt9:
            tavoToolsSetXt9Enabled(std::atoi(value) > 0);
            guiLog(2, "Nuance XT9 is %s", tavoToolsGetXt9Enabled() ? "enabled" : "disabled");
            break;
        case TxmlVarLayoutType: {
            const int digit = value[0] - '0';
            if (digit != m_layoutType) {
                m_layoutType = digit;
                m_languageChanged = true;
                guiLog(2, "Layout Type is set to %s", value);
            }
            break;
        }
        case TxmlVarConfigDigit:
            m_configDigit = value[0] - '0';
            break;
        case TxmlVarJapaneseFont: {
            const int config = std::atoi(value);
            if (config != m_japaneseFontConfig) {
                m_japaneseFontConfig = config;
                removeJapaneseFontFile(config != 0);
            } else {
                guiLog(3, "No change in the Japaneses font config");
            }
            break;
        }
        default:
            break;
        }
    }
}

void CTavoLayoutMgr::handleLanguage(const char* code)
{
    const QString language = QString::fromUtf8(code);
    if (language == m_language) {
        guiLog(3, "New Language(%s) same as existing language(%s)", code, qPrintable(m_language));
        return;
    }
    guiLog(3, "There is a change in language[New Language(%s)  existing language(%s)]", code,
           qPrintable(m_language));
    m_language = language;
    emit languageChange(language);

    const QLocale previous;
    const CTavoLocale locale(language);
    QLocale::setDefault(locale);
    if (previous.language() == locale.language() && previous.name() == locale.name())
        return;
    QLocale::setDefault(locale);
    m_languageChanged = true;
    m_layoutType = language == QLatin1String("fr-fr") ? 1 : 0;
    requestTranslations(QVector<int>(), false);
}

void CTavoLayoutMgr::requestTranslations(const QVector<int>& ids, bool storeOnly)
{
    if (!ids.isEmpty())
        m_translationIds = ids;
    if (m_translationIds.isEmpty() || storeOnly)
        return;
    QByteArray list;
    for (int i = 0; i < m_translationIds.size(); ++i) {
        if (i)
            list += ',';
        list += QByteArray::number(m_translationIds.at(i));
    }
    CTXMLEvent event;
    event.set(TxmlUriTranslate);
    const std::string encoded = CTXMLUriLib::percentEncode(list.constData());
    event.addPair(CTXMLUriLib::varname(TxmlVarData), encoded.c_str());
    const std::string text = event.serialize();
    sendThrough(m_coreCom, text.c_str(), GuiAppsTavoapp, GuiAppsMsgTxml);
}

void CTavoLayoutMgr::handleAppConnectionStatusChange(int mask)
{
    if (mask == m_connectedApps)
        return;
    m_db.setConnected((mask & GuiAppsDbs) != 0);
    for (int bit = 0; bit < GuiAppsCount; ++bit) {
        const int app = 1 << bit;
        const bool now = (mask & app) != 0;
        if (now == ((m_connectedApps & app) != 0))
            continue;
        guiLog(0, "Application [%s] status has changed to [%s]", nameOrEmpty(GuiAppsT(app)),
               now ? "Connected" : "Disconnected");
        emit appConnectionStatusChanged(GuiAppsT(app), now);
    }
    // Last, so that the slots above still see the old mask.
    m_connectedApps = mask;
}

void CTavoLayoutMgr::handleUpdateTextEvent()
{
    // Read before the nested event loop below lets the next document in.
    QString text = QString::fromUtf8(m_xmlRoot.value(int(TxmlVarData)));
    const QString flag = QString::fromUtf8(m_xmlRoot.value(int(TxmlVarReplaceAll)));

    QClipboard* clipboard = QGuiApplication::clipboard();
    if (QApplication::focusWidget() && clipboard) {
        // The field that had the focus gets its state back, wherever the focus went.
        QPointer<QLineEdit> edit = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        const bool wasReadOnly = edit && edit->isReadOnly();
        if (edit)
            edit->setReadOnly(false);
        auto sendKey = [](QEvent::Type type, int key, Qt::KeyboardModifiers mods, const QString& t) {
            if (QWidget* focus = QApplication::focusWidget()) {
                QKeyEvent event(type, key, mods, t);
                QCoreApplication::sendEvent(focus, &event);
            }
        };
        auto paste = [&] {
            sendKey(QEvent::KeyPress, 86, Qt::ControlModifier, QString());
            sendKey(QEvent::KeyRelease, 86, Qt::ControlModifier, QString());
        };
        if (flag == QLatin1String("true")) {
            sendKey(QEvent::KeyPress, 65, Qt::ControlModifier, QString());
            sendKey(QEvent::KeyRelease, 65, Qt::ControlModifier, QString());
        }
        const QChar first = text.isEmpty() ? QChar(0) : text.at(0);
        if (first.isDigit() && first.unicode() < 128) {
            const int key = 48 + first.digitValue();
            sendKey(QEvent::KeyPress, key, Qt::NoModifier, QString(first));
            sendKey(QEvent::KeyRelease, key, Qt::NoModifier, QString(first));
            QElapsedTimer wait;
            wait.start();
            while (wait.elapsed() < 300)
                QCoreApplication::processEvents(QEventLoop::AllEvents, int(qMin<qint64>(100, 300 - wait.elapsed())));
        } else {
            clipboard->setText(QString(first));
            paste();
            clipboard->clear();
        }
        text.remove(0, 1);
        clipboard->setText(text);
        paste();
        clipboard->clear();
        if (edit)
            edit->setReadOnly(wasReadOnly);
    }
    guiLog(2, "[CTavoLayoutMgr::handleUpdateTextEvent] Has Been Executed");
}

// --- the local link of a daisy-chained screen --------------------------------

void CTavoLayoutMgr::onNewLocalDocument(QByteArray data, GuiAppsT, GuiAppsMsgTypeT type)
{
    if (type != GuiAppsMsgTxml || data.isEmpty())
        return;
    m_xmlRoot.parse(data);
    if (m_xmlRoot.flags & TXML_FLAG_EVENT) {
        switch (CTXMLUriLib::type(m_xmlRoot.uri)) {
        case TxmlUriConfig:
            processCoreLocalConfiguration();
            break;
        case TxmlUriLocalQuery:
            if (m_localCom) {
                const QString pairs = QStringLiteral("%1=%2")
                                          .arg(QString::fromUtf8(CTXMLUriLib::varname(TxmlVarLocalScreen)))
                                          .arg(1);
                CTXMLEvent event;
                event.set(CTXMLUriLib::uri(TxmlUriGuiEvent));
                event.setData(pairs.toUtf8().constData());
                const std::string text = event.serialize();
                m_localCom->send(text.c_str(), GuiAppsTavoapp, GuiAppsMsgTxml);
            }
            break;
        case TxmlUriUiReport:
            if (tavoToolGetTestAutomationFlag() && m_showDaisyChainedScreen)
                collectAndDumpUiXml(true);
            break;
        case TxmlUriMemshow:
            if (tavoToolGetTestAutomationFlag() && m_showDaisyChainedScreen)
                handleTAReportMemshowCommand();
            break;
        case TxmlUriLocalPopup:
            processLocalPopup();
            break;
        default:
            break;
        }
    }
    if (m_xmlRoot.flags & TXML_FLAG_SOFTKEYS) {
        bool updating = false;
        for (int i = 0; i < 10 && !updating; ++i) {
            const int keyType = CTXMLUriLib::type(m_xmlRoot.softkeys[i].url);
            updating = keyType == TxmlUriUpdateCancel || keyType == TxmlUriUpdateProgress;
        }
        setIsUpdating(updating);
    }
    m_xmlRoot.marker = 0;
}

bool CTavoLayoutMgr::setShowDaisyChainedScreen(bool show)
{
    if (show == m_showDaisyChainedScreen)
        return false;
    m_showDaisyChainedScreen = show;
    const QString before = m_coreComIP;
    if (show) {
        qputenv("DAISY_CHAINED_DEVICE", "1");
        if (!m_localCom) {
            m_localCom = new CTavoCoreCommunicator(m_coreComIP, m_coreComPort, QString(), false);
            connect(m_localCom, &CTavoCoreCommunicator::messageReceived, this,
                    &CTavoLayoutMgr::onNewLocalDocument, Qt::QueuedConnection);
        }
        // The local link keeps talking to this device's core; the main link
        // moves to the chained device.
        if (m_daisyChainedIP != m_coreComIP)
            setCoreComIP(m_daisyChainedIP);
    } else {
        qputenv("DAISY_CHAINED_DEVICE", "0");
        if (m_localCom) {
            m_localCom->disconnect();
            m_localCom->shutDown();
            delete m_localCom;
            m_localCom = nullptr;
        }
        const QString home = defaultCoreComIP();
        if (home != m_coreComIP)
            setCoreComIP(home);
    }
    return before != m_coreComIP;
}

QString CTavoLayoutMgr::defaultCoreComIP() const
{
    QSettings ini(m_configFile, QSettings::IniFormat);
    ini.beginGroup(QCoreApplication::applicationName());
    return ini.value(QStringLiteral("ComServerIP"), QStringLiteral("127.0.0.1")).toString();
}

void CTavoLayoutMgr::setCoreComIP(const QString& address)
{
    if (address == m_coreComIP)
        return;
    m_coreComIP = address;
    if (m_coreCom)
        m_coreCom->setServerAddress(address);
}

void CTavoLayoutMgr::setCoreComTlsForRemote(bool secure)
{
    if (m_coreCom)
        m_coreCom->setSecure(secure);
}

// --- simulator documents ---------------------------------------------------

void CTavoLayoutMgr::onNewQWSDocument(QByteArray data, GuiAppsT, GuiAppsMsgTypeT)
{
    if (data.isEmpty())
        return;
    m_qwsDocument.parse(data);
    if (!(m_qwsDocument.flags & TXML_FLAG_EVENT))
        return;
    switch (CTXMLUriLib::qwsType(m_qwsDocument.uri)) {
    case TxmlQwsShow:
        showLayoutMgr(false);
        break;
    case TxmlQwsMove: {
        if (m_qwsDocument.pairCount() < 2)
            break;
        const QPoint target(std::atoi(m_qwsDocument.value(int(TxmlVarX))) + m_styledRect.x(),
                            std::atoi(m_qwsDocument.value(int(TxmlVarY))) + m_styledRect.y());
        const QByteArray mode(m_qwsDocument.value(int(TxmlVarKey)));
        const QPoint offset = target - pos();
        move(target);
        if (isVisible()) {
            for (CTavoLayoutWidget* w : qAsConst(m_childWidgets)) {
                if (w && !w->parent()) {
                    QPoint p = target;
                    w->moveAlong(p, mode.constData(), offset);
                }
            }
        }
        break;
    }
    case TxmlQwsKey: {
        if (m_qwsDocument.pairCount() < 1)
            break;
        const int eventType = std::atoi(m_qwsDocument.value(int(TxmlVarState)));
        if (eventType < 6 || eventType > 255)
            break;
        if (eventType == 18) {
            hideLayoutMgr();
        } else if ((eventType == 6 || eventType == 7) && m_qwsDocument.pairCount() >= 4) {
            QKeyEvent key(QEvent::Type(eventType), std::atoi(m_qwsDocument.value(int(TxmlVarKey))),
                          Qt::KeyboardModifiers(std::atoi(m_qwsDocument.value(int(TxmlVarData)))),
                          QString::fromUtf8(m_qwsDocument.value(int(TxmlVarAscii))));
            QWidget* focus = QApplication::focusWidget();
            QCoreApplication::sendEvent(focus && focus != this ? focus : this, &key);
        }
        break;
    }
    default:
        break;
    }
}

// --- widgets and geometry --------------------------------------------------

QPoint CTavoLayoutMgr::getSoftkeyPos(int index)
{
    if (index < 0 || index > 4)
        return QPoint(-1, -1);
    return m_softkeyPos[index];
}

CTavoLayoutWidget* CTavoLayoutMgr::getChildWgt(int id)
{
    if (id < 0 || id >= m_childWidgets.size())
        return nullptr;
    return m_childWidgets[id];
}

CTavoLayoutWidget* CTavoLayoutMgr::whoIsOnTopAndVisible(const QList<CTavoLayoutWidget*>& exclude)
{
    const QList<CTavoLayoutWidget*> children =
        findChildren<CTavoLayoutWidget*>(QString(), Qt::FindDirectChildrenOnly);
    const QRect local(width() / 4, height() / 4, width() / 2, height() / 2);
    for (int i = children.size() - 1; i >= 0; --i) {
        CTavoLayoutWidget* w = children.at(i);
        if (!w->isVisible() || exclude.contains(w) || !w->geometry().isValid())
            continue;
        // A window's frame is in screen coordinates, a child's in ours.
        const QRect test = w->isWindow() ? local.translated(mapToGlobal(QPoint(0, 0))) : local;
        if (w->frameGeometry().intersects(test)) {
            guiLog(2, "Top level w is %s", qPrintable(w->objectName()));
            return w;
        }
    }
    return nullptr;
}

void CTavoLayoutMgr::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    QPoint position = event->pos();
    const QPoint offset = event->pos() - event->oldPos();
    for (CTavoLayoutWidget* w : qAsConst(m_childWidgets)) {
        if (w && !w->parent())
            w->moveAlong(position, "moving", offset);
    }
}

void CTavoLayoutMgr::changeEvent(QEvent* event)
{
    if (bRebootInitiated)
        return;
    if (event->type() == QEvent::LanguageChange)
        emit evLayoutMgr(1022, 0);
    QWidget::changeEvent(event);
}

void CTavoLayoutMgr::showLayoutMgr(bool sendEvent)
{
    if (!geometry().isNull()) {
        setVisible(true);
        raise();
        update();
        activateWindow();
    }
    if (sendEvent)
        sendShowQWSEvent();
}

void CTavoLayoutMgr::hideLayoutMgr()
{
    for (CTavoLayoutWidget* w : qAsConst(m_childWidgets)) {
        if (w && !w->parent())
            w->hide();
    }
    hide();
}

void CTavoLayoutMgr::sendShowQWSEvent() {}

void CTavoLayoutMgr::showPopup(const QString& text)
{
    const QString data = QStringLiteral("text1=%1;text2=;").arg(text);
    onWidgetEvent(QString::fromUtf8(CTXMLUriLib::uri(TxmlUriPopup)), data, 0);
}

int CTavoLayoutMgr::isFontLoadRequired(const QString& language)
{
    const bool arabic = language == QLatin1String("ar-ae");
    if (m_language.isEmpty())
        return arabic ? 1 : 2;
    if (arabic)
        return m_loadedFonts.size() == 2 ? 1 : 0;
    static const QStringList asian = {QStringLiteral("zh-cn"), QStringLiteral("ja-jp"),
                                      QStringLiteral("ko-kr"), QStringLiteral("zh-tw")};
    if (asian.contains(language))
        return m_loadedFonts.size() == 1 ? 2 : 0;
    return 0;
}

void CTavoLayoutMgr::removeJapaneseFontFile(bool newFont)
{
    guiLog(2,
           "CTavoLayoutMgr::removeJapaneseFontFile : m_JapaneseNewFontId = [%d], m_JapaneseOldFontId "
           "= [%d], removeFontEnable : %d ",
           m_JapaneseNewFontId, m_JapaneseOldFontId, int(newFont));
    const int id = newFont ? m_JapaneseNewFontId : m_JapaneseOldFontId;
    if (id < 0)
        return;
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    for (const QString& family : families) {
        guiLog(2, "CTavoLayoutMgr::removeJapaneseFontFile: fontFile to be removed from the list is : [%s]",
               qPrintable(family));
    }
    QFontDatabase::removeApplicationFont(id);
}

// --- background state ------------------------------------------------------

void CTavoLayoutMgr::fadeOutBackground()
{
    if (!m_fadedBackgroundImage.isNull() && !m_backgroundFaded) {
        m_backgroundFaded = true;
        update();
    }
}

void CTavoLayoutMgr::focusInBackground()
{
    if (!m_fadedBackgroundImage.isNull() && m_backgroundFaded) {
        m_backgroundFaded = false;
        update();
    }
}

void CTavoLayoutMgr::setSpinnerRotationAngle(qreal angle)
{
    if (!m_useBootingBackground)
        return;
    m_spinnerAngle = angle;
    // A full-screen repaint for every step would be too much: one in eight.
    m_spinnerTicks = (m_spinnerTicks + 1) % 8;
    if (m_spinnerTicks == 0)
        update();
}

void CTavoLayoutMgr::setUseBootingBackground(bool on)
{
    if (m_useBootingBackground == on && m_showSpinner == on)
        return;
    m_useBootingBackground = on;
    m_showSpinner = on;
    if (m_spinnerAnimation) {
        if (on)
            m_spinnerAnimation->start();
        else
            m_spinnerAnimation->stop();
    }
    update();
    if (on)
        navigationBar(m_navBarSticky ? "disableNavigationBarSticky" : "disableNavigationBar");
    else if (!m_navBarSticky)
        navigationBar("enableNavigationBar");
}

void CTavoLayoutMgr::setBootingText(const QString& text)
{
    if (text == m_bootingText)
        return;
    m_bootingText = text;
    if (m_useBootingBackground)
        update();
}

void CTavoLayoutMgr::setTransparent(bool transparent)
{
    if (transparent == m_transparent)
        return;
    m_transparent = transparent;
    update();
}

// --- outgoing --------------------------------------------------------------

void CTavoLayoutMgr::sendDbRequest(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    sendThrough(m_coreCom, utf8.constData(), GuiAppsDbs, GuiAppsMsgDb);
}

void tavoToolSendAppMsg(const char* text, GuiAppsT destination, GuiAppsMsgTypeT type, bool useLocal)
{
    CTavoLayoutMgr* mgr = CTavoLayoutMgr::instance();
    CTavoCoreCommunicator* com = nullptr;
    if (mgr)
        com = (useLocal && mgr->isDaisyChainedScreenShown()) ? mgr->localCom() : mgr->coreCom();
    sendThrough(com, text, destination, type);
}

// --- stop ------------------------------------------------------------------

void CTavoLayoutMgr::Quit()
{
    __atomic_store_n(&bRebootInitiated, true, __ATOMIC_RELAXED);  // read by the core link's thread
    disconnect(this, &CTavoLayoutMgr::shutDown, this, &CTavoLayoutMgr::handleShutdown);
    disconnect(&m_db, &CTavoDb::tjdbRequest, this, &CTavoLayoutMgr::sendDbRequest);
    if (m_coreCom) {
        disconnect(m_coreCom, &CTavoCoreCommunicator::messageReceived, this,
                   &CTavoLayoutMgr::onNewDocument);
        m_coreCom->disconnect();
    }
}

void CTavoLayoutMgr::QuitBrow()
{
    __atomic_store_n(&bRebootInitiated, true, __ATOMIC_RELAXED);  // read by the core link's thread
    disconnect();
    if (m_coreCom)
        m_coreCom->disconnect();
    m_db.disconnect();
}

void CTavoLayoutMgr::handleShutdown(int exitCode)
{
    QCoreApplication::exit(exitCode);
}

// --- test automation --------------------------------------------------------

void CTavoLayoutMgr::collectAndDumpUiXml(bool flag)
{
    // Off, the report costs nothing: not even a log line.
    if (!tavoToolGetTestAutomationFlag())
        return;
    m_uiDocument.clear();
    updateCallSoftkeys();
    using UITA::CTavoUITA;
    QList<QObject*> done;
    done.append(this);
    QDomElement root = m_uiDocument.createElement(CTavoUITA::name(UITA::Window));
    if (!objectName().isEmpty())
        root.setAttribute(CTavoUITA::name(UITA::Name), objectName());
    root.setAttribute(CTavoUITA::name(UITA::Type), QString::fromLatin1(metaObject()->className()));
    root.setAttribute(CTavoUITA::name(UITA::Size), QStringLiteral("%1x%2").arg(width()).arg(height()));
    const QPoint global = mapToGlobal(QPoint(0, 0));
    root.setAttribute(CTavoUITA::name(UITA::Pos), QStringLiteral("%1:%2").arg(global.x()).arg(global.y()));
    m_uiDocument.appendChild(root);
    QDomNode rootNode = root;

    const QString className = QString::fromLatin1(metaObject()->className());
    if (className.contains(QLatin1String("COsdLayoutMgr")) || className.contains(QLatin1String("CEcLayoutMgr"))) {
        for (CTavoLayoutWidget* w : qAsConst(m_childWidgets)) {
            if (w && !w->visibleRegion().isEmpty())
                w->report(done, rootNode);
        }
    } else {
        QList<CTavoLayoutWidget*> shown;
        for (CTavoLayoutWidget* w : findChildren<CTavoLayoutWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (w->isReportEnabled() && !w->visibleRegion().isEmpty())
                shown.append(w);
        }
        // Later children are drawn above earlier ones: one that a later child
        // covers entirely is not on the screen.
        for (int i = 0; i < shown.size(); ++i) {
            CTavoLayoutWidget* w = shown.at(i);
            const QRect ownSeen = w->visibleRegion().boundingRect();
            const QRect own(w->mapToGlobal(ownSeen.topLeft()), ownSeen.size());
            bool covered = false;
            for (int j = i + 1; j < shown.size() && !covered; ++j) {
                CTavoLayoutWidget* above = shown.at(j);
                const QRect seen = above->visibleRegion().boundingRect();
                covered = QRect(above->mapToGlobal(seen.topLeft()), seen.size()).contains(own);
            }
            if (!covered)
                w->report(done, rootNode);
        }
        if (className.contains(QLatin1String("CLayoutMgr")))
            reportForSpecificWidgets(done, rootNode);
    }
    if (!m_uiDocument.isNull())
        tavoToolsReportUIXML(QCoreApplication::applicationName(), m_uiDocument.toString(4), flag);
}

void CTavoLayoutMgr::handleTAReportMemshowCommand()
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    tavoToolsReportMemshow(QCoreApplication::applicationName(), getMallocInformation());
}

// --- what the host supplies ------------------------------------------------

void CTavoLayoutMgr::onLanguageChange(QString) {}
void CTavoLayoutMgr::setIsUpdating(bool) {}
void CTavoLayoutMgr::reportForSpecificWidgets(QList<QObject*>&, QDomNode&) {}
QString CTavoLayoutMgr::systemName() const { return QString(); }
QString CTavoLayoutMgr::systemIp(bool) const { return QString(); }
QString CTavoLayoutMgr::systemNumber() const { return QString(); }
QString CTavoLayoutMgr::contentPIN() const { return QString(); }
bool CTavoLayoutMgr::isNetworkUp() const { return false; }
bool CTavoLayoutMgr::wasPairedWithHub() const { return false; }
QString CTavoLayoutMgr::title() const { return QString(); }
bool CTavoLayoutMgr::isFlyoutOpen() const { return false; }
bool CTavoLayoutMgr::isGlobalMenuLimited() const { return false; }
bool CTavoLayoutMgr::isCallInputVisible() const { return false; }
bool CTavoLayoutMgr::isCallStatusHidden() const { return false; }
void CTavoLayoutMgr::updateCallSoftkeys() {}
void CTavoLayoutMgr::onWidgetEvent(QString, QString, int) {}
void CTavoLayoutMgr::onSimConnected() {}
void CTavoLayoutMgr::onDaisyChainPortOpenOnHub() {}
void CTavoLayoutMgr::onDaisyChainPortClosedOnHub() {}
void CTavoLayoutMgr::initWidgets() {}
void CTavoLayoutMgr::processCoreLocalConfiguration() {}
void CTavoLayoutMgr::processLocalPopup() {}
