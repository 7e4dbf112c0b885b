#include "HostManager.h"

#include <cstring>
#include <string>

#include "CTXMLEvent.h"
#include "CTXMLRoot.h"
#include "CTXMLUriLib.h"
#include "HostScreen.h"
#include "layout/CTXMLDataConverter.h"
#include "log/GuiLog.h"
#include "style/CTavoStyleSheetFile.h"

namespace {
// A plain GUI event and its flags, as the core expects them from a click.
const int kGuiEventType = 1000;
const int kGuiEventFlags = 1;
}  // namespace

HostManager::HostManager()
    : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), false)
{
    setObjectName(QStringLiteral("host"));
    // A virtual call from the base constructor would not reach this class:
    // the host builds its screens once the base is complete.
    initWidgets();
}

void HostManager::initWidgets()
{
    m_screen = new HostScreen(this);
    m_childWidgets.insert(MainScreen, m_screen);

    // The skin file holds one item per surface; the manager keeps it parsed.
    CTavoStyleSheetFile* skin = styleSheetFile();
    const QString item = QStringLiteral("host");
    if (skin && skin->get(item)) {
        QString style = skin->getStyle(item);
        QString attributes = skin->getAttributes(item);
        m_screen->updateStyle(style, attributes, true);
    } else {
        guiLog(4, "host: the skin has no item \"host\"");
    }
    m_screen->Show(false);
}

void HostManager::handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type)
{
    // The base parses the document into xmlRoot() and handles configuration,
    // application status and translations; then the host looks at it.
    CTavoLayoutMgr::handleTXmlMsg(data, source, type);
    const CTXMLRoot& root = xmlRoot();
    if (!root.hasEvent())
        return;
    guiLog(2, "host: event %s", root.uri);
    if (CTXMLUriLib::type(root.uri) == TxmlUriAppStatus) {
        m_screen->setCoreUp(isAppConnected(GuiAppsTavoapp));
    } else if (std::strcmp(root.uri, "Host:Show") == 0) {
        m_screen->setMessage(QString::fromUtf8(root.value("text")));
    } else if (std::strcmp(root.uri, "Host:Press") == 0) {
        const QString name = QString::fromUtf8(root.value("key"));
        if (!m_screen->press(name))
            guiLog(4, "host: no button %s to press", qPrintable(name));
    } else if (std::strcmp(root.uri, "Host:Quit") == 0) {
        // handleShutdown ends the event loop; main then stops in order.
        emit shutDown(0);
    }
}

void HostManager::onWidgetEvent(QString url, QString data, int type)
{
    Q_UNUSED(type);
    // A finger that slid off the button: nothing to report.
    if (url.isEmpty() || url == QLatin1String("button-cancelled"))
        return;
    CTXMLEvent event;
    event.set(url.toUtf8().constData(), kGuiEventType, kGuiEventFlags);
    if (!data.isEmpty())
        event.addPair(CTXMLUriLib::varname(TxmlVarData),
                      CTXMLDataConverter::encodeEntities(data).toUtf8().constData());
    const std::string text = event.serialize();
    guiLog(2, "host: sending %s", text.c_str());
    tavoToolSendAppMsg(text.c_str(), GuiAppsTavoapp, GuiAppsMsgTxml);
}
