#include "HostScreen.h"

#include <QApplication>
#include <QMouseEvent>

#include "style/CTavoIconDefinition.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/TavoButtonSettings.h"

namespace {
struct ButtonT {
    const char* name;   // object name: the skin block and what Host:Press names
    const char* label;
    const char* url;    // what a click sends to the core
};
const ButtonT kButtons[] = {
    {"Reply", "Reply", "Host:Reply"},
    {"Hello", "Hello", "Host:Hello"},
};
}  // namespace

HostScreen::HostScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    // The class and object name select the skin's block: HostScreen#host.
    setObjectName(QStringLiteral("host"));
    // Children are painted in the order they are made.
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("title"));
    m_title->setText(QStringLiteral("TGUILib host"));
    m_message = new CTavoLabelWidget(this);
    m_message->setObjectName(QStringLiteral("message"));
    m_message->setText(QStringLiteral("No word from the core yet"));
    m_status = new CTavoLabelWidget(this);
    m_status->setObjectName(QStringLiteral("status"));
    setCoreUp(false);

    int id = 1;
    for (const ButtonT& b : kButtons) {
        TavoButtonSettings settings;
        settings.set(QString::fromLatin1(b.name), QString::fromLatin1(b.label), QString::fromLatin1(b.url),
                     QString(), QString(), CTavoIconDefinition(), QString(), id++);
        auto* button = new CTavoButton(&settings, this);
        button->setObjectName(QString::fromLatin1(b.name));
        // A click reaches the surface's onWidgetEvent, whose layoutWidgetSignal
        // ends in the manager's onWidgetEvent.
        connect(button, &CTavoButton::buttonClicked, this,
                [this](QString url, QString data) { onWidgetEvent(url, data); });
        m_buttons.append(button);
    }
}

void HostScreen::setMessage(const QString& text)
{
    m_message->setText(text);
}

void HostScreen::setCoreUp(bool up)
{
    m_status->setText(up ? QStringLiteral("Core connected") : QStringLiteral("Waiting for the core"));
}

bool HostScreen::press(const QString& name)
{
    for (CTavoButton* button : qAsConst(m_buttons)) {
        if (button->objectName() != name)
            continue;
        const QPoint at = button->center();
        QMouseEvent down(QEvent::MouseButtonPress, at, mapToGlobal(at), Qt::LeftButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(this, &down);
        QMouseEvent up(QEvent::MouseButtonRelease, at, mapToGlobal(at), Qt::LeftButton, Qt::NoButton,
                       Qt::NoModifier);
        QApplication::sendEvent(this, &up);
        return true;
    }
    return false;
}
