#pragma once
// The "Account" settings screen, shown by the demo: the SIP port in a numeric
// field kept to 1024..65535, a password shown masked, and the display name in
// a text field with the inline backspace button, multi-tap entry in the
// scripts the Script key steps through, and the magnifying glass under a
// finger held on its text. Looks come from the skin item "account".
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTavoInput;
class CTavoLabelWidget;
class CTavoWidget;

class CZedaAccountScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaAccountScreen(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    CTavoInput* portField() const { return m_port; }
    CTavoInput* passwordField() const { return m_password; }
    CTavoInput* nameField() const { return m_name; }

    void layout() override;
    void retranslateUi() override;

signals:
    void contextSensitiveSk(QString keyUrl, QString data, int value);

public slots:
    // A softkey press of the bar; only the shown screen acts on it.
    void onSoftkey(QString url, QString data);

private:
    CTavoWidget* m_statusBar;
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_portLabel;
    CTavoLabelWidget* m_passwordLabel;
    CTavoLabelWidget* m_nameLabel;
    CTavoLabelWidget* m_script;
    CTavoInput* m_password;
    CTavoInput* m_name;
    CTavoInput* m_port;
};
