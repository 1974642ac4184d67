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
private Q_SLOTS:
    void init();
    void cleanup();
    void withoutSessionEverythingIsAllowedAndNothingRecorded();
    void allowedOperationIsRecorded();
    void deniedOperationRecordsNothing_data();
    void deniedOperationRecordsNothing();
    void otherAreasAreAskedAsGiven();

private:
    // The calling order of every document operation.
    bool perform(const QString& operation, const QString& entry);

    std::unique_ptr<UserFolders> m_folders;
    std::unique_ptr<SecurityFixture> m_fixture;
    std::unique_ptr<MessageRecorder> m_messages;
    std::unique_ptr<NebraSecurityManager> m_manager;
    std::unique_ptr<Globals> m_globals;
    std::unique_ptr<Authorisation> m_authorisation;
};

void tst_Authorisation::init()
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

void tst_Authorisation::cleanup()
{
    m_messages.reset();
}

bool tst_Authorisation::perform(const QString& operation, const QString& entry)
{
    if (!m_authorisation->CanPerformGeneralOperation(operation))
        return false;
    m_authorisation->AddAuditTrailEntryOperationGeneral(entry);
    return true;
}

void tst_Authorisation::withoutSessionEverythingIsAllowedAndNothingRecorded()
{
    m_globals->SecurityEnabled = false;
    const QStringList before = m_fixture->auditTexts();
    QVERIFY(perform(QStringLiteral("EditLayout"), QStringLiteral("Edit layout: a.mlo")));
    QVERIFY(m_authorisation->CanPerformSecurityOperation(QStringLiteral("Anything"), QStringLiteral("At all"),
                                                         true));
    m_authorisation->AddAuditTrailEntryOperation(QStringLiteral("General"),
                                                 QStringLiteral("Open report: r.mht"));
    QCOMPARE(m_fixture->auditTexts(), before);
    QCOMPARE(m_messages->count(), 0);
}

void tst_Authorisation::allowedOperationIsRecorded()
{
    QVERIFY(
        perform(QStringLiteral("RunProtocol"), QStringLiteral("Run protocol: ELISA IgG Quantitation.apr")));
    QCOMPARE(m_messages->count(), 0);
    QString error;
    const AuditEntry last = m_fixture->open()->audit().entries(&error).last();
    QCOMPARE(last.text, QStringLiteral("Run protocol: ELISA IgG Quantitation.apr"));
    QCOMPARE(last.area, QStringLiteral("General"));
    QCOMPARE(last.userName, QStringLiteral("jsmith"));
}

void tst_Authorisation::deniedOperationRecordsNothing_data()
{
    QTest::addColumn<bool>("showMessage");
    QTest::newRow("with the message") << true;
    QTest::newRow("silently") << false;
}

void tst_Authorisation::deniedOperationRecordsNothing()
{
    QFETCH(bool, showMessage);
    const QStringList before = m_fixture->auditTexts();
    QVERIFY(!m_authorisation->CanPerformSecurityOperation(QStringLiteral("AuthorisationsGeneral"),
                                                          QStringLiteral("EditLayout"), showMessage));
    if (showMessage) {
        QCOMPARE(m_messages->count(), 1);
        const MessageRequest& box = m_messages->last();
        QCOMPARE(box.text,
                 QStringLiteral("You do not have permission to perform this operation.  Please contact your "
                                "security administrator for further information."));
        QCOMPARE(box.title, QStringLiteral("Security Manager"));
        QCOMPARE(box.icon, MessageIcon::Information);
        QCOMPARE(box.buttons, int(MessageButton::Ok));
    } else {
        QCOMPARE(m_messages->count(), 0);
    }
    QVERIFY(!perform(QStringLiteral("EditLayout"), QStringLiteral("Edit layout: a.mlo")));
    QCOMPARE(m_fixture->auditTexts(), before);
}

void tst_Authorisation::otherAreasAreAskedAsGiven()
{
    QVERIFY(m_authorisation->CanPerformSecurityOperation(QStringLiteral("Instrumentation"),
                                                         QStringLiteral("SelectDriver"), true));
    QVERIFY(!m_authorisation->CanPerformSecurityOperation(QStringLiteral("ParentDirectoryDataFiles"),
                                                          QStringLiteral("Edit"), false));
    // The general check asks only its own area.
    QVERIFY(!m_authorisation->CanPerformGeneralOperation(QStringLiteral("SelectDriver")));
}

QTEST_MAIN(tst_Authorisation)
#include "tst_Authorisation.moc"
