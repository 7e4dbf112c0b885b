#pragma once
#include "tgui_export.h"
// One row of a flyout: an icon (carrying the item's badge), a check mark for
// the selected choice, the label or, when the label does not fit, its short
// form, and the quick access digit. A divider ("GROUPDIV") is a row of its own
// look with nothing in it. The parts are built on the flyout's surface, so
// that they find its sheet, and then owned and painted by the row; where they
// sit in the row comes from the row's style.
#include <QPoint>
#include <QSize>
#include <QString>

#include "CTXMLIcon.h"
#include "widgets/CTavoWidget.h"

class CTXMLFlyoutItem;
class CTavoIcon;
class CTavoLabelWidget;

class TGUI_EXPORT CTavoFlyoutItem : public CTavoWidget
{
    Q_OBJECT

public:
    explicit CTavoFlyoutItem(QWidget* parent = nullptr);
    ~CTavoFlyoutItem() override;

    // Shows the item; a quickIndex of -1 shows no digit.
    void init(const CTXMLFlyoutItem& item, int quickIndex);
    // Names the row as a divider or as an item; the caller lays it out again.
    void setGroupDiv(bool groupDiv);
    bool isGroupDiv() const { return m_isGroupDiv; }
    // The first row of a flyout on the home screen: its "Home" entry looks chosen.
    void setIsHome(bool home);
    bool isHome() const { return m_isHome; }
    void setInverted(bool inverted);
    void setInvertTextWhenFocused(bool on) { m_invertTextWhenFocused = on; }

    const QString& url() const { return m_url; }
    // What a choice reports as its value: the event data, else the item's value.
    const QString& value() const { return m_value; }
    QString text() const;
    int quickIndex() const { return m_quickIndex; }
    bool isSelected() const { return m_selected; }
    bool showsAbbreviation() const { return m_showAbbreviation; }
    CTavoIcon* icon() const { return m_icon; }
    CTavoIcon* checkIcon() const { return m_checkIcon; }
    CTavoLabelWidget* label() const { return m_label; }
    CTavoLabelWidget* abbreviatedLabel() const { return m_abbreviatedLabel; }
    CTavoLabelWidget* quickAccessLabel() const { return m_quickAccessLabel; }

    void setEnabled(bool enabled) override;
    void setFocused(bool focused) override;
    void paint(QPainter* painter) override;
    void layout() override;
    void repositionAllElements(int dx, int dy) override;
    void refreshDom() override;

private:
    void placeElements();
    void applyHomeState();

    CTavoIcon* m_icon;
    CTavoIcon* m_checkIcon;
    CTavoLabelWidget* m_label;
    CTavoLabelWidget* m_abbreviatedLabel;
    CTavoLabelWidget* m_quickAccessLabel;
    bool m_isGroupDiv;
    bool m_isHome;
    bool m_selected;
    bool m_showAbbreviation;
    bool m_invertTextWhenFocused;
    int m_quickIndex;
    QString m_url;
    QString m_value;
    // What the icon was made from, so that an unchanged icon costs nothing.
    CTXMLIcon m_iconSource;
    char m_badgeSource[TXML_LABEL_SIZE];
    // Places of the parts relative to the row's corner, from the row's style.
    QPoint m_iconLocation;
    QPoint m_checkLocation;
    QPoint m_labelLocation;
    QSize m_labelSize;
    QPoint m_abbreviatedLocation;
    QSize m_abbreviatedSize;
    QPoint m_quickAccessLocation;
    QSize m_quickAccessSize;
};
