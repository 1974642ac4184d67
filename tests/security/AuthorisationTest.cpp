#include "Authorisation.h"
#include "DialogScript.h"
#include "Globals.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "SecurityFixture.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

// The permission checks and audit entries of document operations, inside a
// real session and without one.
class AuthorisationTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<SecuritySite> m_site;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<NebraSecurityManager> m_manager;
    std::unique_ptr<Globals> m_globals;
    std::unique_ptr<Authorisation> m_authorisation;

private Q_SLOTS:
    void init()
    {
        m_site = std::make_unique<SecuritySite>(
            QStringList{"AuthorisationsGeneral/RunProtocol", "Instrumentation/SelectDriver"});
        QString error;
        m_manager = NebraSecurityManager::create(SettingsStore(), {}, &error);
        QVERIFY2(m_manager, qPrintable(error));
        DialogScript dialogs;
        dialogs.logIn(QStringLiteral("jsmith"), QStringLiteral("correct horse"));
        QVERIFY(m_manager->LogIn(nullptr));
        m_globals = std::make_unique<Globals>();
        m_globals->SecurityEnabled = true;
        m_authorisation = std::make_unique<Authorisation>(
            *m_globals, [this] { return m_manager.get(); }, nullptr);
        m_messages = std::make_unique<MessageRecorder>();
    }

    void cleanup() { m_messages.reset(); }

    // The calling order of every document operation: check, then record.
    void onlyAnAllowedOperationIsRecorded_data()
    {
        QTest::addColumn<bool>("session");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<bool>("showMessage");
        QTest::addColumn<bool>("allowed");
        QTest::newRow("no session: everything, silently") << false << "EditLayout" << true << true;
        QTest::newRow("a right of the user") << true << "RunProtocol" << true << true;
        QTest::newRow("refused with the message") << true << "EditLayout" << true << false;
        QTest::newRow("refused silently") << true << "EditLayout" << false << false;
    }

    void onlyAnAllowedOperationIsRecorded()
    {
        QFETCH(bool, session);
        QFETCH(QString, operation);
        QFETCH(bool, showMessage);
        QFETCH(bool, allowed);
        m_globals->SecurityEnabled = session;
        const QStringList before = m_site->fixture.auditTexts();
        QCOMPARE(m_authorisation->CanPerformSecurityOperation(QStringLiteral("AuthorisationsGeneral"),
                                                              operation, showMessage),
                 allowed);
        if (allowed)
            m_authorisation->AddAuditTrailEntryOperationGeneral(
                QStringLiteral("Run protocol: ELISA IgG.apr"));
        QString error;
        const AuditEntry last = m_site->fixture.open()->audit().entries(&error).last();
        if (allowed && session)
            QCOMPARE(last.userName + '|' + last.area + '|' + last.text,
                     QStringLiteral("jsmith|General|Run protocol: ELISA IgG.apr"));
        else
            QCOMPARE(m_site->fixture.auditTexts(), before);
        QCOMPARE(m_messages->count(), int(!allowed && showMessage));
        if (m_messages->count() == 0)
            return;
        const MessageRequest& box = m_messages->last();
        QCOMPARE(box.text,
                 QStringLiteral("You do not have permission to perform this operation.  Please contact "
                                "your security administrator for further information."));
        QCOMPARE(box.title, QStringLiteral("Security Manager"));
        QCOMPARE(box.icon, MessageIcon::Information);
        QCOMPARE(box.buttons, int(MessageButton::Ok));
    }

    void otherAreasAreAskedAsGiven()
    {
        QVERIFY(m_authorisation->CanPerformSecurityOperation(QStringLiteral("Instrumentation"),
                                                             QStringLiteral("SelectDriver"), true));
        QVERIFY(!m_authorisation->CanPerformSecurityOperation(QStringLiteral("ParentDirectoryDataFiles"),
                                                              QStringLiteral("Edit"), false));
        // The general check asks only its own area, and shows the refusal.
        QVERIFY(!m_authorisation->CanPerformGeneralOperation(QStringLiteral("SelectDriver")));
        QCOMPARE(m_messages->count(), 1);
    }
};

QTEST_MAIN(AuthorisationTest)
#include "AuthorisationTest.moc"
