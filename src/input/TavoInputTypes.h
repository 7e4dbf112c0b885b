#pragma once
// Input modes and text encodings of the text fields. The numbers are shared
// with the core: mode lists and field descriptions use the names in the comments.

enum InputModeT : int {
    InputModeAbc = 0,          // "Abc": capitalised text
    InputModeabc = 1,          // "abc": lower case
    InputModeABC = 2,          // "ABC": upper case
    InputMode123 = 3,          // "123": number
    InputModeIP = 4,           // "IP": IPv4 address, four fixed fields
    InputModeURL = 5,          // "URL": dial URL with a protected protocol prefix
    InputMode123T = 6,         // "123T": number stepped by arrow keys
    InputModeTel = 7,          // "Tel": telephone number
    InputModeTelNoNav = 8,     // "TelNoNav": telephone number, cursor fixed at the end
    InputModeHex = 9,          // "Hex": hexadecimal and address punctuation
    InputModeXT9PinYin = 10,   // "XT9 PinYin": predictive entry
    InputModeIPv6 = 11,        // "IPv6": IPv6 address
    InputMode123Star = 12      // "123*": number with star
};

enum InputEncodingT : int {
    InputEncodingASCII = 0,     // "ASCII"
    InputEncodingLatin = 1,     // "Latin"
    InputEncodingCyrillic = 2,  // "Cyrillic"
    InputEncodingKatakana = 3,  // "Katakana"
    InputEncodingUnicode = 4,   // "Unicode"
    InputEncodingNone = 5       // no encoding applies (numeric and other keymaps)
};
