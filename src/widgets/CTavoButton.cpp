#include "widgets/CTavoButton.h"

#include <QApplication>
#include <QDomElement>
#include <QFontMetrics>
#include <QPainter>

#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/TavoTextFormat.h"

namespace {

CTavoButton::ClickSoundFn s_clickSound = nullptr;

// The label keeps its disabled pen to itself; the button hands its own down.
struct LabelPenAccess : CTavoLabelWidget
{
    static void setDisabledPen(CTavoLabelWidget* label, const QPen& pen) { label->*(&LabelPenAccess::m_disabledPen) = pen; }
};

const unsigned kWrapBits = TavoTextNoWrap | TavoTextWordWrap | TavoTextAnywhere;

// Shared by every button until one is given its own list: no allocation per button.
const QList<UITA::TavoUITANames>& defaultReportList()
{
    static const QList<UITA::TavoUITANames> list{UITA::Label, UITA::AltLabel, UITA::ActionReleased,
                                                  UITA::ActionPressed, UITA::ActionHeld, UITA::IconIds};
    return list;
}

} // namespace

void CTavoButton::setClickSound(ClickSoundFn sound)
{
    s_clickSound = sound;
}

void CTavoButton::playClickSound()
{
    if (s_clickSound)
        s_clickSound();
}

CTavoButton::CTavoButton(QWidget* parent)
    : CTavoWidget(parent, 3)
    , m_priority(ItemPriorityNormal)
    , m_iconOffset(0, 0)
    , m_holdFired(false)
    , m_backgroundLocation(0, 0)
    , m_backgroundSize(-1, -1)
    , m_disableAltLabel(false)
    , m_disableLabel(false)
    , m_disableIcon(false)
    , m_invertWhenFocused(false)
    , m_invertAlways(false)
    , m_invertTextWhenFocused(false)
    , m_icon(nullptr)
    , m_altLabelWidget(nullptr)
    , m_labelWidget(nullptr)
    , m_index(-1)
    , m_reportList(defaultReportList())
{
    // Built on the surface so that they find its sheet, then owned by the button.
    // The alternative label is made when a document or caller first uses it.
    m_icon = new CTavoIcon(parent);
    m_icon->setParent(this);
    m_labelWidget = new CTavoLabelWidget(parent);
    m_labelWidget->setParent(this);
    m_labelWidget->setVisible(false);
    addSubWidget(m_icon);
    addSubWidget(m_labelWidget);
}

CTavoLabelWidget* CTavoButton::altLabelWidget() const
{
    return const_cast<CTavoButton*>(this)->ensureAltLabel();
}

CTavoLabelWidget* CTavoButton::ensureAltLabel()
{
    if (m_altLabelWidget)
        return m_altLabelWidget;
    // Few buttons carry a second text; the label costs as much as the main one.
    m_altLabelWidget = new CTavoLabelWidget(m_parent);
    m_altLabelWidget->setParent(this);
    m_altLabelWidget->setVisible(false);
    addSubWidget(m_altLabelWidget);
    // The surface paints children in their order: the main label stays after it.
    m_labelWidget->setParent(nullptr);
    m_labelWidget->setParent(this);
    // The sheet the button was given reaches the label as it would have from the start.
    if (m_styleSheet)
        m_altLabelWidget->setStyleSheet(m_styleSheet, true);
    if (m_style) {
        applyLabelAttributes(m_style);
        placeLabel(m_style, m_altLabelWidget, QStringLiteral("alt-label"), m_disableAltLabel, false);
    }
    return m_altLabelWidget;
}

CTavoButton::CTavoButton(TavoButtonSettings* settings, QWidget* parent)
    : CTavoButton(parent)
{
    init(settings, QString(), -1, true);
}

CTavoButton::~CTavoButton()
{
}

