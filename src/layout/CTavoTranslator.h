#pragma once
#include "tgui_export.h"
// Translations pushed by the core replace Qt's translation files. The key of
// a string is the disambiguation text of its tr() call.
#include <QHash>
#include <QString>
#include <QTranslator>
#include <QVector>

class TGUI_EXPORT CTavoTranslator : public QTranslator
{
    Q_OBJECT
public:
    explicit CTavoTranslator(QObject* parent = nullptr) : QTranslator(parent) {}

    QString translate(const char* context, const char* sourceText, const char* disambiguation = nullptr,
                      int n = -1) const override;
    bool isEmpty() const override;
    void insert(const QString& key, const QString& value);
    void load(const QHash<QString, QString>& translations);

public slots:
    void acceptTranslations(const QHash<QString, QString>& translations);

private:
    QHash<QString, QString> m_translations;
    QVector<int> m_ids;
};
