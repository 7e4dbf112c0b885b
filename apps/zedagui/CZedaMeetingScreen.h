#pragma once
// The details of a meeting as a calendar sends them, with every link that
// CLinkify finds highlighted by its kind, the normalised links listed below,
// and the state of the child process that zedagui supervises. Its object name
// is "meeting" (<Event uri="Demo:Show">screen=meeting</Event>); its looks come
// from the skin item "meeting".
#include <QList>
#include <QString>

#include "layout/CTavoLayoutWidget.h"
#include "tools/CLinkify.h"

class CTavoLabelWidget;
class CZedaSupervisor;
class CTavoParagraph;

class CZedaMeetingScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaMeetingScreen(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    // Shows the state of the supervisor's first child from now on.
    void setSupervisor(CZedaSupervisor* supervisor);
    // html: the meeting's details as a calendar entry holds them.
    void setMeeting(const QString& html);
    const QList<LinkT>& links() const { return m_links; }
    // The sample meeting of the demo.
    static QString sampleMeeting();
    // The text with each link in the colour of its kind, as HTML.
    static QString highlighted(const QString& text, const QList<LinkT>& links);
    static const char* kindColour(int type);

public slots:
    void setChildState(const QString& name, const QString& state, int run, const QString& detail);

protected:
    void showEvent(QShowEvent* event) override;

private:
    CTavoLabelWidget* m_title;
    CTavoParagraph* m_details;
    CTavoParagraph* m_linkList;
    CTavoLabelWidget* m_child;
    QList<LinkT> m_links;
};
