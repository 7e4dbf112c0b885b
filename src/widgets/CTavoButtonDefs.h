#pragma once
#include "tgui_export.h"
// The phone's physical keys: Qt key code, key function and the URL a key
// sends ("Key:name-number"). One table, searched linearly; several names stand
// more than once, for other Qt codes of the same key.
#include <QEvent>

class QKeyEvent;
class QObject;

// Key functions. The numbers are shared with the core and the input fields.
enum SoKeyFuncT : int {
    SoKeyArrowDown = 0,
    SoKeyArrowLeft = 1,
    SoKeyArrowRight = 2,
    SoKeyArrowUp = 3,
    SoKeyVolUp = 4,
    SoKeyVolDown = 5,
    SoKeyHandsfree = 6,
    SoKeyHeadset = 7,
    SoKeyMicMute = 8,
    SoKeyHold = 9,
    SoKeyDoNotDisturb = 10,
    SoKeyRedial = 11,
    SoKeyTransfer = 12,
    SoKeyConference = 13,
    SoKeyMessages = 14,
    SoKeyMenu = 15,
    SoKeyDirectories = 16,
    SoKeyApplications = 17,
    SoKeyHookswitch = 18,
    SoKeyVideo = 19,
    SoKeyDelete = 20,
    SoKeyNewCall = 21,
    SoKeyDialpad0 = 22,
    SoKeyDialpad1 = 23,
    SoKeyDialpad2 = 24,
    SoKeyDialpad3 = 25,
    SoKeyDialpad4 = 26,
    SoKeyDialpad5 = 27,
    SoKeyDialpad6 = 28,
    SoKeyDialpad7 = 29,
    SoKeyDialpad8 = 30,
    SoKeyDialpad9 = 31,
    SoKeyDialpadStar = 32,
    SoKeyDialpadPound = 33,
    SoKeyLine1 = 34,
    SoKeyLine12 = 45,
    SoKeyTalk = 46,
    SoKeyGreen = 47,
    SoKeyRed = 48,
    SoKeyBarCode = 49,
    SoKeyPage = 50,
    SoKeyJoin = 51,
    SoKeySplit = 52,
    SoKeyAnswer = 53,
    SoKeySilence = 54,
    SoKeyDialURL = 55,
    SoKeySelect = 56,
    SoKeyBargeIn = 57,
    SoKeyRelease = 58,
    SoKeyACDLogin = 59,
    SoKeyACDLogout = 60,
    SoKeyServerACDSignIn = 61,
    SoKeySoftKey1 = 62,
    SoKeySoftKey2 = 63,
    SoKeySoftKey3 = 64,
    SoKeySoftKey4 = 65,
    SoKeySoftKey5 = 66,
    SoKeyServerACDSignOut = 67,
    SoKeyManualPair = 68,
    SoKeyBack = 81,
    SoKeyHome = 83,
    SoKeyUnknown = 152
};

class TGUI_EXPORT CTavoButtonDefs
{
public:
    struct KeyDefT
    {
        int qtKey;
        SoKeyFuncT soKey;
        const char* uri;
    };

    static const int KEY_COUNT = 82;
    static const KeyDefT* table() { return s_keys; }

    // The URL of a key function; for a key not in the table "Key:Unknown-%d"
    // (in a static buffer) and *unknown set.
    static const char* getKeyUri(SoKeyFuncT key, bool* unknown = nullptr);
    // The keypad modifier plays no part in the look-up; unknown keys give SoKeyUnknown.
    static SoKeyFuncT getSoKey(int qtKey, int modifiers = 0);
    static SoKeyFuncT getSoKey(QKeyEvent* event);
    // 0 for a function or URL that no row has.
    static int getQtKey(SoKeyFuncT key);
    static int getQtKey(const char* uri);

    static bool isDialpadKey(QKeyEvent* event);
    static bool isDialpadKey(SoKeyFuncT key);
    static bool isLineKey(QKeyEvent* event);
    static bool isLineKey(SoKeyFuncT key);
    static bool isSoftKey(QKeyEvent* event);
    static bool isSoftKey(SoKeyFuncT key);
    // Arrows and Select.
    static bool isNavigationKey(QKeyEvent* event);
    static bool isNavigationKey(SoKeyFuncT key);
    // Keys the GUI itself acts on: navigation, dial pad, Delete, softkeys, Back and Home.
    static bool isGuiKey(QKeyEvent* event);
    static bool isGuiKey(SoKeyFuncT key);
    // Whether a key's text is a dial pad character: a digit, "*" or "#".
    static bool isQtKeyDialpadKey(const char* text);

    // Posts the key's press or release to the receiver; dial pad keys carry
    // the keypad modifier and their character.
    static void simulateQtKeyEvent(SoKeyFuncT key, bool press, QObject* receiver);

private:
    static const KeyDefT s_keys[KEY_COUNT];
};
