#pragma once
// The input modes and text encodings of the phone's text fields. Their numbers
// travel in documents and settings, so they are fixed; the names of the modes
// are those of CTXMLDataConverter::getStringFromInputMode, the names of the
// encodings those of the variables "ASCII" to "Unicode".

// Modes below InputModeNumeric are alphabetical.
enum InputModeT : int {
    InputModeCapitalised = 0,  // "Abc"
    InputModeLower = 1,        // "abc"
    InputModeUpper = 2,        // "ABC"
    InputModeNumeric = 3,      // "123"
    InputModeIP = 4,           // "IP": IPv4 address in four fields
    InputModeURL = 5,          // "URL": dial URL with a protected prefix
    InputModeNumericStep = 6,  // "123T": number stepped by the arrow keys
    InputModeTel = 7,          // "Tel"
    InputModeTelNoNav = 8,     // "TelNoNav": cursor kept at the end
    InputModeHex = 9,          // "Hex"
    InputModePinYin = 10,      // "XT9 PinYin": predictive entry
    InputModeIPv6 = 11,        // "IPv6"
    InputModeNumericStar = 12, // "123*"
    // The number of modes; a field uses it as "no mode" (it has no name).
    InputModeCount = 13
};

enum InputEncodingT : int {
    InputEncodingASCII = 0,
    InputEncodingLatin = 1,
    InputEncodingCyrillic = 2,
    InputEncodingKatakana = 3,
    InputEncodingUnicode = 4,
    // Numeric and other keymaps without letters.
    InputEncodingNone = 5
};
