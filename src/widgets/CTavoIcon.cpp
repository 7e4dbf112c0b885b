#include "widgets/CTavoIcon.h"

#include <QDomElement>
#include <QPainter>
#include <QStringList>
#include <QWidget>
#include <cmath>

#include "automation/CTavoUITA.h"
#include "automation/TavoUiReport.h"
#include "style/CIconResource.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoButton.h"
#include "tools/TavoToolFlags.h"
#include "widgets/CTavoIconLabel.h"

namespace {

// The angle of the last spinner repaint, shared by all icons on purpose: a
// screen with several spinners repaints once per step, not once per spinner.
float s_lastRepaintAngle = 0.0f;

// Half up; negative values by floor plus rounding of the fraction.
int roundHalfUp(float value)
{
    const float whole = std::floor(value);
    return int(whole) + ((value - whole) >= 0.5f ? 1 : 0);
}

// The leading decimal digits of a text, written back in decimal ("12 new" gives "12").
QString leadingNumber(const QString& text)
{
    int end = 0;
    while (end < text.size() && text.at(end).isDigit() && text.at(end).unicode() < 128)
        ++end;
    bool ok = false;
    const qulonglong value = text.leftRef(end).toULongLong(&ok);
    // Past 64 bits the digits themselves are the best answer.
    return ok ? QString::number(value) : text.left(end);
}

} // namespace

CTavoIcon::CTavoIcon(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 0, x, y, w, h)
    , m_label(nullptr)
    , m_iconType(0)
    , m_maxIconArea(-1, -1)
    , m_overlap(0)
    , m_labelOffset(0)
    , m_labelLocation(0, 0)
    , m_labelSize(-1, -1)
    , m_displayMode(IconOnly)
    , m_labelEnabled(true)
    , m_inverted(false)
    , m_overlapLabelLess(false)
    , m_loadedPressedIcon(-1)
    , m_loadedIcon(-1)
    , m_rotationAngle(0.0f)
    , m_rotating(false)
    , m_lighten(false)
    , m_direction(1)
{
    m_visible = true;
    // An icon counts as built once it holds an icon.
    m_initialized = false;
    // The label is made when a text or number first needs it (ensureLabel).
}

CTavoIconLabel* CTavoIcon::label() const
{
    return const_cast<CTavoIcon*>(this)->ensureLabel();
}

CTavoIconLabel* CTavoIcon::ensureLabel()
{
    if (m_label)
        return m_label;
    // Most icons never show a label, so it is made on first use, on the same
    // surface so that it finds its sheet, and laid out as the icon's layout would.
    m_label = new CTavoIconLabel(m_parent);
    m_label->setParent(this);
    m_label->setVisible(false);
    addSubWidget(m_label);
    // The sheet the icon was given reaches the label as it would have from the start.
    if (m_styleSheet)
        m_label->setStyleSheet(m_styleSheet, true);
    placeElements(true);
    return m_label;
}

CTavoIcon::~CTavoIcon()
{
    // The pixmaps are the repository's; only our lists of them go.
}

void CTavoIcon::setState(const QString& state)
{
    m_previousState = m_pseudoState;
    m_pseudoState = state;
}

QList<int> CTavoIcon::shownNumbers() const
{
    QList<int> numbers;
    if (m_definition.m_iconIndex >= 1 && m_definition.m_iconIndex < iconRepository.count())
        numbers.append(m_definition.m_iconIndex);
    numbers.append(m_definition.m_iconIndexes);
    return numbers;
}

bool CTavoIcon::holdsIcon() const
{
    return m_definition.m_iconIndex >= 1 || m_definition.m_pressedIconIndex >= 1
        || !m_definition.m_iconIndexes.isEmpty();
}

