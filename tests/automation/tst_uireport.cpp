// The UI report end to end: a manager linked to a real core peer on loopback
// is asked for its report and its memory report by document, and what arrives
// in frames of type 3 and 4 is read back. Also the names of the vocabulary,
// each class's attributes, and that nothing is built while the flag is off.
#include <QDir>
#include <QDomDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

#include "GuiProfile.h"
#include "LoopbackPeer.h"
#include "automation/CTavoUITA.h"
#include "automation/TavoUiReport.h"
#include "core/TavoGlobals.h"
#include "input/CTavoInput.h"
#include "layout/CTavoLayoutMgr.h"
#include "layout/CTavoLayoutWidget.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoFlyoutItem.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"

#include "CTXMLFlyoutItem.h"

namespace {
class Host : public CTavoLayoutMgr
{
public:
    using CTavoLayoutMgr::CTavoLayoutMgr;
    int softkeyUpdates = 0;
    void updateCallSoftkeys() override { ++softkeyUpdates; }
};

QByteArray coreDoc(const char* uri) { return "<TXML><Event uri=\"" + QByteArray(uri) + "\"></Event></TXML>"; }

CTavoLabelWidget* label(QWidget* surface, const QString& name, const QString& text, const QRect& area)
{
    auto* l = new CTavoLabelWidget(surface, text);
    l->setObjectName(name);
    l->setgeo(area);
    return l;
}

CTavoButton* button(QWidget* surface, const QString& name, const QRect& area)
{
    TavoButtonSettings settings;
    settings.set(name, name.toUpper(), "click:" + name, "hold:" + name, QString(), CTavoIconDefinition(),
                 QString(), 1);
    auto* b = new CTavoButton(surface);
    b->init(&settings, QStringLiteral("data"), -1, false);
    b->setObjectName(name);
    b->setgeo(area);
    return b;
}

CTavoLayoutWidget* surface(QWidget* mgr, const QString& name, const QRect& area)
{
    auto* s = new CTavoLayoutWidget(mgr);
    s->setObjectName(name);
    s->setGeometry(area);
    s->show();
    return s;
}

// Elements below parent by their name, in document order.
QStringList names(const QDomElement& parent)
{
    QStringList list;
    for (QDomElement e = parent.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        list << e.tagName() + ":" + e.attribute("name");
    return list;
}

QDomElement byName(const QDomElement& parent, const QString& name)
{
    for (QDomElement e = parent.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.attribute("name") == name)
            return e;
        const QDomElement deeper = byName(e, name);
        if (!deeper.isNull())
            return deeper;
    }
    return QDomElement();
}
}  // namespace

class TestUiReport : public QObject
{
    Q_OBJECT

    GuiProfile m_profile;
    std::unique_ptr<LoopbackPeer> m_peer;
    Host* m_mgr = nullptr;

