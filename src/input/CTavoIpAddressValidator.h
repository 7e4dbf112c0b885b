#pragma once
#include "tgui_export.h"
// Judges the text of an IPv4 field while it is typed under the mask
// "000.000.000.000;_": a group still holding the mask's blank is not judged
// yet, every other group must be a number up to 255.
#include <QValidator>

#include "input/TavoIpAddressValidation.h"

class TGUI_EXPORT CTavoIpAddressValidator : public QValidator
{
    Q_OBJECT
public:
    explicit CTavoIpAddressValidator(QObject* parent = nullptr);

    State validate(QString& text, int& pos) const override;
};