void CTavoIcon::init(const CTavoIconDefinition& definition, const QSize& size, int mode,
                     SizeRestriction restriction)
{
    // Softkeys and rows initialise their icons again with every document.
    if (m_initialized && holdsIcon() && definition == m_definition && width() == size.width()
        && height() == size.height() && !m_iconSizes.isEmpty() && m_iconSizes.first().width() <= size.width()
        && m_iconSizes.first().height() <= size.height())
        return;

    m_definition = definition;
    m_initialized = true;
    preprocess(mode);

    m_pixmaps.clear();
    m_invertedPixmaps.clear();
    m_pressedPixmaps.clear();
    m_invertedPressedPixmaps.clear();
    m_iconSizes.clear();
    m_iconRect.setWidth(m_maxIconArea.width());
    m_iconRect.setHeight(m_maxIconArea.height());

    const int count = iconRepository.count();
    const int pressed = m_definition.m_pressedIconIndex;
    if (pressed >= 1 && pressed < count)
        initializeIconData(pressed, true);
    else
        m_loadedPressedIcon = -1;

    const QList<int> numbers = shownNumbers();
    if (numbers.isEmpty()) {
        m_initialized = false;
        m_loadedIcon = -1;
    } else {
        const bool areaSet = m_maxIconArea.width() > 0 && m_maxIconArea.height() > 0;
        bool grown = false;
        for (int number : numbers) {
            const QSize raw = initializeIconData(number, false);
            const int before = m_iconSizes.size();
            scaleSize(raw, size, restriction);
            const QSize shown = m_iconSizes.size() > before ? m_iconSizes.last() : QSize(0, 0);
            if (numbers.size() == 1) {
                m_iconRect.setSize(shown);
            } else if (!areaSet) {
                if (!grown) {
                    m_iconRect.setSize(QSize(0, 0));
                    grown = true;
                }
                if (m_layoutType != 0) {
                    m_iconRect.setWidth(m_iconRect.width() + shown.width());
                    m_iconRect.setHeight(qMax(m_iconRect.height(), shown.height()));
                } else {
                    m_iconRect.setWidth(qMax(m_iconRect.width(), shown.width()));
                    m_iconRect.setHeight(m_iconRect.height() + shown.height());
                }
            }
        }
    }
    postProcess();
}

void CTavoIcon::init(const CTavoIconDefinition& definition, bool useStyleSize)
{
    if (m_pseudoState != m_previousState)
        layout();
    init(definition, useStyleSize ? m_styleSize : QSize(-1, -1), IconAndLabel, RestrictBoth);
}

void CTavoIcon::init(int primary, int pressed)
{
    init(CTavoIconDefinition(QString(), QString(), primary, pressed), m_styleSize, IconAndLabel, RestrictBoth);
}

void CTavoIcon::preprocess(int mode)
{
    const QString& text = m_definition.m_label;
    const int first = !m_definition.m_iconIndexes.isEmpty() ? m_definition.m_iconIndexes.first()
                                                            : m_definition.m_iconIndex;
    const int count = iconRepository.count();
    if (mode == IconAndTextLabel && !text.isEmpty())
        m_displayMode = IconAndTextLabel;
    else if (first < 1)
        m_displayMode = text.isEmpty() ? ShowNothing : LabelOnly;
    else if (first < count)
        m_displayMode = text.isEmpty() ? IconOnly : IconAndLabel;
    else
        m_displayMode = text.isEmpty() ? ShowNothing : IconAndLabel;

    if (mode == IconAndLabel && !text.isEmpty() && text.at(0).isDigit() && text.at(0).unicode() < 128)
        ensureLabel()->set(0, leadingNumber(text));
    else if (m_label || !text.isEmpty())
        ensureLabel()->set(mode, text);

    if (!m_labelEnabled) {
        if (m_label)
            m_label->setVisible(false);
        m_displayMode = IconOnly;
        setVisible(true);
    } else {
        setVisible(m_displayMode != ShowNothing);
    }
}

void CTavoIcon::postProcess()
{
    QSize size = QRect::size();
    switch (m_displayMode) {
    case IconAndLabel:
    case IconAndTextLabel: {
        const bool placedLabel = m_labelLocation != QPoint(0, 0) && m_labelSize.width() > 0
            && m_labelSize.height() > 0;
        const CTavoIconLabel* label = ensureLabel();
        const int w = placedLabel ? m_iconRect.width() + 2 : label->width() + m_iconRect.width() + 2;
        size = QSize(w, qMax(label->height() + 2, m_iconRect.height() + 2));
        break;
    }
    case IconOnly:
        size = m_iconRect.size();
        break;
    case LabelOnly:
        size = ensureLabel()->QRect::size() + QSize(2, 2);
        break;
    default:
        break;
    }
    if (!m_initialized)
        size = QSize(0, 0);
    setSize(size, false);
    // The label's size may have changed with the text.
    placeElements(true);
}

