#include "widgets/CTavoWidget.h"

#include <QBrush>
#include <QDebug>
#include <QDomElement>
#include <QDomNode>
#include <QMetaObject>
#include <QPainter>
#include <QPropertyAnimation>
#include <QWidget>
#include <cstring>

#include "automation/CTavoUITA.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "tools/TavoToolFlags.h"

namespace {

CTavoWidget::SurfaceStyleSheetFn s_surfaceStyleSheet = nullptr;
CTavoWidget::SurfaceChildRectFn s_surfaceChildRect = nullptr;

// Half away from zero, in single precision, whatever qreal is on the build host.
int roundHalfAway(float value)
{
    return value >= 0.0f ? int(value + 0.5f) : -int(-value + 0.5f);
}

// One record for every widget without a border: copies share it.
const QPen& noBorderPen()
{
    static const QPen pen = [] {
        QPen p(Qt::NoPen);
        p.setWidth(0);
        p.setCapStyle(Qt::SquareCap);
        p.setJoinStyle(Qt::BevelJoin);
        return p;
    }();
    return pen;
}

} // namespace


void CTavoWidget::setSurfaceAccess(SurfaceStyleSheetFn styleSheetOf, SurfaceChildRectFn rectOfChildOnScreen)
{
    s_surfaceStyleSheet = styleSheetOf;
    s_surfaceChildRect = rectOfChildOnScreen;
}

bool CTavoWidget::isLayoutWidget(const QObject* object)
{
    // By class name: widgets/ must not depend on the surface class of layout/.
    return object && object->inherits("CTavoLayoutWidget");
}

CTavoWidget::CTavoWidget(QWidget* parent, unsigned int kind, int x, int y, int w, int h)
    : CTavoObject(parent, QRect(x, y, w, h))
    , m_down(false)
    , m_focusBackground(true)
    , m_dimWhenPressed(false)
    , m_kind(kind)
    , m_minimumSize(-1, -1)
    , m_maximumSize(-1, -1)
    , m_designSize(0, 0)
    , m_layoutType(0)
    , m_borderPen(noBorderPen())
    , m_styleSize(-1, -1)
    , m_styleLocation(0, 0)
    , m_opacity(1.0f)
    , m_pressedBackgroundOpacity(0.0f)
    , m_backgroundBrush(nullptr)
    , m_focusedBrush(nullptr)
    , m_showAnimation(nullptr)
    , m_pressAnimation(nullptr)
    , m_upDuration(0)
    , m_renderQuality(2)
    , m_parent(parent)
    , m_styleSheet(nullptr)
    , m_style(nullptr)
{
    m_visible = true;
    m_enabled = true;
    m_focusable = true;
    // A widget is a real item; only a bare object stands in for a row not yet built.
    m_initialized = true;
    if (m_parent && isLayoutWidget(m_parent) && s_surfaceStyleSheet)
        m_styleSheet = s_surfaceStyleSheet(m_parent);
}

CTavoWidget::~CTavoWidget()
{
    // Take our report element out of whatever report it was hung into.
    QDomNode node = m_dom.documentElement();
    while (!node.isNull()) {
        QDomNode parent = node.parentNode();
        if (parent.isNull() || parent.isDocument())
            break;
        parent.removeChild(node);
        node = parent;
        if (!node.parentNode().isNull() && !node.parentNode().isDocument())
            break;
    }
}

void CTavoWidget::setOpacity(float opacity)
{
    if (qFuzzyCompare(m_opacity, opacity))
        return;
    m_opacity = opacity;
    update();
}

void CTavoWidget::setPressedBackgroundOpacity(float opacity)
{
    if (qFuzzyCompare(m_pressedBackgroundOpacity, opacity))
        return;
    m_pressedBackgroundOpacity = opacity;
    update();
}

void CTavoWidget::update()
{
    if (!m_parent || !m_parent->isVisible())
        return;
    QRect area = rect();
    if (s_surfaceChildRect && isLayoutWidget(m_parent))
        area = s_surfaceChildRect(m_parent, this);
    m_parent->update(area);
}

void CTavoWidget::update(int x, int y, int w, int h)
{
    if (m_parent && m_parent->isVisible())
        m_parent->update(x, y, w, h);
}

void CTavoWidget::update(const QRect& area)
{
    if (m_parent && m_parent->isVisible())
        m_parent->update(area);
}

void CTavoWidget::moveBy(int dx, int dy)
{
    move(x() + dx, y() + dy);
}

