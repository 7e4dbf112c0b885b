#include "style/CTavoIconRepository.h"

#include <QFile>
#include <QPixmap>

#include "log/GuiLog.h"

const char* const CTavoIconRepository::ICON_RESOURCE_DIRECTORY = "Skins/common/icons/";
const char* const CTavoIconRepository::ICON_RESOURCE_DIRECTORY_ZENITH = "Skins/common_zenith/icons/";
const char* const CTavoIconRepository::ICON_RESOURCE_DIRECTORY_SFB = "Skins/common_sfb/icons/";
const char* const CTavoIconRepository::ICON_RESOURCE_DIRECTORY_BSFT = "Skins/common_bsft/icons/";
const char* const CTavoIconRepository::ICON_RESOURCE_DIRECTORY_OS = "Skins/common_opensip/icons/";
const char* const CTavoIconRepository::ONEBIT_ICON_RESOURE_DIRECTORY = "Skins/common/OneBit_icons/";
const char* const CTavoIconRepository::GREYSCALE_ICON_RESOURCE_DIRECTORY = "Skins/common/greyscale_icons/";
const char* const CTavoIconRepository::GREYSCALE_ICON_RESOURCE_DIRECTORY_SFB = "Skins/common_sfb/greyscale_icons/";
const char* const CTavoIconRepository::GREYSCALE_ICON_RESOURCE_DIRECTORY_BSFT = "Skins/common_bsft/greyscale_icons/";
const char* CTavoIconRepository::s_baseProfileFile = "/tmp/device.baseProfile";