void CTavoButton::init(TavoButtonSettings* settings, const QString& data, int index, bool doLayout)
{
    if (!settings) {
        guiLog(3, "CTavoButton::init: no settings for button '%s'", qPrintable(objectName()));
        return;
    }
    m_settings = *settings;
    m_priority = m_settings.m_priority;
    m_data = data;
    m_index = index;
    m_labelWidget->setText(m_settings.m_label);
    if (m_altLabelWidget || !m_settings.m_auxText.isEmpty())
        ensureAltLabel()->setText(m_settings.m_auxText);
    // Vector icons are drawn at the icon's style size: it must be known first.
    if (m_icon->designSize().isEmpty() && m_icon->styleSheet())
        m_icon->layout();
    m_icon->init(m_settings.m_icon, true);
    if (doLayout)
        layout();
    update();
}

void CTavoButton::setPriority(ItemPriorityT priority)
{
    if (priority == m_priority)
        return;
    // The record stays as the document gave it, so that isNewDefinition still
    // compares against the document and not against a priority set since.
    m_priority = priority;
    layout();
    update();
}

void CTavoButton::changePriority(ItemPriorityT priority)
{
    m_priority = priority;
    layout();
}

void CTavoButton::setIcon(int number)
{
    m_settings.m_icon.m_iconIndex = number;
    m_icon->init(m_settings.m_icon, true);
    placeIcon(m_style);
    update();
}

void CTavoButton::setLabel()
{
    m_labelWidget->setText(m_settings.m_label);
    if (m_style)
        placeLabels(m_style);
    else
        m_labelWidget->setVisible(!m_disableLabel && !m_settings.m_label.isEmpty());
}

void CTavoButton::setLabel(const QString& label)
{
    if (label == m_settings.m_label)
        return;
    m_settings.m_label = label;
    setLabel();
    emit labelChanged(m_settings.m_clickUrl, label, m_index);
}

void CTavoButton::setAltLabel(const QString& label)
{
    m_settings.m_auxText = label;
    if (m_altLabelWidget || !label.isEmpty())
        ensureAltLabel()->setText(label);
    if (m_style)
        placeLabels(m_style);
    else if (m_altLabelWidget)
        m_altLabelWidget->setVisible(!m_disableAltLabel && !label.isEmpty());
}

void CTavoButton::enableMainLabel()
{
    m_disableLabel = false;
    m_labelWidget->setVisible(!m_labelWidget->text().isEmpty());
}

void CTavoButton::disableMainLabel()
{
    m_disableLabel = true;
    m_labelWidget->setVisible(false);
}

QString CTavoButton::url(int which) const
{
    if (which == 1)
        return m_settings.m_pressUrl;
    if (which == 2)
        return m_settings.m_holdUrl;
    return m_settings.m_clickUrl;
}

void CTavoButton::setLedIndicator(const QColor&)
{
}

void CTavoButton::setLedIndicator(const QColor&, int)
{
}

void CTavoButton::setReferenceTime(int)
{
}

void CTavoButton::placeLed(CTavoWidgetStyle*)
{
}

void CTavoButton::onBaseTimerTimeout(int)
{
}

void CTavoButton::enable()
{
    setEnabled(true);
}

QString CTavoButton::text() const
{
    return m_labelWidget->text();
}

void CTavoButton::initObjectMetaData()
{
    // A state that somebody else set is left alone.
    if (!m_pseudoState.isEmpty() && m_pseudoState != QLatin1String("idle") && m_pseudoState != QLatin1String("high")
        && m_pseudoState != QLatin1String("urgent"))
        return;
    if (m_priority == ItemPriorityHigh) {
        m_pseudoState = QStringLiteral("high");
        m_icon->setState(m_pseudoState);
    } else if (m_priority == ItemPriorityUrgent) {
        m_pseudoState = QStringLiteral("urgent");
        m_icon->setState(m_pseudoState);
    } else if (m_priority != ItemPriorityNone) {
        m_pseudoState.clear();
        m_icon->setState(QString());
    }
}