    // Sends a document from the core and waits for count frames in all at the peer.
    void deliver(const QByteArray& doc)
    {
        int delivered = 0;
        QMetaObject::Connection c = connect(m_mgr->coreCom(), &CTavoCoreCommunicator::messageReceived, this,
                                            [&delivered] { ++delivered; }, Qt::QueuedConnection);
        m_peer->writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, doc));
        QTRY_VERIFY(delivered > 0);
        disconnect(c);
    }

    // Asks for the report and returns the document that came back.
    QDomDocument ask()
    {
        const int before = m_peer->frames.size();
        deliver(coreDoc("Core:UiReport"));
        [&] { QVERIFY(m_peer->waitForFrames(before + 1)); }();
        QDomDocument document;
        if (m_peer->frames.size() <= before)
            return document;
        const PeerFrame& frame = m_peer->frames.at(before);
        [&] {
            QCOMPARE(int(frame.header.msgType), int(GuiAppsMsgUiReport));
            QCOMPARE(int(frame.header.destination), int(GuiAppsTavoapp));
            QVERIFY(document.setContent(frame.payload));
        }();
        return document;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_profile.make());
    }

    void init()
    {
        bRebootInitiated = false;
        m_peer.reset(new LoopbackPeer);
        const quint16 port = m_peer->start();
        QVERIFY(m_profile.enter(port, "SkinFile=Skins/test/test.xml\n"));
        m_mgr = new Host;
        m_mgr->setObjectName("phone");
        m_mgr->setGeometry(0, 0, 400, 300);
        m_mgr->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_mgr));
        QVERIFY(m_peer->waitForFrames(1));  // the registration
    }

    void cleanup()
    {
        deleteManager(m_mgr);
        m_peer.reset();
        tavoToolSetTestAutomationFlag(false);
        m_profile.leave();
    }

    void vocabularyNamesByIndexAndRefusesOthers()
    {
        using UITA::CTavoUITA;
        QCOMPARE(CTavoUITA::name(UITA::Type) + " " + CTavoUITA::name(UITA::Component) + " "
                     + CTavoUITA::name(UITA::ScrollBarYPosition) + " " + CTavoUITA::name(UITA::Presenter),
                 QStringLiteral("type component scroll-bar-y-position presenter"));
        QVERIFY(CTavoUITA::name(UITA::TavoUITANames(-1)).isEmpty());
        QVERIFY(CTavoUITA::name(UITA::NameCount).isEmpty());
    }

    // One screen with one of each: the tree, its order and its attributes.
    void reportOfAKnownScreen()
    {
        CTavoLayoutWidget* main = surface(m_mgr, "main", QRect(0, 0, 400, 300));
        // Made before the surfaces and buttons: the report still puts them first.
        label(main, "title", "Front desk", QRect(10, 5, 200, 20));
        auto* field = new CTavoInput(main);
        field->setObjectName("field");
        field->setGeometry(10, 200, 200, 30);
        field->show();
        CTavoButton* ok = button(main, "ok", QRect(10, 40, 80, 40));
        CTavoButton* off = button(main, "off", QRect(100, 40, 80, 40));
        off->setEnabled(false);
        off->setFocused(true);
        CTavoLayoutWidget* inner = surface(main, "inner", QRect(200, 100, 150, 80));
        label(inner, "note", "Inside", QRect(5, 5, 100, 20));
        CTavoLabelWidget* ghost = label(main, "ghost", "Hidden", QRect(10, 100, 50, 20));
        ghost->setVisible(false);
        label(main, "ghost-child", "Under a hidden one", QRect(10, 100, 50, 20))->setParent(ghost);
        label(main, "parked", "Away", QRect(-9999, -9999, 50, 20));
        // A pop-up covering a screen below it entirely; the screen is left out.
        surface(m_mgr, "under", QRect(0, 0, 100, 100));
        surface(m_mgr, "cover", QRect(0, 0, 120, 120));
        CTavoLayoutWidget* hidden = surface(m_mgr, "hidden", QRect(0, 0, 50, 50));
        hidden->hide();
        CTavoLayoutWidget* quiet = surface(m_mgr, "quiet", QRect(300, 0, 50, 50));
        quiet->setReportEnabled(false);

        tavoToolSetTestAutomationFlag(true);
        const QDomDocument document = ask();
        const QDomElement root = document.documentElement();
        QCOMPARE(root.tagName(), QStringLiteral("window"));
        QCOMPARE(root.attribute("name") + " " + root.attribute("type") + " " + root.attribute("size"),
                 QStringLiteral("phone CTavoLayoutMgr 400x300"));
        QVERIFY(root.hasAttribute("pos"));
        QCOMPARE(m_mgr->softkeyUpdates, 1);
        // Screens with a parent, here the manager, are "widget" elements.
        QCOMPARE(names(root), (QStringList{"widget:main", "widget:cover"}));

        const QDomElement mainElement = root.firstChildElement();
        QCOMPARE(mainElement.attribute("type") + " " + mainElement.attribute("size"),
                 QStringLiteral("CTavoLayoutWidget 400x300"));
        QVERIFY(!mainElement.hasAttribute("visible"));
        QCOMPARE(names(mainElement),
                 (QStringList{"widget:inner", "component:ok", "component:off", "component:title", "component:field"}));

        const QDomElement innerElement = mainElement.firstChildElement();
        const QPoint innerAt = inner->mapToGlobal(QPoint(0, 0));
        QCOMPARE(innerElement.attribute("pos"), QStringLiteral("%1:%2").arg(innerAt.x()).arg(innerAt.y()));
        QCOMPARE(byName(innerElement, "note").attribute("label"), QStringLiteral("Inside"));
        const QPoint noteAt = inner->mapToGlobal(QPoint(5, 5));
        QCOMPARE(byName(innerElement, "note").attribute("pos"), QStringLiteral("%1:%2").arg(noteAt.x()).arg(noteAt.y()));

        const QDomElement okElement = byName(mainElement, "ok");
        QCOMPARE(okElement.attribute("type"), QStringLiteral("CTavoButton"));
        QCOMPARE(okElement.attribute("size"), QStringLiteral("80x40"));
        QCOMPARE(okElement.attribute("label") + " " + okElement.attribute("action-released") + " "
                     + okElement.attribute("action-held"),
                 QStringLiteral("OK click:ok hold:ok"));
        // Empty values and flags in their usual state stay out.
        for (const char* absent : {"action-pressed", "alt-label", "focused", "pressed", "enabled", "image-name"})
            QVERIFY2(!okElement.hasAttribute(absent), absent);
        const QDomElement offElement = byName(mainElement, "off");
        QCOMPARE(offElement.attribute("enabled") + " " + offElement.attribute("focused"), QStringLiteral("false true"));

        QCOMPARE(byName(mainElement, "title").attribute("label"), QStringLiteral("Front desk"));
        const QDomElement fieldElement = byName(mainElement, "field");
        QCOMPARE(fieldElement.attribute("type") + " " + fieldElement.attribute("size") + " "
                     + fieldElement.attribute("visible"),
                 QStringLiteral("CTavoInput 200x30 true"));
        for (const char* absent : {"ghost", "ghost-child", "parked", "under", "hidden", "quiet"})
            QVERIFY2(byName(root, absent).isNull(), absent);
        QCOMPARE(m_mgr->uiDocument().documentElement().elementsByTagName("component").size(),
                 root.elementsByTagName("component").size());
        (void)ok;
    }

    void theFlagGatesTheReportAndTheHeapFigures()
    {
        CTavoLayoutWidget* main = surface(m_mgr, "main", QRect(0, 0, 400, 300));
        CTavoButton* ok = button(main, "ok", QRect(10, 40, 80, 40));
        CTavoLabelWidget* title = label(main, "title", "Front desk", QRect(10, 5, 200, 20));
        int before = m_peer->frames.size();
        deliver(coreDoc("Core:UiReport"));
        deliver(coreDoc("Core:Memshow"));
        m_mgr->collectAndDumpUiXml(true);
        m_mgr->handleTAReportMemshowCommand();
        QTest::qWait(100);
        QCOMPARE(m_peer->frames.size(), before);
        QVERIFY(m_mgr->uiDocument().isNull());
        for (const QDomDocument* dom : {&main->dom(), &ok->dom(), &title->dom()})
            QVERIFY(dom->isNull());
        ok->refreshDom();
        main->refreshDom();
        QVERIFY(ok->dom().isNull() && main->dom().isNull());

        // Turned on by the core's configuration, the same requests are answered;
        // the memory report carries the heap figures.
        deliver("<TXML><Event uri=\"Core:Config\">testAutomation=1</Event></TXML>");
        QVERIFY(tavoToolGetTestAutomationFlag());
        QVERIFY(!byName(ask().documentElement(), "ok").isNull());
        before = m_peer->frames.size();
        deliver(coreDoc("Core:Memshow"));
        QVERIFY(m_peer->waitForFrames(before + 1));
        const PeerFrame& frame = m_peer->frames.at(before);
        QCOMPARE(int(frame.header.msgType), int(GuiAppsMsgMemshow));
        const QStringList lines = QString::fromUtf8(frame.payload).split('\n', Qt::SkipEmptyParts);
        QStringList keys;
        for (const QString& line : lines) {
            QVERIFY2(QRegularExpression("^[a-z]+=\\d+$").match(line).hasMatch(), qPrintable(line));
            keys << line.section('=', 0, 0);
        }
        QCOMPARE(keys, (QStringList{"arena", "ordblks", "smblks", "hblks", "hblkhd", "usmblks", "fsmblks",
                                    "uordblks", "fordblks", "keepcost"}));
    }

    // The automation client: tgui-core waits until a report shows a label's new
    // text, then saves one, then waits for any answer; a bad step is named and skipped.
    void coreWaitsForAValueAndSavesTheReport()
    {
        QFile scenario(m_profile.filePath("report.txt"));
        QVERIFY(scenario.open(QIODevice::WriteOnly));
        scenario.write("wait zedagui 20000\n"
                       "send zedagui <TXML><Event uri=\"Core:Config\">testAutomation=1</Event></TXML>\n"
                       "expectreport zedagui title\n"
                       "expectreport zedagui title label=Bonjour tout le monde\n"
                       "report zedagui saved.xml\n"
                       "sync\n"
                       "sync zedagui\n"
                       "quit 0\n");
        scenario.close();
        QProcess core;
        core.setProcessChannelMode(QProcess::MergedChannels);
        core.start(qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR) + "/tgui-core",
                   {"--port", "0", "--listen", "127.0.0.1", "--scenario", scenario.fileName(), "--report-dir", m_profile.dir.path()});
        QVERIFY(core.waitForStarted());
        QVERIFY(core.waitForReadyRead(20000));
        const QByteArray first = core.readLine().trimmed();
        QVERIFY2(first.startsWith("LISTENING "), first.constData());

        // This test's manager moves from the loopback peer to the real core.
        deleteManager(m_mgr);
        QVERIFY(m_profile.enter(first.mid(10).toUShort(), "SkinFile=Skins/test/test.xml\n"));
        m_mgr = new Host;
        m_mgr->setGeometry(0, 0, 400, 300);
        m_mgr->show();
        CTavoLayoutWidget* main = surface(m_mgr, "main", QRect(0, 0, 400, 300));
        CTavoLabelWidget* title = label(main, "title", "Hello", QRect(10, 5, 200, 20));
        QTimer::singleShot(500, title, [title] { title->setText(QStringLiteral("Bonjour tout le monde")); });

        QTRY_VERIFY_WITH_TIMEOUT(core.state() == QProcess::NotRunning, 30000);
        const QString out = QString::fromUtf8(first + "\n" + core.readAll());
        QCOMPARE(core.exitCode(), 0);
        QVERIFY2(out.contains("SCENARIO line 3: expectreport needs <peer> <name> <attribute>=<value>"), qPrintable(out));
        QVERIFY2(out.contains("REPORT zedagui shows title label=Bonjour tout le monde"), qPrintable(out));
        // Asked again until the label changed: more than one report came.
        QVERIFY(out.count("UIREPORT zedagui bytes=") >= 3);
        QVERIFY(out.contains(QRegularExpression("REPORT zedagui saved \\d+ bytes to .*saved.xml")));
        // "sync" goes on at the next answer, whatever it shows.
        QVERIFY2(out.contains("SCENARIO line 6: sync needs <peer>"), qPrintable(out));
        QVERIFY(out.indexOf("SYNC zedagui") > out.indexOf("REPORT zedagui saved"));
        QFile saved(m_profile.filePath("saved.xml"));
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QDomDocument document;
        QVERIFY(document.setContent(&saved));
        QCOMPARE(byName(document.documentElement(), "title").attribute("label"), QStringLiteral("Bonjour tout le monde"));
    }

    // The attributes of the classes whose elements say more than the base.
    void classesAddTheirOwnAttributes()
    {
        tavoToolSetTestAutomationFlag(true);
        CTavoLayoutWidget* main = surface(m_mgr, "main", QRect(0, 0, 400, 300));

        auto* icon = new CTavoIcon(main);
        icon->init(CTavoIconDefinition("icon:url", "Mail", -1, -1, QList<int>{3, 7}), QSize(20, 20),
                   CTavoIcon::IconAndLabel);
        icon->setgeo(QRect(0, 0, 20, 20));
        icon->refreshDom();
        QDomElement e = icon->dom().documentElement();
        QCOMPARE(e.attribute("icon-label") + " " + e.attribute("icon-ids"), QStringLiteral("Mail 3,7"));
        QCOMPARE(mapIconIdToTaRecognizedId(12), 12);
        QCOMPARE(mapIconIdToTaRecognizedId(-1), -1);

        auto* paragraph = new CTavoParagraph(main);
        paragraph->setgeo(QRect(0, 30, 200, 40));
        paragraph->setText(QStringLiteral("Two words"));
        paragraph->refreshDom();
        e = paragraph->dom().documentElement();
        QCOMPARE(e.attribute("type") + " " + e.attribute("label"), QStringLiteral("CTavoParagraph Two words"));

        CTXMLFlyoutItem xmlItem;
        xmlItem.set("Settings", "menu:settings", "", nullptr);
        auto* item = new CTavoFlyoutItem(main);
        item->init(xmlItem, 1);
        item->setgeo(QRect(0, 80, 200, 40));
        item->refreshDom();
        e = item->dom().documentElement();
        QCOMPARE(e.attribute("label") + " " + e.attribute("action-released"), QStringLiteral("Settings menu:settings"));

        // A button tells what its list names, in that order, and its image name.
        CTavoButton* b = button(main, "b", QRect(0, 130, 80, 40));
        b->setReportList({UITA::ActionHeld, UITA::Timer, UITA::Label});
        b->refreshDom();
        e = b->dom().documentElement();
        QVERIFY(e.hasAttribute("action-held") && e.hasAttribute("label"));
        QVERIFY(!e.hasAttribute("action-released") && !e.hasAttribute("timer"));

        // A layout widget asked directly while hidden still says so when it may be reported.
        main->hide();
        main->refreshDom();
        e = main->dom().documentElement();
        QCOMPARE(e.tagName() + " " + e.attribute("visible"), QStringLiteral("widget false"));
        main->setReportEnabled(false);
        main->refreshDom();
        QVERIFY(main->dom().isNull());
        // A hidden component's element is emptied.
        b->setVisible(false);
        b->refreshDom();
        QVERIFY(b->dom().documentElement().isNull());
    }
};

QTEST_MAIN(TestUiReport)
#include "tst_uireport.moc"