// Indexed by the tavoIcon number of the document language; rows ending in ":" are
// markers of that enumeration, never files.
QString tavoIconNames[TAVO_ICON_COUNT] = {
    QStringLiteral("_InvalidIcon:"), QStringLiteral("BigLabel"), QStringLiteral("SmallLabel"),
    QStringLiteral("QuickAccessKeyLabel"), QStringLiteral("_MaxPresentationOnly:"),
    QStringLiteral("Messages"), QStringLiteral("Alerts"), QStringLiteral("Features"),
    QStringLiteral("Settings"), QStringLiteral("Applications"), QStringLiteral("CorporateDirectory"),
    QStringLiteral("CallLists"), QStringLiteral("SIP.png"), QStringLiteral("DoNotDisturb"),
    QStringLiteral("CallForward"), QStringLiteral("Platform.png"), QStringLiteral("Network.png"),
    QStringLiteral("Lines.png"), QStringLiteral("Diagnostics"), QStringLiteral("Basic"),
    QStringLiteral("Advanced"), QStringLiteral("IncomingCall"), QStringLiteral("Call"),
    QStringLiteral("Video"), QStringLiteral("InConference"), QStringLiteral("Menu"), QStringLiteral("Mute"),
    QStringLiteral("CallHistory"), QStringLiteral("Contacts"), QStringLiteral("ActiveBuddy.png"),
    QStringLiteral("BusyBuddy.png"), QStringLiteral("CallActive"), QStringLiteral("CallOnHold"),
    QStringLiteral("InactiveBuddy.png"), QStringLiteral("LineNotRegistered"),
    QStringLiteral("LineRegistered"), QStringLiteral("SharedLine"),
    QStringLiteral("SharedLineNotRegistered"), QStringLiteral("PrivateLine.png"),
    QStringLiteral("SpeedDialIndicator"), QStringLiteral("ForwardNoAnswer"), QStringLiteral("ForwardOnBusy"),
    QStringLiteral("ForwardAllCalls"), QStringLiteral("MenuIconText.png"), QStringLiteral("Language.png"),
    QStringLiteral("Preferences.png"), QStringLiteral("RingToneAll.png"),
    QStringLiteral("RingToneExternal.png"), QStringLiteral("RingToneInternal.png"),
    QStringLiteral("RingTonePersonal.png"), QStringLiteral("RingTones"), QStringLiteral("System.png"),
    QStringLiteral("VideoOnAnswer.png"), QStringLiteral("VideoOnOriginate.png"),
    QStringLiteral("AdvancedSettings"), QStringLiteral("Applications"), QStringLiteral("Backlight.png"),
    QStringLiteral("Contrast.png"), QStringLiteral("DateTimeFormat.png"), QStringLiteral("Display.png"),
    QStringLiteral("ColorScheme.png"), QStringLiteral("ConfigureVideo.png"),
    QStringLiteral("AllOutgoing.png"), QStringLiteral("AllIncoming.png"), QStringLiteral("Unchecked"),
    QStringLiteral("Unchecked-pressed"), QStringLiteral("Checked"), QStringLiteral("Checked-pressed"),
    QStringLiteral("SpeakerPhone"), QStringLiteral("Headset"), QStringLiteral("ACDOnline"),
    QStringLiteral("ACDOffline"), QStringLiteral("ACDNotLoggedIn"), QStringLiteral("ACDAvailable.png"),
    QStringLiteral("StatusAway.png"), QStringLiteral("StatusBusy.png"), QStringLiteral("StatusLunch.png"),
    QStringLiteral("SecureRTP"), QStringLiteral("RemoteActive"), QStringLiteral("RemoteHold"),
    QStringLiteral("HDAudio"), QStringLiteral("HDAudioAndVideo"), QStringLiteral("MediaFlowIn"),
    QStringLiteral("MediaFlowOut"), QStringLiteral("MediaFlowInAndOut"), QStringLiteral("NoneVideoCall"),
    QStringLiteral("Offering"), QStringLiteral("Proceed"), QStringLiteral("DialTone"),
    QStringLiteral("CallOnHold"), QStringLiteral("Disconnect"), QStringLiteral("ConferenceSecure"),
    QStringLiteral("Thumbnail"), QStringLiteral("Previous"), QStringLiteral("Play"), QStringLiteral("Pause"),
    QStringLiteral("Next"), QStringLiteral("Quit"), QStringLiteral("ImageSettings"),
    QStringLiteral("Information"), QStringLiteral("RecordingIndicator"), QStringLiteral("PauseIndicator"),
    QStringLiteral("DirectoryItem"), QStringLiteral("StorageMediaIdle"), QStringLiteral("StorageMediaBusy"),
    QStringLiteral("TavonetLogo"), QStringLiteral("IncomingCallWithUrl"), QStringLiteral("Keyboard"),
    QStringLiteral("Keyboard-pressed"), QStringLiteral("MenuHome"), QStringLiteral("Shift"),
    QStringLiteral("Caps"), QStringLiteral("Delete"), QStringLiteral("Symbols"), QStringLiteral("Alphabet"),
    QStringLiteral("Keypad"), QStringLiteral("Confirm"), QStringLiteral("Confirm-pressed"),
    QStringLiteral("RemoteMute"), QStringLiteral("VideoStopped"), QStringLiteral("VideoStoppedAndMuted"),
    QStringLiteral("AuxJack"), QStringLiteral("CapsLock"), QStringLiteral("MissedCalls"),
    QStringLiteral("OffHoursIndicator.png"), QStringLiteral("SignalStrengthNoNet"),
    QStringLiteral("SignalStrengthNone"), QStringLiteral("SignalStrengthLow"),
    QStringLiteral("SignalStrengthLowMedium"), QStringLiteral("SignalStrengthMedium"),
    QStringLiteral("SignalStrengthFull"), QStringLiteral("RTLSNoNet"), QStringLiteral("RTLSNone"),
    QStringLiteral("RTLSLow"), QStringLiteral("RTLSLowMedium"), QStringLiteral("RTLSMedium"),
    QStringLiteral("RTLSFull"), QStringLiteral("BatteryVeryLow"), QStringLiteral("BatteryLow"),
    QStringLiteral("BatteryMedium"), QStringLiteral("BatteryHigh"), QStringLiteral("BatteryFull"),
    QStringLiteral("BatteryCharging"), QStringLiteral("BatteryFullyCharged"), QStringLiteral("BatteryNone"),
    QStringLiteral("PTTtransmit"), QStringLiteral("PTTreceive"), QStringLiteral("PTTidle"),
    QStringLiteral("OAIFlag"), QStringLiteral("Cut.png"), QStringLiteral("Copy.png"),
    QStringLiteral("Paste.png"), QStringLiteral("Blank.png"), QStringLiteral("QPRESAvailable"),
    QStringLiteral("QPRESBusy"), QStringLiteral("QPRESAvailableInCall"),
    QStringLiteral("QPRESChatAvailable"), QStringLiteral("QPRESUnavialble"), QStringLiteral("QPRESAway"),
    QStringLiteral("QPRESOffline"), QStringLiteral("BluetoothConnected"),
    QStringLiteral("BluetoothNotConnected"), QStringLiteral("CheckMark"), QStringLiteral("Folder"),
    QStringLiteral("ImageSettings"), QStringLiteral("Qml"), QStringLiteral("Qml"),
    QStringLiteral("AudioFile"), QStringLiteral("VideoFile"), QStringLiteral("File"),
    QStringLiteral("ProfileBluetoothHeadset"), QStringLiteral("Bluetooth"),
    QStringLiteral("InvalidCredential"), QStringLiteral("InstantMessage"),
    QStringLiteral("BarcodeNotConnected"), QStringLiteral("BarcodeConnectedSingle"),
    QStringLiteral("BarcodeConnectedMulti"), QStringLiteral("Internet.png"), QStringLiteral("Video.png"),
    QStringLiteral("QPRESAvailable.png"), QStringLiteral("Refresh.png"), QStringLiteral("Stop.png"),
    QStringLiteral("Previous-Disabled.png"), QStringLiteral("Next"), QStringLiteral("Portal"),
    QStringLiteral("Bookmark"), QStringLiteral("SecureHttp"), QStringLiteral("QuitBrowser"),
    QStringLiteral("KeyboardLaunch"), QStringLiteral("EditMode123"), QStringLiteral("EditModeAbc"),
    QStringLiteral("EditModeABC_upperCase"), QStringLiteral("EditModeabc_lowerCase"),
    QStringLiteral("EditEncodingAscii"), QStringLiteral("EditEncodingLatin"),
    QStringLiteral("EditEncodingKatakana"), QStringLiteral("EditEncodingCyrillic"),
    QStringLiteral("EditEncodingUnicode"), QStringLiteral("EditEncodingConfiguration"),
    QStringLiteral("EditCancel"), QStringLiteral("DisableAH"), QStringLiteral("EnableAH"),
    QStringLiteral("PlacedCall"), QStringLiteral("ReceivedCall"), QStringLiteral("MissedCall"),
    QStringLiteral("EditMode"), QStringLiteral("Calendar"), QStringLiteral("Search"),
    QStringLiteral("Warning"), QStringLiteral("Critical"), QStringLiteral("OCSAvailable"),
    QStringLiteral("OCSAway"), QStringLiteral("OCSBusy"), QStringLiteral("OCSDoNotDisturb"),
    QStringLiteral("OCSNoInfo"), QStringLiteral("OCSOffline"), QStringLiteral("Clear"),
    QStringLiteral("Sort"), QStringLiteral("Filter"), QStringLiteral("EditDial"), QStringLiteral("Save"),
    QStringLiteral("RemoveItem"), QStringLiteral("CreateContact"), QStringLiteral("BackArrow"),
    QStringLiteral("EditBackSpace"), QStringLiteral("ChevronLeft"), QStringLiteral("ChevronRight"),
    QStringLiteral("DisconnectFromServer"), QStringLiteral("ConnectToServer"), QStringLiteral("Favorite"),
    QStringLiteral("BLFBusy"), QStringLiteral("UpArrow"), QStringLiteral("DownArrow"),
    QStringLiteral("placeholdericon"), QStringLiteral("PlaceHolderIcon"), QStringLiteral("PTThold"),
    QStringLiteral("EditModePinyin.png"), QStringLiteral("BatteryMediumHigh"),
    QStringLiteral("DoNotDisturbOff"), QStringLiteral("skipBack"), QStringLiteral("skipForward"),
    QStringLiteral("HDAudioSmall"), QStringLiteral("SoftwareUpdate"), QStringLiteral("checkerboard"),
    QStringLiteral("checkerboard_invert"), QStringLiteral("SSImage1.jpg"), QStringLiteral("SSImage2.jpg"),
    QStringLiteral("DESKTIEPaired"), QStringLiteral("CheckedVK"), QStringLiteral("default-photo"),
    QStringLiteral("LyncAvailable"), QStringLiteral("LyncAway"), QStringLiteral("LyncBusy"),
    QStringLiteral("LyncDND"), QStringLiteral("LyncUnknown"), QStringLiteral("LyncOffline"),
    QStringLiteral("LyncBlocked"), QStringLiteral("LyncOOOAvailable"), QStringLiteral("LyncOOOAway"),
    QStringLiteral("LyncOOOBusy"), QStringLiteral("LyncOOODND"), QStringLiteral("LyncOOOOffline"),
    QStringLiteral("StopIndicator"), QStringLiteral("power-off"), QStringLiteral("Audioplayback"),
    QStringLiteral("Work"), QStringLiteral("Mobile"), QStringLiteral("Home"), QStringLiteral("Other"),
    QStringLiteral("Lync"), QStringLiteral("LyncVoiceMail"), QStringLiteral("UCOne"),
    QStringLiteral("BossUnknown"), QStringLiteral("BossOfflineOOO"), QStringLiteral("BossOffline"),
    QStringLiteral("BossDNDOOO"), QStringLiteral("BossDND"), QStringLiteral("BossBusyOOO"),
    QStringLiteral("BossBusy"), QStringLiteral("BossBlockedOOO"), QStringLiteral("BossBlocked"),
    QStringLiteral("BossAwayOOO"), QStringLiteral("BossAway"), QStringLiteral("BossAvailableOOO"),
    QStringLiteral("BossAvailable"), QStringLiteral("SelfPresenceAvailable"),
    QStringLiteral("SelfPresenceAvailableOOO"), QStringLiteral("SelfPresenceAway"),
    QStringLiteral("SelfPresenceAwayOOO"), QStringLiteral("SelfPresenceBusy"),
    QStringLiteral("SelfPresenceBusyOOO"), QStringLiteral("SelfPresenceDND"),
    QStringLiteral("SelfPresenceDNDOOO"), QStringLiteral("SelfPresenceOffline"),
    QStringLiteral("SelfPresenceOfflineOOO"), QStringLiteral("SelfPresenceUnknown"),
    QStringLiteral("DominantSpeaker"), QStringLiteral("voicemail-read"), QStringLiteral("voicemail-unread"),
    QStringLiteral("InfoNotification"), QStringLiteral("LyncDir"), QStringLiteral("KeyboardShow.png"),
    QStringLiteral("KeyboardHide.png"), QStringLiteral("Presenter.png"),
    QStringLiteral("ParticipantOnHold.png"), QStringLiteral("EditTextCancel.png"),
    QStringLiteral("ExitApp.png"), QStringLiteral("DialPad.png"), QStringLiteral("Traverse.png"),
    QStringLiteral("singleuser.png"), QStringLiteral("Unmute"), QStringLiteral("EndCall"),
    QStringLiteral("More"), QStringLiteral("Close"), QStringLiteral("Close-pressed"),
    QStringLiteral("VideoNext.png"), QStringLiteral("ShowContent"), QStringLiteral("CheckMarkWhite.png"),
    QStringLiteral("Redial"), QStringLiteral("CallPark"), QStringLiteral("BSPaired"),
    QStringLiteral("DectDownload"), QStringLiteral("DectUpdate"), QStringLiteral("Caret"),
    QStringLiteral("Basic-Settings"), QStringLiteral("Advanced-Settings"), QStringLiteral("toggle-on"),
    QStringLiteral("toggle-off"), QStringLiteral("wifi"), QStringLiteral("bluetooth"),
    QStringLiteral("Lync"), QStringLiteral("Gear"), QStringLiteral("MrPairNotification"),
    QStringLiteral("Logout"), QStringLiteral("MrPaired.png"), QStringLiteral("MrPairedAndConnected.png"),
    QStringLiteral("Announcements.png"), QStringLiteral("ConferenceLock.png"),
    QStringLiteral("ConferenceInfo.png"), QStringLiteral("Content.png"), QStringLiteral("PlaceCall.png"),
    QStringLiteral("MessagesMenu.png"), QStringLiteral("SelfView.png"), QStringLiteral("FavoriteBlue.png"),
    QStringLiteral("ActiveCalls.png"), QStringLiteral("StopMyVideo.png"), QStringLiteral("StartMyVideo.png"),
    QStringLiteral("SettingsMenu.png"), QStringLiteral("ProfileBluetoothHeadsetGrey.png"),
    QStringLiteral("Twitter.png"), QStringLiteral("Unlock.png"), QStringLiteral("HoldMenu.png"),
    QStringLiteral("RadioButtonEnabled.png"), QStringLiteral("RadioButtonDisabled.png"),
    QStringLiteral("AudioCall.png"), QStringLiteral("VideoCall.png"), QStringLiteral("PhoneLock.png"),
    QStringLiteral("Layout.png"), QStringLiteral("TransferMenu.png"),
    QStringLiteral("BlindTransferMenu.png"), QStringLiteral("WaitingInLobby.png"),
    QStringLiteral("RecordingPause.png"), QStringLiteral("RecordingRecord.png"),
    QStringLiteral("RecordingResume.png"), QStringLiteral("RecordingStop.png"),
    QStringLiteral("StatusPause.png"), QStringLiteral("StatusRecord.png"), QStringLiteral("PlacedCall_Lync"),
    QStringLiteral("ReceivedCall_Lync"), QStringLiteral("MissedCall_Lync"), QStringLiteral("Roster-Hold"),
    QStringLiteral("ConferenceLock.png"), QStringLiteral("LyncDistributionList"), QStringLiteral("Waiting"),
    QStringLiteral("Executives"), QStringLiteral("Assistants"), QStringLiteral("Messages-blue"),
    QStringLiteral("AssistantRegistered"), QStringLiteral("ExecutiveRegistered"),
    QStringLiteral("LockHomeScreen"), QStringLiteral("SignIn_PC"), QStringLiteral("SignIn_PinAuth"),
    QStringLiteral("SignIn_Credentials"), QStringLiteral("SignIn_Online"), QStringLiteral("SignIn_PC_Blue"),
    QStringLiteral("Error"), QStringLiteral("LockOutline"), QStringLiteral("Contact_Group"),
    QStringLiteral("Contact_DL"), QStringLiteral("Cancel"), QStringLiteral("Submit"),
    QStringLiteral("Encoding"), QStringLiteral("Okay"), QStringLiteral("LockDisable"),
    QStringLiteral("forgotPassword"), QStringLiteral("SharedLinewhite"), QStringLiteral("Phone"),
    QStringLiteral("DectMapShareline"), QStringLiteral("DectMapPrivateline"),
    QStringLiteral("LyncAvailableAvatar"), QStringLiteral("LyncAwayAvatar"),
    QStringLiteral("LyncBusyAvatar"), QStringLiteral("LyncDNDAvatar"), QStringLiteral("LyncUnknownAvatar"),
    QStringLiteral("LyncOfflineAvatar"), QStringLiteral("LyncBlockedAvatar"),
    QStringLiteral("LyncOOOAvatar"), QStringLiteral("HomeSelected"), QStringLiteral("SoftwareUpdateSpinner"),
    QStringLiteral("Admin-Settings"), QStringLiteral("ForwardMenu"), QStringLiteral("Split"),
    QStringLiteral("SecurityMenu.png"), QStringLiteral("CameraControl.png"),
    QStringLiteral("CameraPresets.png"), QStringLiteral("CameraControlMenu.png"),
    QStringLiteral("SelfViewOff.png"), QStringLiteral("SelfViewOn.png"), QStringLiteral("photo-bg-groupp"),
    QStringLiteral("photo-bg-groupq"), QStringLiteral("lock-photo"),
    QStringLiteral("Mulit_Unchecked-pressed"), QStringLiteral("Multi_Unchecked"),
    QStringLiteral("Multi_Checked-pressed"), QStringLiteral("Multi_Checked"), QStringLiteral("Status"),
    QStringLiteral("About"), QStringLiteral("Guest"), QStringLiteral("EFKLinekey"),
    QStringLiteral("GuestSelfPresenceAvailable"), QStringLiteral("GuestSelfPresenceAvailableOOO"),
    QStringLiteral("GuestSelfPresenceAway"), QStringLiteral("GuestSelfPresenceAwayOOO"),
    QStringLiteral("GuestSelfPresenceBusy"), QStringLiteral("GuestSelfPresenceBusyOOO"),
    QStringLiteral("GuestSelfPresenceDND"), QStringLiteral("GuestSelfPresenceDNDOOO"),
    QStringLiteral("GuestSelfPresenceOffline"), QStringLiteral("GuestSelfPresenceOfflineOOO"),
    QStringLiteral("GuestSelfPresenceUnknown"), QStringLiteral("DeskTie"), QStringLiteral("GuestSignOut"),
    QStringLiteral("toggle-option"), QStringLiteral("CameraUpdateSpinner"), QStringLiteral("FilterPressed"),
    QStringLiteral("CameraSettings"), QStringLiteral("UserLogIn"), QStringLiteral("VideoSystem"),
    QStringLiteral("KvintSystem"), QStringLiteral("KvintSatelliteSystem"), QStringLiteral("CameraSystem"),
    QStringLiteral("StartStopMirroring"), QStringLiteral("MoreAlt"), QStringLiteral("LineRegisteredUACSTA"),
    QStringLiteral("LineNotRegisteredUACSTA"), QStringLiteral("NotifyDoNotDisturb"),
    QStringLiteral("NotifyMissedCalls"), QStringLiteral("NotifyVoicemail"),
    QStringLiteral("LineNotRegistered-Hybrid"), QStringLiteral("LineRegistered-Hybrid"),
    QStringLiteral("DoNotDisturb-Hybrid"), QStringLiteral("25signal-connected"),
    QStringLiteral("25signal-connected-secure"), QStringLiteral("25signal-secured"),
    QStringLiteral("25signal"), QStringLiteral("50signal-connected"),
    QStringLiteral("50signal-connected-secure"), QStringLiteral("50signal-secured"),
    QStringLiteral("50signal"), QStringLiteral("75signal-connected"),
    QStringLiteral("75signal-connected-secure"), QStringLiteral("75signal-secured"),
    QStringLiteral("75signal"), QStringLiteral("Fullsignal-connected"), QStringLiteral("Fullsignal-secured"),
    QStringLiteral("Fullsignal-connected-secure"), QStringLiteral("Fullsignal"),
    QStringLiteral("WiFiGrayIcon"), QStringLiteral("AdminAvailable"), QStringLiteral("AdminAvailableOOO"),
    QStringLiteral("AdminAway"), QStringLiteral("AdminAwayOOO"), QStringLiteral("AdminBlocked"),
    QStringLiteral("AdminBlockedOOO"), QStringLiteral("AdminBusy"), QStringLiteral("AdminBusyOOO"),
    QStringLiteral("AdminDND"), QStringLiteral("AdminDNDOOO"), QStringLiteral("AdminOffline"),
    QStringLiteral("AdminOfflineOOO"), QStringLiteral("AdminUnknown"), QStringLiteral("FullSignalStatus"),
    QStringLiteral("GoodSignalStatus"), QStringLiteral("MediumSignalStatus"),
    QStringLiteral("LowSignalStatus"), QStringLiteral("wifi"), QStringLiteral("UnknownNetworkedDevice"),
    QStringLiteral("Alexa.png"), QStringLiteral("AlexaScroll.png"), QStringLiteral("Alexa_Gray.png"),
    QStringLiteral("MrPairedAndPartlyConnected.png"), QStringLiteral("AlexaCancel.png"),
    QStringLiteral("Content_Unselected.png"), QStringLiteral("Content_Selected.png"),
    QStringLiteral("Content_Disabled.png"), QStringLiteral("Fullscreen_Unselected.png"),
    QStringLiteral("Fullscreen_Selected.png"), QStringLiteral("Fullscreen_Disabled.png"),
    QStringLiteral("Gallery_Unselected.png"), QStringLiteral("Gallery_Selected.png"),
    QStringLiteral("Gallery_Disabled.png"), QStringLiteral("PIP_Unselected.png"),
    QStringLiteral("PIP_Selected.png"), QStringLiteral("PIP_Disabled.png"), QStringLiteral("Passthrough"),
    QStringLiteral("Computer"), QStringLiteral("NextCamera"), QStringLiteral("CallSettings"),
    QStringLiteral("AlexaTooltipCancel.png"), QStringLiteral("PassthruSystem.png"),
    QStringLiteral("PlaceVideoCall.png"), QStringLiteral("_DummyIcon:")
};

