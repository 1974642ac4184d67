#include "Authorisation.h"
#include "DialogScript.h"
#include "Globals.h"
#include "MessageRecorder.h"
#include "NebraSecurityManager.h"
#include "SecurityFixture.h"
#include "UserFolders.h"

#include <QTest>

using namespace nebra;
using namespace nebra::test;

// The permission checks and audit entries of document operations, inside a
// real session and without one.
class tst_Authorisation : public QObject
{
    Q_OBJECT

    std::unique_ptr<UserFolders> m_folders;
    std::unique_ptr<SecurityFixture> m_fixture;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<NebraSecurityManager> m_manager;
    std::unique_ptr<Globals> m_globals;
    std::unique_ptr<Authorisation> m_authorisation;

private Q_SLOTS:
    void init()
    {
        m_folders = std::make_unique<UserFolders>();
        m_fixture = std::make_unique<SecurityFixture>(m_folders->root() + QStringLiteral("/site"));
        m_fixture->create();
        m_fixture->addUser(QStringLiteral("jsmith"), QStringLiteral("correct horse"), {},
                           {QStringLiteral("AuthorisationsGeneral/RunProtocol"),
                            QStringLiteral("Instrumentation/SelectDriver")});
        SettingsStore store;
        m_fixture->writeSettings(store);
        QString error;
        m_manager = NebraSecurityManager::create(store, {}, &error);
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
        const QStringList before = m_fixture->auditTexts();
        QCOMPARE(m_authorisation->CanPerformSecurityOperation(QStringLiteral("AuthorisationsGeneral"),
                                                              operation, showMessage),
                 allowed);
        if (allowed)
            m_authorisation->AddAuditTrailEntryOperationGeneral(
                QStringLiteral("Run protocol: ELISA IgG.apr"));
        QString error;
        const AuditEntry last = m_fixture->open()->audit().entries(&error).last();
        if (allowed && session)
            QCOMPARE(last.userName + '|' + last.area + '|' + last.text,
                     QStringLiteral("jsmith|General|Run protocol: ELISA IgG.apr"));
        else
            QCOMPARE(m_fixture->auditTexts(), before);
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

QTEST_MAIN(tst_Authorisation)
#include "tst_Authorisation.moc"
