#pragma once
#include "tgui_export.h"
// A button as wide as its text plus the style's horizontal padding; focused
// or pressed it shows as a flat box.
#include <QString>

#include "widgets/CTavoButton.h"

class TGUI_EXPORT CTavoVarWidthButton : public CTavoButton
{
    Q_OBJECT

public:
    explicit CTavoVarWidthButton(QWidget* parent = nullptr);

    void setText(const QString& text);

    void layout() override;
    void paint(QPainter* painter) override;

private:
    void fitToText();
};