// Built after the table above, in the same unit, so the table is ready.
CTavoIconRepository iconRepository(QStringLiteral("SYSTEMICONS"), tavoIconNames, TAVO_ICON_COUNT, false, false);

CTavoIconRepository::CTavoIconRepository(QString name, QString* names, int count, bool greyscale, bool oneBit)
    : m_name(name)
    , m_names(names)
    , m_count(names ? count : 0)
    , m_zenithIcons(false)
{
    determineIconPath(greyscale, oneBit);
}

CTavoIconRepository::~CTavoIconRepository()
{
    clear();
}

int CTavoIconRepository::readBaseProfile()
{
    QFile file(QString::fromLocal8Bit(s_baseProfileFile ? s_baseProfileFile : ""));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray line = file.readLine(64).trimmed();
    bool ok = false;
    const int profile = line.toInt(&ok);
    return ok ? profile : -1;
}

void CTavoIconRepository::determineIconPath(bool greyscale, bool oneBit)
{
    const int profile = readBaseProfile();
    if (greyscale) {
        if (profile == 2)
            m_iconPath = GREYSCALE_ICON_RESOURCE_DIRECTORY_SFB;
        else if (profile == 3)
            m_iconPath = GREYSCALE_ICON_RESOURCE_DIRECTORY_BSFT;
        else
            m_iconPath = GREYSCALE_ICON_RESOURCE_DIRECTORY;
    } else if (oneBit) {
        m_iconPath = ONEBIT_ICON_RESOURE_DIRECTORY;
    } else if (profile == 2) {
        m_iconPath = ICON_RESOURCE_DIRECTORY_SFB;
    } else if (profile == 3) {
        m_iconPath = ICON_RESOURCE_DIRECTORY_BSFT;
    } else if (profile == 0) {
        m_iconPath = ICON_RESOURCE_DIRECTORY_OS;
    } else {
        m_iconPath = m_zenithIcons ? ICON_RESOURCE_DIRECTORY_ZENITH : ICON_RESOURCE_DIRECTORY;
    }
}

