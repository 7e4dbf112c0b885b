#include "layout/CTavoLayoutWidget.h"

#include <QGraphicsEffect>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPointer>
#include <QPropertyAnimation>
#include <QShowEvent>
#include <QTimer>
#include <QApplication>
#include <QDomElement>
#include <cstdlib>
#include <cstring>

#include "automation/CTavoUITA.h"
#include "core/TavoGlobals.h"
#include "input/CTavoInput.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoView.h"
#include "widgets/CTavoWidget.h"

int CTavoLayoutWidget::s_count = 0;

namespace {

const int kHoldTimeoutMs = 1000;

CTavoStyleSheet* surfaceSheet(QWidget* surface)
{
    return static_cast<CTavoLayoutWidget*>(surface)->styleSheet();
}

QRect surfaceChildRect(const QWidget* surface, const CTavoWidget* child)
{
    return static_cast<const CTavoLayoutWidget*>(surface)->rectOfChildOnScreen(child);
}

QPen defaultBorderPen()
{
    return QPen(QBrush(), 0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
}

const char* eventName(int type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
        return "mousePress";
    case QEvent::MouseButtonRelease:
        return "mouseRelease";
    case QEvent::MouseButtonDblClick:
        return "mouseDblClick";
    case QEvent::MouseMove:
        return "mouseMove";
    case QEvent::Leave:
        return "leaveEvent";
    default:
        return "unknown";
    }
}

}  // namespace

CTavoLayoutWidget::CTavoLayoutWidget(QWidget* parent)
    : QWidget(parent)
    , m_readyToShow(false)
    , m_holdTimer(new QTimer(this))
    , m_background(nullptr)
    , m_backgroundLocation(0, 0)
    , m_backgroundSize(-1, -1)
    , m_border(defaultBorderPen())
    , m_borderRadius(0)
    , m_pressedButton(nullptr)
    , m_inputEnabled(true)
    , m_opaque(false)
    , m_db(nullptr)
    , m_dragStart(0, 0)
    , m_dragging(false)
    , m_dragTracking(false)
    , m_paneDragThreshold(65535)
    , m_dragLastPos(0, 0)
    , m_dragVelocity(0)
{
    // Widgets created on a surface reach its sheet and its child mapping through these.
    CTavoWidget::setSurfaceAccess(&surfaceSheet, &surfaceChildRect);
    // Listeners of the signals may be queued or recorded.
    qRegisterMetaType<CTavoButton*>("CTavoButton*");
    qRegisterMetaType<Qt::ArrowType>("Qt::ArrowType");
    ++s_count;
    guiLog(2, "Created layout widget. Layout widget count = %d", s_count);
    // Widget events end at the manager, whichever subclass the host built.
    if (parent && parent->inherits("CTavoLayoutMgr")) {
        m_db = &static_cast<CTavoLayoutMgr*>(parent)->db();
        connect(this, SIGNAL(layoutWidgetSignal(QString, QString, int)), parent,
                SLOT(onWidgetEvent(QString, QString, int)));
    }
    connect(this, &CTavoLayoutWidget::shown, this, &CTavoLayoutWidget::onShown);
    m_holdTimer->setSingleShot(true);
    connect(m_holdTimer, &QTimer::timeout, this, &CTavoLayoutWidget::onButtonHoldTimeout);
    setVisible(false);
    installEventFilter(this);
}

CTavoLayoutWidget::~CTavoLayoutWidget()
{
    --s_count;
    // The animations belong to style blocks that may outlive us.
    if (m_showAnimation) {
        m_showAnimation->stop();
        m_showAnimation->disconnect(this);
    }
    if (m_hideAnimation) {
        m_hideAnimation->stop();
        m_hideAnimation->disconnect(this);
    }
}

QString CTavoLayoutWidget::getContextSensitiveInformation()
{
    return m_contextInfo;
}

