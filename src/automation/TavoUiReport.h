#pragma once
#include "tgui_export.h"
// The two reports of test automation on their way to the core: the UI report
// as XML in frames of type 3 and the memory report as text in frames of type 4.
#include <QString>

// Sends the UTF-8 of xml to the core; useLocal takes the local link while a
// daisy-chained screen is shown.
TGUI_EXPORT void tavoToolsReportUIXML(const QString& application, const QString& xml, bool useLocal);
TGUI_EXPORT void tavoToolsReportMemshow(const QString& application, const QString& text);
// The heap figures of this process, one "name=value" line per figure of mallinfo2().
TGUI_EXPORT QString getMallocInformation();
// The number by which test automation knows an icon of the repository; -1 for none.
TGUI_EXPORT int mapIconIdToTaRecognizedId(int iconId);
