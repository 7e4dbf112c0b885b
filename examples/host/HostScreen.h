#pragma once
// The host's one screen: a title, a line with what the core said last, and two
// buttons whose clicks go to the core. Every element takes its look from the
// skin item "host" by its object name.
#include <QList>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTavoButton;
class CTavoLabelWidget;

class HostScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit HostScreen(QWidget* parent);

    void setMessage(const QString& text);
    void setCoreUp(bool up);
    // Presses and releases the button named name with mouse events at its
    // centre, as a finger would; false if there is no such button.
    bool press(const QString& name);

private:
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_message;
    CTavoLabelWidget* m_status;
    QList<CTavoButton*> m_buttons;
};