QSize CTavoIcon::initializeIconData(int number, bool pressed)
{
    if (number < 1 || number >= iconRepository.count())
        return QSize(0, 0);
    CIconResource& resource = iconRepository[number];
    if (pressed) {
        m_pressedPixmaps.clear();
        m_invertedPressedPixmaps.clear();
        m_loadedPressedIcon = number;
    } else {
        m_loadedIcon = number;
    }
    QVector<QPixmap*>& target = pressed ? (m_inverted ? m_invertedPressedPixmaps : m_pressedPixmaps)
                                        : (m_inverted ? m_invertedPixmaps : m_pixmaps);
    m_iconType = resource.getType();
    bool placeholder = false;
    QPixmap* pixmap = nullptr;
    if (m_iconType == 1) {
        pixmap = resource.getImage(&placeholder, m_inverted);
    } else if (m_iconType == 3) {
        const QSize size = (m_designSize.width() > 0 && m_designSize.height() > 0) ? m_designSize : QSize(40, 40);
        pixmap = resource.getCachedSvgPixmap(size, m_inverted);
    }
    if (!pixmap)
        return QSize(0, 0);
    target.append(pixmap);
    if (placeholder) {
        // A broken skin still shows which icon was asked for.
        m_definition.m_label = QString::number(number);
        preprocess(0);
        resource.getImage(&placeholder, m_inverted);
    }
    return pixmap->size();
}

void CTavoIcon::scaleSize(QSize size, const QSize& limit, SizeRestriction restriction)
{
    if (size.width() <= 0)
        return;
    const double ratio = double(size.height()) / double(size.width());
    if ((restriction & RestrictWidth) && limit.width() >= 0 && limit.width() != size.width()) {
        size.setWidth(limit.width());
        size.setHeight(int(size.width() * ratio));
    }
    if ((restriction & RestrictHeight) && limit.height() >= 0 && size.height() > limit.height()) {
        size.setHeight(limit.height());
        size.setWidth(ratio > 0.0 ? int(size.height() / ratio) : 0);
    }
    const int further = m_definition.m_iconIndexes.size();
    if (m_maxIconArea.width() > 0 && m_maxIconArea.height() > 0 && further > 1) {
        const int count = further + (m_definition.m_iconIndex != -1 ? 1 : 0);
        QSize target;
        if (m_layoutType != 0) {
            const int w = m_maxIconArea.width() / count + int(m_overlap);
            target = QSize(w, int(w * ratio));
        } else {
            const int h = m_maxIconArea.height() / count + int(m_overlap);
            target = QSize(ratio > 0.0 ? int(h / ratio) : 0, h);
        }
        size.scale(target, Qt::KeepAspectRatio);
        if ((restriction & RestrictWidth) && size.width() > m_maxIconArea.width()) {
            size.setWidth(m_maxIconArea.width());
            size.setHeight(int(size.width() * ratio));
        }
        if ((restriction & RestrictHeight) && size.height() > m_maxIconArea.height()) {
            size.setHeight(m_maxIconArea.height());
            size.setWidth(ratio > 0.0 ? int(size.height() / ratio) : 0);
        }
    }
    m_iconSizes.append(size);
}

void CTavoIcon::layout()
{
    CTavoWidget::layout();
    if (m_style) {
        m_maxIconArea = m_style->Size(QStringLiteral("maximum-icon-area-size"), QSize(-1, -1));
        m_labelEnabled = m_style->Bool(QStringLiteral("enable-label"), true);
        m_overlap = m_style->UInt(QStringLiteral("overlapped-pixels"), 0);
        m_inverted = m_style->Bool(QStringLiteral("invert"), false);
        m_labelOffset = m_style->Int(QStringLiteral("label-offset"), 0);
        m_labelLocation = m_style->Location(QStringLiteral("label-location"), QPoint(0, 0));
        m_labelSize = m_style->Size(QStringLiteral("label-size"), QSize(-1, -1));
        m_lighten = m_style->Bool(QStringLiteral("lighten-icon"), false);
        m_overlapLabelLess = m_style->Bool(QStringLiteral("overlap-label-less"), false);
        m_direction = int(m_style->Enum(QStringLiteral("layout-direction"), 1));
        if (!m_labelEnabled) {
            if (m_label)
                m_label->setVisible(false);
            m_displayMode = IconOnly;
        }
    }
    if (m_label)
        m_label->layout();
    placeElements(false);
}

