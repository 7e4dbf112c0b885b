#pragma once
// The home screen of the sample phone: a status strip with the clock, a title,
// an HTML paragraph with the phone's state and a grid of application tiles.
// Every element takes its look from the skin item "home" by its object name.
#include <QList>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTavoButton;
class CTavoLabelWidget;
class CTavoParagraph;
class CTavoWidget;

class CZedaHomeScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaHomeScreen(QWidget* parent);

    // Applies the skin item; the texts follow, since HTML support is a style key.
    void applySkin(const QString& style, const QString& attributes);
    void setClock(const QString& text);
    void setPhoneState(bool coreUp, bool directoryUp);
    // Rows of the directory's contacts table; -1 while none has arrived.
    void setContactCount(int count);
    CTavoButton* tile(const QString& name) const;
    const QList<CTavoButton*>& tiles() const { return m_tiles; }

    void retranslateUi() override;

private:
    void refreshIntro();

    CTavoWidget* m_statusBar;
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_clock;
    CTavoParagraph* m_intro;
    QList<CTavoButton*> m_tiles;
    bool m_coreUp = false;
    bool m_directoryUp = false;
    int m_contacts = -1;
};
