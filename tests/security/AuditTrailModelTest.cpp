#include "AuditTrailModel.h"
#include "ManagerSite.h"
#include "MessageRecorder.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <ctime>

using namespace nebra;
using namespace nebra::test;

Q_DECLARE_METATYPE(nebra::AuditFilter)
Q_DECLARE_METATYPE(nebra::AuditOrder)

// The reviewer's table over a real store of 100,000 entries, read through a
// logged-in security manager, each view checked against a plain filter and
// sort of the same entries.
class AuditTrailModelTest : public QObject
{
    Q_OBJECT

    static constexpr int Generated = 100000;
    const QString ReviewRight = "Security/ViewAuditTrail";

    SecuritySite m_site{QStringList{ReviewRight}};
    MessageRecorder m_messages;
    std::unique_ptr<NebraSecurityManager> m_manager;
    QList<AuditEntry> m_all;

    AuditSource source() const
    {
        NebraSecurityManager* m = m_manager.get();
        return {[m](const AuditFilter& f, qint64* n, QString* e) { return m->CountAuditEntries(f, n, e); },
                [m](const AuditFilter& f, const AuditOrder& o, qint64 offset, int limit,
                    QList<AuditEntry>* out,
                    QString* e) { return m->ReadAuditEntries(f, o, offset, limit, out, e); }};
    }

    void setRight(bool granted)
    {
        const std::unique_ptr<SecurityStore> store = m_site.fixture.open();
        SecurityAdministration admin(*store, "tester");
        QString error;
        const Right right{"Security", "ViewAuditTrail"}; // the review right
        QVERIFY2(granted ? admin.grant("jsmith", right, &error) : admin.revoke("jsmith", right, &error),
                 qPrintable(error));
    }

    // The view as a plain filter and stable sort of every entry would give it.
    QList<qint64> expected(const AuditFilter& filter, const AuditOrder& order) const
    {
        const QString from =
            filter.from.isValid() ? filter.from.toUTC().toString(Qt::ISODateWithMs) : QString();
        const QString to = filter.to.isValid() ? filter.to.toUTC().toString(Qt::ISODateWithMs) : QString();
        QList<AuditEntry> view;
        std::copy_if(m_all.begin(), m_all.end(), std::back_inserter(view), [&](const AuditEntry& e) {
            return (from.isEmpty() || e.utc >= from) && (to.isEmpty() || e.utc < to) &&
                   (filter.userName.isEmpty() ||
                    e.userName.compare(filter.userName, Qt::CaseInsensitive) == 0) &&
                   (filter.area.isEmpty() || e.area == filter.area) &&
                   (filter.text.isEmpty() || e.text.contains(filter.text, Qt::CaseInsensitive));
        });
        const auto key = [&order](const AuditEntry& a, const AuditEntry& b) {
            switch (order.column) {
            case AuditColumn::Sequence:
                return 0;
            case AuditColumn::Time:
                return a.utc.compare(b.utc);
            case AuditColumn::User:
                return a.userName.compare(b.userName, Qt::CaseInsensitive);
            case AuditColumn::Workstation:
                return a.workstation.compare(b.workstation);
            case AuditColumn::Area:
                return a.area.compare(b.area);
            case AuditColumn::Text:
                return a.text.compare(b.text);
            }
            return 0;
        };
        std::sort(view.begin(), view.end(), [&](const AuditEntry& a, const AuditEntry& b) {
            const int k = key(a, b);
            const bool less = k != 0 ? k < 0 : a.sequence < b.sequence;
            return order.order == Qt::AscendingOrder ? less : (k != 0 ? k > 0 : a.sequence > b.sequence);
        });
        QList<qint64> sequences;
        for (const AuditEntry& e : std::as_const(view))
            sequences.append(e.sequence);
        return sequences;
    }

private Q_SLOTS:
    void initTestCase()
    {
        // Many users (in mixed case), three areas, texts that a filter can find.
        const QStringList users{"alice", "Bob", "carol", "DAVE", "eve", "Frank"};
        const QStringList areas{"General", "Reader", "Security"};
        const AuditAppendResult result =
            m_site.fixture.open()->audit().record([&](QList<AuditRecord>* records, QString*) {
                for (int i = 0; i < Generated; ++i)
                    records->append({users[i % users.size()], areas[(i / 7) % areas.size()],
                                     QStringLiteral("Run protocol: Plate %1.apr").arg(i % 997)});
                return true;
            });
        QVERIFY2(result.sequence > 0, qPrintable(result.error));
        m_manager = loggedInManager();
        QVERIFY(m_manager);
        QString error;
        m_all = m_site.fixture.open()->audit().entries(&error);
        QVERIFY(m_all.size() > Generated);
    }

