#pragma once
// The "Network" settings screen, opened by the Settings tile: the phone's IPv4
// address in a field under its mask, the phone's name in a text field whose
// mode identifier stands beside it. Both fields tell the softkey bar which
// context keys they want; the screen answers the bar's mode, delete, save and
// reset keys for the field that has the focus. Looks come from the skin item
// "network", the fields' geometry from their "CTavoInput#name" blocks.
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTavoInput;
class CTavoLabelWidget;
class CTavoWidget;

class CZedaNetworkScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaNetworkScreen(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    CTavoInput* ipField() const { return m_ip; }
    CTavoInput* nameField() const { return m_name; }
    CTavoLabelWidget* modeIdentifier() const { return m_modeId; }

    void layout() override;
    void retranslateUi() override;

signals:
    // Both fields' context keys, for whatever softkey bar the host has.
    void contextSensitiveSk(QString keyUrl, QString data, int value);

public slots:
    // A softkey press of the bar; only the shown screen acts on it.
    void onSoftkey(QString url, QString data);

private:
    void describeFields();

    CTavoWidget* m_statusBar;
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_ipLabel;
    CTavoLabelWidget* m_nameLabel;
    CTavoLabelWidget* m_modeId;
    CTavoInput* m_name;
    CTavoInput* m_ip;
};