void CTavoLayoutWidget::virtualInputUpdate(QString&) {}
void CTavoLayoutWidget::retranslateUi() {}
void CTavoLayoutWidget::beginPaneAnimation() {}
void CTavoLayoutWidget::aboutToBeHidden() {}

CTavoSoftkey* CTavoLayoutWidget::getSoftkey()
{
    return nullptr;
}

void CTavoLayoutWidget::refreshDom()
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    m_dom.clear();
    if ((!isVisible() && !m_reportEnabled) || geometry().isEmpty())
        return;
    using UITA::CTavoUITA;
    QDomElement element =
        m_dom.createElement(CTavoUITA::name(parentWidget() ? UITA::Widget : UITA::Window));
    const QPoint global = mapToGlobal(QPoint(0, 0));
    element.setAttribute(CTavoUITA::name(UITA::Pos), QStringLiteral("%1:%2").arg(global.x()).arg(global.y()));
    element.setAttribute(CTavoUITA::name(UITA::Type), QString::fromLatin1(metaObject()->className()));
    element.setAttribute(CTavoUITA::name(UITA::Size), QStringLiteral("%1x%2").arg(width()).arg(height()));
    if (!isVisible())
        element.setAttribute(CTavoUITA::name(UITA::Visible), QStringLiteral("false"));
    if (!objectName().isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::Name), objectName());
    m_dom.appendChild(element);
}

void CTavoLayoutWidget::report(QList<QObject*>& done, QDomNode& parent)
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    if (done.lastIndexOf(this) >= 0 || parent.isNull() || !isVisible())
        return;
    if (pos() == QPoint(-9999, -9999))
        return;
    refreshDom();
    const QDomElement own = m_dom.documentElement();
    if (own.isNull())
        return;
    QDomNode attached = parent.appendChild(parent.ownerDocument().importNode(own, true));
    // Nested surfaces first, then lists, then buttons, then everything else painted here.
    QList<QObject*> surfaces;
    QList<QObject*> views;
    QList<QObject*> buttons;
    QList<QObject*> others;
    QList<QObject*> fields;
    for (QObject* child : children()) {
        if (qobject_cast<CTavoLayoutWidget*>(child))
            surfaces.append(child);
        else if (qobject_cast<CTavoView*>(child))
            views.append(child);
        else if (qobject_cast<CTavoButton*>(child))
            buttons.append(child);
        else if (qobject_cast<CTavoWidget*>(child))
            others.append(child);
        else if (qobject_cast<CTavoInput*>(child))
            fields.append(child);
    }
    for (const QList<QObject*>* group : {&surfaces, &views, &buttons, &others, &fields}) {
        for (QObject* child : *group) {
            // A report may run code that deletes what follows.
            QPointer<QObject> guard(child);
            if (!guard || done.lastIndexOf(child) >= 0)
                continue;
            if (auto* surface = qobject_cast<CTavoLayoutWidget*>(child))
                surface->report(done, attached);
            else if (auto* widget = qobject_cast<CTavoWidget*>(child))
                widget->report(done, attached);
            else if (auto* field = qobject_cast<CTavoInput*>(child))
                field->report(done, attached);
        }
    }
    done.append(this);
}

// --- style and layout --------------------------------------------------------

void CTavoLayoutWidget::updateStyle(char* sheet, char* name, bool apply)
{
    if (!sheet || !name)
        return;
    m_styleSheet.set(sheet, name);
    if (!apply)
        return;
    const QRect fallback(0, 0, -1, -1);
    if (CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState))
        style->setGeometry(this, fallback);
    else
        setGeometry(fallback);
    if (std::strstr(sheet, "CTavoInput")) {
        // Real input widgets take their look from Qt's own style sheets.
        QWidget::setStyleSheet(CTavoWidgetStyle::scaleStylesheet(QString::fromUtf8(sheet)));
    }
    layout();
}

void CTavoLayoutWidget::updateStyle(QString& sheet, QString& name, bool apply)
{
    QByteArray sheetText = sheet.toUtf8();
    QByteArray nameText = name.toUtf8();
    updateStyle(sheetText.data(), nameText.data(), apply);
}