CIconResource& CTavoIconRepository::operator[](const QString& name)
{
    auto hit = m_resources.find(name);
    if (hit != m_resources.end())
        return hit.value();
    // Keyed by name alone: a later change of directory reaches loaded names only after clear().
    return m_resources.insert(name, CIconResource(m_iconPath + name)).value();
}

CIconResource& CTavoIconRepository::operator[](int number)
{
    if (number >= 0 && number < m_count)
        return (*this)[m_names[number]];
    const QString reserved = QStringLiteral("_NotApplicable");
    auto hit = m_resources.find(reserved);
    if (hit != m_resources.end())
        return hit.value();
    return m_resources.insert(reserved, CIconResource()).value();
}

QString CTavoIconRepository::getFileName(int number) const
{
    if (number < 0 || number >= m_count)
        return QString();
    return m_iconPath + m_names[number];
}

QString CTavoIconRepository::iconName(int number) const
{
    if (number < 0 || number >= m_count)
        return QString();
    return m_names[number];
}

void CTavoIconRepository::clear()
{
    for (auto it = m_resources.begin(); it != m_resources.end(); ++it)
        it.value().release();
    m_resources.clear();
}

void CTavoIconRepository::setIconPath(const QString& path)
{
    m_iconPath = path.isEmpty() ? QString(ICON_RESOURCE_DIRECTORY) : path;
}

void CTavoIconRepository::setCustomIconsPath(int profile)
{
    switch (profile) {
    case 2: m_iconPath = ICON_RESOURCE_DIRECTORY_SFB; break;
    case 3: m_iconPath = ICON_RESOURCE_DIRECTORY_BSFT; break;
    case 0: m_iconPath = ICON_RESOURCE_DIRECTORY_OS; break;
    default: m_iconPath = m_zenithIcons ? ICON_RESOURCE_DIRECTORY_ZENITH : ICON_RESOURCE_DIRECTORY; break;
    }
}

void CTavoIconRepository::useOneBitIcons()
{
    m_iconPath = ONEBIT_ICON_RESOURE_DIRECTORY;
}

void CTavoIconRepository::useGreyscaleIcons()
{
    determineIconPath(true, false);
}

void CTavoIconRepository::useZenithIcons()
{
    m_zenithIcons = true;
    determineIconPath(false, false);
}

void updateIconResource(char* style, char* attributes)
{
    iconRepository.clear();
    iconRepository.set(style, attributes);
}

QPixmap* getIconPixmap(int number)
{
    if (number < 1 || number >= iconRepository.count())
        return nullptr;
    return iconRepository[number].getImage(nullptr, false);
}
