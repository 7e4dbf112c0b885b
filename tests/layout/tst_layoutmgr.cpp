// The layout manager against a real core peer on loopback: start-up from the
// profile files, configuration pairs, language changes and translation
// requests, status masks, translations, typed text and the stop order.
#include <QDir>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

#include "GuiProfile.h"
#include "LoopbackPeer.h"
#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"
#include "tools/TavoToolFlags.h"

#include "CTXMLEvent.h"

namespace {
// Gives the tests the registry, as a host would fill it.
class Host : public CTavoLayoutMgr
{
public:
    using CTavoLayoutMgr::CTavoLayoutMgr;
    QMap<int, CTavoLayoutWidget*>& registry() { return m_childWidgets; }

    // Ending the event loop for real can be done once per test process.
    bool fakeExit = true;
    QList<int> exitCodes;
    void handleShutdown(int exitCode) override
    {
        exitCodes.append(exitCode);
        if (!fakeExit)
            CTavoLayoutMgr::handleShutdown(exitCode);
    }
};

QByteArray coreDoc(const char* uri, const QByteArray& pairs, const QByteArray& more = QByteArray())
{
    return "<TXML><Event uri=\"" + QByteArray(uri) + "\">" + pairs + "</Event>" + more + "</TXML>";
}
QByteArray config(const QByteArray& pairs) { return coreDoc("Core:Config", pairs); }
QByteArray status(int mask)
{
    return coreDoc("Core:AppStatus", "", "<AppStatus mask=\"" + QByteArray::number(mask) + "\"/>");
}
}  // namespace

class TestLayoutMgr : public QObject
{
    Q_OBJECT

    GuiProfile m_profile;
    std::unique_ptr<LoopbackPeer> m_peer;
    Host* m_mgr = nullptr;
    int m_delivered = 0;

