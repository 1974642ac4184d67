// A plug-in that needs a function no library provides: loading it must fail
// with the loader's reason, not crash later.
#include "AssayProtocolWizard.h"

#include <QObject>

extern "C" int nebra_test_function_nobody_defines();

class Unresolved : public QObject, public nebra::AssayProtocolWizard
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID NebraAssayProtocolWizard_iid FILE "Unresolved.json")
    Q_INTERFACES(nebra::AssayProtocolWizard)
public:
    void Run(QWidget*, bool, QObject*&, QObject*&, int& result) override
    {
        result = nebra_test_function_nobody_defines();
    }
    bool OpenInEditor() const override { return false; }
    QString NewFileName() const override { return {}; }
    bool HasSecondFile() const override { return false; }
    QString SecondFileName() const override { return {}; }
};

#include "Unresolved.moc"
