#include "style/CTavoImage.h"
#include <QImage>
#include <QPixmap>
bool CTavoImage::s_removeVideoKey = false;
CTavoImage::CTavoImage() : m_type(QMetaType::QImage), m_data(nullptr) {}
CTavoImage::CTavoImage(QMetaType::Type type, void* data, const QString&) : m_type(type), m_data(nullptr) { (void)data; }
CTavoImage::CTavoImage(QPixmap* pixmap) : m_type(QMetaType::QPixmap), m_data(pixmap) {}
bool CTavoImage::isNull() const { return true; }
QSize CTavoImage::size() const { return QSize(-1, -1); }
int CTavoImage::width() const { return -1; }
int CTavoImage::height() const { return -1; }
bool CTavoImage::operator==(const CTavoImage& o) const { return !m_data || m_data == o.m_data; }
bool CTavoImage::operator!=(const CTavoImage& o) const { return !(*this == o); }
bool CTavoImage::paint(QPainter*, const QRect&) const { return false; }
QPixmap CTavoImage::pixmap() const { return QPixmap(); }
QImage CTavoImage::data() const { return QImage(); }
void CTavoImage::dim() {}
void CTavoImage::append(const CTavoImage&) {}
CTavoImage& CTavoImage::operator<<(const CTavoImage&) { return *this; }
bool CTavoImage::update(QMetaType::Type, const QString&, bool) { return false; }
void CTavoImage::drawCenteredImage(const QString&) {}
