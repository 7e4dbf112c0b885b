#pragma once
#include "tgui_export.h"
// Small process tools, and the factory of the simple widgets that layouts
// and table rows name by class.
class QString;
class QWidget;
class CTavoWidget;

// Blocks the caller for msec milliseconds. The caller's event loop keeps
// running meanwhile (timers, sockets and painting go on), so a supervisor
// waiting to restart a child does not freeze its screen; the wait ends early
// only when the application is told to quit. Without a QCoreApplication the
// thread sleeps. A negative time is logged and returns at once.
TGUI_EXPORT void tavoToolsDelay(int msec);

// A new widget of the named class on parent, with objectName: "CTavoButton",
// "CTavoLabelWidget", "CTavoScrollingLabel", "CTavoMarqueeLabel",
// "CTavoImageWidget", "CTavoIcon" or "CTavoParagraph". The scrolling and the
// marquee label are not part of this build yet; they and any other name give
// null (logged).
TGUI_EXPORT CTavoWidget* tavoToolCreateWidget(const QString& className, const QString& objectName, QWidget* parent);