void CTavoIcon::placeElements(bool moved)
{
    const bool placedLabel = m_labelLocation != QPoint(0, 0) && m_labelSize.width() > 0 && m_labelSize.height() > 0;
    const bool withLabel = m_displayMode == IconAndLabel || m_displayMode == IconAndTextLabel
        || m_displayMode == LabelOnly;
    if (withLabel && !m_label) {
        // Shown with a label that is not made yet: it takes its place when made.
        m_iconRect.moveTopLeft(topLeft());
    } else if (m_displayMode == IconAndLabel || m_displayMode == IconAndTextLabel) {
        // Offset and location apply once the owner has placed the icon.
        if (moved && m_labelOffset != 0) {
            m_label->move(x() - m_labelOffset, y() - m_labelOffset);
        } else if (moved && placedLabel) {
            m_label->setSize(m_labelSize, false);
            m_label->move(x() + m_labelLocation.x(), y() + m_labelLocation.y());
        } else {
            m_label->move(x(), y());
        }
        // Without a place of its own the label overlaps the left quarter of the icon.
        m_iconRect.moveTopLeft(placedLabel ? topLeft() : topLeft() + QPoint(m_label->width() / 4, 0));
    } else if (m_displayMode == LabelOnly) {
        m_label->move(x(), y());
        m_iconRect.moveTopLeft(topLeft());
    } else {
        m_iconRect.moveTopLeft(topLeft());
    }
}

void CTavoIcon::move(int x, int y)
{
    CTavoWidget::move(x, y);
    placeElements(true);
}

void CTavoIcon::reloadInto(bool inverted)
{
    const bool old = m_inverted;
    m_inverted = inverted;
    // Loading may turn a placeholder into a number label; the definition stays ours.
    const CTavoIconDefinition definition = m_definition;
    if (m_loadedPressedIcon >= 1)
        initializeIconData(m_loadedPressedIcon, true);
    for (int number : shownNumbers())
        initializeIconData(number, false);
    m_definition = definition;
    m_inverted = old;
}

void CTavoIcon::setInverted(bool inverted)
{
    if (m_inverted == inverted)
        return;
    const QVector<QPixmap*>& target = inverted ? m_invertedPixmaps : m_pixmaps;
    if (target.isEmpty() && m_initialized)
        reloadInto(inverted);
    m_inverted = inverted;
    update();
}

void CTavoIcon::setMultiIconsInverted(bool inverted)
{
    setInverted(inverted);
}

int CTavoIcon::actualIconWidth() const
{
    int sum = 0;
    for (const QSize& size : m_iconSizes)
        sum += size.width();
    return sum;
}

void CTavoIcon::setRotationAngle(float angle)
{
    m_rotationAngle = angle;
    if (std::fabs(angle - s_lastRepaintAngle) <= 15.0f)
        return;
    s_lastRepaintAngle = angle;
    if (m_parent)
        m_parent->repaint(rect());
}

bool CTavoIcon::handleEvent(QEvent::Type type, QPoint)
{
    const QString& url = m_definition.m_url;
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
        setDown(true);
        emit clicked(url, QStringLiteral("pressed"));
        update();
        return !url.isEmpty();
    case QEvent::MouseButtonRelease:
    case QEvent::KeyRelease:
        if (m_down) {
            CTavoButton::playClickSound();
            setDown(false);
            emit clicked(url, QStringLiteral("released"));
            update();
        }
        return !url.isEmpty();
    default:
        return false;
    }
}

