#include "automation/TavoUiReport.h"

#include <malloc.h>

#include "core/AppDefs.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"

void tavoToolsReportUIXML(const QString& application, const QString& xml, bool useLocal)
{
    const QByteArray text = xml.toUtf8();
    guiLog(2, "UI report of %s: %d bytes", qPrintable(application), int(text.size()));
    tavoToolSendAppMsg(text.constData(), GuiAppsTavoapp, GuiAppsMsgUiReport, useLocal);
}

void tavoToolsReportMemshow(const QString& application, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    guiLog(2, "memory report of %s: %d bytes", qPrintable(application), int(bytes.size()));
    tavoToolSendAppMsg(bytes.constData(), GuiAppsTavoapp, GuiAppsMsgMemshow);
}

QString getMallocInformation()
{
    const struct mallinfo2 info = mallinfo2();
    QString text;
    const auto line = [&text](const char* name, size_t value) {
        text += QStringLiteral("%1=%2\n").arg(QLatin1String(name)).arg(quint64(value));
    };
    line("arena", info.arena);
    line("ordblks", info.ordblks);
    line("smblks", info.smblks);
    line("hblks", info.hblks);
    line("hblkhd", info.hblkhd);
    line("usmblks", info.usmblks);
    line("fsmblks", info.fsmblks);
    line("uordblks", info.uordblks);
    line("fordblks", info.fordblks);
    line("keepcost", info.keepcost);
    return text;
}

int mapIconIdToTaRecognizedId(int iconId)
{
    // The repository's numbers are the ones the test tools were given.
    return iconId >= 0 ? iconId : -1;
}
