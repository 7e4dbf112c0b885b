#include "style/CTavoImage.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include "style/CTavoResourceRepository.h"

bool CTavoImage::s_removeVideoKey = false;

namespace {
bool isPictureType(int type)
{
    return type == QMetaType::QImage || type == QMetaType::QPixmap || type == TavoVectorImageType;
}
} // namespace

CTavoImage::CTavoImage() : m_type(QMetaType::QImage), m_data(nullptr) {}

CTavoImage::CTavoImage(QMetaType::Type type, void* data, const QString&)
    : m_type(type), m_data(isPictureType(type) ? data : nullptr)
{
}

CTavoImage::CTavoImage(QPixmap* pixmap) : m_type(QMetaType::QPixmap), m_data(pixmap) {}

bool CTavoImage::isNull() const
{
    if (!m_data)
        return true;
    switch (int(m_type)) {
    case QMetaType::QImage:
        return static_cast<QImage*>(m_data)->isNull();
    case QMetaType::QPixmap:
        return static_cast<QPixmap*>(m_data)->isNull();
    case TavoVectorImageType:
        return !static_cast<QSvgRenderer*>(m_data)->isValid();
    default:
        return true;
    }
}

QSize CTavoImage::size() const
{
    if (isNull())
        return QSize(-1, -1);
    switch (int(m_type)) {
    case QMetaType::QImage:
        return static_cast<QImage*>(m_data)->size();
    case QMetaType::QPixmap:
        return static_cast<QPixmap*>(m_data)->size();
    case TavoVectorImageType:
        return static_cast<QSvgRenderer*>(m_data)->defaultSize();
    default:
        return QSize(-1, -1);
    }
}

int CTavoImage::width() const
{
    return size().width();
}

int CTavoImage::height() const
{
    return size().height();
}

bool CTavoImage::operator==(const CTavoImage& other) const
{
    return !m_data || m_data == other.m_data;
}

bool CTavoImage::operator!=(const CTavoImage& other) const
{
    return !(*this == other);
}

bool CTavoImage::paint(QPainter* painter, const QRect& rect) const
{
    if (!painter || isNull() || rect.width() <= 0 || rect.height() <= 0)
        return false;
    switch (int(m_type)) {
    case QMetaType::QImage: {
        const QImage* image = static_cast<QImage*>(m_data);
        painter->drawImage(rect, *image, image->rect());
        return true;
    }
    case QMetaType::QPixmap:
        painter->drawPixmap(rect, *static_cast<QPixmap*>(m_data), QRect());
        return true;
    case TavoVectorImageType: {
        auto* scaled = static_cast<QPixmap*>(StyleResourceContainer.registerScaledImage(
            m_data, QMetaType::Type(TavoVectorImageType), rect.size()));
        if (!scaled || scaled->isNull())
            return false;
        painter->drawPixmap(rect.topLeft(), *scaled);
        return true;
    }
    default:
        return false;
    }
}

QPixmap CTavoImage::pixmap() const
{
    if (!m_data)
        return QPixmap();
    if (m_type == QMetaType::QPixmap)
        return *static_cast<QPixmap*>(m_data);
    if (m_type == QMetaType::QImage)
        return QPixmap::fromImage(*static_cast<QImage*>(m_data));
    return QPixmap();
}

QImage CTavoImage::data() const
{
    if (!m_data)
        return QImage();
    if (m_type == QMetaType::QImage)
        return *static_cast<QImage*>(m_data);
    if (m_type == QMetaType::QPixmap)
        return static_cast<QPixmap*>(m_data)->toImage();
    return QImage();
}

void CTavoImage::dim()
{
    if (isNull())
        return;
    QPainter painter;
    if (m_type == QMetaType::QImage)
        painter.begin(static_cast<QImage*>(m_data));
    else if (m_type == QMetaType::QPixmap)
        painter.begin(static_cast<QPixmap*>(m_data));
    else
        return;
    if (!painter.isActive())
        return;
    const QRect all(QPoint(0, 0), size());
    painter.fillRect(all, QColor(0, 0, 0, 127));
}

void CTavoImage::append(const CTavoImage& other)
{
    if ((m_type != QMetaType::QImage && m_type != QMetaType::QPixmap) || isNull() || other.isNull())
        return;
    QPainter painter;
    if (m_type == QMetaType::QImage)
        painter.begin(static_cast<QImage*>(m_data));
    else
        painter.begin(static_cast<QPixmap*>(m_data));
    if (!painter.isActive())
        return;
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    switch (int(other.m_type)) {
    case QMetaType::QImage:
        painter.drawImage(0, 0, *static_cast<QImage*>(other.m_data));
        break;
    case QMetaType::QPixmap:
        painter.drawPixmap(0, 0, *static_cast<QPixmap*>(other.m_data));
        break;
    case TavoVectorImageType:
        static_cast<QSvgRenderer*>(other.m_data)->render(&painter, QRectF(QPointF(0, 0), other.size()));
        break;
    default:
        break;
    }
}

CTavoImage& CTavoImage::operator<<(const CTavoImage& other)
{
    if (m_type != QMetaType::QImage)
        return *this;
    if (!m_data)
        m_data = StyleResourceContainer.adoptImage(new QImage());
    *static_cast<QImage*>(m_data) = other.data();
    return *this;
}

bool CTavoImage::update(QMetaType::Type type, const QString& path, bool centered)
{
    if (m_type == QMetaType::QImage && type == QMetaType::QImage && m_data) {
        if (centered) {
            drawCenteredImage(path);
            return !isNull();
        }
        return static_cast<QImage*>(m_data)->load(path);
    }
    if (m_data && m_type != type)
        return false;
    if (type == QMetaType::QPixmap) {
        if (!m_data) {
            m_type = QMetaType::QPixmap;
            m_data = StyleResourceContainer.adoptPixmap(new QPixmap(path));
            return !static_cast<QPixmap*>(m_data)->isNull();
        }
        return static_cast<QPixmap*>(m_data)->load(path);
    }
    if (type == QMetaType::QImage && !m_data) {
        m_type = QMetaType::QImage;
        m_data = StyleResourceContainer.adoptImage(new QImage(path));
        return !static_cast<QImage*>(m_data)->isNull();
    }
    return false;
}

void CTavoImage::drawCenteredImage(const QString& path)
{
    if (m_type != QMetaType::QImage || !m_data)
        return;
    QImage* target = static_cast<QImage*>(m_data);
    if (target->isNull())
        return;
    QImage loaded(path);
    target->fill(Qt::black);
    if (loaded.isNull())
        return;
    if (loaded.width() > target->width() || loaded.height() > target->height())
        loaded = loaded.scaled(target->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QPainter painter(target);
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    painter.drawImage((target->width() - loaded.width()) / 2, (target->height() - loaded.height()) / 2, loaded);
}
