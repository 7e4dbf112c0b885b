#pragma once
#include "tgui_export.h"
// The vocabulary of the UI report: every element and attribute name that test
// automation reads, held once so that building a report allocates no names.
#include <QObject>
#include <QString>

namespace UITA {

enum TavoUITANames : int {
    Type = 0,
    Name,
    Size,
    Pos,
    State,
    Focused,
    Enabled,
    Pressed,
    Label,
    AltLabel,
    ActionReleased,
    ActionPressed,
    ActionHeld,
    IconIds,
    IconLabel,
    ViewOffset,
    ViewContentSize,
    Highlighted,
    Component,
    Widget,
    Window,
    Screen,
    Timestamp,
    Total,
    Cadence,
    FrameRate,
    Visible,
    Number,
    Url,
    Timer,
    CallType,
    Min,
    Max,
    VolumeLevel,
    Line,
    GroupType,
    AdditionalInfo,
    ImageName,
    PauseIcon,
    SecurityClassification,
    VideoSwapped,
    ScrollBarYPosition,
    ScrollDirection,
    LedColor,
    Presenter,
    NameCount
};

class TGUI_EXPORT CTavoUITA : public QObject
{
    Q_OBJECT
public:
    static CTavoUITA* instance();
    // The text of a name; an index outside the table gives an empty text.
    static const QString& name(TavoUITANames index);

private:
    CTavoUITA();
};

}  // namespace UITA
