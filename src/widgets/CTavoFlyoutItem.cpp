#include "widgets/CTavoFlyoutItem.h"

#include <QDomElement>
#include <QPainter>
#include <cstring>

#include "CTXMLFlyoutItem.h"
#include "automation/CTavoUITA.h"
#include "layout/CTXMLDataConverter.h"
#include "tools/TavoToolFlags.h"
#include "style/CTavoIconDefinition.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"

namespace {

// The check mark of the icon table.
const int kCheckIcon = 162;

// Built on the surface so that it finds the surface's sheet, then owned by the row.
template <typename T>
T* makePart(QWidget* surface, CTavoWidget* row, const char* name)
{
    T* part = new T(surface);
    part->setParent(row);
    part->setObjectName(QLatin1String(name));
    part->setVisible(false);
    row->addSubWidget(part);
    return part;
}

} // namespace

CTavoFlyoutItem::CTavoFlyoutItem(QWidget* parent)
    : CTavoWidget(parent, 2)
    , m_icon(makePart<CTavoIcon>(parent, this, "flyout-item-icon"))
    , m_checkIcon(makePart<CTavoIcon>(parent, this, "flyoutcluster-item-check-icon"))
    , m_label(makePart<CTavoLabelWidget>(parent, this, "flyout-item-label"))
    , m_abbreviatedLabel(makePart<CTavoLabelWidget>(parent, this, "flyout-item-abbreviated"))
    , m_quickAccessLabel(makePart<CTavoLabelWidget>(parent, this, "flyoutcluster-item-quickaccess-label"))
    , m_isGroupDiv(false)
    , m_isHome(false)
    , m_selected(false)
    , m_showAbbreviation(false)
    , m_invertTextWhenFocused(false)
    , m_quickIndex(-1)
{
    m_badgeSource[0] = 0;
    setObjectName(QStringLiteral("flyout-item"));
}

CTavoFlyoutItem::~CTavoFlyoutItem() = default;

QString CTavoFlyoutItem::text() const
{
    return m_label->text();
}

void CTavoFlyoutItem::setGroupDiv(bool groupDiv)
{
    m_isGroupDiv = groupDiv;
    setObjectName(groupDiv ? QStringLiteral("flyout-group-div-item") : QStringLiteral("flyout-item"));
}

void CTavoFlyoutItem::init(const CTXMLFlyoutItem& item, int quickIndex)
{
    m_url = QString::fromUtf8(item.url);
    m_value = QString::fromUtf8(item.data[0] ? item.data : item.value);
    m_selected = item.selected;
    m_quickIndex = quickIndex;
    setEnabled(item.enabled);
    if (m_isGroupDiv) {
        for (CTavoWidget* part : {static_cast<CTavoWidget*>(m_icon), static_cast<CTavoWidget*>(m_checkIcon),
                                  static_cast<CTavoWidget*>(m_label),
                                  static_cast<CTavoWidget*>(m_abbreviatedLabel),
                                  static_cast<CTavoWidget*>(m_quickAccessLabel)})
            part->setVisible(false);
        update();
        return;
    }

    // The badge rides on the icon, as a small label over it.
    if (!m_icon->isInitialized() || item.icon != m_iconSource || std::strcmp(item.badge, m_badgeSource) != 0) {
        m_iconSource = item.icon;
        txml::copyText(m_badgeSource, sizeof m_badgeSource, item.badge);
        const QString badge = QString::fromUtf8(item.badge);
        CTavoIconDefinition icon;
        if (item.icon.id > 0) {
            icon = CTXMLDataConverter::getIconDefFromXml(&item.icon);
            if (!badge.isEmpty())
                icon.m_label = badge;
        } else {
            icon = CTavoIconDefinition(QString::fromUtf8(item.icon.name), badge, -1);
        }
        m_icon->init(icon, true);
    }

    // An unchanged text keeps its prepared layout.
    const QString label = QString::fromUtf8(item.label);
    if (label != m_label->text())
        m_label->setText(label);
    const QString abbreviation = QString::fromUtf8(item.abbreviation);
    if (abbreviation != m_abbreviatedLabel->text())
        m_abbreviatedLabel->setText(abbreviation);
    applyHomeState();
    m_showAbbreviation = !m_abbreviatedLabel->text().isEmpty() && m_label->isElided();
    m_label->setVisible(!m_showAbbreviation && !m_label->text().isEmpty());
    m_abbreviatedLabel->setVisible(m_showAbbreviation);

    if (m_checkIcon->loadedIcon() != kCheckIcon)
        m_checkIcon->init(kCheckIcon);
    m_checkIcon->setVisible(m_selected);
    // Rows keep their digits when only the content changes.
    const QString digit = quickIndex < 0 ? QString() : QString::number(quickIndex);
    if (digit != m_quickAccessLabel->text())
        m_quickAccessLabel->setText(digit);
    placeElements();
    update();
}

void CTavoFlyoutItem::setIsHome(bool home)
{
    if (m_isHome == home)
        return;
    m_isHome = home;
    applyHomeState();
    placeElements();
}

void CTavoFlyoutItem::applyHomeState()
{
    const bool blue = m_isHome && !m_label->text().isEmpty() && m_label->text() == tr("Home");
    if (!blue && m_label->pseudoState().isEmpty())
        return;
    m_label->setPseudoState(blue ? QStringLiteral("blue") : QString(), true);
}

