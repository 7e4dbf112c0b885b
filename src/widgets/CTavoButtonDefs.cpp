#include "widgets/CTavoButtonDefs.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QObject>
#include <cstdio>
#include <cstring>

#include "log/GuiLog.h"

const CTavoButtonDefs::KeyDefT CTavoButtonDefs::s_keys[KEY_COUNT] = {
    {Qt::Key_F1, SoKeySoftKey1, "Key:SoftKey1-28"},
    {Qt::Key_F2, SoKeySoftKey2, "Key:SoftKey2-27"},
    {Qt::Key_F3, SoKeySoftKey3, "Key:SoftKey3-26"},
    {Qt::Key_F4, SoKeySoftKey4, "Key:SoftKey4-25"},
    {Qt::Key_F5, SoKeySoftKey5, "Key:SoftKey5-25"},
    {Qt::Key_Launch0, SoKeyApplications, "Key:Applications-42"},
    {Qt::Key_Menu, SoKeyMenu, "Key:Menu-7"},
    {Qt::Key_Explorer, SoKeyDirectories, "Key:Directories-32"},
    {Qt::Key_Messenger, SoKeyMessages, "Key:Messages-8"},
    {Qt::Key_Launch1, SoKeyTalk, "Key:Talk-42"},
    {Qt::Key_Back, SoKeyBack, "Key:Back-42"},
    {Qt::Key_Call, SoKeyGreen, "Key:Green-42"},
    {Qt::Key_Hangup, SoKeyRed, "Key:Red-42"},
    {Qt::Key_HomePage, SoKeyHome, "Key:Home-42"},
    {Qt::Key_Launch2, SoKeyBarCode, "Key:BarCode-42"},
    {Qt::Key_Launch3, SoKeyPage, "Key:Page-42"},
    {Qt::Key_Launch4, SoKeyJoin, "Key:Join-42"},
    {Qt::Key_Launch5, SoKeySplit, "Key:Split-42"},
    {Qt::Key_Launch6, SoKeyAnswer, "Key:Answer-42"},
    {Qt::Key_Launch7, SoKeySilence, "Key:Silence-42"},
    {Qt::Key_Launch8, SoKeyDialURL, "Key:DialURL-42"},
    {Qt::Key_Launch9, SoKeyBargeIn, "Key:BargeIn-42"},
    {Qt::Key_0, SoKeyDialpad0, "Key:Dialpad0-14"},
    {Qt::Key_1, SoKeyDialpad1, "Key:Dialpad1-24"},
    {Qt::Key_2, SoKeyDialpad2, "Key:Dialpad2-33"},
    {Qt::Key_3, SoKeyDialpad3, "Key:Dialpad3-22"},
    {Qt::Key_4, SoKeyDialpad4, "Key:Dialpad4-19"},
    {Qt::Key_5, SoKeyDialpad5, "Key:Dialpad5-20"},
    {Qt::Key_6, SoKeyDialpad6, "Key:Dialpad6-21"},
    {Qt::Key_7, SoKeyDialpad7, "Key:Dialpad7-18"},
    {Qt::Key_8, SoKeyDialpad8, "Key:Dialpad8-17"},
    {Qt::Key_9, SoKeyDialpad9, "Key:Dialpad9-16"},
    {Qt::Key_NumberSign, SoKeyDialpadPound, "Key:DialpadPound-13"},
    {Qt::Key_Asterisk, SoKeyDialpadStar, "Key:DialpadStar-15"},
    {Qt::Key_LaunchA, SoKeyDialpadPound, "Key:DialpadPound-13"},
    {Qt::Key_LaunchB, SoKeyDialpadStar, "Key:DialpadStar-15"},
    {Qt::Key_F6, SoKeyFuncT(34), "Key:Line1-35"},
    {Qt::Key_F7, SoKeyFuncT(35), "Key:Line2-34"},
    {Qt::Key_F8, SoKeyFuncT(36), "Key:Line3-33"},
    {Qt::Key_F9, SoKeyFuncT(37), "Key:Line4-41"},
    {Qt::Key_F10, SoKeyFuncT(38), "Key:Line5-42"},
    {Qt::Key_F11, SoKeyFuncT(39), "Key:Line6-30"},
    {Qt::Key_F12, SoKeyFuncT(40), "Key:Line7-35"},
    {Qt::Key_F13, SoKeyFuncT(41), "Key:Line8-34"},
    {Qt::Key_F14, SoKeyFuncT(42), "Key:Line9-33"},
    {Qt::Key_F15, SoKeyFuncT(43), "Key:Line10-41"},
    {Qt::Key_F16, SoKeyFuncT(44), "Key:Line11-42"},
    {Qt::Key_F17, SoKeyFuncT(45), "Key:Line12-30"},
    {Qt::Key_Return, SoKeySelect, "Key:Select-3"},
    {Qt::Key_Down, SoKeyArrowDown, "Key:ArrowDown-5"},
    {Qt::Key_Left, SoKeyArrowLeft, "Key:ArrowLeft-2"},
    {Qt::Key_Right, SoKeyArrowRight, "Key:ArrowRight-4"},
    {Qt::Key_Up, SoKeyArrowUp, "Key:ArrowUp-1"},
    {Qt::Key_VolumeUp, SoKeyVolUp, "Key:VolUp-11"},
    {Qt::Key_VolumeDown, SoKeyVolDown, "Key:VolDown-12"},
    {Qt::Key_Backspace, SoKeyDelete, "Key:Delete-6"},
    {Qt::Key_F18, SoKeyVideo, "Key:Video-43"},
    {Qt::Key_F19, SoKeyRedial, "Key:Redial-36"},
    {Qt::Key_F20, SoKeyTransfer, "Key:Transfer-37"},
    {Qt::Key_F21, SoKeyConference, "Key:Conference-29"},
    {Qt::Key_F22, SoKeyHold, "Key:Hold-10"},
    {Qt::Key_F23, SoKeyDoNotDisturb, "Key:DoNotDisturb-9"},
    {Qt::Key_F24, SoKeyMicMute, "Key:MicMute-39"},
    {Qt::Key_F25, SoKeyNewCall, "Key:NewCall-45"},
    {Qt::Key_F26, SoKeyRelease, "Key:Release-46"},
    {Qt::Key_F27, SoKeyACDLogin, "Key:ACDLogin-46"},
    {Qt::Key_F28, SoKeyACDLogout, "Key:ACDLogout-46"},
    {Qt::Key_F29, SoKeyServerACDSignIn, "Key:ServerACDSignIn-39"},
    {Qt::Key_F30, SoKeyHandsfree, "Key:Handsfree-44"},
    {Qt::Key_F31, SoKeyServerACDSignOut, "Key:ServerACDSignOut-38"},
    {Qt::Key_F32, SoKeyHeadset, "Key:Headset-38"},
    {Qt::Key_PageDown, SoKeyArrowDown, "Key:ArrowDown-5"},
    {Qt::Key_F33, SoKeyHookswitch, "Key:hookswitch-0"},
    {Qt::Key_Enter, SoKeySelect, "Key:Select-3"},
    {Qt::Key_LaunchC, SoKeyArrowDown, "Key:ArrowDown-5"},
    {Qt::Key_LaunchD, SoKeyArrowLeft, "Key:ArrowLeft-2"},
    {Qt::Key_LaunchE, SoKeyArrowRight, "Key:ArrowRight-4"},
    {Qt::Key_LaunchF, SoKeyArrowUp, "Key:ArrowUp-1"},
    {Qt::Key_Delete, SoKeyDelete, "Key:Delete-6"},
    {Qt::Key_F35, SoKeyArrowDown, "Key:ArrowDown-5"},
    {Qt::Key_LaunchG, SoKeyManualPair, "Key:ManualPair-5"},
    {Qt::Key_Home, SoKeyHome, "Key:Home-42"},
};

