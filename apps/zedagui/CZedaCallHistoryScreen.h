#pragma once
// The call history of the sample phone: a title strip over a list of a few
// hundred calls (name, number, time and an icon for missed, received or placed).
// The list is a CTavoView on a surface of its own below the strip; its rows are
// placeholders until they come into view, and are built then. Keys typed on the
// screen go to the list: Up and Down move the focus, "#" and "*" a page.
#include <QDateTime>
#include <QString>
#include <QVector>

#include "layout/CTavoLayoutWidget.h"

class CTavoLabelWidget;
class CTavoObject;
class CTavoView;
class CTavoWidget;

class CZedaCallHistoryScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    struct CallT {
        QString name;
        QString number;
        QDateTime at;
        int daysAgo;
        int kind;  // 0 missed, 1 received, 2 placed
    };

    explicit CZedaCallHistoryScreen(QWidget* parent);

    // Applies the skin item to the screen and the list surface, then lays the list out.
    void applySkin(const QString& style, const QString& attributes);
    CTavoView* view() const { return m_view; }
    CTavoLayoutWidget* listSurface() const { return m_list; }
    int builtRows() const { return m_built; }
    static QVector<CallT> sampleCalls(int count);
    // "17:42", "Yesterday 09:15" or "12/05 09:15", in the language of the moment.
    static QString timeText(const CallT& call);

    // What the list shows now, for the demo's record: offset, focus, bar, motion.
    QString getContextSensitiveInformation() override;
    void retranslateUi() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private slots:
    void buildRow(CTavoObject* placeholder);

private:
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_count;
    CTavoLayoutWidget* m_list;
    CTavoView* m_view;
    QVector<CallT> m_calls;
    int m_built = 0;
};