void CTavoButton::layout()
{
    initObjectMetaData();
    CTavoWidget::layout();
    CTavoWidgetStyle* style = m_style;
    if (!m_styleSheet || !style)
        return;
    m_disableLabel = style->Bool(QStringLiteral("disable-label"), false);
    m_disableAltLabel = style->Bool(QStringLiteral("disable-alt-label"), false);
    m_disableIcon = style->Bool(QStringLiteral("disable-icon"), false);
    m_imgName = style->String(QStringLiteral("img-name"), QString());
    m_altImage = style->Image(QStringLiteral("alt-image"), m_backgroundImage);
    m_altFocusedImage = style->Image(QStringLiteral("alt-focused-image"), m_focusedImage);
    m_invertWhenFocused = style->Bool(QStringLiteral("invert-when-focused"), false);
    m_invertAlways = style->Bool(QStringLiteral("invert-always"), false);
    m_invertTextWhenFocused = style->Bool(QStringLiteral("invert-text-when-focused"), false);
    m_disabledBackgroundImage = style->Image(QStringLiteral("disabled-background-image"), CTavoImage());
    m_backgroundLocation = style->Location(QStringLiteral("background-location"), QPoint(0, 0));
    m_backgroundSize = style->Size(QStringLiteral("background-size"), QSize(-1, -1));

    applyLabelAttributes(style);
    placeBackground(style, true);
    placeLabels(style);
    placeLed(style);
    placeIcon(style);
}

void CTavoButton::applyLabelAttributes(CTavoWidgetStyle* style)
{
    QFont font = QApplication::font();
    QColor color;
    unsigned flags = 0;
    const unsigned found = style->getLabelStyle(font, color, flags);
    bool hasElide = false;
    const bool elide = style->Bool(QStringLiteral("elide-from-left"), false, &hasElide);
    bool hasDisabled = false;
    const QPen disabledPen = style->Pen(QStringLiteral("disabled-color"), QPen(), &hasDisabled);

    if (m_altLabelWidget)
        m_altLabelWidget->layout();
    m_labelWidget->layout();

    // The main label may take its own colour and alignment.
    bool hasColor = false;
    const QColor labelColor = style->Color(QStringLiteral("label-color"), color, &hasColor);
    bool hasAlign = false;
    const unsigned labelAlign = style->Enum(QStringLiteral("label-align"), 0, &hasAlign);
    const unsigned mainFound = found | (hasColor ? 2u : 0u) | (hasAlign ? 4u : 0u);
    const unsigned mainFlags = hasAlign ? ((flags & kWrapBits) | (labelAlign & ~kWrapBits)) : flags;

    if (!m_altLabelWidget) {
    } else if ((found & 7) == 7) {
        m_altLabelWidget->setStyle(font, CTavoWidgetStyle::colorPen(color), int(flags), elide);
        LabelPenAccess::setDisabledPen(m_altLabelWidget, disabledPen);
    } else if (hasElide) {
        m_altLabelWidget->setElideFromLeft(elide);
    }
    if ((mainFound & 7) == 7) {
        m_labelWidget->setStyle(font, CTavoWidgetStyle::colorPen(labelColor), int(mainFlags), elide);
        LabelPenAccess::setDisabledPen(m_labelWidget, disabledPen);
    } else if (hasElide) {
        m_labelWidget->setElideFromLeft(elide);
    }
}

void CTavoButton::placeBackground(CTavoWidgetStyle* style, bool applySize)
{
    const CTavoImage& picture = useAlternativeBackground() ? m_altImage : m_backgroundImage;
    if (m_backgroundSize.isValid()) {
        m_backgroundRect = rect();
    } else {
        QSize size;
        if (applySize) {
            size = picture.isNull() ? QRect::size() : picture.size();
            bool has = false;
            const QSize styled = style->Size(QStringLiteral("size"), size, &has);
            if (has && styled.isValid())
                size = styled;
        } else {
            size = m_minimumSize.isValid() ? m_minimumSize : QRect::size();
        }
        const QPoint corner = topLeft() + m_backgroundLocation;
        m_backgroundRect = QRect(corner, size);
        const bool hasPosition = style->get(QStringLiteral("background-position")).isValid();
        if (hasPosition && !picture.isNull() && picture.size() != size) {
            m_backgroundRect.setSize(picture.size());
            style->alignRect(QStringLiteral("background-position"), QRect(corner, size), m_backgroundRect, corner);
        }
        if (applySize)
            setSize(size, true);
    }
    m_contentRect = style->contentRect(m_backgroundRect);
}

