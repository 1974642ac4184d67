#include "PanesGeometry.h"

#include <cmath>

namespace nebra {

namespace {
constexpr int DefaultDpi = 96;

int scale(int value, int to, int from)
{
    // Rounded, so that a round trip pixels -> twips -> pixels gives the pixels back.
    return int(std::lround(double(value) * to / from));
}
} // namespace

PanesGeometry::PanesGeometry(int dpiX, int dpiY)
    : m_dpiX(dpiX > 0 ? dpiX : DefaultDpi), m_dpiY(dpiY > 0 ? dpiY : DefaultDpi)
{
}

std::optional<QSize> PanesGeometry::PanesSize(QSize outerTwips, int innerWidthTwips, int statusBarHeightTwips)
{
    if (outerTwips.width() <= MinimumOuterWidth || outerTwips.height() <= MinimumOuterHeight)
        return std::nullopt;
    return QSize(innerWidthTwips,
                 outerTwips.height() - FrameAllowance - statusBarHeightTwips - BarsAllowance);
}

std::optional<QSize> PanesGeometry::panesSizePixels(QSize outer, int innerWidth, int statusBarHeight) const
{
    const std::optional<QSize> twips = PanesSize(QSize(toTwipsX(outer.width()), toTwipsY(outer.height())),
                                                 toTwipsX(innerWidth), toTwipsY(statusBarHeight));
    if (!twips)
        return std::nullopt;
    return QSize(toPixelsX(twips->width()), qMax(0, toPixelsY(twips->height())));
}

int PanesGeometry::toTwipsX(int pixels) const
{
    return scale(pixels, TwipsPerInch, m_dpiX);
}

int PanesGeometry::toTwipsY(int pixels) const
{
    return scale(pixels, TwipsPerInch, m_dpiY);
}

int PanesGeometry::toPixelsX(int twips) const
{
    return scale(twips, m_dpiX, TwipsPerInch);
}

int PanesGeometry::toPixelsY(int twips) const
{
    return scale(twips, m_dpiY, TwipsPerInch);
}

} // namespace nebra
