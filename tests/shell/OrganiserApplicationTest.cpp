#include "OrganiserApplication.h"
#include "MessageRecorder.h"
#include "RuntimeErrors.h"

#include <QTest>
#include <QWidget>

using namespace nebra;
using nebra::test::MessageRecorder;

namespace {

// Throws the error it is given from its event handler, as a handler of the
// Organiser would when a counter overflows.
class FailingHandler : public QObject
{
public:
    std::function<void()> fail;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::User)
            fail();
        return QObject::event(event);
    }
};

} // namespace

class OrganiserApplicationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The first error ends the program, so one process sees one such error.
    void anErrorInAHandlerIsReportedAndEndsTheProgramInOrder()
    {
        MessageRecorder messages;
        QWidget window;
        window.show();
        FailingHandler handler;
        const auto fail = [&handler](const char* logged, const std::function<void()>& error) {
            QTest::ignoreMessage(QtWarningMsg, logged);
            handler.fail = error;
            QCoreApplication::postEvent(&handler, new QEvent(QEvent::User));
            QCoreApplication::sendPostedEvents(&handler);
        };
        fail("Run-time error: Bad file name or number", [] { throw BadFileError(); });
        // The handler has returned; the report comes from the event loop.
        QCOMPARE(messages.count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(messages.count(), 1, 5000);
        QCOMPARE(messages.last().text, "Run-time error: Bad file name or number");
        QCOMPARE(messages.last().icon, MessageIcon::Critical);
        QVERIFY(!window.isVisible());
        // A second error while ending is not reported again.
        fail("Run-time error: Overflow", [] { throw OverflowError(); });
        QCoreApplication::processEvents();
        QCOMPARE(messages.count(), 1);
    }
};

int main(int argc, char** argv)
{
    OrganiserApplication app(argc, argv);
    OrganiserApplicationTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "OrganiserApplicationTest.moc"
