// The plate layout reader: every refusal carries a reason, every accepted
// layout has a supported size, its well names read back to the same well,
// writing it out and reading it again gives the same layout, and CR LF line
// ends read as LF ones.
#include "FuzzCheck.h"
#include "PlateLayout.h"

using namespace nebra;

namespace {

QByteArray written(const PlateLayout& layout)
{
    QString text = QStringLiteral("[Layout]\nName=%1\nRows=%2\nColumns=%3\n[Wells]\n")
                       .arg(layout.name(), QString::number(layout.rows()), QString::number(layout.columns()));
    for (int r = 0; r < layout.rows(); ++r)
        for (int c = 0; c < layout.columns(); ++c) {
            const Well& well = layout.well(r, c);
            if (well.role != WellRole::Empty || !well.label.isEmpty())
                text += QStringLiteral("%1=%2,%3\n")
                            .arg(PlateLayout::wellName(r, c), PlateLayout::roleName(well.role), well.label);
        }
    return text.toUtf8();
}

bool sameLayout(const PlateLayout& a, const PlateLayout& b)
{
    if (a.name() != b.name() || a.rows() != b.rows() || a.columns() != b.columns())
        return false;
    for (int r = 0; r < a.rows(); ++r)
        for (int c = 0; c < a.columns(); ++c)
            if (a.well(r, c).role != b.well(r, c).role || a.well(r, c).label != b.well(r, c).label)
                return false;
    return true;
}

void checkWellNames(const PlateLayout& layout)
{
    for (int r = 0; r < layout.rows(); ++r)
        for (int c = 0; c < layout.columns(); ++c) {
            int row = -1;
            int column = -1;
            const QString name = PlateLayout::wellName(r, c);
            FUZZ_CHECK(PlateLayout::parseWellName(name, row, column) && row == r && column == c,
                       "a well name reads back to its well");
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray text = fuzz::bytes(data, size);
    QString error;
    const std::optional<PlateLayout> layout = PlateLayout::Parse(text, error);
    FUZZ_CHECK(layout.has_value() == error.isEmpty(), "a refusal, and only a refusal, carries a reason");
    QByteArray crlf;
    if (fuzz::toCrLf(text, crlf)) {
        QString crlfError;
        const std::optional<PlateLayout> again = PlateLayout::Parse(crlf, crlfError);
        FUZZ_CHECK(again.has_value() == layout.has_value() && crlfError == error, "CR LF reads as LF");
        FUZZ_CHECK(!layout || sameLayout(*layout, *again), "CR LF gives the same layout");
    }
    if (!layout)
        return 0;
    FUZZ_CHECK(PlateLayout::isSupported(layout->rows(), layout->columns()), "an accepted plate is supported");
    checkWellNames(*layout);
    const std::optional<PlateLayout> reread = PlateLayout::Parse(written(*layout), error);
    FUZZ_CHECK(reread && sameLayout(*layout, *reread), "a layout written out reads back the same");
    return 0;
}