void CTavoButton::placeLabel(CTavoWidgetStyle* style, CTavoLabelWidget* label, const QString& prefix,
                             bool disabled, bool fillContent)
{
    // Size first: a right-aligned label needs its width.
    const bool fixed = label->styleSize().isValid();
    if (!fixed) {
        bool has = false;
        const QSize size = style->Size(prefix + QStringLiteral("-size"), QSize(), &has);
        if (has && size.isValid()) {
            label->setSize(size, true);
        } else if (fillContent) {
            label->setSize(m_contentRect.size(), false);
        } else if (!label->text().isEmpty()) {
            const QFontMetrics metrics(label->font());
            label->setSize(QSize(metrics.horizontalAdvance(label->text()) + 1, metrics.height()), false);
        }
    }
    bool has = false;
    const QPoint location = style->Location(prefix + QStringLiteral("-location"), QPoint(), &has);
    QPoint target;
    if (has) {
        target = topLeft() + location;
    } else {
        const QPoint fromCenter = style->Location(prefix + QStringLiteral("-from-center"), QPoint(), &has);
        if (has)
            target = QPoint(m_contentRect.center().x() + fromCenter.x(), m_contentRect.top() + fromCenter.y());
        else
            target = QPoint(m_contentRect.x() + m_contentRect.width() - label->width(), m_contentRect.top());
    }
    label->move(target.x(), target.y());
    label->setVisible(!disabled && !label->text().isEmpty());
}

void CTavoButton::placeLabels(CTavoWidgetStyle* style)
{
    if (!style)
        return;
    if (m_altLabelWidget)
        placeLabel(style, m_altLabelWidget, QStringLiteral("alt-label"), m_disableAltLabel, false);
    placeLabel(style, m_labelWidget, QStringLiteral("label"), m_disableLabel, true);
}

void CTavoButton::placeIcon(CTavoWidgetStyle* style)
{
    m_icon->layout();
    if (m_invertAlways)
        m_icon->setInverted(true);
    else if (m_invertWhenFocused)
        m_icon->setInverted(m_focused);
    m_iconOffset = style ? style->Location(QStringLiteral("icon-location"), QPoint(0, 0)) : QPoint(0, 0);
    alignIcon();
    if (width() <= 0 || height() <= 0) {
        setSize(QSize(width() > 0 ? width() : m_icon->width(), height() > 0 ? height() : m_icon->height()), false);
        if (m_backgroundRect.isNull())
            m_backgroundRect = rect();
    }
    if (m_disableIcon)
        m_icon->setVisible(false);
    else
        m_icon->setVisible(m_icon->displayMode() != CTavoIcon::ShowNothing);
}

void CTavoButton::alignIcon()
{
    m_icon->move(x() + m_iconOffset.x(), y() + m_iconOffset.y());
    if (!m_style || !m_style->Bool(QStringLiteral("enable-icon-alignment"), true))
        return;
    QRect area = m_icon->rect();
    m_style->alignRect(QStringLiteral("icon-align"), rect(), area, topLeft());
    m_icon->move(area.x(), area.y());
}

void CTavoButton::setFocused(bool focused)
{
    m_labelWidget->setFocused(focused);
    CTavoWidget::setFocused(focused);
    // The focused look may bring another form of the icon.
    m_icon->init(m_settings.m_icon, true);
    placeIcon(m_style);
    if (m_invertTextWhenFocused) {
        if (focused)
            m_labelWidget->setHighlighted(0, m_labelWidget->text().length());
        else
            m_labelWidget->setHighlighted(-1, 0);
    }
}

void CTavoButton::move(int x, int y)
{
    CTavoWidget::move(x, y);
}

void CTavoButton::repositionAllElements(int dx, int dy)
{
    if (dx == 0 && dy == 0)
        return;
    m_backgroundRect.translate(dx, dy);
    m_labelWidget->moveBy(dx, dy);
    if (m_altLabelWidget)
        m_altLabelWidget->moveBy(dx, dy);
    m_icon->moveBy(dx, dy);
}