    // Sends a document from the core and lets the GUI thread handle it.
    void deliver(const QByteArray& doc)
    {
        const int before = m_delivered;
        m_peer->writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, doc));
        // The counter hears the same signal after the manager: once it moved,
        // the document has been handled.
        QTRY_VERIFY(m_delivered > before);
    }

    // Nothing more reaches the peer than the frames it has.
    void noFurtherFrames(int count)
    {
        QTest::qWait(100);
        QCOMPARE(m_peer->frames.size(), count);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(!QFile::exists("/tmp/qt.conf"));
        QVERIFY(m_profile.make());
    }

    void init()
    {
        __atomic_store_n(&bRebootInitiated, false, __ATOMIC_RELAXED);
        m_peer.reset(new LoopbackPeer);
        const quint16 port = m_peer->start();
        QVERIFY(m_profile.enter(port, "SkinFile=Skins/test/test.xml\n"));
        m_mgr = new Host;
        m_delivered = 0;
        connect(m_mgr->coreCom(), &CTavoCoreCommunicator::messageReceived, this,
                [this] { ++m_delivered; }, Qt::QueuedConnection);
        QVERIFY(m_peer->waitForFrames(1));
    }

    void cleanup()
    {
        deleteManager(m_mgr);
        m_peer.reset();
        __atomic_store_n(&bRebootInitiated, false, __ATOMIC_RELAXED);
        tavoToolSet24HrsFormat(false);
        tavoToolsSetXt9Enabled(false);
        tavoToolSetTestAutomationFlag(false);
        QLocale::setDefault(QLocale::c());
        m_profile.leave();
    }

    void startUpFollowsTheProfile()
    {
        QCOMPARE(CTavoLayoutMgr::instance(), m_mgr);
        QCOMPARE(m_mgr->configFile() + " " + m_mgr->skinFile(), QStringLiteral("Skins/test.conf Skins/test/test.xml"));
        QCOMPARE(qgetenv("DAISY_CHAINED_DEVICE"), QByteArray("0"));
        // The link was made with the profile's port and registers under the application's name.
        QCOMPARE(m_peer->frames.first().payload, QByteArray("zedagui"));
    }

    // A port that is not one is kept as the link takes it (the number, or 0,
    // as 16 bits), and the log says what was written and what is used.
    void badPortsAreNamedInTheLog_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<int>("stored");
        QTest::addColumn<QString>("line");
        QTest::newRow("good") << QByteArray("10011") << 10011 << QString();
        QTest::newRow("text") << QByteArray("abc") << 0
                              << QString("Skins/test.conf: ComServerPort \"abc\" is not a port from 0 to 65535; using port 0");
        QTest::newRow("too big") << QByteArray("99999") << 99999
                                 << QString("Skins/test.conf: ComServerPort \"99999\" is not a port from 0 to 65535; using port 34463");
        QTest::newRow("negative") << QByteArray("-1") << -1
                                  << QString("Skins/test.conf: ComServerPort \"-1\" is not a port from 0 to 65535; using port 65535");
    }
    void badPortsAreNamedInTheLog()
    {
        QFETCH(QByteArray, written);
        QFile skins(m_profile.filePath("Skins/test.conf"));
        QVERIFY(skins.open(QIODevice::WriteOnly));
        skins.write("[zedagui]\nSkinFile=Skins/test/test.xml\nComServerPort=" + written
                    + "\ntavosimServerPort=70000\n");
        skins.close();
        static QStringList lines;
        lines.clear();
        const QtMessageHandler previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& msg) { lines << msg; });
        std::unique_ptr<Host> other(new Host(nullptr, Qt::WindowFlags(), true));
        qInstallMessageHandler(previous);
        QTEST(other->coreComPort(), "stored");
        QCOMPARE(other->tavosimServerPort(), 70000);
        const QStringList said = lines.filter("is not a port");
        QTEST(said.filter("ComServerPort").value(0), "line");
        QCOMPARE(said.filter("tavosimServerPort").value(0),
                 QString("Skins/test.conf: tavosimServerPort \"70000\" is not a port from 0 to 65535; using port 4464"));
    }

    void configurationPairsTakeEffect()
    {
        QSignalSpy events(m_mgr, &CTavoLayoutMgr::evLayoutMgr);
        deliver(config("hours24=1;xt9=1;layoutType=2;configDigit=7;database=calls;testAutomation=1"));
        QVERIFY(tavoToolGet24HrsFormat() && tavoToolsGetXt9Enabled() && tavoToolGetTestAutomationFlag());
        QVERIFY(m_mgr->languageChanged());
        QCOMPARE((QVariantList{m_mgr->layoutType(), m_mgr->configDigit(), m_mgr->db().dbName()}),
                 (QVariantList{2, 7, QByteArray("calls")}));
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.first().first().toInt(), 1026);

        // Unchanged values change nothing; the flag is cleared by each document.
        deliver(config("hours24=1;layoutType=2;xt9=0"));
        QCOMPARE(events.count(), 1);
        QVERIFY(!m_mgr->languageChanged());
        QVERIFY(!tavoToolsGetXt9Enabled());
        deliver(config("hours24=0"));
        QCOMPARE(events.count(), 2);
        QVERIFY(!tavoToolGet24HrsFormat());
        // A language change event that reaches the widget is announced as well.
        QEvent change(QEvent::LanguageChange);
        QCoreApplication::sendEvent(m_mgr, &change);
        QCOMPARE(events.last().first().toInt(), 1022);
    }

    void languageStepsAndTranslationRequests()
    {
        QSignalSpy languages(m_mgr, &CTavoLayoutMgr::languageChange);
        deliver(config("language=fr-fr"));
        QCOMPARE(languages, (QList<QVariantList>{{"fr-fr"}}));
        QCOMPARE(m_mgr->layoutType(), 1);
        QCOMPARE(QLocale().name(), QStringLiteral("fr_FR"));
        noFurtherFrames(1);  // no stored numbers: no request

        m_mgr->requestTranslations({5, 7, 9}, true);
        deliver(config("language=fr-fr"));  // the same language: nothing at all
        QCOMPARE(languages.count(), 1);
        noFurtherFrames(1);

        deliver(config("language=de-de"));
        QCOMPARE(languages.count(), 2);
        QCOMPARE(m_mgr->layoutType(), 0);
        QVERIFY(m_peer->waitForFrames(2));
        const PeerFrame& request = m_peer->frames[1];
        QCOMPARE((QList<int>{request.header.destination, request.header.msgType}), (QList<int>{GuiAppsTavoapp, GuiAppsMsgTxml}));
        CTXMLEvent sent;
        QVERIFY(sent.parse(request.payload.constData(), size_t(request.payload.size())));
        QCOMPARE(CTXMLUriLib::type(sent.uri), TxmlUriTranslate);
        QCOMPARE(QByteArray(sent.data), QByteArray("data=5%2C7%2C9"));

        m_mgr->requestTranslations({12}, false);
        QVERIFY(m_peer->waitForFrames(3));
        QVERIFY(m_peer->frames[2].payload.contains("data=12"));
    }

    void translationsReachTheTranslator()
    {
        QSignalSpy received(m_mgr, &CTavoLayoutMgr::receivedTranslations);
        deliver("<TXML><Translations><T key=\"Call\" value=\"Appeler\"/>"
                "<T key=\"a%3Db\" value=\"x%3By %25\"/><T key=\"Call\" value=\"Appel\"/>"
                "</Translations></TXML>");
        QCOMPARE(received.count(), 1);
        const auto hash = received.first().first().value<QHash<QString, QString>>();
        QCOMPARE(hash.size(), 2);
        QCOMPARE(hash.value("Call"), QStringLiteral("Appel"));
        QCOMPARE(hash.value("a=b"), QStringLiteral("x;y %"));
        QCOMPARE(QCoreApplication::translate("Dialer", "Call now", "Call"), QStringLiteral("Appel"));
        QCOMPARE(QCoreApplication::translate("Dialer", "Unknown", "Nope"), QStringLiteral("Nope"));
        QVERIFY(CTavoLayoutMgr::xmlRoot().translations.empty());
    }

    void statusMaskOrdering()
    {
        struct Seen {
            int app;
            bool up, dbConnected, wasConnected;
        };
        QList<Seen> seen;
        connect(m_mgr, &CTavoLayoutMgr::appConnectionStatusChanged, this, [&](GuiAppsT app, bool up) {
            seen.append({int(app), up, m_mgr->db().isConnected(), m_mgr->isAppConnected(app)});
        });
        deliver(status(GuiAppsTavoapp | GuiAppsZedagui));
        QCOMPARE(seen.size(), 2);
        QCOMPARE((QList<int>{seen[0].app, seen[1].app}), (QList<int>{1, 256}));
        QVERIFY(seen[0].up && seen[1].up && !m_mgr->db().isConnected());

        // Only the database peer's bit changes: the link knows first, the mask is stored last.
        deliver(status(GuiAppsTavoapp | GuiAppsZedagui | GuiAppsDbs));
        QCOMPARE(seen.size(), 3);
        QCOMPARE(seen[2].app, 8);
        QVERIFY(seen[2].up && seen[2].dbConnected && !seen[2].wasConnected);
        QVERIFY(m_mgr->isAppConnected(GuiAppsDbs));

        // Bits above the table are stored but never reported.
        deliver(status(0x1000 | GuiAppsTavoapp | GuiAppsZedagui | GuiAppsDbs));
        QCOMPARE(seen.size(), 3);
        QCOMPARE(m_mgr->connectedApps(), 0x1000 | 256 | 1 | 8);

        deliver(status(GuiAppsTavoapp));
        QCOMPARE(seen.size(), 5);
        QVERIFY(!seen[3].up && !seen[4].up && !m_mgr->db().isConnected());
    }

    void otherTypesAndEmptyDocumentsAreDropped()
    {
        QSignalSpy events(m_mgr, &CTavoLayoutMgr::evLayoutMgr);
        const QByteArray doc = config("hours24=1");
        for (GuiAppsMsgTypeT type : {GuiAppsMsgReserved, GuiAppsMsgUiReport, GuiAppsMsgMemshow})
            m_mgr->onNewDocument(doc, GuiAppsTavoapp, type);
        m_mgr->onNewDocument(QByteArray(), GuiAppsTavoapp, GuiAppsMsgTxml);
        m_mgr->onNewDocument("not a document", GuiAppsTavoapp, GuiAppsMsgTxml);
        m_mgr->onNewDocument("response", GuiAppsDbs, GuiAppsMsgDb);
        QVERIFY(!tavoToolGet24HrsFormat());
        QCOMPARE(events.count(), 0);
        m_mgr->onNewDocument(doc, GuiAppsTavoapp, GuiAppsMsgTxml);
        QVERIFY(tavoToolGet24HrsFormat());
    }

    void sendAppMsgChoosesTheLink()
    {
        tavoToolSendAppMsg("to the core", GuiAppsTavoapp, GuiAppsMsgTxml, true);
        QVERIFY(m_peer->waitForFrames(2));
        QCOMPARE(m_peer->frames[1].payload, QByteArray("to the core"));
        m_mgr->sendDbRequest(QStringLiteral("SELECT 1"));
        QVERIFY(m_peer->waitForFrames(3));
        QCOMPARE(m_peer->frames[2].header.destination, int(GuiAppsDbs));
        QCOMPARE(int(m_peer->frames[2].header.msgType), int(GuiAppsMsgDb));
    }

    void typedTextReachesTheFocusedField()
    {
        QLineEdit field;
        field.setText(QStringLiteral("old"));
        field.setReadOnly(true);
        field.show();
        field.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        field.setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), &field);
        // A digit goes as its key, the rest through the clipboard; all of it replaces the text.
        deliver(coreDoc("Core:UpdateText", "data=5ab;replaceAll=true"));
        QCOMPARE(field.text(), QStringLiteral("5ab"));
        QVERIFY(field.isReadOnly());
        deliver(coreDoc("Core:UpdateText", "data=cd"));
        QCOMPARE(field.text(), QStringLiteral("5abcd"));
    }

    void childRegistryAndTopSurface()
    {
        auto* back = new CTavoLayoutWidget(m_mgr);
        auto* corner = new CTavoLayoutWidget(m_mgr);
        auto* popup = new CTavoLayoutWidget(m_mgr);
        m_mgr->registry().insert(0, back);
        m_mgr->registry().insert(5, popup);
        QVERIFY(!m_mgr->getChildWgt(-1));
        QVERIFY(!m_mgr->getChildWgt(2));  // the number of entries
        QCOMPARE(m_mgr->registry().size(), 2);
        QCOMPARE(m_mgr->getChildWgt(0), back);
        QVERIFY(!m_mgr->getChildWgt(1));
        QCOMPARE(m_mgr->registry().size(), 3);  // default-inserted

        m_mgr->setGeometry(0, 0, 400, 300);
        m_mgr->showLayoutMgr(false);
        back->setGeometry(0, 0, 400, 300);
        corner->setGeometry(0, 0, 50, 50);
        popup->setGeometry(150, 100, 100, 100);
        for (CTavoLayoutWidget* w : {back, corner, popup})
            w->show();
        QCOMPARE(m_mgr->whoIsOnTopAndVisible({}), popup);
        QCOMPARE(m_mgr->whoIsOnTopAndVisible({popup}), back);
        popup->hide();
        QCOMPARE(m_mgr->whoIsOnTopAndVisible({}), back);
        back->hide();
        QVERIFY(!m_mgr->whoIsOnTopAndVisible({}));
    }

    void shutDownTimerAndQuit()
    {
        m_mgr->shutdownTimer().setInterval(10);
        m_mgr->shutdownTimer().start();
        QTRY_COMPARE(m_mgr->exitCodes, QList<int>({0}));
        emit m_mgr->shutDown(5);
        QCOMPARE(m_mgr->exitCodes.last(), 5);

        // After Quit neither documents nor shutDown reach the manager.
        m_mgr->Quit();
        QVERIFY(bRebootInitiated);
        m_peer->writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, config("hours24=1")));
        QTest::qWait(300);
        QVERIFY(!tavoToolGet24HrsFormat());
        emit m_mgr->shutDown(4);
        QCOMPARE(m_mgr->exitCodes.size(), 2);
    }

    void shutDownEndsTheEventLoopWithItsCode()
    {
        // Last test: after QCoreApplication::exit no further loop may run.
        m_mgr->fakeExit = false;
        QEventLoop loop;
        QTimer::singleShot(0, m_mgr, [this] { emit m_mgr->shutDown(3); });
        QCOMPARE(loop.exec(), 3);
        QCOMPARE(m_mgr->exitCodes, QList<int>({3}));
        QCOMPARE(m_mgr->shutdownTimer().interval(), 20000);
    }
};

QTEST_MAIN(TestLayoutMgr)
#include "tst_layoutmgr.moc"
