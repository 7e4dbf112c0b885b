#include "style/CTavoStyleSheet.h"
CTavoStyleSheet::CTavoStyleSheet() {}
void CTavoStyleSheet::set(const char*, const char*) {}
CTavoWidgetStyle* CTavoStyleSheet::get(QObject*, const QString&) { return nullptr; }
CTavoWidgetStyle* CTavoStyleSheet::get(const QString&) { return nullptr; }
CTavoWidgetStyle* CTavoStyleSheet::get(const char*) { return nullptr; }
CTavoWidgetStyle* CTavoStyleSheet::get(const QMetaObject*) { return nullptr; }
bool CTavoStyleSheet::hasPseudoState(QObject*, const QString&) const { return false; }
QString CTavoStyleSheet::getAttribute(const QString& name) { return m_attributes[name]; }
QList<QPair<int, QString>> CTavoStyleSheet::getDefinedClasses(const QStringList&) const { return {}; }
