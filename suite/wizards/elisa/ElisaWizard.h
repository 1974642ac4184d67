#pragma once

#include "AssayProtocol.h"

#include <QWizard>

class QComboBox;
class QLabel;
class QLineEdit;

namespace nebra {

// The ELISA wizard: a protocol made from the wizard's template (an ordinary
// protocol file, "Template.apr" in the wizard's folder) on one page: the new
// protocol's name, its plate layout and the units of the results. The read
// and the analysis are the template's.
class ElisaWizard : public QWizard
{
    Q_OBJECT
public:
    ElisaWizard(AssayProtocol templateProtocol, QString protocolsFolder, const QString& layoutsFolder,
                QWidget* parent = nullptr);

    AssayProtocol protocol() const;
    QString NewFileName() const { return m_newFileName; }

    static QString caption() { return QStringLiteral("New Assay Protocol - ELISA"); }

    void accept() override;

private:
    QWizardPage* buildPage(const QString& layoutsFolder);

    AssayProtocol m_template;
    QString m_protocolsFolder;
    QLineEdit* m_name = nullptr;
    QComboBox* m_layout = nullptr;
    QComboBox* m_units = nullptr;
    QLabel* m_problem = nullptr;
    QString m_newFileName;
};

} // namespace nebra
