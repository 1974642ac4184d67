#pragma once

#include <QObject>
#include <QString>

namespace nebra {

class SuitePaths;
class SuiteSettings;

// The suite's side of a wizard run, attached to the run's context: the
// folders a wizard reads from and writes to, and the current instrument
// driver, which a wizard may change. Wizards reach it through its
// properties (QObject::property / setProperty), so a plug-in needs no more
// of the suite than the interface header.
class WizardCompanion : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString ProtocolsFolder READ ProtocolsFolder CONSTANT)
    Q_PROPERTY(QString LayoutsFolder READ LayoutsFolder CONSTANT)
    Q_PROPERTY(QString ResultsFolder READ ResultsFolder CONSTANT)
    Q_PROPERTY(QString WizardsFolder READ WizardsFolder CONSTANT)
    Q_PROPERTY(int CurrentHLD READ CurrentHLD WRITE SetCurrentHLD)
public:
    WizardCompanion(const SuitePaths& paths, SuiteSettings& settings, QObject* parent = nullptr);

    QString ProtocolsFolder() const;
    QString LayoutsFolder() const;
    QString ResultsFolder() const;
    // WizardsParentFolder + "/Wizards": each wizard's own folder is beneath it.
    QString WizardsFolder() const;

    // 1-based index of the current instrument driver; setting it persists it.
    int CurrentHLD() const;
    void SetCurrentHLD(int index);

private:
    const SuitePaths& m_paths;
    SuiteSettings& m_settings;
};

} // namespace nebra