void CTavoWidget::sizeBy(float fx, float fy)
{
    // Always from the design size, so repeated calls do not accumulate rounding.
    setWidth(roundHalfAway(float(m_designSize.width()) * fx));
    setHeight(roundHalfAway(float(m_designSize.height()) * fy));
    recomputeContentRect();
    repositionAllElements(0, 0);
    reSizeAllElementsBy(fx, fy);
}

QRect CTavoWidget::geo() const
{
    return rect().normalized();
}

void CTavoWidget::setgeo(const QRect& area)
{
    const QRect old = rect();
    float fx = 0.0f;
    float fy = 0.0f;
    if (m_designSize.width() != 0 && m_designSize.height() != 0) {
        fx = float(area.width()) / float(m_designSize.width());
        fy = float(area.height()) / float(m_designSize.height());
    }
    QRect::operator=(area);
    repositionAllElements(area.left() - old.left(), area.top() - old.top());
    reSizeAllElementsBy(fx, fy);
    update(old);
    update();
}

QRect CTavoWidget::geoParent() const
{
    if (!m_parent)
        return rect();
    return QRect(m_parent->mapToParent(topLeft()), size());
}

void CTavoWidget::setPos(const QPoint& position)
{
    if (position == topLeft())
        return;
    const QRect old = rect();
    move(position.x(), position.y());
    update(old);
    update();
}

void CTavoWidget::setPseudoState(const QString& state, bool keepPosition)
{
    if (state == m_pseudoState)
        return;
    m_pseudoState = state;
    if (keepPosition) {
        // A pseudo-state block may carry its own "location": keep ours.
        const QPoint corner = topLeft();
        layout();
        move(corner.x(), corner.y());
    } else {
        layout();
    }
}

void CTavoWidget::setStyleSheet(CTavoStyleSheet* sheet, bool recursive)
{
    if (!sheet)
        return;
    m_styleSheet = sheet;
    if (!recursive)
        return;
    const QList<QPointer<QObject>> subs = m_subWidgets;
    for (const QPointer<QObject>& sub : subs) {
        if (CTavoWidget* widget = qobject_cast<CTavoWidget*>(sub.data()))
            widget->setStyleSheet(sheet, true);
    }
    layout();
}

void CTavoWidget::addSubWidget(QObject* object)
{
    if (object)
        m_subWidgets.append(QPointer<QObject>(object));
}

void CTavoWidget::recomputeContentRect()
{
    CTavoWidgetStyle* style = m_styleSheet ? m_styleSheet->get(this, m_pseudoState) : nullptr;
    m_contentRect = style ? style->contentRect(rect()) : rect();
}

void CTavoWidget::layout()
{
    if (m_styleSheet)
        m_style = m_styleSheet->get(this, m_pseudoState);
    if (m_styleSheet && m_style) {
        const QVariant& size = m_style->get("size");
        if (size.isValid() && size.canConvert(QMetaType::QSize) && size.userType() != QMetaType::QString) {
            m_styleSize = size.toSize();
            setSize(m_styleSize, true);
        }
        const QVariant& location = m_style->get("location");
        if (location.isValid() && location.canConvert(QMetaType::QPoint)
            && location.userType() != QMetaType::QString) {
            m_styleLocation = location.toPoint();
            move(m_styleLocation.x(), m_styleLocation.y());
        }
        m_borderPen = m_style->Pen("border", noBorderPen());
        m_backgroundBrush = m_style->BrushPtr("background", nullptr);
        m_focusedBrush = m_style->BrushPtr("background-focused", nullptr);
        m_backgroundImage = m_style->Image("background-image", CTavoImage());
        m_focusedImage = m_style->Image("background-focused-image", m_backgroundImage);
        m_pressedImage = m_style->Image("background-pressed-image", m_backgroundImage);
        m_focusedPressedImage = m_style->Image("background-focused-pressed-image", m_pressedImage);
        m_minimumSize = m_style->Size("size-minimum", QRect::size());
        m_maximumSize = m_style->Size("size-maximum", m_minimumSize);
        m_contentRect = m_style->contentRect(rect());
        m_renderQuality = int(m_style->Enum("render-quality", 2));
        m_layoutType = int(m_style->Enum("layout-type", 1));
        m_showAnimation = m_style->AnimationPtr("show-animation", this);
        m_upDuration = int(m_style->UInt("up-duration", 0));
        if (m_upDuration > 0) {
            if (!m_pressAnimation) {
                m_pressAnimation = new QPropertyAnimation(this, "pressedBackgroundOpacity", this);
                m_pressAnimation->setStartValue(1.0);
                m_pressAnimation->setEndValue(0.0);
            }
            m_pressAnimation->setDuration(m_upDuration);
        }
        if (width() == 0)
            setWidth(m_minimumSize.width());
        if (height() == 0)
            setHeight(m_minimumSize.height());
    }
    m_lastLayoutRect = rect();
}

