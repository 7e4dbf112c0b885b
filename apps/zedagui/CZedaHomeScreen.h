#pragma once
// The home screen of the sample phone: a status strip with the clock, a title,
// an HTML paragraph with the phone's state and application tiles in pages of
// four that a finger swipes sideways.
// Every element takes its look from the skin item "home" by its object name.
#include <QList>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CTavoButton;
class CTavoLabelWidget;
class CTavoPageView;
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
    // The phone's state paragraph is HTML, drawn through a web page: costly, and
    // not on the boot screen. While held back it is only drawn once released.
    void holdBackIntro(bool hold);

    CTavoPageView* pages() const { return m_pages; }

    void retranslateUi() override;
    // The page of tiles shown, for the demo's record: "page=1/2 offset=0 moving=no".
    QString getContextSensitiveInformation() override;

private slots:
    void showPage(int page, int pages);

private:
    void refreshIntro();

    CTavoWidget* m_statusBar;
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_clock;
    CTavoParagraph* m_intro;
    CTavoLabelWidget* m_dots;
    CTavoPageView* m_pages;
    QList<CTavoButton*> m_tiles;
    bool m_coreUp = false;
    bool m_directoryUp = false;
    bool m_introHeldBack = false;
    int m_contacts = -1;
};