const char* CTavoButtonDefs::getKeyUri(SoKeyFuncT key, bool* unknown)
{
    for (const KeyDefT& row : s_keys) {
        if (row.soKey == key) {
            if (unknown)
                *unknown = false;
            return row.uri;
        }
    }
    static char buffer[64];
    std::snprintf(buffer, sizeof buffer, "Key:Unknown-%d", int(key));
    if (unknown)
        *unknown = true;
    return buffer;
}

SoKeyFuncT CTavoButtonDefs::getSoKey(int qtKey, int)
{
    for (const KeyDefT& row : s_keys) {
        if (row.qtKey == qtKey)
            return row.soKey;
    }
    return SoKeyUnknown;
}

SoKeyFuncT CTavoButtonDefs::getSoKey(QKeyEvent* event)
{
    if (!event)
        return SoKeyUnknown;
    return getSoKey(event->key(), int(event->modifiers()));
}

int CTavoButtonDefs::getQtKey(SoKeyFuncT key)
{
    for (const KeyDefT& row : s_keys) {
        if (row.soKey == key)
            return row.qtKey;
    }
    return 0;
}

int CTavoButtonDefs::getQtKey(const char* uri)
{
    if (!uri)
        return 0;
    for (const KeyDefT& row : s_keys) {
        if (std::strcmp(row.uri, uri) == 0)
            return row.qtKey;
    }
    return 0;
}