void CTavoWidget::setDown(bool down)
{
    if (bool(m_down) == down)
        return;
    m_down = down;
    if (!m_pressAnimation) {
        m_pressedBackgroundOpacity = down ? 1.0f : 0.0f;
        update();
        return;
    }
    m_pressAnimation->stop();
    if (down) {
        // The veil rises at twice the speed it falls.
        m_pressAnimation->setDuration(int(m_upDuration * 0.5));
        m_pressAnimation->setDirection(QAbstractAnimation::Backward);
    } else {
        m_pressAnimation->setDuration(m_upDuration);
        m_pressAnimation->setDirection(QAbstractAnimation::Forward);
    }
    m_pressAnimation->start();
}

void CTavoWidget::setVisible(bool visible)
{
    if (m_visible == visible)
        return;
    m_visible = visible;
    if (m_parent)
        m_parent->update(rect());
}

void CTavoWidget::setEnabled(bool enabled)
{
    if (bool(m_enabled) == enabled)
        return;
    m_enabled = enabled;
    if (m_parent)
        m_parent->update(rect());
}

void CTavoWidget::setFocused(bool focused)
{
    if (bool(m_focused) == focused)
        return;
    if (!focused && m_down)
        setDown(false);
    m_focused = focused;
    if (m_parent)
        m_parent->update(rect());
}

void CTavoWidget::move(int x, int y)
{
    if (x == left() && y == top())
        return;
    const int dx = x - left();
    const int dy = y - top();
    translate(dx, dy);
    if (m_contentRect.isNull() && !rect().isNull())
        recomputeContentRect();
    else
        m_contentRect.translate(dx, dy);
    repositionAllElements(dx, dy);
}

void CTavoWidget::setSize(const QSize& newSize, bool storeDesignSize)
{
    if (storeDesignSize)
        m_designSize = newSize;
    if (newSize == QRect::size())
        return;
    setWidth(newSize.width());
    setHeight(newSize.height());
    recomputeContentRect();
    repositionAllElements(0, 0);
}

void CTavoWidget::repositionAllElements(int, int)
{
}

void CTavoWidget::reSizeAllElementsBy(float, float)
{
}

QWidget* CTavoWidget::wrappedQWidget()
{
    return nullptr;
}

void CTavoWidget::Hide(bool)
{
    if (m_showAnimation)
        m_showAnimation->stop();
    if (m_visible)
        setVisible(false);
}

void CTavoWidget::Show(bool bForceAnimation)
{
    setVisible(true);
    if (!m_showAnimation || !bForceAnimation)
        return;
    if (m_showAnimation->state() == QAbstractAnimation::Running)
        return;
    const QVariant present = property(m_showAnimation->propertyName().constData());
    if (present == m_showAnimation->endValue())
        return;
    m_showAnimation->start();
}

void CTavoWidget::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    if (!qFuzzyCompare(m_opacity, 1.0f))
        painter->setOpacity(qAbs(m_opacity));
    applyRenderQuality(painter);
    paintBackgroundImage(painter, nullptr);
}

void CTavoWidget::applyRenderQuality(QPainter* painter)
{
    if (!painter)
        return;
    bool smooth;
    bool antialias;
    bool text;
    switch (m_renderQuality) {
    case 0: smooth = true; antialias = true; text = true; break;
    case 1: smooth = true; antialias = true; text = false; break;
    case 2:
    case 3: smooth = false; antialias = false; text = false; break;
    default: return;
    }
    painter->setRenderHint(QPainter::SmoothPixmapTransform, smooth);
    painter->setRenderHint(QPainter::Antialiasing, antialias);
    painter->setRenderHint(QPainter::TextAntialiasing, text);
}

void CTavoWidget::paintImage(QPainter* painter, const QRect& area, const CTavoImage& image)
{
    if (painter && !image.isNull())
        image.paint(painter, area);
}