void CTavoFlyoutItem::setInverted(bool inverted)
{
    m_icon->setInverted(inverted);
    m_checkIcon->setInverted(inverted);
}

void CTavoFlyoutItem::setEnabled(bool enabled)
{
    m_icon->setEnabled(enabled);
    m_label->setEnabled(enabled);
    m_abbreviatedLabel->setEnabled(enabled);
    m_quickAccessLabel->setEnabled(enabled);
    CTavoWidget::setEnabled(enabled);
}

void CTavoFlyoutItem::setFocused(bool focused)
{
    CTavoWidget::setFocused(focused);
    m_label->setFocused(focused);
    if (!m_invertTextWhenFocused)
        return;
    if (focused)
        m_label->setHighlighted(0, m_label->text().length());
    else
        m_label->setHighlighted(-1, 0);
}

void CTavoFlyoutItem::layout()
{
    CTavoWidget::layout();
    m_icon->layout();
    m_checkIcon->layout();
    m_label->layout();
    m_abbreviatedLabel->layout();
    m_quickAccessLabel->layout();
    // Sized by its style, which it has only now; the row's icon is made again at the next init.
    m_checkIcon->init(kCheckIcon);
    m_iconSource.reset();
    m_badgeSource[0] = 0;
    m_checkIcon->setVisible(m_selected && !m_isGroupDiv);

    // Without a style the parts line up from the left and the digit sits at the right.
    const int w = width();
    const int h = height();
    QPoint iconLocation(8, 0);
    QPoint labelLocation(h + 8, 0);
    QSize labelSize(qMax(0, w - labelLocation.x() - 64), h);
    QPoint checkLocation(w - 60, 0);
    QPoint quickLocation(w - 28, 0);
    QSize quickSize(24, h);
    if (m_style) {
        iconLocation = m_style->Location(QStringLiteral("icon-location"), iconLocation);
        labelLocation = m_style->Location(QStringLiteral("label-location"), labelLocation);
        labelSize = m_style->Size(QStringLiteral("label-size"), labelSize);
        checkLocation = m_style->Location(QStringLiteral("check-location"), checkLocation);
        quickLocation = m_style->Location(QStringLiteral("quickaccess-location"), quickLocation);
        quickSize = m_style->Size(QStringLiteral("quickaccess-size"), quickSize);
        m_abbreviatedLocation = m_style->Location(QStringLiteral("abbreviated-location"), labelLocation);
        m_abbreviatedSize = m_style->Size(QStringLiteral("abbreviated-size"), labelSize);
    } else {
        m_abbreviatedLocation = labelLocation;
        m_abbreviatedSize = labelSize;
    }
    m_iconLocation = iconLocation;
    m_labelLocation = labelLocation;
    m_labelSize = labelSize;
    m_checkLocation = checkLocation;
    m_quickAccessLocation = quickLocation;
    m_quickAccessSize = quickSize;
    if (m_labelSize.isValid())
        m_label->setSize(m_labelSize, true);
    if (m_abbreviatedSize.isValid())
        m_abbreviatedLabel->setSize(m_abbreviatedSize, true);
    if (m_quickAccessSize.isValid())
        m_quickAccessLabel->setSize(m_quickAccessSize, true);
    placeElements();
}

void CTavoFlyoutItem::placeElements()
{
    const QPoint corner = topLeft();
    // An icon without a place of its own is centred on the row's height.
    QPoint icon = m_iconLocation;
    if (m_style && !m_style->get("icon-location").isValid())
        icon.setY((height() - m_icon->height()) / 2);
    m_icon->move(corner.x() + icon.x(), corner.y() + icon.y());
    QPoint check = m_checkLocation;
    if (m_style && !m_style->get("check-location").isValid())
        check.setY((height() - m_checkIcon->height()) / 2);
    m_checkIcon->move(corner.x() + check.x(), corner.y() + check.y());
    m_label->move(corner.x() + m_labelLocation.x(), corner.y() + m_labelLocation.y());
    m_abbreviatedLabel->move(corner.x() + m_abbreviatedLocation.x(), corner.y() + m_abbreviatedLocation.y());
    m_quickAccessLabel->move(corner.x() + m_quickAccessLocation.x(), corner.y() + m_quickAccessLocation.y());
}

void CTavoFlyoutItem::repositionAllElements(int dx, int dy)
{
    if (dx == 0 && dy == 0)
        return;
    for (CTavoWidget* part : {static_cast<CTavoWidget*>(m_icon), static_cast<CTavoWidget*>(m_checkIcon),
                              static_cast<CTavoWidget*>(m_label), static_cast<CTavoWidget*>(m_abbreviatedLabel),
                              static_cast<CTavoWidget*>(m_quickAccessLabel)})
        part->moveBy(dx, dy);
}

void CTavoFlyoutItem::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    CTavoWidget::paint(painter);
    if (m_isGroupDiv)
        return;
    m_icon->paint(painter);
    m_checkIcon->paint(painter);
    if (m_showAbbreviation)
        m_abbreviatedLabel->paint(painter);
    else
        m_label->paint(painter);
    m_quickAccessLabel->paint(painter);
    if (!qFuzzyCompare(m_opacity, 1.0f))
        painter->setOpacity(1.0);
}

void CTavoFlyoutItem::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.documentElement();
    if (element.isNull())
        return;
    element.setAttribute(UITA::CTavoUITA::name(UITA::Label), m_label->text());
    element.setAttribute(UITA::CTavoUITA::name(UITA::ActionReleased), m_url);
}