void CTavoIcon::paint(QPainter* painter)
{
    if (!painter || !m_initialized)
        return;
    CTavoWidget::paint(painter);
    if (!m_visible)
        return;

    const bool nothing = m_pixmaps.isEmpty() && (!m_inverted || m_invertedPixmaps.isEmpty());
    if (m_displayMode != LabelOnly && !nothing && !m_iconSizes.isEmpty()) {
        const QVector<QPixmap*>* list = &m_pixmaps;
        if (m_down) {
            if (m_inverted && !m_invertedPressedPixmaps.isEmpty())
                list = &m_invertedPressedPixmaps;
            else if (m_inverted && !m_invertedPixmaps.isEmpty())
                list = &m_invertedPixmaps;
            else if (!m_pressedPixmaps.isEmpty())
                list = &m_pressedPixmaps;
        } else if (m_inverted && !m_invertedPixmaps.isEmpty()) {
            list = &m_invertedPixmaps;
        }

        float offset = 0.0f;
        const float left = float(m_iconRect.left());
        const float top = float(m_iconRect.top());
        const float rectWidth = float(m_iconRect.width());
        const float rectHeight = float(m_iconRect.height());
        for (int i = 0; i < list->size(); ++i) {
            QPixmap* pixmap = list->at(i);
            const QSize size = i < m_iconSizes.size() ? m_iconSizes.at(i) : m_iconSizes.last();
            const float w = float(size.width());
            const float h = float(size.height());
            float px;
            float py;
            if (m_direction == 2) {
                py = top + offset;
                px = left + (rectWidth - w) / 2.0f;
                offset += h;
            } else if (m_direction == 0) {
                px = left + rectWidth - offset - w;
                py = top + (rectHeight - h) / 2.0f;
                offset += w;
            } else {
                px = left + offset;
                py = top + (rectHeight - h) / 2.0f;
                offset += w;
            }
            offset -= float(m_overlap);
            if (!pixmap || pixmap->isNull())
                continue;
            const QRect target{int(px), int(py), int(w), int(h)};
            if (m_rotating) {
                painter->save();
                const QPointF centre = QRectF(target).center();
                painter->translate(centre);
                painter->rotate(qreal(m_rotationAngle));
                painter->translate(-centre);
                painter->drawPixmap(target, *pixmap);
                painter->restore();
            } else if (m_lighten) {
                const QPainter::CompositionMode mode = painter->compositionMode();
                painter->setCompositionMode(QPainter::CompositionMode_Plus);
                painter->drawPixmap(target, *pixmap);
                painter->drawPixmap(target, *pixmap);
                painter->setCompositionMode(mode);
            } else {
                painter->drawPixmap(target, *pixmap);
            }
        }
    }
    if (m_label)
        m_label->paintOwned(painter, m_inverted);
}

void CTavoIcon::reSizeAllElementsBy(float fx, float fy)
{
    const QSize target(roundHalfUp(float(m_designSize.width()) * fx), roundHalfUp(float(m_designSize.height()) * fy));
    init(m_definition, target, IconAndLabel, RestrictBoth);
    if (m_label)
        m_label->sizeBy(fx, fy);
}

void CTavoIcon::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.documentElement();
    if (element.isNull())
        return;
    using UITA::CTavoUITA;
    if (!m_definition.m_label.isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::IconLabel), m_definition.m_label);
    const QString ids = iconIds();
    if (!ids.isEmpty())
        element.setAttribute(CTavoUITA::name(UITA::IconIds), ids);
}

QString CTavoIcon::iconIds() const
{
    // The definition's numbers in its order; without any, the one shown.
    QList<int> numbers;
    if (m_definition.m_iconIndex >= 0)
        numbers.append(m_definition.m_iconIndex);
    for (int number : m_definition.m_iconIndexes) {
        if (!numbers.contains(number))
            numbers.append(number);
    }
    if (numbers.isEmpty() && m_loadedIcon >= 0)
        numbers.append(m_loadedIcon);
    QStringList texts;
    for (int number : qAsConst(numbers)) {
        const int id = mapIconIdToTaRecognizedId(number);
        if (id >= 0)
            texts.append(QString::number(id));
    }
    return texts.join(QLatin1Char(','));
}
