#pragma once

#include <QProxyStyle>

/// Outlines around what people check, choose and fill in. Styles make theirs from the window's
/// colour, and nothing is darker than black. Main thread only.
class HighContrastStyle final : public QProxyStyle {
    Q_OBJECT

  public:
    /// Has the application use it while high contrast is wanted. Needs an application object;
    /// further calls do nothing.
    static void install();

    /// Adds the outlines to the style with that name.
    explicit HighContrastStyle(const QString& name);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget = nullptr) const override;
};
