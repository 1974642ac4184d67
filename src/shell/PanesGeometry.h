#pragma once

#include <QSize>

#include <optional>

namespace nebra {

// The main window's resize rule for its panes, in twips (1440 to the inch)
// as the suite's windows have always measured it, and the conversion from
// and to the screen's pixels at its logical resolution.
class PanesGeometry
{
public:
    static constexpr int TwipsPerInch = 1440;
    // The program's own constants, kept as they are.
    static constexpr int Top = 20;
    static constexpr int MinimumOuterWidth = 500;
    static constexpr int MinimumOuterHeight = 1450;
    static constexpr int FrameAllowance = 120;
    static constexpr int BarsAllowance = 770;

    // dpiX, dpiY: the screen's logical dots per inch; 0 or less counts as 96.
    PanesGeometry(int dpiX, int dpiY);

    // The panes' size in twips for a window of the given outer size, inner
    // width and status bar height (all twips); none when the window is at or
    // below either threshold and the panes keep their size.
    static std::optional<QSize> PanesSize(QSize outerTwips, int innerWidthTwips, int statusBarHeightTwips);

    // The same in pixels: the panes' rectangle in the client area, or none
    // when they keep their size. Top is always the rule's (only the size is kept).
    std::optional<QSize> panesSizePixels(QSize outer, int innerWidth, int statusBarHeight) const;
    int topPixels() const { return toPixelsY(Top); }

    int toTwipsX(int pixels) const;
    int toTwipsY(int pixels) const;
    int toPixelsX(int twips) const;
    int toPixelsY(int twips) const;

private:
    int m_dpiX;
    int m_dpiY;
};

} // namespace nebra