    void viewsMatchAPlainFilter_data()
    {
        QTest::addColumn<AuditFilter>("filter");
        QTest::addColumn<AuditOrder>("order");
        const auto utcOf = [this](int i) { return QDateTime::fromString(m_all[i].utc, Qt::ISODateWithMs); };
        AuditFilter user, area, text, range, all, none;
        user.userName = "ALICE";
        area.area = "Reader";
        text.text = "plate 99";
        range.from = utcOf(30000);
        range.to = utcOf(60000);
        all = range;
        all.userName = "bob";
        all.area = "General";
        all.text = "PLATE 1";
        none.userName = "nobody";
        AuditFilter wildcards;
        wildcards.text = "Plate _%";
        using C = AuditColumn;
        // clang-format off
        QTest::newRow("all, newest first") << AuditFilter{} << AuditOrder{};
        QTest::newRow("all, oldest first") << AuditFilter{} << AuditOrder{C::Sequence, Qt::AscendingOrder};
        QTest::newRow("all, by user") << AuditFilter{} << AuditOrder{C::User, Qt::AscendingOrder};
        QTest::newRow("user in any case, by time") << user << AuditOrder{C::Time, Qt::DescendingOrder};
        QTest::newRow("area, by user") << area << AuditOrder{C::User, Qt::DescendingOrder};
        QTest::newRow("part of the text, by text") << text << AuditOrder{C::Text, Qt::AscendingOrder};
        QTest::newRow("time range, by workstation") << range << AuditOrder{C::Workstation, Qt::DescendingOrder};
        QTest::newRow("every filter, by area") << all << AuditOrder{C::Area, Qt::AscendingOrder};
        QTest::newRow("nothing matches") << none << AuditOrder{};
        QTest::newRow("wildcards are plain text") << wildcards << AuditOrder{};
        // clang-format on
    }

    void viewsMatchAPlainFilter()
    {
        QFETCH(AuditFilter, filter);
        QFETCH(AuditOrder, order);
        const QList<qint64> want = expected(filter, order);
        AuditTrailModel model(source());
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setFilter(filter);
        model.sort(int(order.column), order.order);
        QCOMPARE(model.rowCount(), int(want.size()));

        // Rows read through the table, across page boundaries and at the far end.
        const int n = int(want.size());
        for (const int row : {0, 1, 255, 256, 257, 511, 512, n / 2, n - 257, n - 256, n - 2, n - 1}) {
            if (row < 0 || row >= n)
                continue;
            QCOMPARE(model.data(model.index(row, int(AuditColumn::Sequence))).toLongLong(), want[row]);
            QCOMPARE(model.entryAt(row)->sequence, want[row]);
        }
        QVERIFY(!model.entryAt(n));

        // The export's walk sees the whole view, in the same order.
        QList<qint64> walked;
        QString error;
        const auto walk = [&walked](const AuditEntry& e) {
            walked.append(e.sequence);
            return true;
        };
        QVERIFY2(model.forEachEntry(walk, &error), qPrintable(error));
        QCOMPARE(walked, want);
        QCOMPARE(m_messages.count(), 0);
    }

    void newEntriesWaitForReloadAndRefusedReadsShowNoRows()
    {
        AuditTrailModel model(source());
        model.reload();
        const int before = model.rowCount();
        const qint64 newest = model.entryAt(0)->sequence;
        QVERIFY(m_manager->AddAuditTrailEntry("General", "Export: trail.csv"));
        // The view is one snapshot: a page first read now holds no later entry.
        QCOMPARE(model.entryAt(before - 1)->sequence, 1);
        QCOMPARE(model.entryAt(0)->sequence, newest);
        model.reload();
        QCOMPARE(model.rowCount(), before + 1);
        QCOMPARE(model.entryAt(0)->text, "Export: trail.csv");
        QString error;
        m_all = m_site.fixture.open()->audit().entries(&error);

        // Refused reads show no rows.
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy failed(&model, &AuditTrailModel::readFailed);
        model.reload();
        QVERIFY(model.data(model.index(0, int(AuditColumn::Text))).isValid());
        setRight(false);
        // A page not read yet is refused while a view paints; the table then empties.
        QVERIFY(!model.data(model.index(model.rowCount() - 1, int(AuditColumn::Text))).isValid());
        QVERIFY(failed.wait(5000));
        QCOMPARE(failed.last().at(0).toString(), "You do not have the right to view the audit trail.");
        QCOMPARE(model.rowCount(), 0);
        // Asked anew without the right, it is refused at once.
        model.sort(int(AuditColumn::User), Qt::AscendingOrder);
        QCOMPARE(failed.count(), 2);
        QCOMPARE(model.rowCount(), 0);
        setRight(true);
        model.reload();
        QCOMPARE(model.rowCount(), m_site.fixture.auditTexts().size());
    }

    void timesAreShownInTheLocalZone()
    {
        qputenv("TZ", "Europe/Berlin");
        tzset();
        QCOMPARE(AuditTrailModel::localTimeText("2026-11-25T08:14:03.120Z"), "2026-11-25 09:14:03 CET");
        QCOMPARE(AuditTrailModel::localTimeText("2026-07-01T22:30:00.000Z"), "2026-07-02 00:30:00 CEST");
        QCOMPARE(AuditTrailModel::localTimeText("yesterday"), "yesterday"); // not a time: shown as recorded
    }
};

QTEST_MAIN(AuditTrailModelTest)
#include "AuditTrailModelTest.moc"