void CTavoLayoutWidget::layout()
{
    basicLayout();
    if (!m_styleSheet.get(this, m_pseudoState))
        return;
    // Laying out one child may delete another.
    const QList<CTavoWidget*> found = findChildren<CTavoWidget*>();
    QList<QPointer<CTavoWidget>> children;
    children.reserve(found.size());
    for (CTavoWidget* w : found)
        children.append(QPointer<CTavoWidget>(w));
    for (const QPointer<CTavoWidget>& w : qAsConst(children)) {
        if (w)
            w->layout();
    }
}

void CTavoLayoutWidget::basicLayout()
{
    CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState);
    if (!style) {
        setGeometry(QRect(0, 0, -1, -1));
        return;
    }
    applyTextStyleToAllLabels(style);

    auto bindHide = [this](QAbstractAnimation* animation) {
        connect(animation, &QAbstractAnimation::finished, this, &CTavoLayoutWidget::hide,
                Qt::UniqueConnection);
        connect(animation, &QAbstractAnimation::finished, this, &CTavoLayoutWidget::hidden,
                Qt::UniqueConnection);
    };
    m_showAnimation = style->AnimationPtr(QStringLiteral("show-animation"), this);
    m_hideAnimation = style->AnimationPtr(QStringLiteral("hide-animation"), this);
    if (m_hideAnimation) {
        bindHide(m_hideAnimation);
        connect(m_hideAnimation, &QAbstractAnimation::stateChanged, this,
                &CTavoLayoutWidget::onAnimationStateChanged, Qt::UniqueConnection);
    }
    if (m_showAnimation) {
        connect(m_showAnimation, &QAbstractAnimation::stateChanged, this,
                &CTavoLayoutWidget::onAnimationStateChanged, Qt::UniqueConnection);
    }

    const QSize size = style->Size(QStringLiteral("size"), this->size());
    if (size != this->size())
        resize(size);
    const QPoint location = style->Location(QStringLiteral("location"), QPoint(0, 0));
    if (location != pos())
        move(location);
    m_contentRect = style->contentRect(geometry());
    layoutBackground(style);

    m_opaque = style->Bool(QStringLiteral("opaque"), false);
    setAttribute(Qt::WA_OpaquePaintEvent, m_opaque);
    setAttribute(Qt::WA_NoSystemBackground, !m_opaque);
    // Without the key no drag ever starts.
    m_paneDragThreshold = style->UInt(QStringLiteral("pane-drag-threshold"), 65535);
    if (QGraphicsEffect* effect = style->GraphicsEffect(QStringLiteral("graphics-effect"), this))
        setGraphicsEffect(effect);
}

void CTavoLayoutWidget::applyTextStyleToAllLabels(CTavoWidgetStyle* style)
{
    QFont font = QApplication::font();
    QColor color;
    unsigned flags = 0;
    style->getLabelStyle(font, color, flags);
    const QPen pen(color);
    const QList<CTavoLabelWidget*> labels = findChildren<CTavoLabelWidget*>();
    for (CTavoLabelWidget* label : labels)
        label->setStyle(font, pen, int(flags));
}

void CTavoLayoutWidget::layoutBackground(CTavoWidgetStyle* style)
{
    m_background = style->BrushPtr(QStringLiteral("background"), nullptr);
    m_activeImage = style->Image(QStringLiteral("background-image"), CTavoImage(QMetaType::QImage, nullptr));
    m_inactiveImage = style->Image(QStringLiteral("inactive-background-image"), m_activeImage);
    m_backgroundLocation = style->Location(QStringLiteral("background-location"), QPoint(0, 0));
    m_backgroundSize = style->Size(QStringLiteral("background-size"), QSize(-1, -1));
    m_border = style->Pen(QStringLiteral("border"), defaultBorderPen());
    m_borderRadius = style->UInt(QStringLiteral("border-radius"), 0);
}

