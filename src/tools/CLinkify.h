#pragma once
#include "tgui_export.h"
// Finds what can be acted on in free text (a calendar entry, a message): web and
// e-mail addresses, phone numbers, SIP, H.323 and tel URIs, conference pass
// codes. Everything is static: a set of process-wide, replaceable QRegExp
// patterns and the operations over them. The patterns are the design: their
// alternatives decide what counts as a number (QRegExp semantics: the longest
// match at the leftmost position, capture numbers as written), and a second
// pass throws away what they took wrongly (dates, meeting IDs, addresses).
//
// GUI thread only: QRegExp objects keep the state of their last search, so
// nothing here is re-entrant.
#include <QList>
#include <QRegExp>
#include <QString>
#include <QStringList>

class TGUI_EXPORT CLinkify
{
public:
    // The kind of a link; a search asks for several with a mask.
    enum LinkTypeT {
        LinkWeb = 1,
        LinkEmail = 2,
        LinkPhone = 4,
        LinkSip = 8,
        LinkH323 = 16,
        LinkTel = 32,
        LinkPhoneLenient = 64,
        LinkPassword = 128,
    };

    struct LinkT {
        QString text;  // the whole match
        QString uri;   // the capture asked for, later the normalised URI
        int start;
        int end;       // offset behind the match
        LinkTypeT type;
    };

    // Every kind whose bit is in types, in the order web, pass code, e-mail,
    // phone, custom phone, SIP, H.323, tel; overlaps settled by removeSublinks.
    // lenient takes the lenient phone and tel patterns and keeps numbers that
    // look like this year or last year.
    static QList<LinkT> findLinks(const QString& text, int types, bool lenient);
    // One pattern; uri is the given capture. The phone patterns filter their
    // matches (dates, meeting IDs, IP addresses). The type is left 0.
    static QList<LinkT> findLinks(const QString& text, const QRegExp& pattern, unsigned int capture);
    // findLinks(text, types, false), of links with an equal uri the first.
    static QList<LinkT> findUniqueLinks(const QString& text, int types);

    // HTML made readable for the patterns: comments and tags out, breaking tags
    // as spaces, entities decoded. Text that is not rich text comes back as is.
    static QString stripHtml(const QString& text);
    // "tel:" and the digits of the first phone number in text ("" without one).
    static QString normalizeTelNumber(const QString& text);
    // Scheme in lower case, the address, and ";ext=" with an extension or pass code.
    static QString normalizeUri(const QRegExp& pattern, const QString& text);
    static bool isEmail(const QString& text);

    // Of overlapping links the longer stays; the last overlapping one decides.
    static QList<LinkT> removeSublinks(const QList<LinkT>& links);
    static void removeDuplicateLinks(QList<LinkT>& links);
    // Addresses of preferred domains first, then numbers with dial characters,
    // then plain numbers, then the rest; order kept within each group.
    static void reorderLinks(bool preferDomains, const QStringList& domains, QList<LinkT>& links);

    // Replaces the pattern of a kind (64: the lenient phone pattern). An invalid
    // pattern is refused with a log line and the old one stays.
    static void setPattern(LinkTypeT type, const QRegExp& pattern);
    static void setPattern(LinkTypeT type, const QString& pattern);
    // Every pattern as at start, the custom phone format removed.
    static void resetPatterns();
    // With dtmf the phone and tel patterns also take the dial characters
    // ";w,p*#" behind a number, and stripping keeps them.
    static void updatePhoneTelPatterns(bool dtmf);
    // A format such as "xxx-xxxx|(xxx) xxx-xxxx" ("x" a digit or "*"), or a raw
    // pattern between slashes, becomes CUSTOM_PHONE_REGEX. Gives whether that
    // pattern is valid; a format with another character leaves it unchanged.
    static bool setCustomPhoneNumberFormat(const QString& format);

    static QRegExp WEB_REGEX;
    static QRegExp EMAIL_REGEX;
    static QRegExp PHONE_REGEX;
    static QRegExp PHONE_REGEX_LENIENT;
    static QRegExp CUSTOM_PHONE_REGEX;
    static QRegExp SIP_REGEX;
    static QRegExp H323_REGEX;
    static QRegExp TEL_REGEX;
    static QRegExp TEL_REGEX_LENIENT;
    static QRegExp DATE_REGEX;
    static QRegExp HTML_TAG_REGEX;
    static QRegExp HTML_COMMENT_TAG_REGEX;
    static QRegExp NON_DIGITS_REGEX;
    static QRegExp BACKSLASH_REGEX;
    static QRegExp DTMF_CHARS_REGEX;
    static QRegExp MEETING_ID_REGEX;
    static QRegExp HTML_BREAKING_TAG_REGEX;
    static QRegExp IP_ADDRESS_REGEX;
    static QRegExp PASSWORD_REGEX;

private:
    static bool isPhonePattern(const QRegExp& pattern);
    static QString phoneKey(const QString& uri);
    static QString s_customPhoneText;
};

typedef CLinkify::LinkT LinkT;
