#include "widgets/CTavoMagnifyingLabel.h"

#include <QFontMetrics>
#include <QTimer>

#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoLabelWidget.h"

namespace {
// Long texts wrap at this width.
const int kLabelRight = 349;
}  // namespace

CTavoMagnifyingLabel::CTavoMagnifyingLabel(QWidget* parent)
    : CTavoLayoutWidget(parent), m_label(nullptr), m_hideTimer(new QTimer(this)), m_offset(10, 20), m_timeout(1500)
{
    m_label = new CTavoLabelWidget(this);
    m_label->setObjectName(QStringLiteral("magnifying-label"));
    m_hideTimer->setSingleShot(true);
    connect(m_hideTimer, &QTimer::timeout, this, &CTavoLayoutWidget::hide);
}

void CTavoMagnifyingLabel::layout()
{
    CTavoLayoutWidget::layout();
    if (CTavoWidgetStyle* style = m_styleSheet.get(this, m_pseudoState)) {
        m_offset = style->Location(QStringLiteral("offset"), QPoint(0, 0));
        m_timeout = int(style->UInt(QStringLiteral("timeout"), 1500));
    }
}

void CTavoMagnifyingLabel::onDisplayRequest(QString message, QPoint location, bool show)
{
    if (!show) {
        hide();
        return;
    }
    // 350 wide, no height: the label takes the height of its text. A label
    // left one line high would elide a long text, so it gets the room of the
    // wrapped lines.
    QRect box(QPoint(0, 0), QPoint(kLabelRight, -1));
    const QFontMetrics metrics(m_label->font());
    if (metrics.horizontalAdvance(message) > box.width())
        box.setHeight(metrics.boundingRect(QRect(0, 0, box.width(), 1 << 20), Qt::TextWordWrap, message).height());
    m_label->setgeo(box);
    m_label->setText(message);

    if (!m_activeImage.isNull())
        resize(m_activeImage.size());
    else
        resize(m_label->actualSize() + QSize(1, 5));

    const QSize labelSize = m_label->actualSize();
    m_label->setgeo(QRect(QPoint((width() - labelSize.width()) / 2, (height() - labelSize.height()) / 2), labelSize));

    move(location.x() + m_offset.x(), location.y() - m_offset.y());
    // Without a time-out a count from an earlier request must not hide it.
    if (m_timeout > 0)
        m_hideTimer->start(m_timeout);
    else
        m_hideTimer->stop();
    QWidget::show();
}
