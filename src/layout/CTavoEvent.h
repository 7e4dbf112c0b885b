#pragma once
#include "tgui_export.h"
// An event of the document language carried through Qt's event system: a URL,
// a data value and one of the tavoEvent numbers, which are also the Qt event
// type. toTXML()/serialize() give the event the core reads; fromTXML() takes
// one apart again.
#include <QEvent>
#include <QString>
#include <QVariant>

#include "CTXMLEvent.h"

class TGUI_EXPORT CTavoEvent : public QEvent
{
public:
    // Stable across processes: each process registers exactly these numbers.
    enum tavoEvent {
        NoEvent = 1000,
        JSPushUriEvent = 1001,
        JSBarCodeScanEvent = 1002,
        JSCustomSoftkeyEvent = 1003,
        JSToolBarEvent = 1004,
        ShownEvent = 1005,
        HiddenEvent = 1006,
        JSNavKeyOverrideEvent = 1007,
        MaxEvent = 1008
    };

    CTavoEvent();
    explicit CTavoEvent(tavoEvent type);
    CTavoEvent(tavoEvent type, const QString& url, const QVariant& data);
    CTavoEvent(CTXMLEvent& event, tavoEvent type);
    ~CTavoEvent() override;

    // Reserves 1000 to 1007 with Qt; a number already taken is reported and
    // the rest still registered.
    static void registerTavoEvents();

    // URL and data as Latin-1, the event number as type and the flag 1.
    CTXMLEvent toTXML() const;
    // The document of toTXML().
    QString serialize() const;
    // URL from the event; data from its "data" pair, else its whole data text.
    void fromTXML(CTXMLEvent& event);

    const QString& url() const { return m_url; }
    void setUrl(const QString& url) { m_url = url; }
    const QVariant& data() const { return m_data; }
    void setData(const QVariant& data) { m_data = data; }
    tavoEvent eventType() const { return m_eventType; }

private:
    QString m_url;
    QVariant m_data;
    tavoEvent m_eventType;
};
