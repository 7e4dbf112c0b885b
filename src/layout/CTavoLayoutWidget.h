#pragma once
#include "tgui_export.h"
// A real surface behind a screen or pop-up. The elements on it are CTavoWidget
// objects, QObject children without a window of their own: the surface paints
// them, routes presses to the buttons directly on it, owns the sheet that
// styles them, animates its own appearance and detects horizontal pane drags.
#include <QAbstractAnimation>
#include <QBrush>
#include <QDomDocument>
#include <QPen>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>
#include <QWidget>

#include "style/CTavoImage.h"
#include "style/CTavoStyleSheet.h"

class QDomNode;
class QMouseEvent;
class QPainter;
class QTimer;
class CTavoButton;
class CTavoDb;
class CTavoSoftkey;
class CTavoWidget;
class CTavoWidgetStyle;

class TGUI_EXPORT CTavoLayoutWidget : public QWidget
{
    Q_OBJECT
public:
    explicit CTavoLayoutWidget(QWidget* parent = nullptr);
    ~CTavoLayoutWidget() override;

    virtual QString getContextSensitiveInformation();
    virtual void virtualInputUpdate(QString& text);
    virtual void updateStyle(char* sheet, char* name, bool apply);
    virtual void updateStyle(QString& sheet, QString& name, bool apply);
    // "connected" adds the style's location to point; "moving" moves by offset
    // from the present position; any other mode moves to point.
    virtual void moveAlong(QPoint& point, const char* mode, QPoint offset);
    virtual void retranslateUi();
    virtual QRect rectOfChildOnScreen(const CTavoWidget* child) const;
    virtual bool isOnTopAt(CTavoWidget* child, const QPoint& point) const;
    virtual void report(QList<QObject*>& done, QDomNode& parent);
    virtual CTavoSoftkey* getSoftkey();

    QAbstractAnimation* getAnimation(const char* name) const;
    void setPseudoState(const QString& state);
    const QString& pseudoState() const { return m_pseudoState; }
    bool isReadyToShow() const { return m_readyToShow; }
    bool isOnTop() const;
    void startDragging(int direction);
    bool handleMousePressForButton(QMouseEvent* event, CTavoButton* button);

    CTavoStyleSheet* styleSheet() { return &m_styleSheet; }
    CTavoButton* pressedButton() const { return m_pressedButton; }
    bool isInputEnabled() const { return m_inputEnabled; }
    QRect contentRect() const { return m_contentRect; }
    QPoint anchor() const { return m_anchor; }
    CTavoDb* db() const { return m_db; }
    unsigned int paneDragThreshold() const { return m_paneDragThreshold; }
    bool isPaneDragging() const { return m_dragging; }
    const QDomDocument& dom() const { return m_dom; }
    // Whether the manager's UI report takes this widget in; on by default.
    bool isReportEnabled() const { return m_reportEnabled; }
    void setReportEnabled(bool on) { m_reportEnabled = on; }

    static int count() { return s_count; }

signals:
    void layoutWidgetSignal(QString signal, QString data, int type = 0);
    void contentWidgetShow();
    void displayToolTip(const QString& message, const QPoint& point, bool show);
    void hidden();
    void shown();
    void risen();
    void pressedButtonChanged(CTavoButton* button);
    void paneDragStarted(const QPoint& startPos);
    void paneDragged(const QPoint& pt);
    void paneDragStopped(double velocity);
    void paneShow(bool show, Qt::ArrowType direction, bool animate);
    void paneTimerReset();

public slots:
    virtual void raise();
    virtual bool onWidgetEvent(QString e, QString data);
    virtual bool onMgrEvent(int type, int data);
    virtual void Hide(bool bForceAnimation = false);
    virtual void Show(bool bForceAnimation = false);
    virtual void beginPaneAnimation();
    virtual void endPaneAnimation();
    virtual void paneDragCancelled();

public:
    // Declared after the slots above so that the virtual table keeps its order.
    virtual void layout();
    virtual void refreshDom();

public slots:
    void hide();
    void onButtonHoldTimeout();
    void onAnimationStateChanged(QAbstractAnimation::State newState, QAbstractAnimation::State oldState);
    void onShown();
    void aboutToBeHidden();

public:
    // The surface's own event entries are open, so that a host or a test driver
    // can hand it an event directly as well as through the event loop.
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

protected:
    void basicLayout();
    void layoutBackground(CTavoWidgetStyle* style);
    void applyTextStyleToAllLabels(CTavoWidgetStyle* style);
    void paintBackground(QPainter* painter);
    void cancelPressedButton(int eventType);

    QString m_contextInfo;
    bool m_readyToShow;
    CTavoStyleSheet m_styleSheet;
    QString m_pseudoState;
    QRect m_contentRect;
    QTimer* m_holdTimer;
    QPoint m_anchor;
    QBrush* m_background;
    CTavoImage m_activeImage;
    CTavoImage m_inactiveImage;
    QPoint m_backgroundLocation;
    QSize m_backgroundSize;
    QPen m_border;
    unsigned int m_borderRadius;
    CTavoButton* m_pressedButton;
    // Owned by style blocks, which a new sheet replaces.
    QPointer<QAbstractAnimation> m_showAnimation;
    QPointer<QAbstractAnimation> m_hideAnimation;
    bool m_inputEnabled;
    bool m_opaque;
    CTavoDb* m_db;
    QDomDocument m_dom;
    bool m_reportEnabled = true;
    QPoint m_dragStart;
    bool m_dragging;
    bool m_dragTracking;
    unsigned int m_paneDragThreshold;
    QPoint m_dragLastPos;
    double m_dragVelocity;

private:
    void paintTree(QPainter* painter, const QObject* node, const QRect& area);
    static int s_count;
};