void CTavoLayoutWidget::setPseudoState(const QString& state)
{
    if (state == m_pseudoState)
        return;
    m_pseudoState = state;
    layout();
}

QAbstractAnimation* CTavoLayoutWidget::getAnimation(const char* name) const
{
    if (!name)
        return nullptr;
    if (std::strcmp(name, "show-animation") == 0)
        return m_showAnimation;
    if (std::strcmp(name, "hide-animation") == 0)
        return m_hideAnimation;
    return nullptr;
}

// --- painting ----------------------------------------------------------------

void CTavoLayoutWidget::paintEvent(QPaintEvent* event)
{
    if (width() < 1 && height() < 1)
        return;
    const QRect area = event->rect();
    QPainter painter(this);
    painter.setClipRect(area);
    paintBackground(&painter);
    paintTree(&painter, this, area);
}

// The order of findChildren (each child, then its own descendants), walked
// without building a list, so that a frame allocates nothing.
void CTavoLayoutWidget::paintTree(QPainter* painter, const QObject* node, const QRect& area)
{
    // By index: a view that builds rows while it paints adds children here.
    const QObjectList& children = node->children();
    for (int i = 0; i < children.size(); ++i) {
        QObject* child = children.at(i);
        if (auto* widget = qobject_cast<CTavoWidget*>(child)) {
            // A view paints what it holds, scrolled, and its own bar.
            if (CTavoView::holderOf(widget))
                continue;
            if (widget->isVisible() && widget->intersects(area))
                widget->paint(painter);
            if (qobject_cast<CTavoView*>(widget))
                continue;
        } else if (child->isWidgetType()) {
            continue;  // a surface inside this one paints its own objects
        }
        // A real widget on the surface (a field, a strip of its own) paints its
        // objects itself, in its own coordinates.
        if (!child->children().isEmpty() && !child->isWidgetType())
            paintTree(painter, child, area);
    }
}

void CTavoLayoutWidget::paintBackground(QPainter* painter)
{
    if (m_background && m_background->style() != Qt::NoBrush)
        painter->fillRect(rect(), *m_background);
    if (m_border.width() > 0) {
        painter->setRenderHint(QPainter::Antialiasing, true);
        painter->setPen(m_border);
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRect(0, 0, width(), height()), m_borderRadius, m_borderRadius);
        painter->setRenderHint(QPainter::Antialiasing, false);
    }
    if (m_activeImage.isNull() || m_inactiveImage.isNull())
        return;
    const int inset = m_border.width() / 2;
    QRect target = rect().adjusted(inset, inset, -inset, -inset);
    if (m_backgroundSize.width() >= 0 && m_backgroundSize.height() >= 0)
        target = QRect(pos() + m_backgroundLocation, m_backgroundSize);
    if (hasFocus())
        m_activeImage.paint(painter, target);
    else
        m_inactiveImage.paint(painter, target);
}

// --- button routing ----------------------------------------------------------

void CTavoLayoutWidget::mousePressEvent(QMouseEvent* event)
{
    if (!m_inputEnabled)
        return;
    const QList<CTavoButton*> buttons = findChildren<CTavoButton*>();
    for (CTavoButton* button : buttons) {
        // Buttons in a view lie in its content coordinates: the view routes them.
        if (CTavoView::holderOf(button))
            continue;
        if (handleMousePressForButton(event, button))
            break;
    }
}

bool CTavoLayoutWidget::handleMousePressForButton(QMouseEvent* event, CTavoButton* button)
{
    if (!event || !button || !button->isVisible() || button->parent() != this)
        return false;
    if (!button->contains(event->pos()))
        return false;
    button->handleEvent(event->type(), event->pos());
    if (m_pressedButton && m_pressedButton != button)
        m_pressedButton->setDown(false);
    // A double click arrives here too; it leaves the stored button alone.
    if (event->type() == QEvent::MouseButtonPress)
        m_pressedButton = button;
    else if (event->type() == QEvent::MouseButtonRelease)
        m_pressedButton = nullptr;
    emit pressedButtonChanged(m_pressedButton);
    if (m_pressedButton)
        m_holdTimer->start(kHoldTimeoutMs);
    else
        m_holdTimer->stop();
    return true;
}

