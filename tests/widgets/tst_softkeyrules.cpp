// Which permanent softkeys the phone's state leaves on the bar: one data row
// per rule of the decision table, each flipping one input away from a state
// in which every key stays, through the bar's slots and the manager's getters.
#include <QtTest>

#include "layout/CTavoLayoutMgr.h"
#include "widgets/CTavoSoftkey.h"

namespace {

class Host : public CTavoLayoutMgr
{
public:
    Host()
        : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), true)
    {
    }
    bool menuLimited = false;
    bool callInput = false;
    bool statusHidden = false;
    QString screenTitle;
    bool isGlobalMenuLimited() const override { return menuLimited; }
    bool isCallInputVisible() const override { return callInput; }
    bool isCallStatusHidden() const override { return statusHidden; }
    QString title() const override { return screenTitle; }
};

const QStringList kAll = {"voicemail", "layout", "selfview", "videomute", "cameraControlEnable", "stopHdmiContent",
                          "startRecording", "stopRecording", "pauseRecording", "resumeRecording", "content",
                          "calendar", "recent", "directory", "settings", "bluetoothUserSettings",
                          "AlexaHamburgerSettings", "daisychain", "Action::PlaceaCall", "callscreen",
                          "softwareupdate", "custom:Unknown"};

QList<QPair<QString, QString>> listOf(const QStringList& uris)
{
    QList<QPair<QString, QString>> list;
    for (const QString& uri : uris)
        list << qMakePair(uri.toUpper(), uri);
    return list;
}

QStringList urisOf(const QList<QPair<QString, QString>>& list)
{
    QStringList uris;
    for (const auto& entry : list)
        uris << entry.second;
    return uris;
}

// Every input set so that no rule strikes anything.
void keepEverything(CTavoSoftkey& bar, Host& host)
{
    bar.setVoicemailLocation(1);
    bar.setNumVoicemailMessages(2);
    bar.setIsMrPaired(true, 2);
    bar.setSelfViewControlOption(0);
    bar.setCanStartRecording(true);
    bar.setCanStopRecording(true);
    bar.setCanPauseRecording(true);
    bar.setCanResumeRecording(true);
    bar.setShouldShowStopHdmiContent(true);
    bar.setCameraControlEnable(true);
    bar.setIsCalendarEnabled(true);
    bar.setIsAlexaEnabled(true);
    bar.setIsSoftwareUpdateAvailable(true);
    bar.setNumActiveCalls(1);
    host.setDaisyChainedIP("10.0.0.2");
}

// One input away from keepEverything, by name.
void apply(CTavoSoftkey& bar, Host& host, const QString& change)
{
    const QString name = change.section('=', 0, 0);
    const QString value = change.section('=', 1);
    const int n = value.toInt();
    const bool on = value == "1";
    if (name == "voicemailLocation") bar.setVoicemailLocation(n);
    else if (name == "voicemails") bar.setNumVoicemailMessages(n);
    else if (name == "paired") bar.setIsMrPaired(on);
    else if (name == "displays") bar.setIsMrPaired(true, n);
    else if (name == "selfViewOption") bar.setSelfViewControlOption(n);
    else if (name == "canStart") bar.setCanStartRecording(on);
    else if (name == "canStop") bar.setCanStopRecording(on);
    else if (name == "canPause") bar.setCanPauseRecording(on);
    else if (name == "canResume") bar.setCanResumeRecording(on);
    else if (name == "stopHdmi") bar.setShouldShowStopHdmiContent(on);
    else if (name == "camera") bar.setCameraControlEnable(on);
    else if (name == "showCamera") bar.setShouldShowCamera(on);
    else if (name == "locked") bar.setIsPhoneLocked(on);
    else if (name == "lyncLock") bar.setIsPhoneLocked(false, on);
    else if (name == "calendar") bar.setIsCalendarEnabled(on);
    else if (name == "recent") bar.setIsRecentCallsEnabled(on);
    else if (name == "directory") bar.setIsDirectoryEnabled(on);
    else if (name == "contacts") bar.setIsContactsEnabled(on);
    else if (name == "corporate") bar.setIsCorporateDirectoryEnabled(on);
    else if (name == "lyncOverride") bar.setIsLyncDirectoryOverride(on);
    else if (name == "settings") bar.setIsSettingsEnabled(on);
    else if (name == "bluetooth") bar.setIsBluetoothEnabled(on);
    else if (name == "alexa") bar.setIsAlexaEnabled(on);
    else if (name == "chainedIp") host.setDaisyChainedIP(value);
    else if (name == "menuLimited") host.menuLimited = on;
    else if (name == "usb") bar.setIsUsbCall(on);
    else if (name == "calls") bar.setNumActiveCalls(n);
    else if (name == "update") bar.setIsSoftwareUpdateAvailable(on);
    else if (name == "contentMenu") bar.setVisibilityOfContentMenu(on);
    else if (name == "layoutInCall") bar.setShouldShowLayoutWhileInCall(on);
    else if (name == "title") host.screenTitle = value;
    else if (name == "statusHidden") host.statusHidden = on;
    else if (name == "callInput") host.callInput = on;
    else QFAIL(qPrintable("unknown input " + name));
}