void CTavoButton::reSizeAllElementsBy(float fx, float fy)
{
    m_icon->sizeBy(fx, fy);
    if (!m_style)
        return;
    placeBackground(m_style, false);
    m_backgroundRect.setSize(QRect::size());
    m_contentRect = m_style->contentRect(m_backgroundRect);
    placeLabels(m_style);
    alignIcon();
}

bool CTavoButton::handleEvent(QEvent::Type type, QPoint position)
{
    if (!m_visible || !m_enabled)
        return true;
    if (type < QEvent::MouseButtonPress || type > QEvent::KeyRelease)
        return false;
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
        guiLog(0, "%s",
               qPrintable(QStringLiteral("CTavoButton pressed (eventType=%1, x=%2, y=%3, isDown=%4)")
                              .arg(int(type)).arg(position.x()).arg(position.y()).arg(int(m_down))));
        clicked(true);
        return true;
    case QEvent::MouseButtonRelease:
    case QEvent::KeyRelease:
        guiLog(0, "%s",
               qPrintable(QStringLiteral("CTavoButton released (eventType=%1, x=%2, y=%3, isDown=%4)")
                              .arg(int(type)).arg(position.x()).arg(position.y()).arg(int(m_down))));
        if (m_down) {
            playClickSound();
            clicked(false);
        }
        return true;
    default:
        return false;
    }
}

void CTavoButton::clicked(bool pressed)
{
    if (pressed) {
        setDown(true);
        emit buttonClicked(m_settings.m_pressUrl, QStringLiteral("pressed"));
        update();
        return;
    }
    const bool held = m_holdFired;
    setDown(false);
    if (!held)
        processCtxSensitiveSk();
    update();
}

void CTavoButton::processCtxSensitiveSk()
{
    emit buttonClicked(m_settings.m_clickUrl, m_data);
}

void CTavoButton::onHoldTimeout()
{
    if (!m_down || m_settings.m_holdUrl.isEmpty())
        return;
    emit buttonClicked(m_settings.m_holdUrl, QStringLiteral("held"));
    m_holdFired = true;
}

void CTavoButton::setDown(bool down)
{
    if (bool(m_down) == down)
        return;
    m_labelWidget->setDown(down);
    CTavoWidget::setDown(down);
    m_holdFired = false;
}

void CTavoButton::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    if (!qFuzzyCompare(m_opacity, 1.0f))
        painter->setOpacity(qAbs(m_opacity));
    applyRenderQuality(painter);
    if (!m_enabled && !m_disabledBackgroundImage.isNull()) {
        paintImage(painter, m_backgroundRect, m_disabledBackgroundImage);
    } else if (useAlternativeBackground()) {
        paintImage(painter, m_backgroundRect, m_focused ? m_altFocusedImage : m_altImage);
    } else {
        paintBackgroundImage(painter, &m_backgroundRect);
    }
}

void CTavoButton::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.documentElement();
    if (element.isNull())
        return;
    using UITA::CTavoUITA;
    for (UITA::TavoUITANames entry : qAsConst(m_reportList)) {
        QString value;
        switch (entry) {
        case UITA::Label:
            value = m_labelWidget->text();
            break;
        case UITA::AltLabel:
            // Made on first use: a button without one has nothing to tell.
            value = m_altLabelWidget ? m_altLabelWidget->text() : QString();
            break;
        case UITA::ActionReleased:
            value = m_settings.m_clickUrl;
            break;
        case UITA::ActionPressed:
            value = m_settings.m_pressUrl;
            break;
        case UITA::ActionHeld:
            value = m_settings.m_holdUrl;
            break;
        case UITA::IconIds:
            value = m_icon->iconIds();
            break;
        case UITA::Number:
            value = m_index >= 0 ? QString::number(m_index) : QString();
            break;
        case UITA::Url:
            value = m_settings.m_clickUrl;
            break;
        default:
            // Names the button has no value for stay out of its element.
            break;
        }
        if (!value.isEmpty())
            element.setAttribute(CTavoUITA::name(entry), value);
    }
    if (!m_imgName.isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::ImageName), m_imgName);
}