bool CTavoButtonDefs::isDialpadKey(SoKeyFuncT key)
{
    return key >= SoKeyDialpad0 && key <= SoKeyDialpadPound;
}

bool CTavoButtonDefs::isDialpadKey(QKeyEvent* event)
{
    return isDialpadKey(getSoKey(event));
}

bool CTavoButtonDefs::isLineKey(SoKeyFuncT key)
{
    return key >= SoKeyLine1 && key <= SoKeyLine12;
}

bool CTavoButtonDefs::isLineKey(QKeyEvent* event)
{
    return isLineKey(getSoKey(event));
}

bool CTavoButtonDefs::isSoftKey(SoKeyFuncT key)
{
    return key >= SoKeySoftKey1 && key <= SoKeySoftKey5;
}

bool CTavoButtonDefs::isSoftKey(QKeyEvent* event)
{
    return isSoftKey(getSoKey(event));
}

bool CTavoButtonDefs::isNavigationKey(SoKeyFuncT key)
{
    return (key >= SoKeyArrowDown && key <= SoKeyArrowUp) || key == SoKeySelect;
}

bool CTavoButtonDefs::isNavigationKey(QKeyEvent* event)
{
    return isNavigationKey(getSoKey(event));
}

bool CTavoButtonDefs::isGuiKey(SoKeyFuncT key)
{
    return isNavigationKey(key) || isDialpadKey(key) || isSoftKey(key) || key == SoKeyDelete
        || key == SoKeyBack || key == SoKeyHome;
}

bool CTavoButtonDefs::isGuiKey(QKeyEvent* event)
{
    return isGuiKey(getSoKey(event));
}

bool CTavoButtonDefs::isQtKeyDialpadKey(const char* text)
{
    if (!text || !text[0] || text[1])
        return false;
    return (text[0] >= '0' && text[0] <= '9') || text[0] == '*' || text[0] == '#';
}

void CTavoButtonDefs::simulateQtKeyEvent(SoKeyFuncT key, bool press, QObject* receiver)
{
    if (!receiver) {
        guiLog(3, "CTavoButtonDefs::simulateQtKeyEvent: no receiver for key %d", int(key));
        return;
    }
    const int qtKey = getQtKey(key);
    if (qtKey == 0) {
        guiLog(3, "CTavoButtonDefs::simulateQtKeyEvent: key %d has no Qt key", int(key));
        return;
    }
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    QString text;
    if (isDialpadKey(key)) {
        modifiers = Qt::KeypadModifier;
        if (key == SoKeyDialpadStar)
            text = QStringLiteral("*");
        else if (key == SoKeyDialpadPound)
            text = QStringLiteral("#");
        else
            text = QString(QChar('0' + (key - SoKeyDialpad0)));
    }
    QCoreApplication::postEvent(receiver,
                                new QKeyEvent(press ? QEvent::KeyPress : QEvent::KeyRelease, qtKey, modifiers, text));
}
