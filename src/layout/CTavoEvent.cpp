#include "layout/CTavoEvent.h"

#include <QByteArray>
#include <QtGlobal>

#include "CTXMLUriLib.h"
#include "log/GuiLog.h"

CTavoEvent::CTavoEvent()
    : CTavoEvent(NoEvent)
{
}

CTavoEvent::CTavoEvent(tavoEvent type)
    : QEvent(QEvent::Type(type))
    , m_eventType(type)
{
}

CTavoEvent::CTavoEvent(tavoEvent type, const QString& url, const QVariant& data)
    : QEvent(QEvent::Type(type))
    , m_url(url)
    , m_data(data)
    , m_eventType(type)
{
}

CTavoEvent::CTavoEvent(CTXMLEvent& event, tavoEvent type)
    : CTavoEvent(type)
{
    fromTXML(event);
}

CTavoEvent::~CTavoEvent() = default;

void CTavoEvent::registerTavoEvents()
{
    for (int number = NoEvent; number < MaxEvent; ++number) {
        if (QEvent::registerEventType(number) != number)
            qWarning("CTavoEvent failed to register event %d", number);
    }
}

CTXMLEvent CTavoEvent::toTXML() const
{
    CTXMLEvent event;
    const QByteArray url = m_url.toLatin1();
    if (!event.set(url.constData(), int(m_eventType), 1))
        guiLog(3, "CTavoEvent: URL cut to %d bytes: %s", int(sizeof event.uri) - 1, url.constData());
    const QByteArray data = m_data.toString().toLatin1();
    if (!event.setData(data.constData()))
        guiLog(3, "CTavoEvent: data of %s cut from %d to %d bytes", url.constData(), data.size(),
               int(sizeof event.data) - 1);
    return event;
}

QString CTavoEvent::serialize() const
{
    return QString::fromUtf8(toTXML().serialize().c_str());
}

void CTavoEvent::fromTXML(CTXMLEvent& event)
{
    m_url = QString::fromLatin1(event.uri);
    const char* name = CTXMLUriLib::varname(TxmlVarData);
    if (event.hasPair(name))
        m_data = QString::fromLatin1(event.value(name).c_str());
    else
        m_data = QString::fromLatin1(event.data);
}