void CTavoLayoutWidget::mouseReleaseEvent(QMouseEvent* event)
{
    // The same search delivers the release.
    mousePressEvent(event);
    cancelPressedButton(event->type());
}

void CTavoLayoutWidget::mouseMoveEvent(QMouseEvent* event)
{
    if (m_inputEnabled && m_pressedButton && m_pressedButton->isDown()
        && !m_pressedButton->contains(event->pos())) {
        onWidgetEvent(QStringLiteral("button-cancelled"), QString());
        cancelPressedButton(event->type());
    }
}

void CTavoLayoutWidget::leaveEvent(QEvent* event)
{
    cancelPressedButton(event->type());
}

void CTavoLayoutWidget::cancelPressedButton(int eventType)
{
    if (!m_inputEnabled || !m_pressedButton || !m_pressedButton->isDown())
        return;
    guiLog(2, "CTavoLayoutWidget::%s detected, cancelling pressed button action", eventName(eventType));
    m_pressedButton->setDown(false);
    m_pressedButton = nullptr;
    m_holdTimer->stop();
    emit pressedButtonChanged(nullptr);
}

void CTavoLayoutWidget::onButtonHoldTimeout()
{
    if (isVisible() && m_pressedButton && m_pressedButton->isVisible())
        m_pressedButton->onHoldTimeout();
}


// --- showing and hiding ------------------------------------------------------

void CTavoLayoutWidget::onAnimationStateChanged(QAbstractAnimation::State newState,
                                                QAbstractAnimation::State)
{
    // Touches are ignored while the surface moves.
    if (newState == QAbstractAnimation::Running)
        m_inputEnabled = false;
    else if (newState == QAbstractAnimation::Stopped)
        m_inputEnabled = true;
}

void CTavoLayoutWidget::Show(bool animate)
{
    if (m_hideAnimation)
        m_hideAnimation->stop();
    if (isVisible()) {
        // A show that was cut short still ends where it would have.
        if (auto* animation = qobject_cast<QPropertyAnimation*>(m_showAnimation.data())) {
            const QVariant end = animation->endValue();
            const QByteArray property = animation->propertyName();
            if (property == "pos" && pos() != end.toPoint())
                move(end.toPoint());
            else if (property == "geometry" && geometry() != end.toRect())
                setGeometry(end.toRect());
        }
        emit shown();
        return;
    }
    setVisible(true);
    if (animate && m_showAnimation)
        m_showAnimation->start();
    emit shown();
}

void CTavoLayoutWidget::Hide(bool animate)
{
    if (m_showAnimation)
        m_showAnimation->stop();
    if (!isVisible())
        return;
    if (m_hideAnimation && animate)
        m_hideAnimation->start();
    else
        setVisible(false);
    if (hasFocus())
        clearFocus();
    emit hidden();
}

void CTavoLayoutWidget::hide()
{
    setVisible(false);
}

void CTavoLayoutWidget::endPaneAnimation()
{
    Show();
}

void CTavoLayoutWidget::onShown()
{
    m_readyToShow = true;
}

void CTavoLayoutWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
}

void CTavoLayoutWidget::raise()
{
    QWidget::raise();
    emit risen();
}

bool CTavoLayoutWidget::onWidgetEvent(QString e, QString data)
{
    emit layoutWidgetSignal(e, data, 0);
    return true;
}

bool CTavoLayoutWidget::onMgrEvent(int, int)
{
    return false;
}

// --- geometry ----------------------------------------------------------------

