#pragma once
// The host's manager, the central object of its process. The base class owns
// the link to the core, the skin and the document root; this class builds the
// screen, acts on the documents meant for it and reports clicks to the core.
#include "layout/CTavoLayoutMgr.h"

class HostScreen;

class HostManager : public CTavoLayoutMgr
{
    Q_OBJECT
public:
    // Key of the screen in the manager's registry of surfaces.
    enum { MainScreen = 1 };

    HostManager();

public slots:
    // A button of a surface was clicked: tell the core.
    void onWidgetEvent(QString url, QString data, int type) override;

protected:
    // Builds the screens from the skin the base constructor has loaded.
    void initWidgets() override;
    // Every TXML document from the core, on the GUI thread.
    void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type) override;

private:
    HostScreen* m_screen = nullptr;
};
