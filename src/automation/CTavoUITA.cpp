#include "automation/CTavoUITA.h"

#include "log/GuiLog.h"

namespace UITA {

namespace {
const QString& table(int index)
{
    // QStringLiteral data lives in the binary: the table costs no heap.
    static const QString names[NameCount] = {
        QStringLiteral("type"),
        QStringLiteral("name"),
        QStringLiteral("size"),
        QStringLiteral("pos"),
        QStringLiteral("state"),
        QStringLiteral("focused"),
        QStringLiteral("enabled"),
        QStringLiteral("pressed"),
        QStringLiteral("label"),
        QStringLiteral("alt-label"),
        QStringLiteral("action-released"),
        QStringLiteral("action-pressed"),
        QStringLiteral("action-held"),
        QStringLiteral("icon-ids"),
        QStringLiteral("icon-label"),
        QStringLiteral("view-offset"),
        QStringLiteral("view-content-size"),
        QStringLiteral("highlighted"),
        QStringLiteral("component"),
        QStringLiteral("widget"),
        QStringLiteral("window"),
        QStringLiteral("screen"),
        QStringLiteral("timestamp"),
        QStringLiteral("total"),
        QStringLiteral("cadence"),
        QStringLiteral("frame-rate"),
        QStringLiteral("visible"),
        QStringLiteral("number"),
        QStringLiteral("url"),
        QStringLiteral("timer"),
        QStringLiteral("call-type"),
        QStringLiteral("min"),
        QStringLiteral("max"),
        QStringLiteral("volume-level"),
        QStringLiteral("line"),
        QStringLiteral("group-type"),
        QStringLiteral("additional-info"),
        QStringLiteral("image-name"),
        QStringLiteral("pause-icon"),
        QStringLiteral("security-classification"),
        QStringLiteral("video-swapped"),
        QStringLiteral("scroll-bar-y-position"),
        QStringLiteral("scroll-direction"),
        QStringLiteral("led-color"),
        QStringLiteral("presenter"),
    };
    static const QString none;
    if (index < 0 || index >= NameCount) {
        guiLog(4, "CTavoUITA::name unknown index %d", index);
        return none;
    }
    return names[index];
}
}  // namespace

CTavoUITA::CTavoUITA() = default;

CTavoUITA* CTavoUITA::instance()
{
    static CTavoUITA uita;
    return &uita;
}

const QString& CTavoUITA::name(TavoUITANames index)
{
    return table(int(index));
}

}  // namespace UITA
