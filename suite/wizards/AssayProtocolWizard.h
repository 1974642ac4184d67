#pragma once

#include <QString>
#include <QtPlugin>

class QObject;
class QWidget;

namespace nebra {

// Result codes a wizard's Run hands back. Any other value is a failure.
namespace WizardResult {
enum : int
{
    Abandoned = 0, // the user left the wizard; nothing was written
    Created = 1    // a new protocol was written; the result queries describe it
};
}

// The automation interface of a new-assay-protocol wizard. A wizard is a Qt
// plug-in whose root object implements this interface; the Organiser loads
// it with QPluginLoader and keeps the one root object for the whole process,
// so a wizard must start every Run afresh.
//
// Run asks the user its questions and writes the new protocol:
//   owner        the window that asks (the picker, or the main window); the
//                wizard's own windows belong to it.
//   modal        always true: the wizard runs modally to the owner and
//                returns only when it is done.
//   context      the run's context object (see docs/wizards.md); the wizard
//                may replace it with one of its own and hand that back.
//   sharedState  the state kept for the whole process and passed to every
//                run; the wizard may replace it (the replacement must offer
//                an invokable Request(int)).
//   result       out: one of WizardResult, or any other value for a failure.
//
// After a result of Created the Organiser asks the result queries, in this
// order: OpenInEditor (open the new file in the assay application),
// NewFileName (its full path), HasSecondFile and SecondFileName (a second
// file made with it).
class AssayProtocolWizard
{
public:
    virtual ~AssayProtocolWizard() = default;

    virtual void Run(QWidget* owner, bool modal, QObject*& context, QObject*& sharedState, int& result) = 0;
    virtual bool OpenInEditor() const = 0;
    virtual QString NewFileName() const = 0;
    virtual bool HasSecondFile() const = 0;
    virtual QString SecondFileName() const = 0;
};

} // namespace nebra

#define NebraAssayProtocolWizard_iid "org.nebra.AssayProtocolWizard/1.0"
Q_DECLARE_INTERFACE(nebra::AssayProtocolWizard, NebraAssayProtocolWizard_iid)