CTXMLSoftkeys documentWith(const QStringList& urls)
{
    CTXMLSoftkeys keys;
    for (const QString& url : urls) {
        const QByteArray u = url.toUtf8();
        keys.add("K", u.constData(), keys.count);
    }
    return keys;
}
}  // namespace

class TestSoftkeyRules : public QObject
{
    Q_OBJECT

private slots:
    void eachRuleStrikesItsKeys_data()
    {
        QTest::addColumn<QStringList>("changes");
        QTest::addColumn<QStringList>("document");
        QTest::addColumn<QStringList>("struck");
        const QStringList call = {"softkey:539-Video"};
        QTest::newRow("0 nothing strikes") << QStringList() << call << QStringList();
        QTest::newRow("1 voicemail not offered") << QStringList{"voicemailLocation=3"} << call << QStringList{"voicemail"};
        QTest::newRow("1 no messages") << QStringList{"voicemails=0"} << call << QStringList{"voicemail"};
        QTest::newRow("1 location 2 keeps it at 0") << QStringList{"voicemailLocation=2", "voicemails=0"} << call << QStringList();
        QTest::newRow("2 not paired") << QStringList{"paired=0"} << call
                                      << QStringList{"layout", "selfview", "videomute", "cameraControlEnable", "stopHdmiContent", "content"};
        QTest::newRow("3 no displays") << QStringList{"displays=0"} << call << QStringList{"layout", "content"};
        QTest::newRow("4 self view option 3") << QStringList{"selfViewOption=3"} << call << QStringList{"selfview"};
        QTest::newRow("5 self view option 4") << QStringList{"selfViewOption=4"} << call
                                              << QStringList{"selfview", "videomute", "cameraControlEnable"};
        QTest::newRow("6 no start") << QStringList{"canStart=0"} << call << QStringList{"startRecording"};
        QTest::newRow("7 no stop") << QStringList{"canStop=0"} << call << QStringList{"stopRecording"};
        QTest::newRow("8 no pause") << QStringList{"canPause=0"} << call << QStringList{"pauseRecording"};
        QTest::newRow("9 no resume") << QStringList{"canResume=0"} << call << QStringList{"resumeRecording"};
        QTest::newRow("10 no hdmi stop") << QStringList{"stopHdmi=0"} << call << QStringList{"stopHdmiContent"};
        QTest::newRow("11 no camera control") << QStringList{"camera=0"} << call << QStringList{"cameraControlEnable"};
        QTest::newRow("11 camera hidden in a call") << QStringList{"showCamera=0"} << call << QStringList{"cameraControlEnable"};
        QTest::newRow("13 no calendar") << QStringList{"calendar=0"} << call << QStringList{"calendar"};
        QTest::newRow("14 no recent calls") << QStringList{"recent=0"} << call << QStringList{"recent"};
        QTest::newRow("15 directory without sources") << QStringList{"contacts=0", "corporate=0"} << call << QStringList{"directory"};
        QTest::newRow("15 directory off, no override") << QStringList{"directory=0", "lyncOverride=0"} << call << QStringList{"directory"};
        QTest::newRow("15 directory off, override") << QStringList{"directory=0"} << call << QStringList();
        QTest::newRow("16 no settings") << QStringList{"settings=0"} << call << QStringList{"settings"};
        QTest::newRow("17 no bluetooth") << QStringList{"bluetooth=0"} << call << QStringList{"bluetoothUserSettings"};
        QTest::newRow("18 no alexa") << QStringList{"alexa=0"} << call << QStringList{"AlexaHamburgerSettings"};
        QTest::newRow("21 no chained phone") << QStringList{"chainedIp=127.0.0.1"} << call << QStringList{"daisychain"};
        QTest::newRow("22 global menu limited") << QStringList{"menuLimited=1"} << call
                                                << QStringList{"Action::PlaceaCall", "directory", "recent", "calendar",
                                                               "cameraControlEnable", "content", "callscreen",
                                                               "bluetoothUserSettings", "videomute", "selfview", "layout",
                                                               "softwareupdate", "voicemail", "startRecording",
                                                               "stopRecording", "pauseRecording", "resumeRecording"};
        QTest::newRow("24 video mute without a video call") << QStringList{"usb=1"} << QStringList{"softkey:1-Other"}
                                                            << QStringList{"videomute"};
        QTest::newRow("24 kept while the call status is hidden") << QStringList{"usb=1", "statusHidden=1"}
                                                                 << QStringList{"softkey:1-Other"} << QStringList();
        QTest::newRow("25 no update") << QStringList{"update=0"} << call << QStringList{"softwareupdate"};
        QTest::newRow("26 content menu hidden") << QStringList{"contentMenu=0"} << call << QStringList{"content"};
        QTest::newRow("27 no active call") << QStringList{"calls=0"} << call << QStringList{"callscreen"};
        QTest::newRow("28 32 locked") << QStringList{"locked=1"} << call
                                      << QStringList{"layout", "content", "calendar", "bluetoothUserSettings", "softwareupdate",
                                                     "callscreen", "directory", "recent", "voicemail", "settings",
                                                     "cameraControlEnable"};
        QTest::newRow("29 layout key, not in calls") << QStringList{"layoutInCall=0"}
                                                     << QStringList{"softkey:539-V", "softkey:3489-L"} << QStringList{"layout"};
        QTest::newRow("30 layout key without its pair") << QStringList() << QStringList{"softkey:539-V", "softkey:3489-L"}
                                                        << QStringList{"layout"};
        QTest::newRow("30 layout key with its pair") << QStringList()
                                                     << QStringList{"softkey:539-V", "softkey:3489-L", "softkey:4130-x"}
                                                     << QStringList();
        QTest::newRow("31 on the layout screen") << QStringList{"title=Layout"} << call << QStringList{"layout"};
        QTest::newRow("31 on video settings") << QStringList{"title=Video Settings"} << call << QStringList{"layout"};
        QTest::newRow("33 lync device lock") << QStringList{"lyncLock=1"} << call << QStringList{"Action::PlaceaCall"};
    }

