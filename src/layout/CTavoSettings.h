#pragma once
#include "tgui_export.h"
// The numbered configuration variables of a process.
#include <QMap>
#include <QObject>
#include <QString>

class TGUI_EXPORT CTavoSettings : public QObject
{
    Q_OBJECT
public:
    explicit CTavoSettings(QObject* parent = nullptr) : QObject(parent) {}

    int getInt(int id) const;
    QString getString(int id) const;
    void setVar(int id, const char* value);

signals:
    void varChanged(int id);

private:
    QMap<int, QString> m_vars;
};