void CTavoWidget::paintBackground(QPainter* painter, QRect* area)
{
    if (!painter)
        return;
    if (m_borderPen.width() > 0 && m_borderPen.style() != Qt::NoPen) {
        painter->setPen(m_borderPen);
        painter->drawRect(rect());
    }
    if (m_down && m_focusedBrush && *m_focusedBrush != QBrush() && m_focusedPressedImage.isNull()
        && m_pressedImage.isNull()) {
        painter->fillRect(rect(), *m_focusedBrush);
        return;
    }
    QBrush* brush = (m_focusBackground && m_focused) ? m_focusedBrush : m_backgroundBrush;
    if (brush && *brush != QBrush())
        painter->fillRect(area ? *area : rect(), *brush);
}

void CTavoWidget::paintBackgroundImage(QPainter* painter, QRect* area)
{
    if (!painter)
        return;
    const QRect target = area ? *area : rect();
    const bool focus = m_focusBackground && m_focused;

    // At full press the resting layer is hidden anyway: skip it.
    if (!(qFuzzyCompare(m_pressedBackgroundOpacity, 1.0f) && !m_dimWhenPressed)) {
        const CTavoImage& resting = focus ? m_focusedImage : m_backgroundImage;
        if (!resting.isNull()) {
            resting.paint(painter, target);
        } else {
            QBrush* brush = focus ? m_focusedBrush : m_backgroundBrush;
            if (brush)
                painter->fillRect(target, *brush);
        }
    }
    if (qFuzzyIsNull(m_pressedBackgroundOpacity))
        return;

    painter->setOpacity(m_pressedBackgroundOpacity * m_opacity);
    if (m_dimWhenPressed) {
        painter->fillRect(target, QColor(0, 0, 0, 64));
    } else {
        const CTavoImage& pressed = focus ? m_focusedPressedImage : m_pressedImage;
        if (pressed.isNull()) {
            if (m_focusedBrush)
                painter->fillRect(target, *m_focusedBrush);
        } else if (m_focusedBrush && m_focusedPressedImage == m_pressedImage) {
            // A focus brush wins over a pressed image that was merely inherited.
            painter->fillRect(target, *m_focusedBrush);
            painter->setOpacity(m_opacity);
            return;
        } else {
            pressed.paint(painter, target);
        }
    }
    painter->setOpacity(m_opacity);
}

void CTavoWidget::debug()
{
    qDebug("CTAVOWIDGET DEBUG: x = %d, y = %d, width = %d, height = %d", x(), y(), width(), height());
}

void CTavoWidget::report(QList<QObject*>& done, QDomNode& parent)
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    if (done.lastIndexOf(this) >= 0 || parent.isNull() || !m_visible)
        return;
    // Parked objects wait off the screen.
    if (topLeft() == QPoint(-9999, -9999))
        return;
    refreshDom();
    const QDomElement own = m_dom.documentElement();
    if (own.isNull())
        return;
    QDomNode attached = parent.appendChild(parent.ownerDocument().importNode(own, true));
    const QList<CTavoWidget*> children = findChildren<CTavoWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (CTavoWidget* child : children) {
        // A child's report may run code that deletes its siblings.
        QPointer<CTavoWidget> guard(child);
        if (guard && done.lastIndexOf(guard.data()) < 0)
            guard->report(done, attached);
    }
    done.append(this);
}

void CTavoWidget::refreshDom()
{
    if (!tavoToolGetTestAutomationFlag())
        return;
    m_dom.clear();
    if (!m_visible || right() < left() - 1 || bottom() < top() - 1)
        return;
    using UITA::CTavoUITA;
    QDomElement element = m_dom.createElement(CTavoUITA::name(UITA::Component));
    element.setAttribute(CTavoUITA::name(UITA::Type), QString::fromLatin1(metaObject()->className()));
    element.setAttribute(CTavoUITA::name(UITA::Size), QStringLiteral("%1x%2").arg(width()).arg(height()));
    // Our coordinates are those of the surface we paint on; it knows its place on the screen.
    const QPoint global = m_parent ? m_parent->mapToGlobal(topLeft()) : topLeft();
    element.setAttribute(CTavoUITA::name(UITA::Pos), QStringLiteral("%1:%2").arg(global.x()).arg(global.y()));
    if (!objectName().isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::Name), objectName());
    if (!m_pseudoState.isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::State), m_pseudoState);
    if (m_focused)
        element.setAttribute(CTavoUITA::name(UITA::Focused), QStringLiteral("true"));
    if (m_down)
        element.setAttribute(CTavoUITA::name(UITA::Pressed), QStringLiteral("true"));
    if (!m_enabled)
        element.setAttribute(CTavoUITA::name(UITA::Enabled), QStringLiteral("false"));
    m_dom.appendChild(element);
}
