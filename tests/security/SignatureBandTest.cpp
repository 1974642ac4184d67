#include "SignatureBand.h"

#include <QLabel>
#include <QTest>

#include <ctime>

using namespace nebra;

namespace {

DocumentState::Signature signature(const QString& meaning, const QString& utc, bool valid, bool intact = true)
{
    DocumentSignature s;
    s.meaning = meaning;
    s.fullName = QStringLiteral("Jane Smith");
    s.userName = QStringLiteral("jsmith");
    s.signedMs = QDateTime::fromString(utc, Qt::ISODate).toMSecsSinceEpoch();
    s.intact = intact;
    return {s, valid};
}

} // namespace

// The band above the preview: each signature's line in local time with its
// zone (this process runs in Europe/Berlin, winter and summer), and the band
// as a screen reader hears it.
class SignatureBandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLineNamesTheSignerTheMeaningAndTheLocalTime()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        const QString winter = "2026-11-25T13:03:07Z";
        QCOMPARE(SignatureBand::lineText(signature("Approved", winter, true)),
                 "Approved by Jane Smith (jsmith), 25 Nov 2026 14:03:07 CET");
        QCOMPARE(SignatureBand::lineText(signature("Reviewed", "2026-07-01T12:03:07Z", true)),
                 "Reviewed by Jane Smith (jsmith), 1 Jul 2026 14:03:07 CEST");
        QCOMPARE(SignatureBand::lineText(signature("Approved", winter, false)),
                 "Signature void: the document changed after it was signed (Approved by Jane Smith (jsmith), "
                 "25 Nov 2026 14:03:07 CET)");
        QCOMPARE(SignatureBand::lineText(signature("Authored", winter, false, false)),
                 "Signature void: its record was altered outside the suite (Authored by Jane Smith (jsmith), "
                 "25 Nov 2026 14:03:07 CET)");

        // The band is heard line by line, and gone without signatures.
        SignatureBand band;
        band.showSignatures({signature("Authored", winter, false), signature("Approved", winter, true)});
        QVERIFY(!band.isHidden());
        const QList<QLabel*> lines = band.findChildren<QLabel*>(QStringLiteral("signature"));
        QCOMPARE(lines.size(), 2);
        for (const QLabel* line : lines)
            QCOMPARE(line->accessibleName(), line->text());
        QVERIFY(lines.constFirst()->text().startsWith(DocumentState::voidText()));
        QCOMPARE(band.findChildren<QLabel*>(QStringLiteral("warning")).size(), 1); // the void one's
        band.showSignatures({});
        QVERIFY(band.isHidden());
        QVERIFY(band.lines().isEmpty());
    }
};

QTEST_MAIN(SignatureBandTest)
#include "SignatureBandTest.moc"