void CTavoLayoutWidget::moveAlong(QPoint& point, const char* mode, QPoint offset)
{
    QPoint target = point;
    if (mode && std::strcmp(mode, "connected") == 0) {
        if (CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState)) {
            const QPoint location = style->Location(QStringLiteral("location"), QPoint(0, 0));
            if (location.x() >= 0 && location.y() >= 0)
                target += location;
        }
    } else if (mode && std::strcmp(mode, "moving") == 0) {
        target = pos() + offset;
    }
    m_anchor = point;
    move(target);
}

QRect CTavoLayoutWidget::rectOfChildOnScreen(const CTavoWidget* child) const
{
    if (!child)
        return QRect();
    // What a view holds lies in its content: map it to where the view shows it.
    if (const CTavoView* view = CTavoView::holderOf(child, true)) {
        const QRect shown(view->mapToPointInParent(child->topLeft()), view->mapToPointInParent(child->bottomRight()));
        return shown.intersected(view->rect());
    }
    return child->rect();
}

bool CTavoLayoutWidget::isOnTopAt(CTavoWidget*, const QPoint&) const
{
    // A plain surface has nothing of its own above its children.
    return true;
}

bool CTavoLayoutWidget::isOnTop() const
{
    const QRect area = geometry();
    const QRect test = area.adjusted(area.width() / 4, area.height() / 4, -(area.width() / 4),
                                     -(area.height() / 4));
    const QObject* owner = parent();
    if (!owner)
        return true;
    const QObjectList& siblings = owner->children();
    for (int i = siblings.size() - 1; i >= 0; --i) {
        QObject* sibling = siblings.at(i);
        if (sibling == this)
            return true;
        auto* widget = qobject_cast<QWidget*>(sibling);
        if (widget && widget->isVisible() && widget->geometry().contains(test))
            return false;
    }
    return true;
}

// --- pane dragging -----------------------------------------------------------

void CTavoLayoutWidget::startDragging(int direction)
{
    if (direction == 3)
        emit paneShow(false, Qt::RightArrow, true);
    else if (direction == 4)
        emit paneShow(false, Qt::LeftArrow, true);
}

void CTavoLayoutWidget::paneDragCancelled()
{
    m_dragVelocity = 0;
    // A tracked finger is ignored until it is lifted.
    m_dragStart = m_dragTracking ? QPoint(-1, -1) : QPoint(0, 0);
    m_dragging = false;
    m_dragTracking = false;
    m_dragLastPos = QPoint(0, 0);
}

bool CTavoLayoutWidget::event(QEvent* event)
{
    if (bRebootInitiated)
        return true;
    if (isVisible()) {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            m_dragging = false;
            m_dragTracking = false;
            m_dragStart = QPoint(0, 0);
            m_dragVelocity = 0;
            break;
        case QEvent::MouseButtonRelease:
            if (m_dragging)
                emit paneDragStopped(m_dragVelocity);
            m_dragging = false;
            m_dragTracking = false;
            m_dragStart = QPoint(0, 0);
            m_dragVelocity = 0;
            break;
        case QEvent::MouseMove: {
            if (m_dragStart == QPoint(-1, -1))
                break;
            auto* mouse = static_cast<QMouseEvent*>(event);
            const QPoint global = mouse->globalPos();
            if (m_dragLastPos != QPoint(0, 0))
                m_dragVelocity = global.x() - m_dragLastPos.x();
            m_dragLastPos = global;
            if (!m_dragTracking) {
                m_dragStart = mouse->pos();
                m_dragTracking = true;
            }
            if (m_dragging) {
                emit paneDragged(global);
            } else if (unsigned(std::abs(mouse->pos().x() - m_dragStart.x())) > m_paneDragThreshold) {
                emit paneDragStarted(global);
                m_dragging = true;
            }
            break;
        }
        default:
            break;
        }
    }
    return QWidget::event(event);
}

bool CTavoLayoutWidget::eventFilter(QObject* watched, QEvent* event)
{
    return QWidget::eventFilter(watched, event);
}