    void eachRuleStrikesItsKeys()
    {
        QFETCH(QStringList, changes);
        QFETCH(QStringList, document);
        QFETCH(QStringList, struck);
        Host host;
        CTavoSoftkey bar(&host);
        keepEverything(bar, host);
        for (const QString& change : changes)
            apply(bar, host, change);
        QList<QPair<QString, QString>> list = listOf(kAll);
        bar.evaluatePermanentSoftkeyVisibilities(documentWith(document), list);
        QStringList expected = kAll;
        for (const QString& uri : struck)
            expected.removeAll(uri);
        QCOMPARE(urisOf(list), expected);
    }

    void defaultsLeaveTheEverydayKeys()
    {
        Host host;
        CTavoSoftkey bar(&host);
        QList<QPair<QString, QString>> list = listOf(kAll);
        bar.evaluatePermanentSoftkeyVisibilities(documentWith({}), list);
        QCOMPARE(urisOf(list), QStringList({"recent", "directory", "settings", "bluetoothUserSettings",
                                            "Action::PlaceaCall", "custom:Unknown"}));
        QVERIFY(!bar.mirroringActive());
    }

    void threeKeysAreRelabelledByState()
    {
        Host host;
        CTavoSoftkey bar(&host);
        keepEverything(bar, host);
        QList<QPair<QString, QString>> list = listOf({"selfview", "videomute", "daisychain"});
        bar.evaluatePermanentSoftkeyVisibilities(documentWith({"softkey:539-V"}), list);
        QCOMPARE(list.value(0).first, QString("Enable Self View"));
        QCOMPARE(list.value(1).first, QString("Stop My Video"));
        QCOMPARE(list.value(2).first, QString("Start Mirroring"));
        bar.setSelfViewEnabled(true);
        bar.setVideoMute(true);
        list = listOf({"selfview", "videomute"});
        bar.evaluatePermanentSoftkeyVisibilities(documentWith({"softkey:539-V"}), list);
        QCOMPARE(list.value(0).first, QString("Disable Self View"));
        QCOMPARE(list.value(1).first, QString("Start My Video"));
        // A URI listed twice: only the later entry is relabelled.
        list = listOf({"selfview", "selfview"});
        bar.evaluatePermanentSoftkeyVisibilities(documentWith({"softkey:539-V"}), list);
        QCOMPARE(list.value(0).first, QString("SELFVIEW"));
        QCOMPARE(list.value(1).first, QString("Disable Self View"));
        // Every pair of a URI goes; unknown URIs stay.
        QList<QPair<QString, QString>> twice = listOf({"a", "b", "a"});
        details::removeItemWithUri(twice, "a");
        details::removeItemWithUri(twice, "zzz");
        QCOMPARE(urisOf(twice), QStringList({"b"}));
    }
};

QTEST_MAIN(TestSoftkeyRules)
#include "tst_softkeyrules.moc"
